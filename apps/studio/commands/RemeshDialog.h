// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/FormDialog.h"
#include "engine/Engine.h"
#include "framework/remesh/IsotropicRemeshing.h"

#include <nlohmann/json.hpp>

namespace trovik::studio {

/// Asks for the settings of a remeshing, and predicts its result. The surface is measured by a job;
/// until it has finished, there is no prediction.
class RemeshDialog : public FormDialog {
    Q_OBJECT
public:
    RemeshDialog(Engine& engine, const DocumentState& state, QWidget* parent);
    ~RemeshDialog() override;

    /// The fields of the step "remesh".
    nlohmann::json Options() const;
    QString ForecastText() const;

private:
    bool IsByLength() const;
    void Measure();
    void ShowForecast();

    Engine& engine;
    QComboBox* target;
    QSpinBox* faces;
    QDoubleSpinBox* length;
    QLabel* forecast;
    QComboBox* mode;
    QCheckBox* borders;
    QCheckBox* groups;
    QCheckBox* uvs;
    QCheckBox* creases;
    QDoubleSpinBox* angle;
    /// Empty until the surface has been measured.
    std::optional<RemeshEstimate> estimate;
    /// Why the surface could not be measured; empty otherwise.
    QString problem;
    /// Whether the user has changed the edge length.
    bool isLengthChosen = false;
    CancelFlag cancel = std::make_shared<std::atomic<bool>>(false);
};

}  // namespace trovik::studio
