// SPDX-License-Identifier: Apache-2.0
#include "framework/script/Command.h"

#include <algorithm>
#include <cassert>
#include <string_view>
#include <utility>

namespace trovik {

namespace {

// Constants in other files register themselves while the library is being loaded, in an unspecified
// order.
std::vector<CommandEntry>& Table() {
    static std::vector<CommandEntry> table;
    return table;
}

bool IsBefore(const CommandTraits& a, const CommandTraits& b) {
    if (a.isFirst != b.isFirst) return a.isFirst;
    return std::string_view(a.name) < std::string_view(b.name);
}

}  // namespace

void RegisterCommand(CommandEntry entry) {
    std::vector<CommandEntry>& table = Table();
    const auto at = std::lower_bound(
        table.begin(), table.end(), entry, [](const CommandEntry& a, const CommandEntry& b) {
            return IsBefore(a.traits, b.traits);
        });
    assert(at == table.end() || std::string_view(at->traits.name) != entry.traits.name);
    table.insert(at, std::move(entry));
}

const std::vector<CommandEntry>& Commands() { return Table(); }

const CommandEntry* FindCommand(const std::string& name) {
    for (const CommandEntry& entry : Commands())
        if (name == entry.traits.name) return &entry;
    return nullptr;
}

}  // namespace trovik
