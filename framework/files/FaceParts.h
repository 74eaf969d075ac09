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

/// Divides the faces of a source into parts. The faces of a part have the same group, the same
/// material, or both. Parts are ordered by their first face. A source without groups or materials
/// has one part.
class TROVIK_API FaceParts {
public:
    enum Keys : unsigned { ByGroup = 1, ByMaterial = 2 };

    struct Part {
        /// Indices into the source's lists of names; SurfaceAttributes::none if the attribute is
        /// not a key or the faces have no value for it.
        std::uint32_t group = SurfaceAttributes::none;
        std::uint32_t material = SurfaceAttributes::none;
        std::uint64_t faces = 0;
        std::uint64_t corners = 0;

        /// Returns the number of triangles that result from splitting each face into a fan around
        /// its first corner.
        std::uint64_t Triangles() const { return corners - 2 * faces; }
    };

    /// A face: its index in the block, the index of its first corner in the block, and its number
    /// in the source.
    struct Face {
        std::size_t inBlock;
        std::size_t firstCorner;
        std::uint64_t number;
    };
    /// Appends the 32-bit words of a face to a list.
    using Describe = std::function<void(
        const FaceBlock& block, const Face& face, std::vector<std::uint32_t>& words)>;
    /// Receives the next words of a part. Parts arrive in order, and the words of one part are
    /// consecutive.
    using Take = std::function<void(std::size_t part, const std::vector<std::uint32_t>& words)>;

    /// Borrows the source. Cost: one pass over the faces.
    /// \param keys  a combination of Keys.
    /// \param jobControl  checked by the constructor and by ForEachWord, which throw Cancelled.
    /// Borrowed.
    FaceParts(const MeshSource& source, unsigned keys, JobControl* jobControl = nullptr);

    const std::vector<Part>& Parts() const { return parts; }

    /// Passes the words of all faces to `take`, part by part.
    ///
    /// A source can only be read sequentially. Each pass over the faces therefore buffers as many
    /// parts as fit into `maxWords` words. A larger part is passed on in a separate pass, without
    /// being buffered. There are at most 2 * words / maxWords + 1 passes.
    /// \param wordsOf  returns the total number of words for the faces of a part.
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
