// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/mesh/MeshSource.h"

#include <cstddef>
#include <functional>
#include <string>

namespace trovik {

/// Receives the progress of a script or of single steps. Every function may be empty.
struct ScriptProgress {
    /// Steps finished and their number, and the label of the current one.
    std::function<void(std::size_t done, std::size_t count, const std::string& what)> step;
    /// A dab was made; for progress within a long stroke.
    std::function<void()> dab;
    /// Elements of a mesh file that were written, and how many there will be.
    WriteProgress file;
    /// A message of the brush to its user, as plain text; a note about a file; or a failure that
    /// costs memory but loses nothing, such as undo steps that cannot be moved to disk.
    std::function<void(const std::string&)> message;
    /// A step had no effect, or probably not the intended one (file, JSON pointer, reason; at most
    /// once per step), or safety that the user relies on was lost: the journal could not be
    /// written. The work goes on. If empty, `message` receives what concerns safety.
    std::function<void(const std::string&)> warning;
    /// Called between steps and dabs, and now and then while levels and files are made; returns
    /// true to stop: the run then throws WorkStopped.
    std::function<bool()> stop;
};

}  // namespace trovik
