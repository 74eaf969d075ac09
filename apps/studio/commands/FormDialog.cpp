// SPDX-License-Identifier: Apache-2.0
#include "commands/FormDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

namespace trovik::studio {

FormDialog::FormDialog(const QString& title, const QString& goText, QWidget* parent)
    : QDialog(parent) {
    setWindowTitle(title);
    auto* layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    // Wide enough for the title of the window.
    layout->addStrut(24 * fontMetrics().height());
    form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    layout->addLayout(form);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    go = buttons->addButton(goText, QDialogButtonBox::AcceptRole);
    go->setDefault(true);
    go->setToolTip(title);
    buttons->button(QDialogButtonBox::Cancel)->setToolTip(tr("Changes nothing"));
    layout->addSpacing(6);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

template <typename Control>
Control* FormDialog::Add(Control* control, const QString& label, const QString& tip) {
    control->setToolTip(tip);
    control->setAccessibleName(label);
    control->setMinimumWidth(210);
    form->addRow(label, control);
    return control;
}

QComboBox* FormDialog::AddChoice(const QString& label, const QString& tip, const Choices& choices) {
    auto* box = new QComboBox(this);
    for (const auto& [text, value] : choices) box->addItem(text, value);
    return Add(box, label, tip);
}

QCheckBox* FormDialog::AddCheck(const QString& label, const QString& tip, bool isOn) {
    auto* box = new QCheckBox(label, this);
    box->setChecked(isOn);
    box->setToolTip(tip);
    box->setAccessibleName(label);
    form->addRow(QString(), box);
    return box;
}

QSpinBox* FormDialog::AddWhole(
    const QString& label, const QString& tip, int least, int most, int value) {
    auto* box = new QSpinBox(this);
    box->setRange(least, most);
    box->setValue(value);
    return Add(box, label, tip);
}

QDoubleSpinBox* FormDialog::AddNumber(const QString& label,
                                      const QString& tip,
                                      double least,
                                      double most,
                                      double value,
                                      const NumberFormat& format) {
    auto* box = new QDoubleSpinBox(this);
    box->setDecimals(format.decimals);
    box->setSingleStep(format.step);
    box->setSuffix(format.suffix);
    box->setRange(least, most);
    box->setValue(value);
    return Add(box, label, tip);
}

QLabel* FormDialog::AddText(const QString& label) {
    auto* text = new QLabel(this);
    text->setAccessibleName(label);
    text->setMinimumWidth(210);
    form->addRow(label, text);
    return text;
}

std::string FormDialog::ChosenText(const QComboBox* box) {
    return box->currentData().toString().toStdString();
}

void FormDialog::AddRow(QWidget* widget) { form->addRow(widget); }

void FormDialog::ShowRow(QWidget* control, bool shown) { form->setRowVisible(control, shown); }

}  // namespace trovik::studio
