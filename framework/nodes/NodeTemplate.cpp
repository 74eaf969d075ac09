// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/NodeTemplate.h"

#include "framework/nodes/AttributeAccess.h"

#include <map>
#include <utility>

namespace trovik {

namespace {

// Keyed by class name, because a library that is unloaded and loaded again has new descriptor
// objects.
using TemplateKey = std::pair<QString, QString>;
using TemplateValues = std::vector<std::pair<QString, QString>>;

std::map<TemplateKey, TemplateValues>& Templates() {
    static auto* templates = new std::map<TemplateKey, TemplateValues>;
    return *templates;
}

}  // namespace

void StoreTemplate(const Node& node, const QString& name) {
    TemplateValues values;
    for (const Attribute* attribute : node.Attributes()) {
        if (attribute->Source() == nullptr)
            values.emplace_back(attribute->Name(), attribute->AsString());
    }
    Templates()[{node.RuntimeClass()->Name(), name}] = std::move(values);
}

bool RemoveTemplate(const ClassDesc* classDesc, const QString& name) {
    return Templates().erase({classDesc->Name(), name}) != 0;
}

void Node::LoadTemplate(const QString& templateName, bool silent) {
    const auto found = Templates().find({RuntimeClass()->Name(), templateName});
    if (found == Templates().end()) return;
    for (const auto& [key, text] : found->second) {
        Attribute* attribute = AttributeByName(key);
        if (attribute != nullptr && attribute->Source() == nullptr)
            SetAttributeText(*attribute, text, silent);
    }
}

}  // namespace trovik
