// SPDX-License-Identifier: Apache-2.0
#include "host/Plugin.h"

#include <vector>

namespace trovik {

namespace {

std::vector<Plugin*>& Registry() {
    static auto* registry = new std::vector<Plugin*>;
    return *registry;
}

}  // namespace

Plugin::Plugin(const QString& pluginName,
               const QString& about,
               const QString& maker,
               const QString& web,
               const QString& built,
               void (*start)())
    : name(pluginName),
      description(about),
      author(maker),
      address(web),
      date(built),
      initialise(start) {
    Registry().push_back(this);
}

Plugin::~Plugin() { std::erase(Registry(), this); }

void Plugin::Initialise() {
    if (initialised) return;
    initialised = true;
    if (initialise != nullptr) initialise();
}

unsigned Plugin::Count() { return static_cast<unsigned>(Registry().size()); }
Plugin* Plugin::At(unsigned index) {
    return index < Registry().size() ? Registry()[index] : nullptr;
}

}  // namespace trovik
