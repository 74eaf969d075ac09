// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"
#include "viewport/ReferenceImage.h"

#include <QWidget>

#include <functional>

class QListWidget;

namespace trovik::studio {

class PanelCheck;
class PanelCombo;
class ValueSlider;

/// The reference images of the document, and the placement of the selected one.
class ReferencesPanel : public QWidget {
    Q_OBJECT
public:
    explicit ReferencesPanel(const ActionContext& context, QWidget* parent = nullptr);

private:
    /// The selected image; null if there is none.
    const ReferenceImage* Selected() const;
    using Change = std::function<void(ReferenceImage& image)>;
    /// \param isFinal  false while a slider is dragged.
    void ChangeSelected(const Change& change, bool isFinal);
    ValueSlider* AddSlider(QWidget* parent,
                           const QString& name,
                           const QString& tip,
                           std::function<void(ReferenceImage& image, double value)> set);
    void SetLock(ReferenceImage::Lock lock);
    void Refresh();
    void RefreshList();

    ActionContext context;
    QListWidget* list;
    QWidget* hint;
    QWidget* placement;
    PanelCombo* lock;
    ValueSlider* across;
    ValueSlider* upward;
    ValueSlider* height;
    ValueSlider* opacity;
    PanelCheck* front;
};

}  // namespace trovik::studio
