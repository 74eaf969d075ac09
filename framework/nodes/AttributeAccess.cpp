// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/AttributeAccess.h"

namespace trovik {

namespace {

template <typename T>
bool Copy(const Attribute& from, Attribute& to, bool silent) {
    static_cast<AttributeInstance<T>&>(to).SetValue(
        static_cast<const AttributeInstance<T>&>(from).Value(), silent);
    return true;
}

template <typename T>
bool SetText(Attribute& attribute, const QString& text, bool silent) {
    auto& typed = static_cast<AttributeInstance<T>&>(attribute);
    T parsed = typed.Value();
    if (!AttributeValue<T>::FromText(text, parsed)) return false;
    typed.SetValue(parsed, silent);
    return true;
}

}  // namespace

bool CopyAttributeValue(const Attribute& from, Attribute& to, bool silent) {
    if (from.attributeType() != to.attributeType() || to.Source() != nullptr) return false;
    switch (from.attributeType()) {
        case AttributeValue<int>::type:
            return Copy<int>(from, to, silent);
        case AttributeValue<float>::type:
            return Copy<float>(from, to, silent);
        case AttributeValue<bool>::type:
            return Copy<bool>(from, to, silent);
        case AttributeValue<QString>::type:
            return Copy<QString>(from, to, silent);
        case AttributeValue<CheckableFloat>::type:
            return Copy<CheckableFloat>(from, to, silent);
        default:
            return false;
    }
}

bool SetAttributeText(Attribute& attribute, const QString& text, bool silent) {
    switch (attribute.attributeType()) {
        case AttributeValue<int>::type:
            return SetText<int>(attribute, text, silent);
        case AttributeValue<float>::type:
            return SetText<float>(attribute, text, silent);
        case AttributeValue<bool>::type:
            return SetText<bool>(attribute, text, silent);
        case AttributeValue<QString>::type:
            return SetText<QString>(attribute, text, silent);
        case AttributeValue<CheckableFloat>::type:
            return SetText<CheckableFloat>(attribute, text, silent);
        default:
            return false;
    }
}

}  // namespace trovik
