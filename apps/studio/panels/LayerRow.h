// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentState.h"

#include <QWidget>

class QLineEdit;
class QToolButton;

namespace trovik::studio {

class ValueSlider;

/// One layer: record target, name with strength, eye, lock, and a grip to drag it by.
class LayerRow : public QWidget {
    Q_OBJECT
public:
    explicit LayerRow(QWidget* parent);

    void Show(const DocumentState::Layer& layer);
    const DocumentState::Layer& Layer() const { return layer; }
    /// Opens the entry for a name.
    void BeginRename();

Q_SIGNALS:
    /// Strokes are to record into this layer, or into none if it is active already.
    void TargetClicked();
    void VisibleClicked(bool visible);
    void WritableClicked(bool writable);
    void StrengthEdited(double strength);
    void Renamed(const QString& name);
    /// The grip is dragged. \param y  in the coordinates of the parent.
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
