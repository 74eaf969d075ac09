// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/PatchLayout.h"
#include "framework/mesh/SurfaceChange.h"

#include <cstdint>
#include <span>
#include <vector>

namespace trovik {

/// Collects the patches of a layout that must be packed again after surface changes. Changes from
/// several dabs in one region are merged, so that each patch is packed only once.
///
/// Not thread-safe; the changes arrive on the document's thread.
class TROVIK_API DirtyPatches {
public:
    /// Starts without dirty patches. Borrows the layout. Allocates one byte per patch.
    explicit DirtyPatches(const PatchLayout& layout);

    /// Adds a change. Changes to other levels are ignored, because those levels are not displayed,
    /// except that SurfaceChange::Topology on any level sets LayoutChanged. Cost: for grids, linear
    /// in the number of changed patches and of the layout patches that they overlap; for buckets,
    /// linear in the number of faces in the changed patches.
    void Add(const SurfaceChange& change);

    /// Whether the layout no longer describes the displayed level. The caller must then create a
    /// new layout, pack all of its patches and use a new DirtyPatches.
    bool LayoutChanged() const { return layoutChanged; }

    /// The dirty patches, without duplicates, in the order in which they were first added.
    std::span<const uint32_t> Patches() const { return patches; }
    bool IsEmpty() const { return patches.empty(); }
    /// The kinds of change to a patch, as a combination of SurfaceChange::What; 0 if the patch is
    /// not dirty.
    uint8_t WhatChanged(uint32_t patch) const { return what[patch]; }

    /// Removes patches that have been packed; those that are not dirty are ignored.
    /// Cost: O(dirty patches).
    void Remove(std::span<const uint32_t> packed);
    /// Removes all patches. Cost: O(dirty patches).
    void Clear();

private:
    const PatchLayout& layout;
    std::vector<uint32_t> patches;
    /// The kinds of change to each patch of the layout.
    std::vector<uint8_t> what;
    bool layoutChanged = false;
};

}  // namespace trovik
