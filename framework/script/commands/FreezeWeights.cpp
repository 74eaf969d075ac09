// SPDX-License-Identifier: Apache-2.0

/// \file Computes the mask weights that a "mask" command selects.
#include "framework/freeze/FreezeCurvature.h"
#include "framework/freeze/FreezeParts.h"
#include "framework/script/commands/FreezeParameters.h"
#include "framework/script/commands/ViewArea.h"

namespace trovik {

namespace {

/// The default radius of curvature for "cavity", as a fraction of the mesh's diagonal.
constexpr float cavityFraction = 0.02f;

std::vector<float> OfImage(CommandContext& context, const FreezeImage& image, ViewReach reach) {
    Document& document = context.document;
    const FloatImage read = ReadFreezeImage(context, image.file);
    const StrokeView& view = document.View();
    ViewBox over{{0.0f, 0.0f}, {static_cast<float>(view.width), static_cast<float>(view.height)}};
    if (image.over) over = BoxOf(*image.over);
    const ViewImage shown(read,
                          image.channel.value_or(ViewImage::Channel::Luminance),
                          image.invert.value_or(false),
                          over);
    return WeightsInView(
        document.Geometry(), document.Tree(), view, reach, [&shown](const ViewPoint& point) {
            return shown.WeightAt(point);
        });
}

std::vector<float> OfCavity(const CommandContext& context, const FreezeCavity& cavity) {
    CurvatureRange range;
    const CavitySign sign = cavity.sign.value_or(CavitySign::Cavity);
    if (sign == CavitySign::Ridge) range.sign = CurvatureSign::Ridge;
    if (sign == CavitySign::Both) range.sign = CurvatureSign::Both;
    range.size = cavity.size ? *cavity.size : context.Diagonal() * cavityFraction;
    range.from = cavity.from.value_or(range.from);
    range.to = cavity.to.value_or(range.to);
    if (range.from > range.to) throw FieldFault("/cavity/from", "must not be greater than \"to\"");
    range.softness = cavity.softness.value_or(range.softness);
    range.rings = cavity.rings.value_or(0);
    return WeightsByCurvature(context.document.Geometry(), range);
}

uint32_t ComponentVertex(CommandContext& context, const FreezeComponent& component) {
    Document& document = context.document;
    LevelMesh& level = *document.Geometry().Bound();
    component.RequireOne();
    if (component.vertex) {
        if (*component.vertex >= level.VertexCount()) {
            throw FieldFault("/component/vertex",
                             "there is no vertex " + std::to_string(*component.vertex) +
                                 "; the level has " + std::to_string(level.VertexCount()));
        }
        return static_cast<uint32_t>(*component.vertex);
    }
    std::optional<PickHit> hit;
    if (component.surface) {
        context.WarnOfFarPoints("mask/component/surface", {*component.surface}, 0.0f);
        hit = HitNear(document.Geometry(), document.Tree(), *component.surface);
    } else {
        const ViewPoint point = PointOf(*component.pointer);
        hit = HitThrough(
            document.Geometry(), document.Tree(), document.View(), {point.x, point.y, 0.0f});
    }
    if (!hit) throw FieldFault("/component", "there is no surface at this position");
    return level.faceVertexIndices.array[std::size_t{hit->face} * level.CornersPerFace()];
}

}  // namespace

void FreezeComponent::RequireOne() const {
    const int given = static_cast<int>(vertex.has_value()) + static_cast<int>(surface.has_value()) +
                      static_cast<int>(pointer.has_value());
    if (given != 1)
        throw FieldFault("/component", "needs one of \"vertex\", \"surface\", \"pointer\"");
}

FloatImage ReadFreezeImage(const CommandContext& context, const std::string& name) {
    const std::string file = context.InputPath(name, "/image/file");
    return AtField("/image/file", [&] { return ReadImageFile(file); });
}

std::vector<float> FreezeWeights(CommandContext& context, const FreezeChoice& choice) {
    Document& document = context.document;
    const LevelGeometry& geometry = document.Geometry();
    const ViewReach reach = choice.reach.value_or(ViewReach::Visible);
    if (choice.all) return std::vector<float>(geometry.Bound()->VertexCount(), 1.0f);
    if (choice.image) return OfImage(context, *choice.image, reach);
    if (choice.cavity) return OfCavity(context, *choice.cavity);
    if (choice.component)
        return WeightsOfComponent(*geometry.Bound(), ComponentVertex(context, *choice.component));
    if (choice.group) {
        const uint32_t group = NumberOf(*choice.group, geometry.Attributes().groupNames, "group");
        return WeightsOfGroup(geometry, geometry.BoundIndex(), group);
    }
    if (choice.center)
        return WeightsInSphere(
            geometry, *choice.center, *choice.radius, choice.softness.value_or(0.0f));
    if (choice.min) return WeightsInBox(geometry, *choice.min, *choice.max);
    const auto isInside = InsideOf(choice.box, choice.lasso);
    return WeightsInView(
        geometry, document.Tree(), document.View(), reach, [&isInside](const ViewPoint& point) {
            return isInside(point) ? 1.0f : 0.0f;
        });
}

}  // namespace trovik
