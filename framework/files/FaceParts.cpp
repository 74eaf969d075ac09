// SPDX-License-Identifier: Apache-2.0
#include "framework/files/FaceParts.h"

namespace trovik {

namespace {

constexpr std::uint32_t None = SurfaceAttributes::none;

}  // namespace

FaceParts::FaceParts(const MeshSource& of, unsigned wantedKeys, JobControl* jobControl)
    : source(of), keys(wantedKeys), job(jobControl) {
    if (source.GroupNames().empty() && source.MaterialNames().empty()) {
        parts.push_back({None, None, source.FaceCount(), source.CornerCount()});
        return;
    }
    ReadFaces(source, 0, job, "Grouping faces", [this](const FaceBlock& block) {
        for (std::size_t face = 0; face < block.sizes.size(); ++face) {
            const std::uint64_t key = KeyOf(block, face);
            const auto [entry, isNew] =
                partOfKey.try_emplace(key, static_cast<std::uint32_t>(parts.size()));
            if (isNew) {
                parts.push_back(
                    {static_cast<std::uint32_t>(key >> 32), static_cast<std::uint32_t>(key)});
            }
            Part& part = parts[entry->second];
            ++part.faces;
            part.corners += block.sizes[face];
        }
    });
}

std::uint64_t FaceParts::KeyOf(const FaceBlock& block, std::size_t face) const {
    const bool hasGroup = (keys & ByGroup) != 0 && !block.groups.empty();
    const bool hasMaterial = (keys & ByMaterial) != 0 && !block.materials.empty();
    return std::uint64_t{hasGroup ? block.groups[face] : None} << 32 |
           (hasMaterial ? block.materials[face] : None);
}

void FaceParts::ForEachWord(const std::function<std::uint64_t(const Part&)>& wordsOf,
                            unsigned blockParts,
                            const Describe& describe,
                            const Take& take,
                            std::uint64_t maxWords) const {
    for (std::size_t first = 0; first < parts.size();) {
        std::uint64_t words = wordsOf(parts[first]);
        std::size_t end = first + 1;
        while (end < parts.size() && words + wordsOf(parts[end]) <= maxWords) {
            words += wordsOf(parts[end++]);
        }
        TakeRange(first, end, blockParts, describe, take);
        first = end;
    }
}

void FaceParts::TakeRange(std::size_t first,
                          std::size_t end,
                          unsigned blockParts,
                          const Describe& describe,
                          const Take& take) const {
    std::vector<std::vector<std::uint32_t>> words(end - first);
    std::uint64_t number = 0;
    ReadFaces(source, blockParts, job, "Writing faces", [&](const FaceBlock& block) {
        std::size_t corner = 0;
        for (std::size_t face = 0; face < block.sizes.size(); ++face) {
            const std::size_t part = parts.size() == 1 ? 0 : partOfKey.at(KeyOf(block, face));
            if (part >= first && part < end) {
                describe(block, {face, corner, number}, words[part - first]);
            }
            corner += block.sizes[face];
            ++number;
        }
        if (end == first + 1) {
            take(first, words[0]);
            words[0].clear();
        }
    });
    for (std::size_t part = first; part < end && end > first + 1; ++part) {
        take(part, words[part - first]);
        words[part - first] = {};
    }
}

}  // namespace trovik
