// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/TopologyStep.h"
#include "framework/mesh/TopologicalMirror.h"
#include "framework/mesh/TriangleContent.h"

#include <memory>
#include <vector>

namespace trovik {

/// The effect of a stroke that edits the topology of level 0 of a triangle mesh: the previous
/// content of all vertices and faces that the stroke changed, moved or renumbered. Apply exchanges
/// it with the current content, so any sequence of undo and redo restores each state bit-exactly,
/// including the numbers of all elements. Memory: 32 bytes per vertex and 32 per face, plus their
/// attributes.
class TROVIK_API TessellationStep : public TopologyStep {
public:
    /// \param content  the state before the stroke.
    /// \param mirror  the mirror of the mesh before the stroke, or null.
    TessellationStep(TriangleContent content, std::unique_ptr<TopologicalMirror> mirror);

    void Apply(LevelGeometry& geometry) override;
    uint64_t Bytes() const override;
    std::vector<StepArray> Arrays() override;

private:
    TriangleContent content;
    std::unique_ptr<TopologicalMirror> mirror;
};

}  // namespace trovik
