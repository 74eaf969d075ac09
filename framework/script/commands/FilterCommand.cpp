// SPDX-License-Identifier: Apache-2.0
#include "framework/filters/SurfaceFilter.h"
#include "framework/script/Command.h"

namespace trovik {

template <>
struct EnumNames<SurfaceFilter::Kind> {
    static constexpr std::pair<const char*, SurfaceFilter::Kind> names[] = {
        {"inflate", SurfaceFilter::Kind::Inflate},
        {"smooth", SurfaceFilter::Kind::Smooth},
        {"relax", SurfaceFilter::Kind::Relax},
        {"sharpen", SurfaceFilter::Kind::Sharpen}};
};

namespace {

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
    const PositionEdit edit = FilterSurface(FilterOf(parameters));
    AtField("", [&] {
        if (context.document.EditPositions(edit, context.Job()) == 0)
            context.Warn("no vertex has moved");
    });
}

void CheckFilter(CommandContext&, const FilterParameters& parameters) { FilterOf(parameters); }

const CommandRegistration<FilterParameters> filter({.name = "filter"}, Filter, CheckFilter);

}  // namespace

}  // namespace trovik
