// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentState.h"

#include <QWidget>

class QLineEdit;
class QToolButton;

namespace trovik::studio {

class ValueSlider;

/// One layer: record button, name with strength, visibility, lock, and a drag handle.
class LayerRow : public QWidget {
    Q_OBJECT
public:
    explicit LayerRow(QWidget* parent);

    void Show(const DocumentState::Layer& layer);
    const DocumentState::Layer& Layer() const { return layer; }
    /// Opens the line edit for the name.
    void BeginRename();

Q_SIGNALS:
    /// Sent to record strokes into this layer, or into no layer if this one is already active.
    void TargetClicked();
    void VisibleClicked(bool visible);
    void WritableClicked(bool writable);
    void StrengthEdited(double strength);
    void Renamed(const QString& name);
    /// The drag handle is moved. \param y  in the parent's coordinates.
    void GripMoved(int y);
    void GripReleased();

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void EndRename(bool accepts);

    DocumentState::Layer layer;
    QWidget* grip;
    QToolButton* target;
    QToolButton* eye;
    QToolButton* lock;
    ValueSlider* strength;
    QLineEdit* entry = nullptr;
};

}  // namespace trovik::studio
