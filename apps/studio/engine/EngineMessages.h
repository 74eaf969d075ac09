// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/display/DisplayVertex.h"
#include "framework/display/PatchLayout.h"
#include "framework/document/DocumentState.h"
#include "framework/script/ToolSettings.h"
#include "framework/strokes/StrokePath.h"
#include "host/BrushOperation.h"
#include "host/Matrix.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// \file
/// The values that the UI thread and the engine thread exchange. They are immutable once sent.
namespace trovik::studio {

/// Packed patches of the displayed level, for the viewport's vertex buffers. Updates have to be
/// applied in the order in which they were sent.
struct SurfaceUpdate {
    /// The division of the level into patches; the same object until the level or its topology
    /// changes. The first update with another layout replaces the whole surface. Its patches arrive
    /// in several updates; patches that have not yet arrived are not drawn.
    std::shared_ptr<const PatchLayout> layout;
    /// The patches of this update, each once, and the mesh-local box of each.
    std::vector<uint32_t> patches;
    std::vector<AxisAlignedBoundingBox> boxes;
    /// The vertices of the patches, in the order of `patches`.
    std::vector<DisplayVertex> vertices;
    /// Mesh-local to world, row-vector convention.
    Matrix toWorld;
    /// Mesh-local box of the visible faces of the level.
    AxisAlignedBoundingBox bounds;
    /// Steady-clock time, in seconds, of the newest pen sample that the update shows; 0 if it shows
    /// none.
    double sampleTime = 0.0;
};

/// The surface under the pointer.
struct HoverHit {
    bool isHit = false;
    /// The pixel that was picked.
    float x = 0.0f, y = 0.0f;
    /// World; the normal has length 1.
    Vector position;
    Vector normal;
    /// Radius of a dab there, world units.
    float radius = 0.0f;
    /// The face group there, as an index into OpenedDocument::groups; -1 if there is none.
    int group = -1;
    /// Where mirrored dabs would be applied, and their normals.
    struct Mirrored {
        Vector position;
        Vector normal;
    };
    std::vector<Mirrored> mirrored;
};

/// How a stroke begins.
struct StrokeStart {
    /// The view that the samples' pixels refer to. It does not change during the stroke.
    StrokeView view;
    BrushOperation::Modifier modifier = BrushOperation::ModifierNone;
    /// A tool for this stroke only, by name; empty: the active tool.
    std::string tool;
    /// Straight from press to release.
    bool isLine = false;
    /// Stabiliser length (lazy brush) in pixels; negative: the tool's own setting.
    float steadyPixels = -1.0f;
};

/// A pen or mouse sample: pixels of the stroke's view, pressure 0 to 1, tilt as PathSample::tilt,
/// milliseconds since the press.
struct PenPoint {
    float x = 0.0f, y = 0.0f;
    float pressure = 1.0f;
    float tiltX = 0.0f, tiltY = 0.0f;
    double milliseconds = 0.0;
};

/// A document to open. Exactly one of the paths must be set.
struct OpenRequest {
    std::string meshPath;
    std::string scenePath;
    /// Path of a journal whose process ended without closing it.
    std::string journalPath;
    /// Units and up axis of a mesh, as in stroke scripts; empty: those of the file.
    std::string units, up;
    /// Levels to add to a mesh.
    int levels = 0;
    /// Preference values by key, such as "Undo Budget"; the others have their defaults.
    nlohmann::json preferences;
    /// Name of a new document that was made from a primitive; empty: the name of the file.
    std::string title;
};

/// A document that was opened.
struct OpenedDocument {
    std::string title;
    /// The file that it came from.
    std::string sourcePath;
    /// The scene file that saving writes; empty if the document has none yet.
    std::string scenePath;
    /// The journal of the document; empty if none is kept.
    std::string journalPath;
    /// World box.
    AxisAlignedBoundingBox bounds;
    StrokeView view;
    /// Entries of the scene for applications; see ApplicationData.
    ApplicationData applicationData;
    /// Names of the face groups, and whether there are faces without a group.
    std::vector<std::string> groups;
    bool hasUngroupedFaces = false;
    /// Notes about the file, one line each.
    std::vector<std::string> notes;
    bool isRecovered = false;
};

/// Settings of the active tool, as ReadToolSettings returns them.
using ToolSettingList = std::vector<ToolSetting>;

/// Figures of the last stroke.
struct StrokeFigures {
    unsigned dabs = 0;
    /// Of the last Add that applied dabs: milliseconds in the engine, per dab.
    double millisecondsPerDab = 0.0;
};

}  // namespace trovik::studio
