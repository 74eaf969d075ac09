// SPDX-License-Identifier: Apache-2.0
#include "host/Preferences.h"

#include "framework/nodes/AttributeAccess.h"
#include "framework/nodes/PreferenceFile.h"

#include <map>
#include <memory>
#include <utility>

namespace trovik {

namespace {

struct Entry {
    std::unique_ptr<Attribute> attribute;
    PreferenceInfo info;
};

/// Owns all preference attributes. If two libraries register the same key with different value
/// types, each gets its own attribute, and the file stores the value of the first one.
class PreferenceNode : public Node {
public:
    PreferenceNode() { SetName(QStringLiteral("Preferences")); }

    /// The registered attributes by key, in the order of registration.
    std::map<std::string, std::vector<Entry>> byKey;
    std::map<std::string, std::string> unclaimed;
};

// Never destroyed: libraries read their preferences until they are unloaded.
PreferenceNode& TheNode() {
    static auto* node = new PreferenceNode;
    return *node;
}

const Entry* FindEntry(const std::string& key) {
    const auto found = TheNode().byKey.find(key);
    return found == TheNode().byKey.end() ? nullptr : &found->second.front();
}

/// Returns the key's attribute of type A, and creates it with `make` if there is none. A value that
/// was loaded before the key was registered is then applied.
template <typename A, typename Make>
A* Register(const QString& key, PreferenceInfo info, Make make) {
    std::vector<Entry>& entries = TheNode().byKey[key.toStdString()];
    for (const Entry& entry : entries)
        if (auto* known = dynamic_cast<A*>(entry.attribute.get())) return known;
    auto made = make();
    made->SetCategory(info.categoryLabel, false);
    A* attribute = made.get();
    entries.push_back({std::move(made), std::move(info)});
    const auto stored = TheNode().unclaimed.find(key.toStdString());
    if (stored != TheNode().unclaimed.end()) {
        SetAttributeText(*attribute, QString::fromStdString(stored->second), true);
        TheNode().unclaimed.erase(stored);
    }
    return attribute;
}

}  // namespace

namespace Preferences {

Bool::Bool(const QString& key,
           const QString& category,
           const QString& label,
           const QString& categoryLabel,
           bool value,
           bool advanced)
    : attribute(
          Register<AttributeInstance<bool>>(key, {category, label, categoryLabel, advanced}, [&] {
              return std::make_unique<AttributeInstance<bool>>(&TheNode(), key, value);
          })) {}

Float::Float(const QString& key,
             const QString& category,
             const QString& label,
             const QString& categoryLabel,
             float value,
             float minimum,
             float maximum,
             bool advanced)
    : attribute(Register<AttributeFloatRange>(key, {category, label, categoryLabel, advanced}, [&] {
          return std::make_unique<AttributeFloatRange>(&TheNode(), key, minimum, maximum, value, 2);
      })) {}

}  // namespace Preferences

Attribute* FindPreference(const std::string& key) {
    const Entry* entry = FindEntry(key);
    return entry == nullptr ? nullptr : entry->attribute.get();
}

const PreferenceInfo* FindPreferenceInfo(const std::string& key) {
    const Entry* entry = FindEntry(key);
    return entry == nullptr ? nullptr : &entry->info;
}

std::vector<std::string> PreferenceKeys() {
    std::vector<std::string> keys;
    for (const auto& [key, entries] : TheNode().byKey) keys.push_back(key);
    return keys;
}

std::map<std::string, std::string>& PendingPreferences() { return TheNode().unclaimed; }

}  // namespace trovik
