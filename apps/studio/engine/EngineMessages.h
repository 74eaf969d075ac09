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
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// \file
/// The values exchanged between the UI thread and the engine thread. They are immutable once sent.
namespace trovik::studio {

/// Packed patches of the displayed level, for the viewport's vertex buffers. Updates have to be
/// applied in the order in which they were sent.
struct SurfaceUpdate {
    /// The division of the level into patches; the same object until the level or its topology
    /// changes. The first update with a different layout replaces the whole surface. The new
    /// patches arrive in several updates; patches that have not yet arrived are not drawn.
    std::shared_ptr<const PatchLayout> layout;
    /// The patches of this update, each listed once, and their mesh-local bounding boxes.
    std::vector<uint32_t> patches;
    std::vector<AxisAlignedBoundingBox> boxes;
    /// The vertices of the patches, in the order of `patches`.
    std::vector<DisplayVertex> vertices;
    /// Mesh-local to world, row-vector convention.
    Matrix toWorld;
    /// Mesh-local bounding box of the level's visible faces.
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
    /// In world space; the normal has length 1.
    Vector position;
    Vector normal;
    /// Radius of a dab at this point, in world units.
    float radius = 0.0f;
    /// The face group at this point, as an index into OpenedDocument::groups; -1 if there is none.
    int group = -1;
    /// Positions and normals of the mirrored dabs.
    struct Mirrored {
        Vector position;
        Vector normal;
    };
    std::vector<Mirrored> mirrored;
};

/// Options for beginning a stroke.
struct StrokeStart {
    /// The view to which the samples' pixel coordinates refer. It does not change during the
    /// stroke.
    StrokeView view;
    BrushOperation::Modifier modifier = BrushOperation::ModifierNone;
    /// Name of a tool for this stroke only; if empty, the active tool is used.
    std::string tool;
    /// A straight line from press to release.
    bool isLine = false;
    /// Stabiliser length (lazy brush) in pixels; if negative, the tool's own setting applies.
    float steadyPixels = -1.0f;
};

/// A pen or mouse sample: position in pixels of the stroke's view, pressure from 0 to 1, tilt as in
/// PathSample::tilt, milliseconds since the press.
struct PenPoint {
    float x = 0.0f, y = 0.0f;
    float pressure = 1.0f;
    float tiltX = 0.0f, tiltY = 0.0f;
    double milliseconds = 0.0;
};

/// A document to open. Exactly one of the paths and `makeMesh` must be set.
struct OpenRequest {
    std::string meshPath;
    std::string scenePath;
    /// Path of a journal whose process ended without closing it.
    std::string journalPath;
    /// Writes the mesh file and returns its path. Called on the engine thread.
    std::function<std::string()> makeMesh;
    /// Units and up axis of a mesh, as in stroke scripts; if empty, those specified in the file
    /// apply.
    std::string units, up;
    /// Levels to add to a mesh.
    int levels = 0;
    /// Preference values by key, such as "Undo Budget"; the others have their defaults.
    nlohmann::json preferences;
    /// Other fields of a stroke script's setup, such as "seed" and "mirror". Its preferences take
    /// precedence over those above. Null if there are none.
    nlohmann::json setup;
    /// Name of a new document created from a primitive; if empty, the file name is used.
    std::string title;
};

/// An opened document.
struct OpenedDocument {
    std::string title;
    /// The file from which it was opened.
    std::string sourcePath;
    /// The scene file to save to; empty if the document has none yet.
    std::string scenePath;
    /// The document's journal; empty if none is written.
    std::string journalPath;
    /// World-space bounding box.
    AxisAlignedBoundingBox bounds;
    StrokeView view;
    /// Application data stored in the scene; see ApplicationData.
    ApplicationData applicationData;
    /// Names of the face groups, and whether there are faces without a group.
    std::vector<std::string> groups;
    bool hasUngroupedFaces = false;
    /// Notes about the file, one line each.
    std::vector<std::string> notes;
    bool isRecovered = false;
    /// For recovered work, the folder of the scene in which the work was done; empty if there was
    /// none, or if the journal does not contain it.
    std::string workFolder;
    /// Whether a script with its own setup opened it.
    bool isFromScript = false;
};

/// Settings of the active tool, as ReadToolSettings returns them.
using ToolSettingList = std::vector<ToolSetting>;

/// Statistics of the last stroke.
struct StrokeFigures {
    unsigned dabs = 0;
    /// Milliseconds per dab in the engine, for the last Add that applied dabs.
    double millisecondsPerDab = 0.0;
};

}  // namespace trovik::studio
