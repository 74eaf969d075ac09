// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "input/Gesture.h"

#include <QCoreApplication>
#include <QPointF>

namespace trovik::studio {

class BrushCursor;
class Engine;

/// Changes the brush's radius or strength: by a horizontal pointer motion or a typed number. The
/// setting changes when the gesture is finished; until then the ring and the HUD show it.
class ValueGesture final : public Gesture {
    Q_DECLARE_TR_FUNCTIONS(ValueGesture)
public:
    enum class Value { Radius, Strength };

    /// \param pixelRatio  device pixels per logical pixel.
    ValueGesture(Engine& engine,
                 BrushCursor& cursor,
                 Value value,
                 const QPointF& position,
                 double pixelRatio);

    void Move(const PointerEvent& event) override;
    void Finish() override;
    void Cancel() override;
    bool Type(int key, const QString& text) override;
    QStringList Hud() const override;
    bool GoesOnWithoutButton() const override { return true; }
    /// Whether the pointer moved or a number was typed.
    bool HasChanged() const { return hasChanged; }

private:
    void Show();
    /// The value that Finish sets: pixels or world units, or percent.
    double Chosen() const;

    Engine& engine;
    BrushCursor& cursor;
    Value value;
    QPointF start;
    double pixelRatio;
    /// Whether the brush's radius is a number of pixels.
    bool isInPixels = false;
    double before = 0.0;
    /// Radius in device pixels at the start, if the pointer is over the surface.
    double pixelsBefore = 0.0;
    double current = 0.0;
    QString typed;
    bool hasChanged = false;
};

}  // namespace trovik::studio
