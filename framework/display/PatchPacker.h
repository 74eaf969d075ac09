// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/DisplayVertex.h"
#include "framework/display/PatchLayout.h"
#include "framework/mesh/LevelMesh.h"

#include <cstdint>
#include <span>

namespace trovik {

/// Copies patches of a level into the format used for upload. A packed patch is a copy of the
/// level's current state; packing the same state again gives the same bytes.
///
/// The level is only read. Several packers may run at the same time, but no thread may write to the
/// level while they run.
class TROVIK_API PatchPacker {
public:
    /// Work done since the packer was constructed.
    struct Counters {
        uint64_t patches = 0;
        uint64_t vertices = 0;
    };

    /// Borrows level and layout. `layout` must have been created for `level`, and the level must
    /// have normals.
    PatchPacker(const LevelMesh& level, const PatchLayout& layout);

    /// Packs patches consecutively, in the order of the list.
    /// \param out  at least layout.VertexCount(patches) vertices. It is only written, never read,
    /// so it may be write-combined memory.
    /// \param threads  maximum number of threads, including the calling one; the result does not
    /// depend on it. Lists that are too short to benefit from several threads are packed on the
    /// calling thread.
    /// \return the number of vertices written.
    uint64_t Pack(std::span<const uint32_t> patches,
                  std::span<DisplayVertex> out,
                  unsigned threads = 1);
    /// Packs every patch at its FirstVertex.
    /// \param out  at least layout.TotalVertexCount() vertices.
    /// \param threads  as for Pack.
    uint64_t PackAll(std::span<DisplayVertex> out, unsigned threads);

    const Counters& Packed() const { return packed; }

private:
    void PackPatch(uint32_t patch, DisplayVertex* out) const;
    void PackGrid(uint32_t patch, DisplayVertex* out) const;
    void PackBucket(uint32_t bucket, DisplayVertex* out) const;
    /// DisplayVertex::flags of a face.
    uint8_t FlagsOf(uint32_t face) const;
    /// The group part of the flags, which is common to all descendants of a face of level 0.
    uint8_t GroupFlags(uint32_t baseFace) const;

    const LevelMesh& level;
    const PatchLayout& layout;
    /// The group of each face of level 0; empty if there are no groups.
    std::span<const uint32_t> faceGroups;
    Counters packed;
};

}  // namespace trovik
