// SPDX-License-Identifier: Apache-2.0

/// \file Ray and nearest-point queries, and the published state.
#include "framework/mesh/SurfaceNormal.h"
#include "framework/strokes/DabAtHit.h"
#include "python/core/SessionArrays.h"

#include <limits>
#include <pybind11/stl.h>

namespace trovik::python {

namespace {

/// The results of a query, one row per ray or point; rows without a hit contain NaN, and -1 as the
/// face.
struct Hits {
    explicit Hits(py::ssize_t count)
        : face(count),
          position(std::vector<py::ssize_t>{count, 3}),
          normal(std::vector<py::ssize_t>{count, 3}),
          t(count) {
        std::fill_n(face.mutable_data(), face.size(), int64_t{-1});
        for (py::array_t<float>* values : {&position, &normal, &t})
            std::fill_n(
                values->mutable_data(), values->size(), std::numeric_limits<float>::quiet_NaN());
    }

    /// Releases the GIL while it calls a function that calls Set.
    template <typename Work>
    static void Fill(const Work& work) {
        const py::gil_scoped_release released;
        work();
    }

    void Set(py::ssize_t row, const LevelGeometry& geometry, const PickHit& hit, float parameter) {
        const Vector point = WorldPositionOf(geometry, hit);
        const Vector outward = WorldNormal(geometry.Transform(), hit.normal);
        float* p = position.mutable_data(row);
        float* n = normal.mutable_data(row);
        face.mutable_at(row) = hit.face;
        t.mutable_at(row) = parameter;
        p[0] = point.x;
        p[1] = point.y;
        p[2] = point.z;
        n[0] = outward.x;
        n[1] = outward.y;
        n[2] = outward.z;
    }

    py::dict ToDict() const {
        using namespace py::literals;
        return py::dict("face"_a = face, "position"_a = position, "normal"_a = normal, "t"_a = t);
    }

    py::array_t<int64_t> face;
    py::array_t<float> position;
    py::array_t<float> normal;
    py::array_t<float> t;
};

void RequireColumns(const py::array& rows, py::ssize_t columns, const char* name) {
    if (rows.ndim() != 2 || rows.shape(1) != columns)
        throw py::value_error(std::string(name) + " must have the shape (n, " +
                              std::to_string(columns) + ")");
}

py::dict ToolOf(const DocumentState::Tool& tool) {
    using namespace py::literals;
    return py::dict(
        "name"_a = tool.name,
        "radius"_a = tool.radius,
        "radiusPixels"_a = tool.radiusPixels,
        "spacing"_a = tool.spacing * 100.0f,
        "strength"_a = tool.strength,
        "falloff"_a =
            tool.falloff.empty() ? py::object(py::none()) : py::object(py::str(tool.falloff)),
        "stamp"_a = tool.usesStamp ? py::object(py::str(tool.stampPath)) : py::object(py::none()));
}

}  // namespace

py::dict Pick(Session& session,
              const py::array_t<float, py::array::c_style | py::array::forcecast>& rays) {
    Document& document = session.Use().Document();
    RequireColumns(rays, 6, "rays");
    const LevelGeometry& geometry = document.Geometry();
    const MatrixTransform& transform = geometry.Transform();
    Hits hits(rays.shape(0));
    const Session::Call call(session);
    Hits::Fill([&] {
        for (py::ssize_t i = 0; i < rays.shape(0); ++i) {
            const float* row = rays.data(i);
            const Vector origin(row[0], row[1], row[2]);
            const Vector direction(row[3], row[4], row[5]);
            Ray ray;
            transform.WorldToLocal(&ray.origin, &origin, 1.0f);
            transform.WorldToLocal(&ray.direction, &direction, 0.0f);
            // The parameter of the hit is the same in both spaces.
            if (const auto hit = document.Tree().Pick(ray)) hits.Set(i, geometry, *hit, hit->t);
        }
    });
    return hits.ToDict();
}

py::dict Nearest(Session& session,
                 const py::array_t<float, py::array::c_style | py::array::forcecast>& points) {
    Document& document = session.Use().Document();
    RequireColumns(points, 3, "points");
    const LevelGeometry& geometry = document.Geometry();
    Hits hits(points.shape(0));
    const Session::Call call(session);
    Hits::Fill([&] {
        for (py::ssize_t i = 0; i < points.shape(0); ++i) {
            const float* row = points.data(i);
            const Vector point(row[0], row[1], row[2]);
            Vector local;
            geometry.Transform().WorldToLocal(&local, &point, 1.0f);
            const auto hit = document.Tree().Nearest(local);
            if (hit)
                hits.Set(i, geometry, *hit, (WorldPositionOf(geometry, *hit) - point).Length());
        }
    });
    return hits.ToDict();
}

py::dict StateOf(Session& session) {
    using namespace py::literals;
    const auto state = session.Use().Document().State();
    py::list levels, layers, history;
    for (const DocumentState::Level& level : state->levels)
        levels.append(py::make_tuple(level.vertices, level.faces));
    for (const DocumentState::Layer& layer : state->layers)
        layers.append(py::dict("name"_a = layer.name,
                               "strength"_a = layer.strength,
                               "visible"_a = layer.visible,
                               "writable"_a = layer.writable,
                               "active"_a = layer.active));
    for (const HistoryEntry& entry : state->history)
        history.append(py::dict(
            "label"_a = entry.label,
            "tool"_a = entry.tool,
            "time"_a = std::chrono::duration<double>(entry.time.time_since_epoch()).count(),
            "bytes"_a = entry.bytes,
            "joins_previous"_a = entry.joinsPrevious));
    return py::dict("levels"_a = levels,
                    "current_level"_a = state->currentLevel,
                    "layers"_a = layers,
                    "tool"_a = ToolOf(state->tool),
                    "tools"_a = state->tools,
                    "history"_a = history,
                    "history_position"_a = state->historyPosition,
                    "is_modified"_a = state->isModified,
                    "is_stroke_open"_a = state->isStrokeOpen,
                    "source_path"_a = state->sourcePath,
                    "scene_path"_a = state->scenePath);
}

}  // namespace trovik::python
