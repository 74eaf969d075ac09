// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceChange.h"
#include "host/Api.h"

#include <string>

namespace trovik {

/// Receives the events of a Document. Every member does nothing by default.
///
/// Events arrive on the document's thread, after the operation that caused them is complete.
/// SurfaceChanged arrives earlier: during the operation, as soon as the arrays of the level hold
/// the change, and during a stroke after each dab. One operation may report several changes. An
/// operation that throws may have changed something before; its events arrive too. An observer may
/// read the document, add and remove observers, but must not change the document. It must not
/// throw.
class TROVIK_API DocumentObserver {
public:
    virtual void SurfaceChanged(const SurfaceChange& change);
    /// Levels were added or deleted, or another level is current.
    virtual void LevelsChanged();
    /// Of the current level: layers, their order, their properties, or which one is active.
    virtual void LayersChanged();
    /// Steps were added, undone, redone or dropped.
    virtual void HistoryChanged();
    /// Another tool is active, or its settings, those of the pen or the symmetry changed.
    virtual void ToolChanged();
    virtual void CameraChanged();
    /// Whether the document differs from its file; see Document::IsModified.
    virtual void ModifiedChanged(bool modified);
    /// Something failed that loses no work, such as undo steps that cannot be moved to disk or a
    /// journal that cannot be written. One line.
    virtual void Problem(const std::string& message);

protected:
    ~DocumentObserver() = default;
};

}  // namespace trovik
