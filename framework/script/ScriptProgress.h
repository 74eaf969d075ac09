// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace trovik {

class JobControl;

/// Receives the progress of a script or of single steps. Each function may be empty, and the job
/// may be null.
struct ScriptProgress {
    /// Receives the number of finished steps, the total number of steps, and the label of the
    /// current step.
    std::function<void(std::size_t done, std::size_t count, const std::string& what)> step;
    /// Called after each dab; for progress within a long stroke.
    std::function<void()> dab;
    /// Receives plain text: a message from the brush to the user, a note about a file, or a failure
    /// that wastes memory but loses no data, such as undo steps that cannot be moved to disk.
    std::function<void(const std::string&)> message;
    /// Receives a warning when a step had no effect, or probably not the intended one (file, JSON
    /// pointer, reason; at most once per step), or when data is no longer protected because the
    /// journal could not be written. The work continues. If the function is empty, `message`
    /// receives the warnings about the journal.
    std::function<void(const std::string&)> warning;
    /// Receives the progress of long steps. It can cancel the run between steps, between dabs and
    /// within long steps; the run then throws Cancelled. Borrowed.
    JobControl* job = nullptr;
};

}  // namespace trovik
