// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/journal/JournalContent.h"
#include "framework/script/ScriptRunner.h"

#include <memory>
#include <string>
#include <vector>

namespace trovik {

struct RecoveryOptions {
    /// Of a damaged journal, takes what comes before the damage.
    bool untilDamage = false;
    ScriptProgress progress;
};

/// The work of a journal, done again.
struct RecoveredWork {
    /// Where it stands, as the process stood that kept the journal; a stroke that was under way is
    /// ended after its last finished dab.
    std::unique_ptr<ScriptRunner> runner;
    JournalContent content;
    /// Steps and dabs of the journal that were done again.
    std::size_t steps = 0;
    uint64_t dabs = 0;
    /// What was left out, and why, one line each.
    std::vector<std::string> notes;
};

/// Does the work of a journal again, from what it started from or the last scene that was saved,
/// step by step and dab by dab, up to the last finished dab. Steps that write files write none.
/// The result has the bits of the work itself.
/// \throw HostError naming journal and reason: damage; a mesh, scene or stamp that is no longer
/// there or is not what it was; work that comes out otherwise than it did. Cancelled.
TROVIK_API RecoveredWork RedoJournal(const std::string& journalPath,
                                     const RecoveryOptions& options = {});

/// RedoJournal, and saves the work as a scene. The journal stays as it is. Whether the scene can be
/// written is checked first (CheckWritable).
TROVIK_API RecoveredWork RecoverJournal(const std::string& journalPath,
                                        const std::string& scenePath,
                                        const RecoveryOptions& options = {});

}  // namespace trovik
