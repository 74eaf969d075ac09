// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshWriters.h"
#include "framework/jobs/JobPhase.h"

#include <charconv>
#include <cmath>

namespace trovik {

namespace {

template <std::size_t count>
bool IsFinite(const std::array<float, count>& numbers) {
    for (const float number : numbers) {
        if (!std::isfinite(number)) {
            return false;
        }
    }
    return true;
}

template <std::size_t count>
std::string TextOf(const std::array<float, count>& numbers) {
    std::string text;
    for (const float number : numbers) {
        char digits[32];
        char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        text += (text.empty() ? "(" : ", ") + std::string(&digits[0], end);
    }
    return text + ")";
}

template <std::size_t count>
void Check(const std::string& path,
           const std::array<float, count>& numbers,
           const char* what,
           std::uint64_t number) {
    if (!IsFinite(numbers)) {
        throw HostError(path + ": " + what + " " + std::to_string(number) +
                        " (counted from 0) is " + TextOf(numbers) +
                        "; only finite numbers can be exported");
    }
}

template <class List>
void CheckList(const std::string& path, const List& list, const char* what, std::uint64_t first) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        Check(path, list[i], what, first + i);
    }
}

void CheckMorphTargets(const std::string& path, const MeshSource& source, JobControl* job) {
    for (const MorphTarget& target : source.MorphTargets()) {
        JobPhase phase(job, "Checking layers", target.vertices.size());
        for (const std::uint32_t vertex : target.vertices) {
            phase.Add();
            Check(path, target.offset(vertex), "the offset of a layer at vertex", vertex);
            Check(path, source.BasePosition(vertex), "the layer-free position of vertex", vertex);
        }
        phase.Finish();
    }
}

}  // namespace

void CheckFinite(const std::string& path, const MeshSource& source, JobControl* job) {
    constexpr unsigned everything =
        MeshSource::Positions | MeshSource::Normals | MeshSource::Colors;
    std::uint64_t vertex = 0;
    constexpr const char* phase = "Checking for non-finite numbers";
    ReadVertices(source, everything, job, phase, [&](const VertexBlock& block) {
        CheckList(path, block.positions, "the position of vertex", vertex);
        CheckList(path, block.normals, "the normal of vertex", vertex);
        CheckList(path, block.colors, "the colour of vertex", vertex);
        vertex += block.positions.size();
    });
    std::uint64_t uv = 0;
    ReadUvs(source, job, phase, [&](const std::vector<std::array<float, 2>>& uvs) {
        CheckList(path, uvs, "texture coordinate", uv);
        uv += uvs.size();
    });
    CheckMorphTargets(path, source, job);
}

}  // namespace trovik
