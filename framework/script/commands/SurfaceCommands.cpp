// SPDX-License-Identifier: Apache-2.0

/// \file Commands that move all unmasked vertices: "filter" and "transformVertices".
#include "framework/filters/SurfaceFilter.h"
#include "framework/filters/VertexTransform.h"
#include "framework/script/Command.h"
#include "framework/script/commands/ScaleParameter.h"

namespace trovik {

template <>
struct EnumNames<SurfaceFilter::Kind> {
    static constexpr std::pair<const char*, SurfaceFilter::Kind> names[] = {
        {"inflate", SurfaceFilter::Kind::Inflate},
        {"smooth", SurfaceFilter::Kind::Smooth},
        {"relax", SurfaceFilter::Kind::Relax},
        {"sharpen", SurfaceFilter::Kind::Sharpen}};
};

template <>
struct EnumNames<PivotKind> {
    static constexpr std::pair<const char*, PivotKind> names[] = {
        {"center", PivotKind::Centre}, {"maskBorder", PivotKind::MaskBorder}};
};

namespace {

void Run(CommandContext& context, const PositionEdit& edit) {
    AtField("", [&] {
        if (context.document.EditPositions(edit, context.Job()) == 0)
            context.Warn("no vertex has moved");
    });
}

struct FilterParameters {
    SurfaceFilter::Kind kind = SurfaceFilter::Kind::Smooth;
    std::optional<float> amount;
    std::optional<float> strength;
    std::optional<uint32_t> iterations;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("kind", kind);
        visit("amount", amount);
        visit("strength", strength);
        visit("iterations", iterations);
    }
};

SurfaceFilter FilterOf(const FilterParameters& parameters) {
    const bool inflates = parameters.kind == SurfaceFilter::Kind::Inflate;
    if (inflates && !parameters.amount) throw FieldFault("", "\"inflate\" needs an \"amount\"");
    if (!inflates && parameters.amount)
        throw FieldFault("/amount", "only \"inflate\" has an amount; use \"strength\"");
    if (inflates && (parameters.strength || parameters.iterations))
        throw FieldFault("", "\"inflate\" has only an \"amount\"");
    SurfaceFilter filter;
    filter.kind = parameters.kind;
    filter.amount = parameters.amount.value_or(filter.amount);
    filter.strength = parameters.strength.value_or(filter.strength);
    filter.iterations = parameters.iterations.value_or(filter.iterations);
    if (filter.kind != SurfaceFilter::Kind::Sharpen && filter.strength > 1.0f)
        throw FieldFault("/strength", "expected a number from 0 to 1");
    return filter;
}

void Filter(CommandContext& context, const FilterParameters& parameters) {
    Run(context, FilterSurface(FilterOf(parameters)));
}

void CheckFilter(CommandContext&, const FilterParameters& parameters) { FilterOf(parameters); }

const CommandRegistration<FilterParameters> filter({.name = "filter"}, Filter, CheckFilter);

struct TransformVerticesParameters {
    std::optional<Vector> translate;
    std::optional<Vector> axis;
    /// In degrees.
    std::optional<float> angle;
    std::optional<ScaleParameter> scale;
    std::optional<std::variant<PivotKind, Vector>> pivot;
    std::optional<uint32_t> maskBlur;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("translate", translate);
        visit("axis", axis);
        visit("angle", angle);
        visit("scale", scale);
        visit("pivot", pivot);
        visit("maskBlur", maskBlur);
    }
};

VertexTransform TransformOf(const TransformVerticesParameters& parameters) {
    if (!parameters.translate && !parameters.angle && !parameters.scale) {
        throw FieldFault("", "needs at least one of \"translate\", \"angle\", \"scale\"");
    }
    if (parameters.axis && *parameters.axis == Vector())
        throw FieldFault("/axis", "the axis must not be 0");
    VertexTransform transform;
    transform.translation = parameters.translate.value_or(transform.translation);
    transform.axis = parameters.axis.value_or(transform.axis);
    transform.angle = parameters.angle.value_or(transform.angle);
    if (parameters.scale) transform.scale = ScaleOf(*parameters.scale);
    transform.pivot = parameters.pivot.value_or(transform.pivot);
    transform.maskBlur = parameters.maskBlur.value_or(transform.maskBlur);
    return transform;
}

void Transform(CommandContext& context, const TransformVerticesParameters& parameters) {
    Run(context, TransformVertices(TransformOf(parameters)));
}

void CheckTransform(CommandContext&, const TransformVerticesParameters& parameters) {
    TransformOf(parameters);
}

const CommandRegistration<TransformVerticesParameters> transformVertices(
    {.name = "transformVertices"}, Transform, CheckTransform);

}  // namespace

}  // namespace trovik
