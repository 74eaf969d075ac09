// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDialog>
#include <QVariant>

#include <string>
#include <utility>
#include <vector>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;
class QPushButton;
class QSpinBox;

namespace trovik::studio {

/// A dialog of labelled controls with two buttons. The label of a control is also its accessible
/// name. Read the values after exec has returned QDialog::Accepted.
class FormDialog : public QDialog {
    Q_OBJECT
public:
    /// \param go  text of the accept button.
    FormDialog(const QString& title, const QString& go, QWidget* parent);

    using Choices = std::vector<std::pair<QString, QVariant>>;
    /// Pairs of text and value.
    QComboBox* AddChoice(const QString& label, const QString& tip, const Choices& choices);
    QCheckBox* AddCheck(const QString& label, const QString& tip, bool isOn);
    QSpinBox* AddWhole(const QString& label, const QString& tip, int least, int most, int value);
    /// How a number is shown, and how much one step of the wheel or an arrow changes it.
    struct NumberFormat {
        int decimals = 4;
        double step = 1.0;
        QString suffix = {};
    };
    QDoubleSpinBox* AddNumber(const QString& label,
                              const QString& tip,
                              double least,
                              double most,
                              double value,
                              const NumberFormat& format);
    QLabel* AddText(const QString& label);
    void AddRow(QWidget* widget);
    void ShowRow(QWidget* control, bool shown);
    QPushButton* GoButton() const { return go; }
    /// The value of the chosen entry, which must be text.
    static std::string ChosenText(const QComboBox* box);

private:
    template <typename Control>
    Control* Add(Control* control, const QString& label, const QString& tip);

    QFormLayout* form;
    QPushButton* go;
};

}  // namespace trovik::studio
