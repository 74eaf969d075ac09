// SPDX-License-Identifier: Apache-2.0
#include "framework/pluginhost/ToolCatalogue.h"

#include "host/BrushOperation.h"

#include <iterator>
#include <memory>
#include <vector>

namespace trovik {

namespace {

using Tools = std::vector<std::unique_ptr<BrushConfiguration>>;

// Never destroyed: brushes refer to their catalogue entries until the process ends.
Tools& Catalogue() {
    static auto* rows = new Tools;
    return *rows;
}

/// Tools that were removed; their plug-ins, which stay loaded, may refer to them.
Tools& RemovedTools() {
    static auto* rows = new Tools;
    return *rows;
}

}  // namespace

void BrushOperation::AddConfiguration(BrushConfiguration* configuration) {
    Catalogue().emplace_back(configuration);
}
BrushConfiguration* BrushOperation::Configuration(uint32_t index) {
    return index < Catalogue().size() ? Catalogue()[index].get() : nullptr;
}
uint32_t BrushOperation::ConfigurationCount() { return static_cast<uint32_t>(Catalogue().size()); }

void KeepFirstTools(uint32_t count) {
    Tools& tools = Catalogue();
    const auto first = tools.begin() + count;
    RemovedTools().insert(
        RemovedTools().end(), std::make_move_iterator(first), std::make_move_iterator(tools.end()));
    tools.erase(first, tools.end());
}

}  // namespace trovik
