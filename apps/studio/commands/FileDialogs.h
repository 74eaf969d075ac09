// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/FormDialog.h"
#include "commands/Primitives.h"
#include "framework/document/DocumentState.h"

#include <nlohmann/json.hpp>

#include <optional>

class QButtonGroup;

namespace trovik {
struct MeshFormat;
}

namespace trovik::studio {

/// Choices of a unit or an up axis; the value is the name in scripts. The first choice has this
/// text and an empty value.
FormDialog::Choices UnitChoices(const QString& none);
FormDialog::Choices UpChoices(const QString& none);

/// Asks for an initial shape.
class NewDialog : public FormDialog {
    Q_OBJECT
public:
    explicit NewDialog(QWidget* parent);
    /// Empty for the bust, which is a mesh file.
    std::optional<Primitive> Shape() const;
    std::uint32_t Segments() const;
    int Levels() const;

private:
    void ShowCounts();

    QButtonGroup* shapes;
    QSpinBox* segments;
    QSpinBox* levels;
    QLabel* counts;
};

/// Asks for the units and up axis of a mesh file.
class ImportDialog : public FormDialog {
    Q_OBJECT
public:
    ImportDialog(const QString& fileName, QWidget* parent);
    /// If empty, the units specified in the file apply.
    std::string Units() const;
    std::string Up() const;
    int Levels() const;

private:
    QComboBox* units;
    QComboBox* up;
    QSpinBox* levels;
};

/// Asks for the options of an export; the file is chosen afterwards.
class ExportDialog : public FormDialog {
    Q_OBJECT
public:
    explicit ExportDialog(QWidget* parent);
    /// Includes the leading dot.
    QString Extension() const;
    /// The fields of the step "export", without the file.
    nlohmann::json Options() const;

private:
    const MeshFormat& Format() const;
    void AddReduction();
    void ShowOptions();
    void AddReductionTo(nlohmann::json& options) const;

    QComboBox* format;
    QCheckBox* world;
    QCheckBox* hidden;
    QComboBox* units;
    QComboBox* up;
    QLabel* keeps;
    QComboBox* decimate;
    QDoubleSpinBox* ratio;
    QSpinBox* faces;
    QDoubleSpinBox* error;
    QSpinBox* lods;
    QDoubleSpinBox* lodRatio;
};

/// Asks for the options of applying a displacement map.
class DisplacementDialog : public FormDialog {
    Q_OBJECT
public:
    DisplacementDialog(const QString& fileName, QWidget* parent);
    /// The fields of the step "displace", without the file.
    nlohmann::json Options() const;

private:
    QComboBox* map;
    QComboBox* space;
    QDoubleSpinBox* strength;
    QCheckBox* hasScale;
    QDoubleSpinBox* mid;
    QDoubleSpinBox* scale;
    QCheckBox* repeat;
};

}  // namespace trovik::studio
