// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerStack.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/nodes/SceneStream.h"
#include "framework/scene/ApplicationData.h"
#include "framework/strokes/DabDynamics.h"
#include "framework/strokes/StrokePath.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// \file
/// Scene files (*.trovik): a mesh with all its levels, layers and nodes, the settings of all tools,
/// of pen and freeze brush, mirrors and view, so that work goes on to the bit where it was left.
/// docs/scene-format.md tells every byte. Not in them: the undo history, preferences, stroke
/// totals.
namespace trovik {

/// What a scene holds beside mesh and brush.
struct SceneSettings {
    StrokeView view;
    /// Of the strokes to come: world units, and a share of the radius.
    float radius = 0.1f;
    float spacing = 0.25f;
    /// Of the pen, whatever the tool.
    DabDynamics dynamics;
    /// What the strokes to come leave to chance follows from these two.
    uint64_t seed = 0;
    uint64_t strokesBegun = 0;
    /// Mode and point maps as StrokeLoop::SetMirrors takes them.
    int mirrorMode = 0;
    std::vector<Matrix> mirrorMaps;
    /// Entries of all applications, also unknown ones.
    ApplicationData applicationData;
};

/// The things that make a scene, borrowed for the length of SaveScene. None is changed; the brush
/// is lent its tools' settings one after the other, and has its own back at the end.
struct SceneParts {
    LevelGeometry& geometry;
    /// The mesh as it was imported; its faces are those of level 0, or were split into them.
    const PolygonMesh& imported;
    BrushOperation& brush;
    const SceneSettings& settings;
    /// The brush that freezes, which has no tools; null: none.
    BrushOperation* freezeBrush = nullptr;
    /// Whether it is the one at work.
    bool isFreezing = false;
};

/// Writes the scene beside the old file and renames. No stroke may be under way.
/// \param header  format and class versions to write under; older ones leave out what they lack.
/// \param beforeReplacing  see FileReplacement::Commit.
/// \throw HostError naming the file and the reason, also for positions that are no numbers and
/// where memory runs out; Cancelled. The old file then is as it was, and nothing of the new one is
/// left.
TROVIK_API void SaveScene(
    const std::string& path,
    const SceneParts& parts,
    const SceneStream& header = SceneStream(),
    const std::function<void(const std::string& temporaryPath)>& beforeReplacing = {},
    JobControl* job = nullptr);

/// A scene as read.
struct LoadedScene {
    uint32_t format = 0;
    std::unique_ptr<LevelGeometry> geometry;
    /// Level 0 as it was imported.
    PolygonMesh imported;
    SceneSettings settings;
    /// What was left out, one line each: nodes and chunks that this program does not know.
    std::vector<std::string> notes;
    /// Names of the tools with settings, the active one last.
    std::vector<std::string> tools;
    /// Whether the brush that freezes is at work.
    bool isFreezing = false;
};

/// Reads a scene, loading the plug-ins for the classes of its nodes. Everything or nothing: a scene
/// that throws leaves nothing behind.
/// \param brush  a new brush, which receives the tools' settings, at last those of the active tool;
/// null passes over them. After an error it is only good for being thrown away.
/// \param freezeBrush  the same for the brush that freezes.
/// \throw HostError "FILE: byte N: reason"; Cancelled.
TROVIK_API LoadedScene LoadScene(const std::string& path,
                                 BrushOperation* brush,
                                 BrushOperation* freezeBrush = nullptr,
                                 JobControl* job = nullptr);

/// Whether the file name ends in ".trovik", in any case.
TROVIK_API bool IsScenePath(const std::string& path);

}  // namespace trovik
