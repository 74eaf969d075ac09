// SPDX-License-Identifier: Apache-2.0

/// \file Commands that hide and show faces: "hide", "show", "isolate" and "invertVisibility".
#include "framework/freeze/FreezeParts.h"
#include "framework/script/Command.h"
#include "framework/script/commands/FreezeParameters.h"
#include "framework/script/commands/ViewArea.h"
#include "framework/strokes/StrokePath.h"

#include <algorithm>

namespace trovik {

namespace {

struct ComponentParameters {
    std::optional<uint64_t> face;
    std::optional<Vector> surface;
    std::optional<std::array<float, 2>> pointer;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("face", face);
        visit("surface", surface);
        visit("pointer", pointer);
    }
};

/// Exactly one of the fields up to `hidden` selects the faces.
struct FaceParameters {
    std::optional<float> mask;
    std::optional<NameOrNone> group;
    std::optional<NameOrNone> material;
    std::optional<ComponentParameters> component;
    std::optional<std::vector<std::array<float, 2>>> lasso;
    std::optional<std::array<float, 4>> box;
    std::optional<ViewReach> reach;
    std::optional<std::vector<std::array<uint64_t, 2>>> faces;
    std::optional<Yes> hidden;
    std::optional<uint32_t> grow;
    std::optional<uint32_t> shrink;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("mask", mask);
        visit("group", group);
        visit("material", material);
        visit("component", component);
        visit("lasso", lasso);
        visit("box", box);
        visit("reach", reach);
        visit("faces", faces);
        visit("hidden", hidden);
        visit("grow", grow);
        visit("shrink", shrink);
    }
};

void CheckChoice(const FaceParameters& choice) {
    const std::pair<const char*, bool> ways[] = {{"mask", choice.mask.has_value()},
                                                 {"group", choice.group.has_value()},
                                                 {"material", choice.material.has_value()},
                                                 {"component", choice.component.has_value()},
                                                 {"lasso", choice.lasso.has_value()},
                                                 {"box", choice.box.has_value()},
                                                 {"faces", choice.faces.has_value()},
                                                 {"hidden", choice.hidden.has_value()}};
    const char* chosen = nullptr;
    for (const auto& [name, isGiven] : ways) {
        if (!isGiven) continue;
        if (chosen != nullptr) {
            throw FieldFault("",
                             std::string("\"") + chosen + "\" and \"" + name +
                                 "\" cannot be combined; a step needs exactly one of them");
        }
        chosen = name;
    }
    if (chosen == nullptr) {
        throw FieldFault("",
                         "needs one of \"mask\", \"group\", \"material\", \"component\", "
                         "\"lasso\", \"box\", \"faces\", \"hidden\"");
    }
    if (!choice.component) return;
    const int fields = (choice.component->face ? 1 : 0) + (choice.component->surface ? 1 : 0) +
                       (choice.component->pointer ? 1 : 0);
    if (fields != 1)
        throw FieldFault("/component", "needs one of \"face\", \"surface\", \"pointer\"");
}

uint32_t FaceOf(uint64_t face, const LevelMesh& level, const std::string& pointer) {
    if (face >= level.faceCount) {
        throw FieldFault(pointer,
                         "there is no face " + std::to_string(face) + "; the level has " +
                             std::to_string(level.faceCount));
    }
    return static_cast<uint32_t>(face);
}

FaceChoice OfComponent(Document& document, const ComponentParameters& component) {
    const LevelGeometry& geometry = document.Geometry();
    if (component.face) {
        return FacesOfComponent(geometry,
                                FaceOf(*component.face, *geometry.Bound(), "/component/face"));
    }
    std::optional<PickHit> hit;
    if (component.surface) {
        hit = HitNear(geometry, document.Tree(), *component.surface);
    } else {
        const ViewPoint point = PointOf(*component.pointer);
        hit = HitThrough(geometry, document.Tree(), document.View(), {point.x, point.y, 0.0f});
    }
    if (!hit) throw FieldFault("/component", "there is no visible surface at this position");
    return FacesOfComponent(geometry, hit->face);
}

FaceChoice OfNumbers(const LevelMesh& level, const std::vector<std::array<uint64_t, 2>>& runs) {
    FaceChoice chosen(level.faceCount);
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const std::string pointer = "/faces/" + std::to_string(i);
        const uint32_t first = FaceOf(runs[i][0], level, pointer + "/0");
        const uint64_t count = runs[i][1];
        if (count > level.faceCount - first) {
            throw FieldFault(pointer + "/1",
                             "there are only " + std::to_string(level.faceCount - first) +
                                 " faces from face " + std::to_string(first) + " to the end");
        }
        std::fill_n(chosen.begin() + first, count, uint8_t{1});
    }
    return chosen;
}

FaceChoice Chosen(Document& document, const FaceParameters& choice) {
    const LevelGeometry& geometry = document.Geometry();
    const LevelMesh& level = *geometry.Bound();
    if (choice.mask) return FacesByMask(level, std::max<uint8_t>(FreezeAmountOf(*choice.mask), 1));
    const SurfaceAttributes& attributes = geometry.Attributes();
    if (choice.group)
        return FacesOfGroup(geometry, NumberOf(*choice.group, attributes.groupNames, "group"));
    if (choice.material) {
        return FacesOfMaterial(geometry,
                               NumberOf(*choice.material, attributes.materialNames, "material"));
    }
    if (choice.component) return OfComponent(document, *choice.component);
    if (choice.lasso || choice.box) {
        return FacesInView(geometry,
                           document.Tree(),
                           document.View(),
                           choice.reach.value_or(ViewReach::Visible),
                           InsideOf(choice.box, choice.lasso));
    }
    if (choice.faces) return OfNumbers(level, *choice.faces);
    return HiddenFaces(level);
}

void WarnIfAllHidden(CommandContext& context) {
    const LevelMesh& level = *context.document.Geometry().Bound();
    if (level.HiddenFaceCount() == level.faceCount) context.Warn("every face is hidden");
}

template <VisibilityChange change>
void Change(CommandContext& context, const FaceParameters& choice) {
    CheckChoice(choice);
    const LevelMesh& level = *context.document.Geometry().Bound();
    FaceChoice chosen =
        GrownChoice(level, Chosen(context.document, choice), choice.grow.value_or(0));
    chosen = ShrunkChoice(level, std::move(chosen), choice.shrink.value_or(0));
    if (std::find(chosen.begin(), chosen.end(), 1) == chosen.end())
        context.Warn("no face is selected; nothing is hidden or shown");
    else if (!context.document.ChangeVisibility(change, chosen))
        context.Warn("the faces already have this visibility; nothing is hidden or shown");
    WarnIfAllHidden(context);
}

void Check(CommandContext&, const FaceParameters& choice) { CheckChoice(choice); }

enum class AllFaces { All };

}  // namespace

template <>
struct EnumNames<AllFaces> {
    static constexpr std::pair<const char*, AllFaces> names[] = {{"all", AllFaces::All}};
};

namespace {

using ShowParameters = std::variant<AllFaces, FaceParameters>;

void Show(CommandContext& context, const ShowParameters& parameters) {
    if (const auto* choice = std::get_if<FaceParameters>(&parameters)) {
        Change<VisibilityChange::Show>(context, *choice);
        return;
    }
    if (!context.document.ChangeVisibility(VisibilityChange::ShowAll))
        context.Warn("nothing is hidden");
}

void CheckShow(CommandContext& context, const ShowParameters& parameters) {
    if (const auto* choice = std::get_if<FaceParameters>(&parameters)) Check(context, *choice);
}

void Invert(CommandContext& context, const Yes&) {
    context.document.ChangeVisibility(VisibilityChange::Invert);
    WarnIfAllHidden(context);
}

const CommandRegistration<FaceParameters> hide({.name = "hide"},
                                               Change<VisibilityChange::Hide>,
                                               Check);
const CommandRegistration<FaceParameters> isolate({.name = "isolate"},
                                                  Change<VisibilityChange::Isolate>,
                                                  Check);
const CommandRegistration<ShowParameters> show({.name = "show"}, Show, CheckShow);
const CommandRegistration<Yes> invertVisibility({.name = "invertVisibility"}, Invert);

}  // namespace

}  // namespace trovik
