// SPDX-License-Identifier: Apache-2.0
#include "framework/multires/AttributeCarrying.h"

#include "framework/jobs/JobPhase.h"
#include "framework/multires/CoarseFaces.h"
#include "framework/multires/LevelSource.h"

namespace trovik {

namespace {

constexpr uint32_t None = SurfaceAttributes::none;

/// Copies the attributes that are not stored per vertex, face or corner.
SurfaceAttributes NamesOf(const SurfaceAttributes& other) {
    SurfaceAttributes names;
    names.space = other.space;
    names.hasAlpha = other.hasAlpha;
    names.groupNames = other.groupNames;
    names.materialNames = other.materialNames;
    names.materialFiles = other.materialFiles;
    return names;
}

template <typename T>
void Append(std::vector<T>& list, const std::vector<T>& run) {
    list.insert(list.end(), run.begin(), run.end());
}

}  // namespace

SurfaceAttributes AttributesOfLevel(const LevelGeometry& geometry,
                                    uint32_t level,
                                    JobControl* job) {
    if (level == 0) return geometry.Attributes();
    LevelSource::Options options;
    options.level = level;
    const LevelSource source(geometry, options);
    SurfaceAttributes refined = NamesOf(geometry.Attributes());
    constexpr const char* phase = "Refining attributes";
    ReadUvs(source, job, phase, [&refined](const auto& run) { Append(refined.uvs, run); });
    ReadFaces(source, MeshSource::Uvs, job, phase, [&refined](const FaceBlock& block) {
        Append(refined.cornerUvs, block.uvIndices);
        Append(refined.faceGroups, block.groups);
        Append(refined.faceMaterials, block.materials);
        Append(refined.faceSmoothing, block.smoothing);
    });
    if (geometry.Attributes().colors.empty()) return refined;
    ReadVertices(source, MeshSource::Colors, job, phase, [&refined](const VertexBlock& block) {
        Append(refined.colors, block.colors);
    });
    return refined;
}

SurfaceAttributes AttributesOfCoarse(const SurfaceAttributes& fine,
                                     const CoarseFaces& coarse,
                                     JobControl* job) {
    const FaceRenumbering back = coarse.fineFaces.Inverse();
    SurfaceAttributes attributes = NamesOf(fine);
    if (!fine.cornerUvs.empty()) {
        JobPhase phase(job, "Fitting attributes", coarse.faceVertices.size());
        std::vector<uint32_t> numbers(fine.uvs.size(), None);
        attributes.cornerUvs.reserve(coarse.faceVertices.size());
        for (uint32_t corner = 0; corner < coarse.faceVertices.size(); ++corner) {
            phase.Add();
            // There is one child per corner. That corner is corner k of child k of a quad, and
            // corner 0 of child k of a triangle.
            const uint32_t ofChild = coarse.corners == 4 ? corner & 3u : 0u;
            const uint32_t ofFine = (ofChild + back.turn[corner]) & 3u;
            const uint32_t uv = fine.cornerUvs[back.face[corner] * 4 + ofFine];
            if (uv != None && numbers[uv] == None) {
                numbers[uv] = static_cast<uint32_t>(attributes.uvs.size());
                attributes.uvs.push_back(fine.uvs[uv]);
            }
            attributes.cornerUvs.push_back(uv == None ? None : numbers[uv]);
        }
        phase.Finish();
    }
    if (!fine.colors.empty())
        for (const uint32_t vertex : coarse.fineVertices)
            attributes.colors.push_back(fine.colors[vertex]);
    for (std::size_t child = 0; child < coarse.faceVertices.size(); child += coarse.corners) {
        if (!fine.faceGroups.empty())
            attributes.faceGroups.push_back(fine.faceGroups[back.face[child]]);
        if (!fine.faceMaterials.empty())
            attributes.faceMaterials.push_back(fine.faceMaterials[back.face[child]]);
        if (!fine.faceSmoothing.empty())
            attributes.faceSmoothing.push_back(fine.faceSmoothing[back.face[child]]);
    }
    return attributes;
}

}  // namespace trovik
