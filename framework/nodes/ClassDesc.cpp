// SPDX-License-Identifier: Apache-2.0
#include "host/ClassDesc.h"

#include <algorithm>
#include <vector>

namespace trovik {

namespace {

// Never destroyed: libraries may unregister their descriptors until the process ends.
std::vector<const ClassDesc*>& Registry() {
    static auto* registry = new std::vector<const ClassDesc*>;
    return *registry;
}

}  // namespace

ClassDesc::ClassDesc(const ClassDesc* above,
                     const ClassDesc* aboveInLists,
                     const QString& className,
                     const QString& shownName,
                     Node* (*make)(unsigned),
                     int classFlags,
                     int classVersion)
    : parent(above),
      displayParent(aboveInLists),
      name(className),
      displayName(shownName),
      factory(make),
      flags(classFlags),
      version(classVersion) {
    Registry().push_back(this);
}

ClassDesc::~ClassDesc() { std::erase(Registry(), this); }

bool ClassDesc::IsDerivedFrom(const ClassDesc* base) const {
    for (const ClassDesc* at = this; at != nullptr; at = at->parent)
        if (at == base) return true;
    return false;
}

const ClassDesc* ClassDesc::ByName(const QString& name) {
    for (const ClassDesc* desc : Registry())
        if (desc->name == name) return desc;
    return nullptr;
}

unsigned ClassDesc::Count() { return static_cast<unsigned>(Registry().size()); }
const ClassDesc* ClassDesc::At(unsigned index) {
    return index < Registry().size() ? Registry()[index] : nullptr;
}

}  // namespace trovik
