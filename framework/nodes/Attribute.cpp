// SPDX-License-Identifier: Apache-2.0
#include "host/Attribute.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

/// NaN becomes the lower limit.
float WithinRange(float value, float low, float high) {
    if (!(value >= low)) return low;
    return value > high ? high : value;
}

}  // namespace

Attribute::Attribute(Node* holder, const QString& key) : owner(holder), name(key) {
    if (owner != nullptr) owner->attributes.push_back(this);
}

Attribute::~Attribute() {
    Disconnect();
    for (Attribute* target : targets) target->source = nullptr;
    if (owner != nullptr) std::erase(owner->attributes, this);
}

void Attribute::AddTarget(Attribute& target, bool) {
    // A value would propagate forever around a cycle of attributes, so a connection that closes a
    // cycle is rejected.
    for (const Attribute* above = this; above != nullptr; above = above->source)
        if (above == &target) return;
    target.Disconnect();
    targets.push_back(&target);
    target.source = this;
}

void Attribute::UpdateTargets() {}
int Attribute::TargetType() const { return attributeType(); }
void Attribute::SetPointerValue(Node*, bool) {}
Node* Attribute::PointerValue() const { return nullptr; }
bool Attribute::ValidatePointerValue(Node*) const { return false; }

void Attribute::StartEvent(NodeEventType type) {
    if (owner != nullptr) owner->OnNodeEvent(*this, type);
}

QWidget* Attribute::CreateEditorWidget(QWidget*, int) { return nullptr; }
uint32_t Attribute::ParameterCount() const { return 0; }
QString Attribute::ParameterName(uint32_t) const { return {}; }
QString Attribute::ParameterValue(uint32_t) const { return {}; }
bool Attribute::SetParameterValue(uint32_t, const QString&) { return false; }

void Attribute::SetCategory(const QString& newCategory, bool startsClosed) {
    category = newCategory;
    collapsed = startsClosed;
}

void Attribute::Connect(Attribute& newSource, bool silent) { newSource.AddTarget(*this, silent); }

void Attribute::Disconnect() {
    if (source == nullptr) return;
    std::erase(source->targets, this);
    source = nullptr;
}

Attribute* Attribute::Target(uint32_t index) const {
    return index < targets.size() ? targets[index] : nullptr;
}

QWidget* CreateNewBoolWidget(QWidget*, int, AttributeInstance<bool>*) { return nullptr; }

AttributeFloatRange::AttributeFloatRange(
    Node* holder, const QString& key, float low, float high, float initial, int shownDecimals)
    : AttributeInstance<float>(holder, key, WithinRange(initial, low, high)),
      minimum(low),
      maximum(high),
      decimals(shownDecimals) {}

void AttributeFloatRange::SetValue(const float& newValue, bool silent) {
    AttributeInstance<float>::SetValue(WithinRange(newValue, minimum, maximum), silent);
}

uint32_t AttributeFloatRange::ParameterCount() const { return 2; }

QString AttributeFloatRange::ParameterName(uint32_t index) const {
    if (index > 1) return {};
    return index == 0 ? QStringLiteral("minimum") : QStringLiteral("maximum");
}

QString AttributeFloatRange::ParameterValue(uint32_t index) const {
    if (index > 1) return {};
    return AttributeValue<float>::ToText(index == 0 ? minimum : maximum);
}

const AttributeFloatRange& AttributeFloatRange::operator=(const AttributeFloatRange& other) {
    minimum = other.minimum;
    maximum = other.maximum;
    decimals = other.decimals;
    SetValue(other.value, true);
    return *this;
}

Stream& operator<<(Stream& stream, AttributeFloatRange& attribute) {
    attribute.Serialize(stream);
    // A file may contain a value outside the attribute's range.
    if (!stream.IsStoring()) attribute.SetValue(attribute.Value(), true);
    return stream;
}

}  // namespace trovik
