// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/FormDialog.h"
#include "engine/Engine.h"

#include <nlohmann/json.hpp>

namespace trovik::studio {

/// Asks for the options of baking a map, and shows a low-resolution preview of the map, which a job
/// bakes again after each change.
class BakeDialog : public FormDialog {
    Q_OBJECT
public:
    BakeDialog(Engine& engine, const DocumentState& state, QWidget* parent);
    ~BakeDialog() override;

    QString Extension() const;
    /// The fields of the step "bake", without the file.
    nlohmann::json Options() const;

private:
    void ShowOptions();
    void ShowPreview();
    /// Disables baking if there is a problem.
    void SetProblem(const QString& problem);

    Engine& engine;
    QLabel* picture;
    QComboBox* map;
    QComboBox* space;
    QComboBox* from;
    QComboBox* to;
    QComboBox* size;
    QComboBox* format;
    QComboBox* bits;
    QComboBox* samples;
    QSpinBox* padding;
    QCheckBox* repeat;
    /// Cancels the newest preview.
    CancelFlag cancel = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace trovik::studio
