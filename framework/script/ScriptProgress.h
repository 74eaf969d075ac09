// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace trovik {

class JobControl;

/// Receives the progress of a script or of single steps. Every function may be empty, and the job
/// null.
struct ScriptProgress {
    /// Steps finished and their number, and the label of the current one.
    std::function<void(std::size_t done, std::size_t count, const std::string& what)> step;
    /// A dab was made; for progress within a long stroke.
    std::function<void()> dab;
    /// A message of the brush to its user, as plain text; a note about a file; or a failure that
    /// costs memory but loses nothing, such as undo steps that cannot be moved to disk.
    std::function<void(const std::string&)> message;
    /// A step had no effect, or probably not the intended one (file, JSON pointer, reason; at most
    /// once per step), or safety that the user relies on was lost: the journal could not be
    /// written. The work goes on. If empty, `message` receives what concerns safety.
    std::function<void(const std::string&)> warning;
    /// Receives the progress of long steps, and can cancel the run between steps and dabs and
    /// during long steps: the run then throws Cancelled. Borrowed.
    JobControl* job = nullptr;
};

}  // namespace trovik
