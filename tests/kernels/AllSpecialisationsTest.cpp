// SPDX-License-Identifier: Apache-2.0
#include "kernels/PatchKernelTable.h"
#include "kernels/VertexStep.h"
#include "tests/fixture/StrokeFixture.h"
#include "tests/kernels/Widths.h"
#include "tests/meshes/MeshZoo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>

namespace trovik::test {
namespace {

std::string Describe(const KernelSwitches& s) {
    std::ostringstream text;
    text << "kernel " << s.Index() << (s.withStamp ? " stamp" : "")
         << (s.withoutRadius ? " wholeMesh" : "") << (s.alongVertexNormal ? " normals" : "")
         << (s.withFreeze ? " freeze" : "") << (s.throughLayer ? " layer" : "")
         << (s.averageBit ? " average" : "") << (s.tiledStamp ? " tiled" : "")
         << (s.pullBit ? " pull" : "") << (s.notifyPerVertex ? " notify" : "")
         << (s.inWorldSpace ? " world" : "");
    return text.str();
}

template <typename T>
void Add(std::vector<uint8_t>& bytes, const T* first, std::size_t count) {
    const auto* raw = reinterpret_cast<const uint8_t*>(first);
    bytes.insert(bytes.end(), raw, raw + count * sizeof(T));
}

/// The state of a brush in the middle of a dab, with members set directly so that any combination
/// of switches is legal.
struct KernelState {
    KernelState(const KernelSwitches& s,
                bool vectorStamp,
                int32_t patchLevel,
                float radius,
                uint8_t freezeAmount)
        : bench(SteppedBox(), 2), brush(*bench.brush), mesh(bench.Mesh()) {
        renderer = &bench.AddRenderer(s.notifyPerVertex ? 0.0f : 1.0f);
        if (s.throughLayer || s.averageBit) bench.AddLayer();
        for (uint32_t v = 0; v < mesh.VertexCount(); ++v)
            mesh.SetFreeze(v, static_cast<uint8_t>((v * 7 + freezeAmount) % 128 | freezeAmount));
        bench.Activate(s.averageBit && s.pullBit ? Tool::Flatten : Tool::Sculpt, 2);
        bench.Begin();

        brush.patchLevel = patchLevel;
        brush.patchMeshLevel = static_cast<uint32_t>(2 - patchLevel);
        brush.patchMesh = bench.geometry->Level(brush.patchMeshLevel);
        brush.facesPerPatch = (1u << patchLevel) * (1u << patchLevel);
        brush.gridStride = (1u << patchLevel) + 3;
        positions.assign(brush.gridStride * brush.gridStride, HWVector::Zero());
        offsets.assign(brush.gridStride * brush.gridStride, HWVector::Zero());
        for (std::size_t i = 0; i < positions.size(); ++i) {
            const auto f = static_cast<float>(i);
            positions[i] = HWVector(0.1f * f, 0.7f - 0.02f * f, 0.3f * f, 0.0f);
            offsets[i] = HWVector(0.01f * f, -0.02f * f, 0.005f, 0.0f);
        }
        brush.positionGrid = positions.data();
        brush.layerGrid = offsets.data();
        brush.dabStamp = mesh.visitStamp;
        brush.dabStrength = 0.7f;
        brush.dabPressure = 0.6f;
        brush.setRadius(radius);
        brush.wholeMesh = s.withoutRadius;
        brush.wholeMeshFacing = s.withoutRadius && s.pullBit;
        brush.wholeMeshView = Vector(0.6f, 0.0f, 0.8f);
        brush.planeDistance = 0.9f;
        brush.planeOffset = 0.1f;
        BrushSpace& space = *brush.brushSpace;
        space.center = HWVector(Vector(0.9f, 0.8f, 0.7f));
        space.direction = HWVector(Vector(0.6f, 0.0f, 0.8f));
        space.boundsMin = space.center;
        space.boundsMax = space.center;
        space.inverseScale = HWVector(Vector(0.5f, 1.0f, 1.25f));
        for (int row = 0; row < 4; ++row) {
            const auto r = static_cast<float>(row);
            space.meshToWorld[row] = HWVector(row == 0 ? 2.0f : 0.1f * r,
                                              row == 1 ? 1.0f : 0.0f,
                                              row == 2 ? 0.8f : 0.05f,
                                              row == 3 ? 1.0f : 0.0f);
            for (int column = 0; column < 4; ++column)
                space.stampMatrix[row][column] =
                    row == column ? 1.5f : (row == 3 && column < 2 ? 1.2f : 0.0f);
        }
        space.stampMatrix[3][3] = 1.0f;
        space.stampAxisU = HWVector(Vector(3.0f, 0.1f, 0.0f));
        space.stampAxisV = HWVector(Vector(0.0f, 2.0f, 0.4f));
        brush.stampScaleU = 0.03f;
        brush.stampScaleV = 0.02f;
        brush.stampScaleHeight = 0.024f;
        brush.stampIsVector = vectorStamp;
        brush.stampWidth = 3;
        brush.stampHeight = 2;
        brush.stampFactor = 0.9f;
        brush.stampPixels = new float[18];
        for (int i = 0; i < 18; ++i) brush.stampPixels[i] = 0.3f + 0.1f * static_cast<float>(i);
        brush.bilinearSample.SetValue(s.tiledStamp != s.withFreeze, true);
    }
    ~KernelState() {
        brush.wholeMesh = false;
        brush.EndStroke();
    }

    /// Returns all data that a kernel may have written.
    std::vector<uint8_t> Bytes(bool reached) const {
        std::vector<uint8_t> bytes;
        Add(bytes, mesh.vertices.array, mesh.VertexCount());
        Add(bytes, mesh.vertexNormals.array, mesh.VertexCount());
        Add(bytes, mesh.changeRecords, mesh.changeRecordCount);
        Add(bytes, positions.data(), positions.size());
        Add(bytes, &brush.brushSpace->boundsMin, 2);
        for (uint32_t v = 0; bench.layer != nullptr && v < mesh.VertexCount(); ++v) {
            const Vector offset = bench.layer->Offset(v);
            Add(bytes, &offset, 1);
        }
        for (const RecordingRenderer::Notice& notice : renderer->notices) Add(bytes, &notice, 1);
        bytes.push_back(reached ? 1 : 0);
        return bytes;
    }

    bool RunSpecialised(const KernelSwitches& s, uint32_t patch) {
        return (brush.*patchKernels[s.Index()])(patch);
    }
    bool RunByValue(const KernelSwitches& s, uint32_t patch) {
        const RunTimeSwitches sw(s, true);
        const uint32_t count = brush.BuildWorkList(patch);
        DabConstants dab(brush, brush.WantsMirroredStampRead());
        bool reached = false;
        for (uint32_t i = 0; i < count; ++i)
            reached |= StepVertex(sw, dab, brush.patchVertexList[i]);
        dab.StoreBounds();
        return reached;
    }

    StrokeFixture bench;
    SwiftStroke& brush;
    LevelMesh& mesh;
    RecordingRenderer* renderer;
    std::vector<HWVector> positions;
    std::vector<HWVector> offsets;
};

/// Applies two dabs to a patch and its neighbour, so that build-up and seams are covered.
std::vector<uint8_t> Run(const KernelSwitches& s,
                         bool specialised,
                         bool vectorStamp,
                         int32_t patchLevel,
                         float radius,
                         uint8_t freezeAmount) {
    KernelState state(s, vectorStamp, patchLevel, radius, freezeAmount);
    bool reached = false;
    for (int dab = 0; dab < 2; ++dab) {
        for (const uint32_t patch : {0u, 1u}) {
            // Averages use the positions stored in the grid.
            if (FamilyOf(s.averageBit, s.pullBit) == Family::Averaging && s.alongVertexNormal)
                state.brush.ReadPatchPositions(state.brush.PatchSlice(patch));
            reached |= specialised ? state.RunSpecialised(s, patch) : state.RunByValue(s, patch);
        }
        ++state.brush.dabStamp;
    }
    return state.Bytes(reached);
}

void ExpectSameBits(int32_t patchLevel, float radius, uint8_t freezeAmount) {
    for (unsigned index = 0; index < KernelSwitches::count; ++index) {
        const KernelSwitches s = KernelSwitches::FromIndex(index);
        SCOPED_TRACE(Describe(s));
        for (const bool vectorStamp : {false, true}) {
            if (vectorStamp && !s.withStamp) continue;
            const auto byValue = Run(s, false, vectorStamp, patchLevel, radius, freezeAmount);
            for (const VectorWidth width : AvailableWidths()) {
                const WithWidth chosen(width);
                const auto fixed = Run(s, true, vectorStamp, patchLevel, radius, freezeAmount);
                ASSERT_EQ(fixed.size(), byValue.size());
                ASSERT_EQ(std::memcmp(fixed.data(), byValue.data(), fixed.size()), 0)
                    << "width " << static_cast<int>(width)
                    << (vectorStamp ? ", vector stamp" : ", plain stamp or none");
            }
        }
    }
}

TEST(AllSpecialisations, AreBitIdenticalToTheStepWithRunTimeSwitches) {
    ExpectSameBits(2, 0.9f, 3);
}

TEST(AllSpecialisations, AgreeOnPatchesOfOneFace) { ExpectSameBits(0, 0.9f, 3); }

TEST(AllSpecialisations, AgreeOnARadiusOfZero) { ExpectSameBits(1, 0.0f, 3); }

TEST(AllSpecialisations, AgreeOnAFullMask) { ExpectSameBits(1, 0.9f, 127); }

constexpr float oddNumbers[] = {0.0f,
                                -0.0f,
                                std::numeric_limits<float>::infinity(),
                                std::numeric_limits<float>::quiet_NaN(),
                                1e30f,
                                -1e-30f};

/// If both operands of a sum are NaN, the result depends on their order in the instruction, which
/// the compiler chooses. This function makes all NaNs equal.
void MakeAllNaNsEqual(std::vector<uint8_t>& bytes) {
    for (std::size_t i = 0; i + sizeof(float) <= bytes.size(); i += sizeof(float)) {
        float number;
        std::memcpy(&number, bytes.data() + i, sizeof number);
        if (!std::isnan(number)) continue;
        constexpr float one = std::numeric_limits<float>::quiet_NaN();
        std::memcpy(bytes.data() + i, &one, sizeof one);
    }
}

/// Two patches with random positions; on average, one coordinate in `rarity` is a special value.
std::vector<uint8_t> RunOnRandomPositions(const KernelSwitches& s,
                                          bool specialised,
                                          unsigned seed) {
    std::mt19937 engine(seed);
    KernelState state(s, false, 2, 0.6f + 0.1f * static_cast<float>(seed % 10), 3);
    const unsigned rarity = 2 + seed % 40;
    for (uint32_t v = 0; v < state.mesh.VertexCount(); ++v) {
        Vertex& vertex = state.mesh.vertices.array[v];
        for (float* number : {&vertex.x, &vertex.y, &vertex.z}) {
            // For every other seed, zeros are the only special values, and all other coordinates
            // are positive, so that the zeros are the minima.
            const std::size_t kinds = seed % 2 == 0 ? 2 : std::size(oddNumbers);
            if (seed % 2 == 0) *number = std::abs(*number) + 0.01f;
            if (engine() % rarity == 0) *number = oddNumbers[engine() % kinds];
        }
    }
    bool reached = false;
    for (const uint32_t patch : {0u, 1u}) {
        state.brush.ReadPatchPositions(state.brush.PatchSlice(patch));
        reached |= specialised ? state.RunSpecialised(s, patch) : state.RunByValue(s, patch);
    }
    auto bytes = state.Bytes(reached);
    MakeAllNaNsEqual(bytes);
    return bytes;
}

/// Runs the kernels that reorder vertices on positions that include zeros of both signs, infinities
/// and NaN. With such positions, the bounds in particular depend on the order of vertices.
TEST(AllSpecialisations, AgreeOnZerosInfinitiesAndNaN) {
    for (unsigned index = 0; index < KernelSwitches::count; ++index) {
        const KernelSwitches s = KernelSwitches::FromIndex(index);
        if (s.withStamp || s.tiledStamp || s.throughLayer || s.withoutRadius || s.notifyPerVertex)
            continue;
        SCOPED_TRACE(Describe(s));
        for (unsigned seed = 0; seed < 100; ++seed) {
            const auto byValue = RunOnRandomPositions(s, false, seed);
            for (const VectorWidth width : AvailableWidths()) {
                const WithWidth chosen(width);
                ASSERT_EQ(RunOnRandomPositions(s, true, seed), byValue)
                    << "seed " << seed << ", width " << static_cast<int>(width);
            }
        }
    }
}

TEST(AllSpecialisations, AreAllInTheTable) {
    for (unsigned index = 0; index < KernelSwitches::count; ++index)
        EXPECT_NE(patchKernels[index], nullptr) << index;
}

}  // namespace
}  // namespace trovik::test
