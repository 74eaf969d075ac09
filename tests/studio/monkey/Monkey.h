// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "StudioApplication.h"
#include "events/InputSender.h"

#include <initializer_list>
#include <map>
#include <random>

namespace trovik::studio::test {

/// Sends random pointer, key and command events to a running studio, as fast as its event loop
/// accepts them, even while dialogs and menus are open. The sequence depends on the seed; its
/// effect also depends on the speed of the machine, because jobs run at the same time.
///
/// It does not quit the program, reset the document or enter text into a file dialog, and it stops
/// adding levels at a size that keeps a test fast.
class Monkey : public QObject {
public:
    Monkey(StudioApplication& studio, unsigned seed);

    /// Sends this many events, then closes dialogs and menus that block the window, and releases
    /// the pointer and all keys.
    void Send(int count);
    /// Closes the other windows and the palette. \return whether no dialog or menu is left.
    bool CloseAll();
    /// How many events of each kind were sent.
    const std::map<QString, int>& Counts() const { return counts; }

private:
    void Schedule();
    void Step();
    void StepInDialog(QWidget& dialog);
    void StepInPopup(QWidget& popup);
    void SendPointer();
    void SendKey();
    void SendAction();
    void ClickAnywhere();
    bool MayTrigger(const QString& id) const;
    void Count(const char* kind) { ++counts[QString::fromLatin1(kind)]; }
    int Random(int below);
    QPointF RandomPosition();
    template <typename List>
    const auto& Any(const List& list) {
        return *(std::begin(list) + Random(static_cast<int>(std::size(list))));
    }
    template <typename Value>
    Value Any(std::initializer_list<Value> list) {
        return *(list.begin() + Random(static_cast<int>(list.size())));
    }

    StudioApplication& studio;
    InputSender sender;
    std::mt19937 random;
    std::map<QString, int> counts;
    bool isSending = false;
    int remaining = 0;
    int closeAttempts = 0;
    /// Number of events since the open dialog or menu was first detected.
    int stepsInside = 0;
    uint32_t time = 0;
    QPointF pen{200.0, 150.0};
    Qt::KeyboardModifiers held;
    bool isPenDown = false;
    bool isMouseDown = false;
    Qt::MouseButton mouseButton = Qt::LeftButton;
};

}  // namespace trovik::studio::test
