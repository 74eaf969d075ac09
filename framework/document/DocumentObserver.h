// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/SurfaceChange.h"
#include "host/Api.h"

#include <string>

namespace trovik {

/// Receives the events of a Document. The default implementation of every member does nothing.
///
/// Events arrive on the document's thread, after the operation that caused them is complete.
/// SurfaceChanged arrives earlier: during the operation, as soon as the arrays of the level contain
/// the change, and during a stroke after each dab. One operation may report several changes. An
/// operation that throws may already have made some changes; these are reported, too. An observer
/// may read the document and add and remove observers, but must not change the document. It must
/// not throw.
class TROVIK_API DocumentObserver {
public:
    virtual void SurfaceChanged(const SurfaceChange& change);
    /// Levels were added or deleted, or another level became current.
    virtual void LevelsChanged();
    /// In the current level, layers were added, deleted or reordered, their properties changed, or
    /// another layer became active.
    virtual void LayersChanged();
    /// Undo steps were added, undone, redone or dropped.
    virtual void HistoryChanged();
    /// Another tool became active, or settings of the tool, the pen or the symmetry changed.
    virtual void ToolChanged();
    virtual void CameraChanged();
    /// The document started to differ from its file, or became identical to it again; see
    /// Document::IsModified.
    virtual void ModifiedChanged(bool modified);
    /// A failure that loses no work, described in one line: for example, undo steps cannot be moved
    /// to disk, or a journal cannot be written.
    virtual void Problem(const std::string& message);

protected:
    ~DocumentObserver() = default;
};

}  // namespace trovik
