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

/// \file Scene files (*.trovik). A scene contains a mesh with all its levels, layers and nodes, the
/// settings of all tools, the pen and the freeze brush, the mirrors and the view. Further work on a
/// loaded scene therefore gives bit-identical results. docs/scene-format.md describes every byte.
/// The undo history, preferences and stroke totals are not included.
namespace trovik {

/// The contents of a scene apart from the mesh and the brush.
struct SceneSettings {
    StrokeView view;
    /// Stroke settings: the radius in world units, and the spacing as a fraction of the radius.
    float radius = 0.1f;
    float spacing = 0.25f;
    /// Pen settings, for all tools.
    DabDynamics dynamics;
    /// Whether strokes refine the mesh, for all tools.
    DetailSettings detail;
    /// These determine the random values of later strokes.
    uint64_t seed = 0;
    uint64_t strokesBegun = 0;
    /// Mirror mode and point maps: the arguments of StrokeLoop::SetMirrors.
    int mirrorMode = 0;
    std::vector<Matrix> mirrorMaps;
    /// Entries of all applications, including unknown ones.
    ApplicationData applicationData;
};

/// The parts of a scene, borrowed for the duration of SaveScene. None of them is changed: the
/// settings of each tool are temporarily applied to the brush, and its own settings are restored at
/// the end.
struct SceneParts {
    LevelGeometry& geometry;
    /// The mesh as it was imported. Level 0 has the same faces, or the faces that result from
    /// splitting them.
    const PolygonMesh& imported;
    BrushOperation& brush;
    const SceneSettings& settings;
    /// The freeze brush, which has only one tool; null if there is none.
    BrushOperation* freezeBrush = nullptr;
    /// Whether the freeze brush is active.
    bool isFreezing = false;
    /// Brushes of further plug-ins; null entries are not allowed.
    std::vector<BrushOperation*> pluginBrushes = {};
    /// The entry of pluginBrushes that is active; null if none is.
    const BrushOperation* activePluginBrush = nullptr;
};

/// Writes the scene to a new file and replaces the old one. No stroke may be open.
/// \param header  format and class versions of the file; data that older versions do not support is
/// omitted.
/// \param beforeReplacing  see FileReplacement::Commit.
/// \throw HostError naming the file and the reason, which can also be a non-finite position or a
/// lack of memory; Cancelled. In both cases, the old file is unchanged and the new one is removed.
TROVIK_API void SaveScene(
    const std::string& path,
    const SceneParts& parts,
    const SceneStream& header = SceneStream(),
    const std::function<void(const std::string& temporaryPath)>& beforeReplacing = {},
    JobControl* job = nullptr);

/// The content of a scene file.
struct LoadedScene {
    uint32_t format = 0;
    std::unique_ptr<LevelGeometry> geometry;
    /// Level 0 as it was imported.
    PolygonMesh imported;
    SceneSettings settings;
    /// Parts that were skipped because this program does not support them, such as nodes and
    /// chunks; one line each.
    std::vector<std::string> notes;
    /// Names of the tools that have settings, the active tool last.
    std::vector<std::string> tools;
    /// Whether the freeze brush is active.
    bool isFreezing = false;
    /// The entry of `pluginBrushes` (LoadScene) that is active; null if none is.
    BrushOperation* activePluginBrush = nullptr;
};

/// Reads a scene and loads the plug-ins for the classes of its nodes. If the function throws,
/// everything that was read is discarded.
/// \param brush  a new brush that receives the settings of all tools, those of the active tool
/// last; null to skip them. After an error, the brush must be discarded.
/// \param freezeBrush  a new freeze brush, handled like `brush`.
/// \param pluginBrushes  new brushes of further plug-ins, handled like `brush`. The settings of a
/// brush that is not in the list are skipped, with a note if `brush` is not null.
/// \throw HostError "FILE: byte N: reason"; Cancelled.
TROVIK_API LoadedScene LoadScene(const std::string& path,
                                 BrushOperation* brush,
                                 BrushOperation* freezeBrush = nullptr,
                                 JobControl* job = nullptr,
                                 std::vector<BrushOperation*> pluginBrushes = {});

/// Returns whether the file name ends in ".trovik", in upper or lower case.
TROVIK_API bool IsScenePath(const std::string& path);

}  // namespace trovik
