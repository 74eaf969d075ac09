// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "python/core/Session.h"

#include <string>

/// \file Arrays of a document. `Positions` returns a view; all other functions return copies.
/// Positions and offsets are mesh-local, and all arrays are those of the current level unless a
/// level is given.
namespace trovik::python {

/// A read-only view of the vertex positions: float32 (vertices, 3), strides (20, 4). While it
/// exists, the session refuses operations that would invalidate it.
/// \param self  the Python object of the session; the view keeps it alive.
py::array Positions(const py::object& self);
/// Unit normals, float32 (vertices, 3).
py::array Normals(Session& session);
/// Vertices of each face, uint32 (faces, 4), or (faces, 3) for level 0 of a triangle mesh.
py::array Faces(Session& session, std::optional<uint32_t> level);
/// Texture coordinates per corner, float32 (faces, corners, 2), NaN where a face has none; None if
/// the mesh has no texture coordinates.
py::object Uvs(Session& session);
/// float32 (vertices, 4), or None.
py::object Colors(Session& session);
/// Freeze amounts, uint8 (vertices,).
py::array Mask(Session& session);
/// bool (faces,).
py::array HiddenFaces(Session& session);
/// Offsets of a layer of the current level, float32 (vertices, 3). \param index  0 is the lowest.
/// \param name  checked, because the layers may have changed since the index was determined.
py::array LayerOffsets(Session& session, std::size_t index, const std::string& name);
/// float32 (4, 4), row-vector convention.
py::array LocalToWorld(Session& session);

/// Casts rays. \param rays  world space, (n, 6): origin and direction.
/// \return face (int64, -1 for a miss), position and normal (world space, NaN for a miss), and t,
/// the ray parameter of the hit.
py::dict Pick(Session& session,
              const py::array_t<float, py::array::c_style | py::array::forcecast>& rays);
/// Finds the point on the surface nearest to each point. \param points  world space, (n, 3).
/// \return as Pick, but `t` is the distance in world space.
py::dict Nearest(Session& session,
                 const py::array_t<float, py::array::c_style | py::array::forcecast>& points);

/// The values of DocumentState.
py::dict StateOf(Session& session);

/// Keeps a session alive while a view of its positions exists, and counts the views.
class ViewOwner {
public:
    explicit ViewOwner(py::object session);
    ~ViewOwner() { session.cast<Session&>().RemoveView(); }
    ViewOwner(const ViewOwner&) = delete;
    ViewOwner& operator=(const ViewOwner&) = delete;

private:
    py::object session;
};

}  // namespace trovik::python
