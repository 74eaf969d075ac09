// SPDX-License-Identifier: Apache-2.0

/// \file Symmetry commands: "mirror" for subsequent strokes, "symmetrize" for the surface.
#include "framework/script/Command.h"

#include <algorithm>

namespace trovik {

enum class MirrorAxis { X, Y, Z };
template <>
struct EnumNames<MirrorAxis> {
    static constexpr std::pair<const char*, MirrorAxis> names[] = {
        {"x", MirrorAxis::X}, {"y", MirrorAxis::Y}, {"z", MirrorAxis::Z}};
};

enum class MirrorByMesh { Topological };
template <>
struct EnumNames<MirrorByMesh> {
    static constexpr std::pair<const char*, MirrorByMesh> names[] = {
        {"topological", MirrorByMesh::Topological}};
};

template <>
struct EnumNames<SymmetrySide> {
    static constexpr std::pair<const char*, SymmetrySide> names[] = {
        {"positive", SymmetrySide::Positive}, {"negative", SymmetrySide::Negative}};
};

namespace {

struct RadialMirror {
    int radial = 1;
    std::optional<MirrorAxis> axis;
    std::optional<std::vector<MirrorAxis>> planes;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("radial", radial);
        visit("axis", axis);
        visit("planes", planes);
    }
};

using MirrorParameters = std::variant<std::vector<MirrorAxis>, RadialMirror, MirrorByMesh>;

std::vector<int> PlanesOf(const std::vector<MirrorAxis>& axes, const std::string& pointer) {
    std::vector<int> planes;
    for (std::size_t i = 0; i < axes.size(); ++i) {
        const int axis = static_cast<int>(axes[i]);
        if (std::find(planes.begin(), planes.end(), axis) != planes.end())
            throw FieldFault(pointer + "/" + std::to_string(i), "the axis is given twice");
        planes.push_back(axis);
    }
    return planes;
}

void Mirror(CommandContext& context, const MirrorParameters& parameters) {
    if (std::holds_alternative<MirrorByMesh>(parameters)) {
        context.document.SetTopologicalMirror(context.Job());
        return;
    }
    MirrorSetting setting;
    if (const auto* planes = std::get_if<std::vector<MirrorAxis>>(&parameters)) {
        setting.planes = PlanesOf(*planes, "");
    } else {
        const auto& radial = std::get<RadialMirror>(parameters);
        if (radial.planes) setting.planes = PlanesOf(*radial.planes, "/planes");
        setting.copies = radial.radial;
        if (radial.axis) setting.axis = static_cast<int>(*radial.axis);
    }
    AtField("", [&] { context.document.SetMirrors(setting); });
}

struct SymmetrizeParameters {
    MirrorAxis axis = MirrorAxis::X;
    std::optional<SymmetrySide> from;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("axis", axis);
        visit("from", from);
    }
};

void Symmetrize(CommandContext& context, const SymmetrizeParameters& parameters) {
    AtField("", [&] {
        context.document.MakeSymmetric(static_cast<int>(parameters.axis),
                                       parameters.from.value_or(SymmetrySide::Positive),
                                       context.Job());
    });
}

const CommandRegistration<MirrorParameters> mirror({.name = "mirror"}, Mirror, Mirror);
const CommandRegistration<SymmetrizeParameters> symmetrize({.name = "symmetrize"}, Symmetrize);

}  // namespace

}  // namespace trovik
