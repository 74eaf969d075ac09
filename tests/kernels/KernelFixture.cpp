// SPDX-License-Identifier: Apache-2.0
#include "tests/kernels/KernelFixture.h"

#include "kernels/PatchKernelTable.h"

#include <algorithm>
#include <limits>

namespace trovik::test {

KernelFixture::KernelFixture(const PolygonMesh& polygons,
                             unsigned subdivisions,
                             int32_t patchLevelOfDabs)
    : stroke(polygons, subdivisions),
      brush(*stroke.brush),
      mesh(stroke.Mesh()),
      patchLevel(patchLevelOfDabs) {}

KernelFixture::~KernelFixture() {
    if (!running) return;
    brush.wholeMesh = false;
    brush.EndStroke();
}

void KernelFixture::Start(Tool tool, int falloffIndex) {
    stroke.Activate(tool, falloffIndex);
    stroke.Begin();
    running = true;

    brush.patchLevel = patchLevel;
    brush.patchMeshLevel = stroke.geometry->BoundIndex() - static_cast<uint32_t>(patchLevel);
    brush.patchMesh = stroke.geometry->Level(brush.patchMeshLevel);
    brush.facesPerPatch = (1u << patchLevel) * (1u << patchLevel);
    brush.gridStride = (1u << patchLevel) + 3;
    const HWVector unwritten = HWVector::Splat(std::numeric_limits<float>::quiet_NaN());
    positionCells.assign(brush.gridStride * brush.gridStride, unwritten);
    layerCells.assign(brush.gridStride * brush.gridStride, unwritten);
    brush.positionGrid = positionCells.data();
    brush.layerGrid = layerCells.data();

    brush.dabStrength = 1.0f;
    brush.dabPressure = 1.0f;
    brush.brushSpace->direction = HWVector(Vector(0.0f, 0.0f, 1.0f));
    // A new visit stamp, because the vertices are still marked as visited by the previous stroke.
    brush.dabStamp = ++mesh.visitStamp;
    Aim(Vector(), 1.0f);
}

void KernelFixture::Aim(const Vector& center, float radius) {
    brush.setRadius(radius);
    brush.brushSpace->center = HWVector(center);
    brush.brushSpace->boundsMin = HWVector(center);
    brush.brushSpace->boundsMax = HWVector(center);
}

void KernelFixture::NextDab() { brush.dabStamp = ++mesh.visitStamp; }

void KernelFixture::Restart(Tool tool, int falloffIndex) {
    brush.EndStroke();
    Start(tool, falloffIndex);
}

bool KernelFixture::RunKernel(uint32_t patch) {
    return (brush.*patchKernels[brush.PatchSwitches().Index()])(patch);
}

uint32_t KernelFixture::VertexAt(uint32_t patch, uint32_t row, uint32_t column) const {
    const auto level = static_cast<uint32_t>(patchLevel);
    const uint32_t corner = SubdivisionLevel::QuadVertexIndexTable(level)[row * Points() + column];
    const uint32_t facesPerPatch = (1u << level) * (1u << level);
    return mesh.faceVertexIndices[patch * facesPerPatch * 4 + corner];
}

uint32_t KernelFixture::CellAt(uint32_t row, uint32_t column) const {
    return (row + 1) * (Points() + 2) + column + 1;
}

Vector KernelFixture::GridAt(uint32_t row, uint32_t column) const {
    return static_cast<Vector>(positionCells[CellAt(row, column)]);
}

uint32_t KernelFixture::VertexNear(const Vector& point) const {
    uint32_t nearest = 0;
    for (uint32_t v = 1; v < mesh.VertexCount(); ++v) {
        if ((mesh.Position(v) - point).Length() < (mesh.Position(nearest) - point).Length())
            nearest = v;
    }
    return nearest;
}

const StoredVertexInfo* KernelFixture::Record(uint32_t vertex) const {
    for (uint32_t i = 0; i < mesh.changeRecordCount; ++i)
        if (mesh.changeRecords[i].vertexIndex == vertex) return mesh.changeRecords + i;
    return nullptr;
}

void KernelFixture::SetStamp(
    uint32_t width, uint32_t height, const std::vector<float>& pixels, bool isVector, float scale) {
    brush.stampEnabled = true;
    brush.stampIsVector = isVector;
    brush.stampWidth = width;
    brush.stampHeight = height;
    brush.stampFactor = 1.0f;
    delete[] brush.stampPixels;
    brush.stampPixels = new float[std::max<std::size_t>(pixels.size(), 1)];
    std::copy(pixels.begin(), pixels.end(), brush.stampPixels);
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            brush.brushSpace->stampMatrix[row][column] =
                row != column ? 0.0f : (row == 3 ? 1.0f : scale);
}

FacingAngle::FacingAngle(SwiftStroke& brush, const Vector& eye, float start, float range) {
    brush.facingAngleStart = start;
    brush.facingAngleRange = range;
    auto* scene = dynamic_cast<HostScene*>(g_pKernel->Scene());
    scene->SetActiveCamera(nullptr);
    scene->OwnCamera().Transform().Set(Vector(1.0f, 1.0f, 1.0f), Vector(), eye);
    CheckableFloatArray::s_bActive = true;
}

FacingAngle::~FacingAngle() {
    CheckableFloatArray::s_bActive = false;
    auto* scene = dynamic_cast<HostScene*>(g_pKernel->Scene());
    scene->OwnCamera().Transform().Set(Vector(1.0f, 1.0f, 1.0f), Vector(), Vector());
}

}  // namespace trovik::test
