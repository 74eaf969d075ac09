// SPDX-License-Identifier: Apache-2.0
#include "framework/script/VisibilityStepRunner.h"

#include "framework/freeze/FreezeParts.h"

#include <algorithm>
#include <optional>

namespace trovik {

namespace {

struct Verb {
    const char* name;
    VisibilityChange change;
};
constexpr Verb verbs[] = {{"hide", VisibilityChange::Hide},
                          {"show", VisibilityChange::Show},
                          {"isolate", VisibilityChange::Isolate},
                          {"invertVisibility", VisibilityChange::Invert}};

/// What chooses the faces, by the one field that says so.
constexpr const char* choices[] = {
    "mask", "group", "material", "component", "lasso", "box", "faces", "hidden"};

constexpr const char* componentFields = "needs one of \"face\", \"surface\", \"pointer\"";

std::string WhatOf(const FieldReader& choice) {
    std::string what;
    for (const char* name : choices) {
        if (!choice.Has(name)) continue;
        if (!what.empty()) {
            choice.Fail("\"" + what + "\" and \"" + name +
                        "\" are two choices; a step chooses faces by one");
        }
        what = name;
    }
    if (what.empty()) {
        choice.Fail(
            "needs one of \"mask\", \"group\", \"material\", \"component\", \"lasso\", \"box\", "
            "\"faces\", \"hidden\"");
    }
    return what;
}

void CheckChoice(const FieldReader& choice) {
    if (!choice.Json().is_object()) return;
    const std::string what = WhatOf(choice);
    if (what != "component") return;
    const FieldReader component = choice.At("component");
    int fields = 0;
    for (const char* name : {"face", "surface", "pointer"}) fields += component.Has(name) ? 1 : 0;
    if (fields != 1) component.Fail(componentFields);
}

ViewPlace PlaceOf(const FieldReader& numbers) {
    return {numbers.At(std::size_t{0}).Number(), numbers.At(1).Number()};
}

ViewReach ReachOf(const FieldReader& choice) {
    const std::string name = choice.TextOr("reach", "visible");
    if (name == "facing") return ViewReach::Facing;
    return name == "through" ? ViewReach::Through : ViewReach::Visible;
}

FaceChoice InView(SculptSession& session,
                  const FieldReader& choice,
                  const std::function<bool(const ViewPlace&)>& isInside) {
    return FacesInView(
        session.Geometry(), session.Tree(), session.View(), ReachOf(choice), isInside);
}

FaceChoice InBox(SculptSession& session, const FieldReader& choice) {
    const FieldReader numbers = choice.At("box");
    const ViewBox box{PlaceOf(numbers), {numbers.At(2).Number(), numbers.At(3).Number()}};
    return InView(session, choice, [&box](const ViewPlace& place) { return box.Holds(place); });
}

FaceChoice InLasso(SculptSession& session, const FieldReader& choice) {
    const FieldReader list = choice.At("lasso");
    std::vector<ViewPlace> corners;
    for (std::size_t i = 0; i < list.Size(); ++i) corners.push_back(PlaceOf(list.At(i)));
    const ViewLasso lasso(std::move(corners));
    return InView(session, choice, [&lasso](const ViewPlace& place) { return lasso.Holds(place); });
}

/// The number of a name in a list of the mesh; of null the number of what has none.
uint32_t NumberOf(const FieldReader& name,
                  const std::vector<std::string>& names,
                  const char* kind) {
    if (name.Json().is_null()) return SurfaceAttributes::none;
    const auto found = std::find(names.begin(), names.end(), name.Text());
    if (found != names.end()) return static_cast<uint32_t>(found - names.begin());
    std::string known;
    for (const std::string& one : names) known += (known.empty() ? "; there are " : ", ") + one;
    name.Fail(std::string("the mesh has no ") + kind + " \"" + name.Text() + "\"" + known);
}

uint32_t FaceOf(const FieldReader& number, const LevelMesh& level) {
    const auto face = number.Json().get<uint64_t>();
    if (face >= level.faceCount) {
        number.Fail("there is no face " + std::to_string(face) + "; the level has " +
                    std::to_string(level.faceCount));
    }
    return static_cast<uint32_t>(face);
}

FaceChoice OfComponent(SculptSession& session, const FieldReader& component) {
    const LevelGeometry& geometry = session.Geometry();
    if (component.Has("face"))
        return FacesOfComponent(geometry, FaceOf(component.At("face"), *geometry.Bound()));
    std::optional<PickHit> hit;
    if (component.Has("surface")) {
        hit = HitNear(geometry, session.Tree(), component.At("surface").ThreeNumbers());
    } else {
        const ViewPlace place = PlaceOf(component.At("pointer"));
        hit = HitThrough(geometry, session.Tree(), session.View(), {place.x, place.y, 0.0f});
    }
    if (!hit) component.Fail("there is no visible surface");
    return FacesOfComponent(geometry, hit->face);
}

FaceChoice OfNumbers(const LevelMesh& level, const FieldReader& runs) {
    FaceChoice chosen(level.faceCount);
    for (std::size_t i = 0; i < runs.Size(); ++i) {
        const FieldReader run = runs.At(i);
        const uint32_t first = FaceOf(run.At(std::size_t{0}), level);
        const auto count = run.At(1).Json().get<uint64_t>();
        if (count > level.faceCount - first) {
            run.At(1).Fail("there are only " + std::to_string(level.faceCount - first) +
                           " faces from number " + std::to_string(first) + " on");
        }
        std::fill_n(chosen.begin() + first, count, uint8_t{1});
    }
    return chosen;
}

FaceChoice Chosen(SculptSession& session, const FieldReader& choice) {
    const LevelGeometry& geometry = session.Geometry();
    const LevelMesh& level = *geometry.Bound();
    const std::string what = WhatOf(choice);
    if (what == "mask") {
        const uint8_t amount = FreezeAmountOf(choice.At("mask").Number());
        return FacesByMask(level, std::max<uint8_t>(amount, 1));
    }
    const SurfaceAttributes& attributes = geometry.Attributes();
    if (what == "group")
        return FacesOfGroup(geometry, NumberOf(choice.At("group"), attributes.groupNames, "group"));
    if (what == "material")
        return FacesOfMaterial(
            geometry, NumberOf(choice.At("material"), attributes.materialNames, "material"));
    if (what == "component") return OfComponent(session, choice.At("component"));
    if (what == "lasso") return InLasso(session, choice);
    if (what == "box") return InBox(session, choice);
    if (what == "faces") return OfNumbers(level, choice.At("faces"));
    return HiddenFaces(level);
}

FaceChoice GrownAndShrunk(const LevelMesh& level, const FieldReader& choice, FaceChoice chosen) {
    chosen =
        GrownChoice(level, std::move(chosen), static_cast<uint32_t>(choice.IntegerOr("grow", 0)));
    return ShrunkChoice(
        level, std::move(chosen), static_cast<uint32_t>(choice.IntegerOr("shrink", 0)));
}

std::string Run(SculptSession& session, VisibilityChange change, const FieldReader& given) {
    if (change == VisibilityChange::Invert) {
        session.ChangeVisibility(change);
    } else if (!given.Json().is_object()) {
        // The schema allows one word: "all".
        if (!session.ChangeVisibility(VisibilityChange::ShowAll)) return "nothing is hidden";
    } else {
        CheckChoice(given);
        const LevelMesh& level = *session.Geometry().Bound();
        const FaceChoice chosen = GrownAndShrunk(level, given, Chosen(session, given));
        if (std::find(chosen.begin(), chosen.end(), 1) == chosen.end())
            return "no face is chosen; nothing is hidden or shown";
        if (!session.ChangeVisibility(change, chosen)) return "no face changes its visibility";
    }
    const LevelMesh& level = *session.Geometry().Bound();
    return level.HiddenFaceCount() == level.faceCount ? "every face is hidden" : "";
}

}  // namespace

std::string RunVisibilityStep(SculptSession& session, const FieldReader& step) {
    for (const Verb& verb : verbs) {
        if (!step.Has(verb.name)) continue;
        session.AnnounceCommand(verb.name);
        return Run(session, verb.change, step.At(verb.name));
    }
    return "";
}

void CheckVisibilityStep(const FieldReader& step) {
    for (const Verb& verb : verbs)
        if (step.Has(verb.name)) CheckChoice(step.At(verb.name));
}

}  // namespace trovik
