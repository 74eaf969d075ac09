// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/HistoryEntries.h"
#include "framework/strokes/StrokePath.h"
#include "host/Matrix.h"

#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

/// A snapshot of the Document values shown in panels. Immutable once published, so any thread may
/// read it; see Document::State.
struct DocumentState {
    struct Level {
        uint32_t vertices = 0;
        uint32_t faces = 0;
        bool operator==(const Level&) const = default;
    };
    /// Lowest level first.
    std::vector<Level> levels;
    uint32_t currentLevel = 0;

    struct Layer {
        std::string name;
        float strength = 1.0f;
        bool visible = true;
        /// False if the layer is locked against sculpting.
        bool writable = true;
        bool active = false;
        bool operator==(const Layer&) const = default;
    };
    /// The layers of the current level, lowest first.
    std::vector<Layer> layers;

    struct Tool {
        std::string name;
        /// World units; not used if `radiusPixels` is above 0.
        float radius = 0.0f;
        float radiusPixels = 0.0f;
        /// Fraction of the radius.
        float spacing = 0.0f;
        /// In percent.
        float strength = 0.0f;
        /// Name of the built-in curve; empty for a user-defined curve.
        std::string falloff;
        /// Value of BrushOperation::Direction.
        int direction = 0;
        bool pressureControlsStrength = false;
        bool pressureControlsSize = false;
        bool usesFacing = false;
        bool usesStamp = false;
        std::string stampPath;
    };
    Tool tool;
    /// Names of all tools, in the order in which the plug-in lists them.
    std::vector<std::string> tools;

    struct Symmetry {
        /// See StrokeLoop::SetMirrors.
        int mode = 0;
        /// Number of mirrored dabs applied in addition to each dab.
        uint32_t copies = 0;
        bool topological = false;
        /// Matrices that map the mesh-local position of a dab to the positions of its copies; see
        /// MirrorMaps.
        std::vector<Matrix> maps;
    };
    Symmetry symmetry;
    StrokeView view;

    /// Oldest entry first. The first `historyPosition` entries are applied; the others can be
    /// redone.
    std::vector<HistoryEntry> history;
    std::size_t historyPosition = 0;
    /// Size of the history in bytes, in memory and in its temporary file.
    uint64_t historyBytes = 0;
    uint64_t historyBytesOnDisk = 0;
    /// Total size of all arrays that the process's memory accounting tracks, and the memory limit
    /// (0 if there is none); both in bytes.
    int64_t memoryBytes = 0;
    int64_t memoryLimit = 0;

    bool isModified = false;
    bool isStrokeOpen = false;
    /// The mesh or scene file that was opened.
    std::string sourcePath;
    /// The scene that was last opened or saved; empty if there is none.
    std::string scenePath;
};

}  // namespace trovik
