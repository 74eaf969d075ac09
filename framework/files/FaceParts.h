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

/// The faces of a source in parts of the same group, the same material, or both. Parts come in the
/// order of their first faces; a source without groups and materials is one part.
class TROVIK_API FaceParts {
public:
    enum Keys : unsigned { ByGroup = 1, ByMaterial = 2 };

    struct Part {
        /// Numbers into the source's names; SurfaceAttributes::none if not a key, or if the faces
        /// have none.
        std::uint32_t group = SurfaceAttributes::none;
        std::uint32_t material = SurfaceAttributes::none;
        std::uint64_t faces = 0;
        std::uint64_t corners = 0;

        /// Of the fans around the first corner of each face.
        std::uint64_t Triangles() const { return corners - 2 * faces; }
    };

    /// A face of a block: its number there, its first corner there, and its number in the source.
    struct Face {
        std::size_t inBlock;
        std::size_t firstCorner;
        std::uint64_t number;
    };
    /// Appends the words of a face to a list.
    using Describe = std::function<void(
        const FaceBlock& block, const Face& face, std::vector<std::uint32_t>& words)>;
    /// Takes words of a part. Runs of one part follow each other; parts come in their order.
    using Take = std::function<void(std::size_t part, const std::vector<std::uint32_t>& words)>;

    /// \param keys  a sum of Keys. Cost: one pass over the faces. Borrows the source.
    /// \param jobControl  of the constructor and of ForEachWord, which throw Cancelled. Borrowed.
    FaceParts(const MeshSource& source, unsigned keys, JobControl* jobControl = nullptr);

    const std::vector<Part>& Parts() const { return parts; }

    /// Hands out the words of all faces, part by part.
    ///
    /// As sources are read only from front to back, each pass over the faces collects as many parts
    /// as fit `maxWords` words; a part that is larger has a pass of its own and is not collected.
    /// So there are at most 2 * words / maxWords + 1 passes.
    /// \param wordsOf  how many words the faces of a part have together.
    /// \param blockParts  what ReadFaces shall fill in, for `describe`.
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
