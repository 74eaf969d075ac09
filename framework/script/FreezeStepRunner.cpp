// SPDX-License-Identifier: Apache-2.0
#include "framework/script/ScriptRunner.h"

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

constexpr float fullAmount = 127.0f;

uint8_t Rounded(float amount) {
    return static_cast<uint8_t>(std::clamp(amount, 0.0f, 1.0f) * fullAmount + 0.5f);
}

}  // namespace

// Regions are told in world space; a region freezes at least as much as what is there already.
void ScriptRunner::RunFreeze(const FieldReader& freeze) {
    LevelMesh& mesh = *session->Geometry().Bound();
    if (freeze.Json().is_string()) {
        const std::string what = freeze.Text();
        if (what == "clear")
            session->Freeze([](uint32_t) { return uint8_t{0}; });
        else if (what == "all")
            session->Freeze([](uint32_t) { return uint8_t{127}; });
        else if (what == "invert")
            session->Freeze(
                [&mesh](uint32_t v) { return static_cast<uint8_t>(127 - mesh.Freeze(v)); });
        else
            freeze.Fail("unknown word \"" + what + "\"; there are clear, all, invert");
        return;
    }

    const Placement& place = session->Geometry().Place();
    const float amount = freeze.NumberOr("amount", 1.0f);
    const auto worldOf = [&mesh, &place](uint32_t v) {
        return place.ToWorld().AffineTransform(mesh.Position(v), 1.0f);
    };
    if (freeze.Has("center") && freeze.Has("radius")) {
        const Vector center = freeze.At("center").ThreeNumbers();
        const float reach = freeze.At("radius").Number();
        const float soft = freeze.NumberOr("soft", 0.0f);
        session->Freeze([&](uint32_t v) {
            const float rim = (worldOf(v) - center).Length() / reach;
            if (rim > 1.0f) return mesh.Freeze(v);
            const float share = soft > 0.0f ? std::min(1.0f, (1.0f - rim) / soft) : 1.0f;
            return std::max(mesh.Freeze(v), Rounded(amount * share));
        });
    } else if (freeze.Has("min") && freeze.Has("max")) {
        const Vector low = freeze.At("min").ThreeNumbers();
        const Vector high = freeze.At("max").ThreeNumbers();
        session->Freeze([&](uint32_t v) {
            const Vector p = worldOf(v);
            const bool inside = p.x >= low.x && p.y >= low.y && p.z >= low.z && p.x <= high.x &&
                                p.y <= high.y && p.z <= high.z;
            return inside ? std::max(mesh.Freeze(v), Rounded(amount)) : mesh.Freeze(v);
        });
    } else {
        freeze.Fail("a region needs \"center\" and \"radius\", or \"min\" and \"max\"");
    }
}

}  // namespace trovik
