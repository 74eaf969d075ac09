// SPDX-License-Identifier: Apache-2.0
#include "panels/AccessibleSlider.h"

#include "panels/ValueSlider.h"

#include <cmath>

namespace trovik::studio {

namespace {

QAccessibleInterface* Make(const QString&, QObject* object) {
    auto* slider = qobject_cast<ValueSlider*>(object);
    return slider != nullptr ? new AccessibleSlider(slider) : nullptr;
}

}  // namespace

AccessibleSlider::AccessibleSlider(ValueSlider* slider)
    : QAccessibleWidget(slider, QAccessible::Slider) {}

void AccessibleSlider::Install() {
    static const bool isInstalled = [] {
        QAccessible::installFactory(&Make);
        return true;
    }();
    Q_UNUSED(isInstalled)
}

ValueSlider& AccessibleSlider::Slider() const { return *static_cast<ValueSlider*>(widget()); }

void* AccessibleSlider::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QString AccessibleSlider::text(QAccessible::Text kind) const {
    return kind == QAccessible::Value ? Slider().ValueText() : QAccessibleWidget::text(kind);
}

QVariant AccessibleSlider::currentValue() const { return Slider().Value(); }

void AccessibleSlider::setCurrentValue(const QVariant& value) { Slider().Enter(value.toDouble()); }

QVariant AccessibleSlider::minimumValue() const { return Slider().Limits().least; }

QVariant AccessibleSlider::maximumValue() const { return Slider().Limits().most; }

QVariant AccessibleSlider::minimumStepSize() const {
    const ValueSlider::Range& range = Slider().Limits();
    return range.isWhole ? 1.0 : std::pow(10.0, -range.decimals);
}

}  // namespace trovik::studio
