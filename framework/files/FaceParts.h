// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSource.h"
#include "host/Api.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

namespace trovik {

/// The faces of a source, divided into parts with the same group, the same material, or both. Parts
/// are ordered by their first face. A source without groups and materials has one part.
class TROVIK_API FaceParts {
public:
    enum Keys : unsigned { ByGroup = 1, ByMaterial = 2 };

    struct Part {
        /// Indices into the names of the source; SurfaceAttributes::none if the attribute is not a
        /// key or if the faces have no value.
        std::uint32_t group = SurfaceAttributes::none;
        std::uint32_t material = SurfaceAttributes::none;
        std::uint64_t faces = 0;
        std::uint64_t corners = 0;

        /// Number of triangles if each face is split into a fan around its first corner.
        std::uint64_t Triangles() const { return corners - 2 * faces; }
    };

    /// A face of a block: its index in the block, its first corner in the block, and its number in
    /// the source.
    struct Face {
        std::size_t inBlock;
        std::size_t firstCorner;
        std::uint64_t number;
    };
    /// Appends the words of a face to a list.
    using Describe = std::function<void(
        const FaceBlock& block, const Face& face, std::vector<std::uint32_t>& words)>;
    /// Receives words of a part. The words of one part arrive consecutively, and the parts arrive
    /// in order.
    using Take = std::function<void(std::size_t part, const std::vector<std::uint32_t>& words)>;

    /// \param keys  a combination of Keys. Cost: one pass over the faces. Borrows the source.
    /// \param jobControl  checked by the constructor and by ForEachWord, which throw Cancelled.
    /// Borrowed.
    FaceParts(const MeshSource& source, unsigned keys, JobControl* jobControl = nullptr);

    const std::vector<Part>& Parts() const { return parts; }

    /// Passes the words of all faces to `take`, part by part.
    ///
    /// A source can only be read from front to back, so each pass over the faces collects as many
    /// parts as fit into `maxWords` words. A larger part gets a separate pass and is passed on
    /// without being collected. There are at most 2 * words / maxWords + 1 passes.
    /// \param wordsOf  returns the total number of words of a part's faces.
    /// \param blockParts  the lists that ReadFaces must fill for `describe`.
    void ForEachWord(const std::function<std::uint64_t(const Part&)>& wordsOf,
                     unsigned blockParts,
                     const Describe& describe,
                     const Take& take,
                     std::uint64_t maxWords = defaultMaxWords) const;

private:
    static constexpr std::uint64_t defaultMaxWords = std::uint64_t{16} << 20;

    std::uint64_t KeyOf(const FaceBlock& block, std::size_t face) const;
    /// Calls `take` for the parts `first` to `end - 1`.
    void TakeRange(std::size_t first,
                   std::size_t end,
                   unsigned blockParts,
                   const Describe& describe,
                   const Take& take) const;

    const MeshSource& source;
    unsigned keys;
    JobControl* job;
    std::vector<Part> parts;
    std::unordered_map<std::uint64_t, std::uint32_t> partOfKey;
};

}  // namespace trovik
