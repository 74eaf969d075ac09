// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelSource.h"

#include <vector>

namespace trovik {

/// Provides the visible faces of a level as a source for file writers. It returns the data of
/// LevelSource without hidden faces, hidden vertices, and UVs that only hidden faces use. Order and
/// values are preserved; vertices and UVs are renumbered without gaps. If no face is hidden, the
/// result equals that of LevelSource.
///
/// Memory: 4 bytes per vertex of the level and per UV. Cost of construction: O(faces).
class TROVIK_API VisibleSource : public MeshSource {
public:
    /// \throw HostError "every face is hidden; there is nothing to export"; Cancelled.
    VisibleSource(const LevelGeometry& geometry,
                  const LevelSource::Options& options,
                  JobControl* job = nullptr);

    std::array<float, 3> Position(std::uint32_t vertex) const override;
    std::array<float, 3> BasePosition(std::uint32_t vertex) const override;
    void ReadVertices(unsigned parts,
                      const std::function<void(const VertexBlock&)>& take) const override;
    void ReadFaces(unsigned parts,
                   const std::function<void(const FaceBlock&)>& take) const override;
    void ReadUvs(
        const std::function<void(const std::vector<std::array<float, 2>>&)>& take) const override;

private:
    void NumberVertices(JobControl* job);
    void NumberUvs(JobControl* job);
    void KeepMorphTargets();

    LevelSource all;
    const LevelMesh& level;
    /// Maps new vertex numbers to old ones, and old numbers to new ones (or
    /// SurfaceAttributes::none).
    std::vector<std::uint32_t> oldVertices;
    std::vector<std::uint32_t> newVertices;
    std::vector<std::uint32_t> newUvs;
};

}  // namespace trovik
