// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/IsFinite.h"
#include "framework/mesh/LevelMesh.h"
#include "framework/scene/SceneChunks.h"

#include <cstdint>
#include <vector>

namespace trovik {

/// The first format in which the imported mesh may differ from level 0. It is also the first in
/// which each level contains the positions from which the level below was last updated, and the
/// freeze amounts from which the levels above and below were last updated.
inline constexpr uint32_t carriedDownFormat = 331;

/// A vertex of a level and a position of it, as stored in a scene.
struct VertexPosition {
    uint32_t vertex;
    Vector position;
};
static_assert(sizeof(VertexPosition) == 16);

/// Reads a list of vertices of the level. \throw Error* if a vertex does not exist or a position is
/// not finite.
inline std::vector<VertexPosition> ReadVertexPositions(SceneStream& stream,
                                                       const LevelMesh& level) {
    std::vector<VertexPosition> list = ReadList<VertexPosition>(stream);
    for (const VertexPosition& entry : list) {
        if (entry.vertex >= level.VertexCount())
            SceneStream::Refuse(QStringLiteral("there is no vertex %1").arg(entry.vertex));
        if (!IsFinite(entry.position))
            SceneStream::Refuse(
                QStringLiteral("the position of vertex %1 is not finite").arg(entry.vertex));
    }
    return list;
}

}  // namespace trovik
