// SPDX-License-Identifier: Apache-2.0
#include "framework/filters/VertexTransform.h"
#include "framework/script/Command.h"
#include "framework/script/commands/ScaleParameter.h"

namespace trovik {

template <>
struct EnumNames<PivotKind> {
    static constexpr std::pair<const char*, PivotKind> names[] = {
        {"center", PivotKind::Centre}, {"maskBorder", PivotKind::MaskBorder}};
};

namespace {

struct TransformVerticesParameters {
    std::optional<Vector> translate;
    std::optional<Vector> axis;
    /// Degrees.
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
    const PositionEdit edit = TransformVertices(TransformOf(parameters));
    AtField("", [&] {
        if (context.document.EditPositions(edit, context.Job()) == 0)
            context.Warn("no vertex has moved");
    });
}

void CheckTransform(CommandContext&, const TransformVerticesParameters& parameters) {
    TransformOf(parameters);
}

const CommandRegistration<TransformVerticesParameters> transformVertices(
    {.name = "transformVertices"}, Transform, CheckTransform);

}  // namespace

}  // namespace trovik
