// SPDX-License-Identifier: Apache-2.0
#include "host/Preferences.h"

#include "framework/nodes/PreferenceFile.h"

#include <map>
#include <memory>
#include <string>

namespace trovik {

namespace {

/// Owner of all preference attributes.
class PreferenceNode : public Node {
public:
    std::map<std::string, std::unique_ptr<Attribute>> byKey;
};

// Never destroyed: libraries read their preferences up to their unloading.
PreferenceNode& TheNode() {
    static auto* node = new PreferenceNode;
    return *node;
}

/// The attribute of the key, made with `make` when the key is new.
template <typename A, typename Make>
A* Register(const QString& key, const QString& categoryLabel, Make make) {
    std::unique_ptr<Attribute>& entry = TheNode().byKey[key.toStdString()];
    if (auto* known = dynamic_cast<A*>(entry.get())) return known;
    auto made = make();
    made->SetCategory(categoryLabel, false);
    A* attribute = made.get();
    entry = std::move(made);
    return attribute;
}

}  // namespace

namespace Preferences {

Bool::Bool(const QString& key, const QString&, const QString&, const QString& categoryLabel,
           bool value, bool)
    : attribute(Register<AttributeInstance<bool>>(key, categoryLabel, [&] {
          return std::make_unique<AttributeInstance<bool>>(&TheNode(), key, value);
      })) {}

Float::Float(const QString& key, const QString&, const QString&, const QString& categoryLabel,
             float value, float minimum, float maximum, bool)
    : attribute(Register<AttributeFloatRange>(key, categoryLabel, [&] {
          return std::make_unique<AttributeFloatRange>(&TheNode(), key, minimum, maximum, value,
                                                       2);
      })) {}

}  // namespace Preferences

Attribute* FindPreference(const std::string& key) {
    const auto found = TheNode().byKey.find(key);
    return found == TheNode().byKey.end() ? nullptr : found->second.get();
}

std::vector<std::string> PreferenceKeys() {
    std::vector<std::string> keys;
    for (const auto& [key, attribute] : TheNode().byKey) keys.push_back(key);
    return keys;
}

}  // namespace trovik
