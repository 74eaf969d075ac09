// SPDX-License-Identifier: Apache-2.0
#include "framework/edits/LayerSteps.h"
#include "framework/script/Command.h"

namespace trovik {

namespace {

struct LayerParameters {
    std::optional<std::string> add;
    /// Null or an empty name deactivates all layers.
    std::optional<std::variant<std::string, std::nullptr_t>> select;
    /// The layer to change instead of the active one.
    std::optional<std::string> of;
    std::optional<std::string> duplicate;
    std::optional<std::string> name;
    std::optional<float> strength;
    std::optional<bool> visible;
    std::optional<bool> writable;
    std::optional<int> order;
    std::optional<Yes> erase;
    std::optional<Yes> mergeDown;
    std::optional<Yes> remove;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("add", add);
        visit("select", select);
        visit("of", of);
        visit("duplicate", duplicate);
        visit("name", name);
        visit("strength", strength);
        visit("visible", visible);
        visit("writable", writable);
        visit("order", order);
        visit("erase", erase);
        visit("mergeDown", mergeDown);
        visit("remove", remove);
    }

    bool ChangesLayer() const {
        return duplicate || name || strength || visible || writable || order || erase ||
               mergeDown || remove;
    }
};

using PushStep = std::function<void(std::unique_ptr<UndoStep>)>;

void Change(Document& document,
            const LayerParameters& parameters,
            std::shared_ptr<SculptLayer> layer,
            const PushStep& push) {
    LevelGeometry& geometry = document.Geometry();
    if (parameters.duplicate) {
        push(DuplicateLayerAsStep(geometry, *layer, *parameters.duplicate));
        layer = geometry.Layers().Shared(document.ActiveLayer());
    }
    SculptLayer::Properties given = layer->UserProperties();
    given.name = parameters.name.value_or(given.name);
    given.strength = parameters.strength.value_or(given.strength);
    given.visible = parameters.visible.value_or(given.visible);
    given.writable = parameters.writable.value_or(given.writable);
    push(SetLayerPropertiesAsStep(geometry, *layer, given));
    if (parameters.order)
        push(MoveLayerAsStep(geometry, *layer, static_cast<std::size_t>(*parameters.order)));
    if (parameters.erase) push(EraseLayerByFreezeAsStep(geometry, *layer));
    if (parameters.mergeDown) {
        push(MergeLayerDownAsStep(geometry, *layer));
    } else if (parameters.remove) {
        push(RemoveLayerAsStep(geometry, *layer));
    }
}

// One step of a script is one undo step, whatever it changes.
void Layer(CommandContext& context, const LayerParameters& parameters) {
    Document& document = context.document;
    LevelGeometry& geometry = document.Geometry();
    const LayerStack& stack = geometry.Layers();
    const std::size_t stepsBefore = geometry.History().Position();
    const PushStep push = [&](std::unique_ptr<UndoStep> step) {
        document.Push(std::move(step), geometry.History().Position() != stepsBefore);
    };
    const auto named = [&](const std::string& name, const char* pointer) {
        auto found = stack.Find(*geometry.Bound(), name);
        if (found == nullptr)
            throw FieldFault(pointer, "the bound level has no layer \"" + name + "\"");
        return found;
    };
    if (parameters.add) push(AddLayerAsStep(geometry, *parameters.add));
    if (parameters.select) {
        const auto* name = std::get_if<std::string>(&*parameters.select);
        const bool isNone = name == nullptr || name->empty();
        push(SelectLayerAsStep(geometry, isNone ? nullptr : named(*name, "/select").get()));
    }
    if (!parameters.ChangesLayer()) return;
    const auto layer =
        parameters.of ? named(*parameters.of, "/of") : stack.Shared(document.ActiveLayer());
    if (layer == nullptr) throw FieldFault("", "no layer is active on the bound level");
    AtField("", [&] { Change(document, parameters, layer, push); });
}

const CommandRegistration<LayerParameters> layerCommand({.name = "layer"}, Layer);

}  // namespace

}  // namespace trovik
