// SPDX-License-Identifier: Apache-2.0
#include "python/core/SessionArrays.h"

#include "framework/mesh/SurfaceNormal.h"
#include "framework/multires/LevelSource.h"
#include "python/core/Errors.h"

#include <algorithm>
#include <limits>

namespace trovik::python {

namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

using Rows = py::array_t<float>;

Rows MakeRows(std::size_t rows, std::size_t columns) {
    return Rows(std::vector<std::size_t>{rows, columns});
}

void Store(float* row, const Vector& v) {
    row[0] = v.x;
    row[1] = v.y;
    row[2] = v.z;
}

}  // namespace

ViewOwner::ViewOwner(py::object ofSession) : session(std::move(ofSession)) {
    session.cast<Session&>().AddView();
}

py::array Positions(const py::object& self) {
    const LevelMesh& level = *self.cast<Session&>().Use().Geometry().Bound();
    const py::object owner = py::cast(std::make_unique<ViewOwner>(self));
    py::array_t<float> view(
        {static_cast<py::ssize_t>(level.VertexCount()), py::ssize_t{3}},
        {static_cast<py::ssize_t>(sizeof(Vertex)), static_cast<py::ssize_t>(sizeof(float))},
        &level.vertices.array->x,
        owner);
    view.attr("setflags")(py::arg("write") = false);
    return view;
}

py::array Normals(Session& session) {
    const LevelMesh& level = *session.Use().Geometry().Bound();
    Rows normals = MakeRows(level.VertexCount(), 3);
    float* out = normals.mutable_data();
    for (uint32_t v = 0; v < level.VertexCount(); ++v)
        Store(out + 3 * std::size_t{v},
              Unpacked(level.vertexNormals.array[v]) * packedNormalToFloat);
    return normals;
}

py::array Faces(Session& session, std::optional<uint32_t> number) {
    const LevelGeometry& geometry = session.Use().Geometry();
    const uint32_t index = number.value_or(geometry.BoundIndex());
    if (index >= geometry.LevelCount())
        throw py::index_error("there is no level " + std::to_string(index) + "; the highest is " +
                              std::to_string(geometry.LevelCount() - 1));
    const LevelMesh& level = *geometry.Level(index);
    const uint32_t corners = level.CornersPerFace();
    py::array_t<uint32_t> faces(std::vector<std::size_t>{level.faceCount, corners});
    const uint32_t* from = level.faceVertexIndices.array;
    std::copy(from, from + std::size_t{level.faceCount} * corners, faces.mutable_data());
    return faces;
}

py::object Uvs(Session& session) {
    const LevelGeometry& geometry = session.Use().Geometry();
    const LevelSource source(geometry, {});
    if (source.UvCount() == 0) return py::none();
    const uint32_t corners = geometry.Bound()->CornersPerFace();
    Rows uvs(std::vector<std::size_t>{geometry.Bound()->faceCount, corners, 2});
    float* out = uvs.mutable_data();
    source.ReadFaces(MeshSource::Uvs, [&](const FaceBlock& block) {
        for (std::size_t i = 0; i < block.uvIndices.size(); ++i) {
            const bool isGiven = block.uvIndices[i] != SurfaceAttributes::none;
            *out++ = isGiven ? block.uvs[i][0] : nan;
            *out++ = isGiven ? block.uvs[i][1] : nan;
        }
    });
    return uvs;
}

py::object Colors(Session& session) {
    const LevelGeometry& geometry = session.Use().Geometry();
    const LevelSource source(geometry, {});
    if (!source.HasColors()) return py::none();
    Rows colors = MakeRows(geometry.Bound()->VertexCount(), 4);
    float* out = colors.mutable_data();
    source.ReadVertices(MeshSource::Colors, [&](const VertexBlock& block) {
        for (const auto& color : block.colors) out = std::copy(color.begin(), color.end(), out);
    });
    return colors;
}

py::array Mask(Session& session) {
    const LevelMesh& level = *session.Use().Geometry().Bound();
    py::array_t<uint8_t> mask(level.VertexCount());
    uint8_t* out = mask.mutable_data();
    for (uint32_t v = 0; v < level.VertexCount(); ++v) out[v] = level.Freeze(v);
    return mask;
}

py::array HiddenFaces(Session& session) {
    const LevelMesh& level = *session.Use().Geometry().Bound();
    py::array_t<bool> hidden(level.faceCount);
    bool* out = hidden.mutable_data();
    for (uint32_t f = 0; f < level.faceCount; ++f) out[f] = level.IsFaceHidden(f);
    return hidden;
}

py::array LayerOffsets(Session& session, std::size_t index, const std::string& name) {
    const LevelGeometry& geometry = session.Use().Geometry();
    const auto layers = geometry.Layers().OfLevel(*geometry.Bound());
    if (index >= layers.size() || layers[index]->Name() != name)
        Raise("Error", "the layer \"" + name + "\" was removed, renamed or moved");
    const SculptLayer& layer = *layers[index];
    Rows offsets = MakeRows(geometry.Bound()->VertexCount(), 3);
    float* out = offsets.mutable_data();
    std::fill_n(out, offsets.size(), 0.0f);
    for (uint32_t slot = 0; slot < layer.SlotCount(); ++slot)
        Store(out + 3 * std::size_t{layer.VertexOfSlot(slot)}, layer.StateOfSlot(slot).offset);
    return offsets;
}

py::array LocalToWorld(Session& session) {
    Matrix matrix;
    session.Use().Geometry().Transform().LocalToWorldMatrix(&matrix);
    static_assert(sizeof(Matrix) == 16 * sizeof(float));
    Rows rows = MakeRows(4, 4);
    std::copy_n(reinterpret_cast<const float*>(&matrix), 16, rows.mutable_data());
    return rows;
}

}  // namespace trovik::python
