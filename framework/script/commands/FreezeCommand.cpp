// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeFilters.h"
#include "framework/io/Base64.h"
#include "framework/multires/Steps.h"
#include "framework/script/commands/FreezeParameters.h"

#include <algorithm>

namespace trovik {

namespace {

/// Returns the given fields that select an operation; "center" and "min" each require a second
/// field.
std::vector<std::string> FieldsGiven(const FreezeChoice& choice) {
    const std::pair<const char*, bool> fields[] = {{"all", choice.all.has_value()},
                                                   {"center", choice.center.has_value()},
                                                   {"min", choice.min.has_value()},
                                                   {"box", choice.box.has_value()},
                                                   {"lasso", choice.lasso.has_value()},
                                                   {"image", choice.image.has_value()},
                                                   {"cavity", choice.cavity.has_value()},
                                                   {"component", choice.component.has_value()},
                                                   {"group", choice.group.has_value()},
                                                   {"values", choice.values.has_value()},
                                                   {"grow", choice.grow.has_value()},
                                                   {"shrink", choice.shrink.has_value()},
                                                   {"blur", choice.blur.has_value()},
                                                   {"sharpen", choice.sharpen.has_value()}};
    std::vector<std::string> given;
    for (const auto& [name, isGiven] : fields)
        if (isGiven) given.emplace_back(name);
    return given;
}

/// The field that selects the operation. \throw FieldFault unless there is exactly one.
std::string WhatOf(const FreezeChoice& choice) {
    const std::vector<std::string> found = FieldsGiven(choice);
    if (found.size() > 1) {
        throw FieldFault("",
                         "\"" + found[0] + "\" and \"" + found[1] +
                             "\" cannot be combined; a step needs exactly one of them");
    }
    std::string what = found.empty() ? "" : found[0];
    if (what.empty() || (what == "center" && !choice.radius) || (what == "min" && !choice.max)) {
        throw FieldFault(
            "",
            "needs \"center\" and \"radius\", \"min\" and \"max\", or one of \"all\", \"box\", "
            "\"lasso\", \"image\", \"cavity\", \"component\", \"group\", \"values\", \"grow\", "
            "\"shrink\", \"blur\", \"sharpen\"");
    }
    return what;
}

struct Filter {
    const std::optional<uint32_t>& times;
    const char* name;
    std::vector<uint8_t> (*run)(const LevelMesh& level, uint32_t times);
};

/// Returns the amounts of the field "values", one per vertex.
std::vector<uint8_t> GivenAmounts(const LevelMesh& level, const FreezeChoice& choice) {
    std::vector<uint8_t> amounts;
    if (const auto* text = std::get_if<std::string>(&*choice.values))
        amounts = AtField("/values", [&] { return DecodeBase64(*text); });
    else
        for (const uint32_t value : std::get<std::vector<uint32_t>>(*choice.values))
            amounts.push_back(static_cast<uint8_t>(std::min(value, uint32_t{0xff})));
    if (amounts.size() != level.VertexCount()) {
        throw FieldFault("/values",
                         "expected one amount for each of the " +
                             std::to_string(level.VertexCount()) + " vertices, got " +
                             std::to_string(amounts.size()));
    }
    const auto wrong = std::find_if(
        amounts.begin(), amounts.end(), [](uint8_t one) { return one > freezeAmountMask; });
    if (wrong != amounts.end()) {
        throw FieldFault("/values",
                         "the amount of vertex " + std::to_string(wrong - amounts.begin()) +
                             " is not from 0 to 127");
    }
    return amounts;
}

/// Blends the amounts of the field "values" into the mask. \return false if the step has none.
bool SetValues(CommandContext& context, const FreezeChoice& choice, float amount) {
    if (!choice.values) return false;
    std::vector<uint8_t> amounts = GivenAmounts(*context.document.Geometry().Bound(), choice);
    if (amount != 1.0f)
        amounts = InterpolatedFreeze(std::vector<uint8_t>(amounts.size(), 0), amounts, amount);
    context.document.Freeze(amounts, choice.mode.value_or(FreezeMode::Replace));
    return true;
}

/// Applies one of the filters to the mask. \return false if the step has none.
bool RunFilter(CommandContext& context, const FreezeChoice& choice, float amount) {
    const Filter filters[] = {{choice.grow, "grow", GrownFreeze},
                              {choice.shrink, "shrink", ShrunkFreeze},
                              {choice.blur, "blur", BlurredFreeze},
                              {choice.sharpen, "sharpen", SharpenedFreeze}};
    const LevelMesh& level = *context.document.Geometry().Bound();
    for (const Filter& filter : filters) {
        if (!filter.times) continue;
        if (level.FrozenVertexCount() == 0)
            context.Warn(std::string("no vertex is frozen, so there is nothing to ") + filter.name);
        context.document.Freeze(
            InterpolatedFreeze(FreezeAmounts(level), filter.run(level, *filter.times), amount),
            choice.mode.value_or(FreezeMode::Replace));
        return true;
    }
    return false;
}

void FreezeWhole(Document& document, FreezeWhat what) {
    const LevelMesh& level = *document.Geometry().Bound();
    std::vector<uint8_t> amounts(level.VertexCount(), 0);
    if (what == FreezeWhat::All)
        amounts.assign(level.VertexCount(), freezeAmountMask);
    else if (what == FreezeWhat::Invert)
        amounts = InvertedFreeze(level);
    document.Freeze(amounts, FreezeMode::Replace);
}

void Freeze(CommandContext& context, const FreezeParameters& parameters) {
    Document& document = context.document;
    if (document.IsFreezing() && document.Loop().IsActive())
        throw FieldFault("", "a stroke of the freeze brush is open; end it first");
    if (const auto* what = std::get_if<FreezeWhat>(&parameters)) {
        FreezeWhole(document, *what);
        return;
    }
    const auto& choice = std::get<FreezeChoice>(parameters);
    WhatOf(choice);
    const float amount = choice.amount.value_or(1.0f);
    if (RunFilter(context, choice, amount) || SetValues(context, choice, amount)) return;
    const std::vector<uint8_t> amounts = FreezeAmountsOf(FreezeWeights(context, choice), amount);
    if (std::all_of(amounts.begin(), amounts.end(), [](uint8_t one) { return one == 0; }))
        context.Warn("no vertex is selected");
    document.Freeze(amounts, choice.mode.value_or(FreezeMode::Raise));
}

void CheckFreeze(CommandContext& context, const FreezeParameters& parameters) {
    const auto* choice = std::get_if<FreezeChoice>(&parameters);
    if (choice == nullptr) return;
    WhatOf(*choice);
    if (choice->component) choice->component->RequireOne();
    if (choice->image && !context.files.IsWritten(choice->image->file))
        ReadFreezeImage(context, choice->image->file);
}

const CommandRegistration<FreezeParameters> mask({.name = "mask",
                                                  .duringStroke = DuringStroke::Allowed,
                                                  .inputs = {{"/image/file"}},
                                                  .traceName = "freeze"},
                                                 Freeze,
                                                 CheckFreeze);

}  // namespace

}  // namespace trovik
