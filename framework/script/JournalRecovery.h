// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/journal/JournalContent.h"
#include "framework/script/ScriptRunner.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

struct RecoveryOptions {
    /// Whether to recover the part before the damage from a damaged journal.
    bool untilDamage = false;
    ScriptProgress progress;
};

/// The recovered work of a journal.
struct RecoveredWork {
    /// In the state of the process that wrote the journal; a stroke that was open has been ended
    /// after its last complete dab.
    std::unique_ptr<ScriptRunner> runner;
    JournalContent content;
    /// Number of steps and dabs of the journal that were repeated.
    std::size_t steps = 0;
    uint64_t dabs = 0;
    /// Parts that were skipped and why, one line each.
    std::vector<std::string> notes;
};

/// Repeats the work of a journal step by step and dab by dab, from its base or the last saved scene
/// up to the last complete dab. During recovery, steps that would write files skip the write. The
/// result is bit-identical to the original work.
/// \throw HostError naming journal and reason: damage; a mesh, scene or stamp that is missing or
/// has changed; a step whose result differs when it is repeated. \throw Cancelled.
TROVIK_API RecoveredWork RedoJournal(const std::string& journalPath,
                                     const RecoveryOptions& options = {});

/// Calls RedoJournal and saves the result as a scene. The journal is not changed. Whether the scene
/// can be written is checked first (CheckWritable).
TROVIK_API RecoveredWork RecoverJournal(const std::string& journalPath,
                                        const std::string& scenePath,
                                        const RecoveryOptions& options = {});

}  // namespace trovik
