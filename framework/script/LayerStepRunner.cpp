// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/LayerSteps.h"
#include "framework/errors/HostError.h"
#include "framework/script/ScriptRunner.h"

namespace trovik {

// One step of a script is one step of undo, whatever it does.
void ScriptRunner::RunLayer(const FieldReader& layer) {
    LevelGeometry& geometry = document->Geometry();
    const LayerStack& stack = geometry.Layers();
    const std::size_t stepsBefore = geometry.History().Position();
    const auto push = [&](std::unique_ptr<UndoStep> step) {
        document->Push(std::move(step), geometry.History().Position() != stepsBefore);
    };
    const auto named = [&](const FieldReader& name) {
        auto found = stack.Find(*geometry.Bound(), name.Text());
        if (found == nullptr) name.Fail("the bound level has no layer \"" + name.Text() + "\"");
        return found;
    };
    if (layer.Has("add")) push(AddLayerAsStep(geometry, layer.At("add").Text()));
    if (layer.Has("select")) {
        const FieldReader name = layer.At("select");
        const bool isNone = name.Json().is_null() || name.Text().empty();
        push(SelectLayerAsStep(geometry, isNone ? nullptr : named(name).get()));
    }

    bool changes = false;
    for (const char* field : {"duplicate",
                              "name",
                              "strength",
                              "visible",
                              "writable",
                              "order",
                              "erase",
                              "mergeDown",
                              "remove"})
        changes = changes || layer.Has(field);
    if (!changes) return;
    auto changed = layer.Has("of") ? named(layer.At("of")) : stack.Shared(document->ActiveLayer());
    if (changed == nullptr) layer.Fail("no layer is active on the bound level");
    try {
        ChangeLayer(layer, changed, push);
    } catch (const HostError& error) {
        layer.Fail(error.what());
    }
}

void ScriptRunner::ChangeLayer(const FieldReader& layer,
                               std::shared_ptr<SculptLayer> changed,
                               const std::function<void(std::unique_ptr<UndoStep>)>& push) {
    LevelGeometry& geometry = document->Geometry();
    if (layer.Has("duplicate")) {
        push(DuplicateLayerAsStep(geometry, *changed, layer.At("duplicate").Text()));
        changed = geometry.Layers().Shared(document->ActiveLayer());
    }
    SculptLayer::Properties given = changed->Given();
    given.name = layer.TextOr("name", given.name);
    given.strength = layer.NumberOr("strength", given.strength);
    given.visible = layer.FlagOr("visible", given.visible);
    given.writable = layer.FlagOr("writable", given.writable);
    push(GiveLayerAsStep(geometry, *changed, given));
    if (layer.Has("order")) {
        const auto place = static_cast<std::size_t>(layer.At("order").Integer());
        push(MoveLayerAsStep(geometry, *changed, place));
    }
    if (layer.FlagOr("erase", false)) push(EraseLayerByFreezeAsStep(geometry, *changed));
    if (layer.FlagOr("mergeDown", false)) {
        push(MergeLayerDownAsStep(geometry, *changed));
    } else if (layer.FlagOr("remove", false)) {
        push(RemoveLayerAsStep(geometry, *changed));
    }
}

}  // namespace trovik
