// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/freeze/FreezeCurvature.h"
#include "framework/freeze/FreezeFilters.h"
#include "framework/freeze/FreezeParts.h"
#include "framework/multires/Steps.h"
#include "framework/script/ScriptRunner.h"

#include <algorithm>
#include <iterator>
#include <optional>

namespace trovik {

namespace {

/// What a step does, by the one field that says so; "center" and "min" each need a second field.
constexpr const char* shapes[] = {
    "all", "center", "min", "box", "lasso", "image", "cavity", "shell", "group"};
struct Filter {
    const char* name;
    std::vector<uint8_t> (*run)(const LevelMesh& level, uint32_t times);
};
constexpr Filter filters[] = {{"grow", GrownFreeze},
                              {"shrink", ShrunkFreeze},
                              {"blur", BlurredFreeze},
                              {"sharpen", SharpenedFreeze}};

constexpr const char* shellFields = "needs one of \"vertex\", \"surface\", \"pointer\"";

/// The size of bends that a cavity step looks for, as a share of the mesh's diagonal.
constexpr float cavityShare = 0.02f;

FreezeMode ModeOf(const FieldReader& freeze, FreezeMode otherwise) {
    const std::string name = freeze.TextOr("mode", "");
    if (name == "raise") return FreezeMode::Raise;
    if (name == "replace") return FreezeMode::Replace;
    if (name == "add") return FreezeMode::Add;
    if (name == "subtract") return FreezeMode::Subtract;
    return name == "multiply" ? FreezeMode::Multiply : otherwise;
}

ViewReach ReachOf(const FieldReader& freeze) {
    const std::string name = freeze.TextOr("reach", "visible");
    if (name == "facing") return ViewReach::Facing;
    return name == "through" ? ViewReach::Through : ViewReach::Visible;
}

ViewPlace PlaceOf(const FieldReader& numbers) {
    return {numbers.At(std::size_t{0}).Number(), numbers.At(1).Number()};
}

ViewBox BoxOf(const FieldReader& numbers) {
    return {PlaceOf(numbers), {numbers.At(2).Number(), numbers.At(3).Number()}};
}

/// The field that says what is done. \throw HostError unless there is one.
std::string WhatOf(const FieldReader& freeze) {
    std::vector<std::string> found;
    for (const char* name : shapes)
        if (freeze.Has(name)) found.emplace_back(name);
    for (const Filter& filter : filters)
        if (freeze.Has(filter.name)) found.emplace_back(filter.name);
    if (found.size() > 1) {
        freeze.Fail("\"" + found[0] + "\" and \"" + found[1] +
                    "\" are two things; a step freezes by one");
    }
    std::string what = found.empty() ? "" : found[0];
    const bool isRegion = (what != "center" || freeze.Has("radius")) &&
                          (what != "min" || freeze.Has("max")) && !what.empty();
    if (!isRegion) {
        freeze.Fail(
            "needs \"center\" and \"radius\", \"min\" and \"max\", or one of \"all\", \"box\", "
            "\"lasso\", \"image\", \"cavity\", \"shell\", \"group\", \"grow\", \"shrink\", "
            "\"blur\", "
            "\"sharpen\"");
    }
    return what;
}

}  // namespace

void ScriptRunner::RunFreeze(const FieldReader& freeze) {
    const LevelMesh& level = *document->Geometry().Bound();
    if (document->IsFreezing() && document->Loop().IsActive())
        freeze.Fail("a stroke of the freeze brush is open; end it first");
    if (freeze.Json().is_string()) {
        const std::string what = freeze.Text();
        std::vector<uint8_t> amounts(level.VertexCount(), 0);
        if (what == "all")
            amounts.assign(level.VertexCount(), freezeAmountMask);
        else if (what == "invert")
            amounts = InvertedFreeze(level);
        else if (what != "clear")
            freeze.Fail("expected \"clear\", \"all\" or \"invert\", got \"" + what + "\"");
        document->Freeze(amounts, FreezeMode::Replace);
        return;
    }

    const std::string what = WhatOf(freeze);
    const float amount = freeze.NumberOr("amount", 1.0f);
    const auto filter = std::find_if(std::begin(filters),
                                     std::end(filters),
                                     [&what](const Filter& one) { return what == one.name; });
    if (filter != std::end(filters)) {
        if (level.FrozenVertexCount() == 0) Warn("nothing is frozen that could " + what);
        const auto times = static_cast<uint32_t>(freeze.At(filter->name).Integer());
        document->Freeze(FreezeBetween(FreezeAmounts(level), filter->run(level, times), amount),
                         ModeOf(freeze, FreezeMode::Replace));
        return;
    }
    const std::vector<uint8_t> amounts = FreezeAmountsOf(FreezeShares(freeze, what), amount);
    if (std::all_of(amounts.begin(), amounts.end(), [](uint8_t one) { return one == 0; }))
        Warn("no vertex is selected");
    document->Freeze(amounts, ModeOf(freeze, FreezeMode::Raise));
}

std::vector<float> ScriptRunner::FreezeShares(const FieldReader& freeze, const std::string& what) {
    const LevelGeometry& geometry = document->Geometry();
    if (what == "all") return std::vector<float>(geometry.Bound()->VertexCount(), 1.0f);
    if (what == "image") return SharesOfImage(freeze.At("image"), ReachOf(freeze));
    if (what == "cavity") return SharesOfCavity(freeze.At("cavity"));
    if (what == "shell") return SharesOfShell(*geometry.Bound(), ShellVertex(freeze.At("shell")));
    if (what == "group") {
        const FieldReader group = freeze.At("group");
        if (group.Json().is_null())
            return SharesOfGroup(geometry, geometry.BoundIndex(), SurfaceAttributes::none);
        const auto number = FindGroup(geometry, group.Text());
        if (!number) {
            std::string names;
            for (const std::string& name : geometry.Attributes().groupNames)
                names += (names.empty() ? "; there are " : ", ") + name;
            group.Fail("the mesh has no group \"" + group.Text() + "\"" + names);
        }
        return SharesOfGroup(geometry, geometry.BoundIndex(), *number);
    }
    return SharesOfShape(freeze, what);
}

std::vector<float> ScriptRunner::SharesOfShape(const FieldReader& freeze, const std::string& what) {
    const LevelGeometry& geometry = document->Geometry();
    if (what == "center") {
        return SharesInBall(geometry,
                            freeze.At("center").ThreeNumbers(),
                            freeze.At("radius").Number(),
                            freeze.NumberOr("soft", 0.0f));
    }
    if (what == "min") {
        return SharesInBox(
            geometry, freeze.At("min").ThreeNumbers(), freeze.At("max").ThreeNumbers());
    }
    const auto inView = [&](const std::function<float(const ViewPlace&)>& shareAt) {
        return SharesInView(geometry, document->Tree(), document->View(), ReachOf(freeze), shareAt);
    };
    if (what == "box") {
        const ViewBox box = BoxOf(freeze.At("box"));
        return inView([&box](const ViewPlace& place) { return box.Holds(place) ? 1.0f : 0.0f; });
    }
    std::vector<ViewPlace> corners;
    const FieldReader list = freeze.At("lasso");
    for (std::size_t i = 0; i < list.Size(); ++i) corners.push_back(PlaceOf(list.At(i)));
    const ViewLasso lasso(std::move(corners));
    return inView([&lasso](const ViewPlace& place) { return lasso.Holds(place) ? 1.0f : 0.0f; });
}

void ScriptRunner::CheckFreeze(const FieldReader& freeze) {
    if (freeze.Json().is_string()) return;
    const std::string what = WhatOf(freeze);
    if (what == "shell" && freeze.At("shell").Size() != 1) freeze.At("shell").Fail(shellFields);
    if (what != "image") return;
    const FieldReader file = freeze.At("image").At("file");
    if (!files.IsWritten(file.Text())) ReadImage(file);
}

FloatImage ScriptRunner::ReadImage(const FieldReader& name) const {
    const std::string file = InputPath(name);
    try {
        return ReadImageFile(file);
    } catch (const HostError& error) {
        name.Fail(error.what());
    }
}

std::vector<float> ScriptRunner::SharesOfImage(const FieldReader& image, ViewReach reach) {
    const FloatImage read = ReadImage(image.At("file"));
    const StrokeView& view = document->View();
    ViewBox over{{0.0f, 0.0f}, {static_cast<float>(view.width), static_cast<float>(view.height)}};
    if (image.Has("over")) over = BoxOf(image.At("over"));
    const auto channel = image.TextOr("channel", "luminance") == "alpha"
                             ? ViewImage::Channel::Alpha
                             : ViewImage::Channel::Luminance;
    const ViewImage shown(read, channel, image.FlagOr("invert", false), over);
    return SharesInView(
        document->Geometry(), document->Tree(), view, reach, [&shown](const ViewPlace& place) {
            return shown.ShareAt(place);
        });
}

std::vector<float> ScriptRunner::SharesOfCavity(const FieldReader& cavity) {
    const LevelGeometry& geometry = document->Geometry();
    CurvatureRange range;
    const std::string sign = cavity.TextOr("sign", "cavity");
    if (sign == "ridge") range.sign = BendSign::Ridge;
    if (sign == "both") range.sign = BendSign::Both;
    range.size = cavity.NumberOr("size", Diagonal() * cavityShare);
    range.from = cavity.NumberOr("from", range.from);
    range.to = cavity.NumberOr("to", range.to);
    if (range.from > range.to) cavity.At("from").Fail("lies above \"to\"");
    range.softness = cavity.NumberOr("softness", range.softness);
    range.rings = static_cast<uint32_t>(cavity.IntegerOr("rings", 0));
    return SharesByCurvature(geometry, range);
}

uint32_t ScriptRunner::ShellVertex(const FieldReader& shell) {
    LevelMesh& level = *document->Geometry().Bound();
    if (shell.Size() != 1) shell.Fail(shellFields);
    if (shell.Has("vertex")) {
        const auto vertex = shell.At("vertex").Json().get<uint64_t>();
        if (vertex >= level.VertexCount()) {
            shell.At("vertex").Fail("there is no vertex " + std::to_string(vertex) +
                                    "; the level has " + std::to_string(level.VertexCount()));
        }
        return static_cast<uint32_t>(vertex);
    }
    std::optional<PickHit> hit;
    if (shell.Has("surface")) {
        const Vector point = shell.At("surface").ThreeNumbers();
        WarnOfFarPoints("freeze/shell/surface", {point}, 0.0f);
        hit = HitNear(document->Geometry(), document->Tree(), point);
    } else {
        const ViewPlace place = PlaceOf(shell.At("pointer"));
        hit = HitThrough(
            document->Geometry(), document->Tree(), document->View(), {place.x, place.y, 0.0f});
    }
    if (!hit) shell.Fail("there is no surface");
    return level.faceVertexIndices.array[std::size_t{hit->face} * level.CornersPerFace()];
}

}  // namespace trovik
