// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeDab.h"

#include "framework/freeze/FreezeBlend.h"

#include <unordered_set>

namespace trovik {

namespace {

class BallWalk final : public FaceEnumerator {
public:
    BallWalk(LevelMesh& walkedLevel, const Vector& ballCenter, float ballRadius)
        : level(walkedLevel),
          toWorld(GeometryOf(level).Transform().ToWorld()),
          center(ballCenter),
          radius(ballRadius) {}

    bool Tester(Mesh*, uint32_t face) override {
        const uint32_t corners = level.CornersPerFace();
        bool reached = false;
        for (uint32_t k = 0; k < corners; ++k) {
            const uint32_t vertex = level.faceVertexIndices.array[face * corners + k];
            const Vector way = toWorld.AffineTransform(level.Position(vertex) - center, 0.0f);
            const float distance = way.Length();
            if (!(distance <= radius)) continue;
            reached = true;
            if (met.insert(vertex).second) found.push_back({vertex, face, distance});
        }
        return reached;
    }
    void Operator(Mesh*, uint32_t) override {}

    std::vector<FreezeReach> found;

private:
    LevelMesh& level;
    const Matrix& toWorld;
    Vector center;
    float radius;
    std::unordered_set<uint32_t> met;
};

}  // namespace

std::vector<FreezeReach> VerticesUnderDab(LevelMesh& level,
                                          uint32_t face,
                                          const Vector& center,
                                          float radius) {
    BallWalk walk(level, center, radius);
    level.EnumerateFaces(face, &walk, 0);
    return std::move(walk.found);
}

float FreezeRecords::Share(uint32_t vertex) const {
    const auto slot = indices.find(vertex);
    if (slot != indices.end()) return weights[slot->second];
    return static_cast<float>(level.Freeze(vertex)) / static_cast<float>(freezeAmountMask);
}

bool FreezeRecords::SetWeight(uint32_t vertex, float weight) {
    const auto [slot, isNew] = indices.emplace(vertex, static_cast<uint32_t>(vertices.size()));
    if (isNew) {
        vertices.push_back(vertex);
        amountsBefore.push_back(level.Freeze(vertex));
        weights.push_back(weight);
    }
    weights[slot->second] = weight;
    const uint8_t before = level.Freeze(vertex);
    level.SetFreeze(vertex, FreezeAmountOf(weight));
    return level.Freeze(vertex) != before;
}

}  // namespace trovik
