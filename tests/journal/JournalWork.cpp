// SPDX-License-Identifier: Apache-2.0
#include "tests/journal/JournalWork.h"

#include "framework/io/Crc32.h"

namespace trovik::test {

std::string FillCube(const TemporaryFolder& folder) {
    return folder.Fill(
        "cube.obj",
        "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\nv -1 -1 1\nv 1 -1 1\nv -1 1 1\n"
        "v 1 1 1\nf 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n");
}

std::string FillScript(const TemporaryFolder& folder,
                       const nlohmann::json& steps,
                       const nlohmann::json& mirror) {
    FillCube(folder);
    const nlohmann::json script = {
        {"mesh", "cube.obj"}, {"levels", 3}, {"mirror", mirror}, {"steps", steps}};
    return folder.Fill("script.json", script.dump());
}

uint32_t StateOf(Document& document) {
    const LevelGeometry& geometry = document.Geometry();
    const uint32_t counts[2] = {geometry.LevelCount(), geometry.BoundIndex()};
    uint32_t sum = Crc32(counts, sizeof counts);
    for (uint32_t level = 0; level < geometry.LevelCount(); ++level) {
        const LevelMesh& mesh = *geometry.Level(level);
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v) {
            const Vector p = mesh.Position(v);
            const float numbers[4] = {p.x, p.y, p.z, static_cast<float>(mesh.Freeze(v))};
            sum = Crc32(numbers, sizeof numbers, sum);
        }
    }
    for (const auto& layer : geometry.Layers().All()) {
        const float numbers[2] = {layer->Strength(), static_cast<float>(layer->SlotCount())};
        sum = Crc32(numbers, sizeof numbers, sum);
    }
    return sum;
}

}  // namespace trovik::test
