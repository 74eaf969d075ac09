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

/// Owner of all preference attributes. A key stands for one preference of each kind of value;
/// should two libraries disagree on the kind, each keeps an attribute of its own.
class PreferenceNode : public Node {
public:
    PreferenceNode() { SetName(QStringLiteral("Preferences")); }

    std::map<std::pair<std::string, int>, Entry> byKey;
    std::map<std::string, std::string> unclaimed;
};

// Never destroyed: libraries read their preferences up to their unloading.
PreferenceNode& TheNode() {
    static auto* node = new PreferenceNode;
    return *node;
}

const Entry* FindEntry(const std::string& key) {
    const auto found = TheNode().byKey.lower_bound({key, 0});
    return found == TheNode().byKey.end() || found->first.first != key ? nullptr : &found->second;
}

/// The attribute of the key, made with `make` when the key is new. A value that was loaded before
/// the key was known is taken up now.
template <typename A, typename T, typename Make>
A* Register(const QString& key, PreferenceInfo info, Make make) {
    Entry& entry = TheNode().byKey[{key.toStdString(), AttributeValue<T>::type}];
    if (entry.attribute != nullptr) return static_cast<A*>(entry.attribute.get());
    auto made = make();
    made->SetCategory(info.categoryLabel, false);
    A* attribute = made.get();
    entry.attribute = std::move(made);
    entry.info = std::move(info);
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
    : attribute(Register<AttributeInstance<bool>, bool>(
          key, {category, label, categoryLabel, advanced}, [&] {
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
    : attribute(Register<AttributeFloatRange, float>(
          key, {category, label, categoryLabel, advanced}, [&] {
              return std::make_unique<AttributeFloatRange>(
                  &TheNode(), key, minimum, maximum, value, 2);
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
    for (const auto& [key, entry] : TheNode().byKey) {
        if (keys.empty() || keys.back() != key.first) keys.push_back(key.first);
    }
    return keys;
}

std::map<std::string, std::string>& UnclaimedPreferences() { return TheNode().unclaimed; }

}  // namespace trovik
