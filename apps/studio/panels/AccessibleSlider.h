// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QAccessibleWidget>

namespace trovik::studio {

class ValueSlider;

/// Describes a ValueSlider to assistive technology: a slider with a value, its limits and the text
/// of the value. Setting the value has the same effect as typing it.
class AccessibleSlider final : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleSlider(ValueSlider* slider);

    /// Makes assistive technology use this class. Further calls have no effect.
    static void Install();

    void* interface_cast(QAccessible::InterfaceType type) override;
    QString text(QAccessible::Text kind) const override;

    QVariant currentValue() const override;
    void setCurrentValue(const QVariant& value) override;
    QVariant minimumValue() const override;
    QVariant maximumValue() const override;
    QVariant minimumStepSize() const override;

private:
    ValueSlider& Slider() const;
};

}  // namespace trovik::studio
