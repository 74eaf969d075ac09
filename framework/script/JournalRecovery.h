// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/journal/JournalContent.h"
#include "framework/script/ScriptRunner.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

struct RecoveryOptions {
    /// Whether to recover the part of a damaged journal that precedes the damage.
    bool untilDamage = false;
    /// Whether to replay all steps of the journal. By default, the replay starts from the last
    /// saved scene if possible. If the file from which the journal starts is missing or has
    /// changed, the replay starts from the first saved scene that can be used, and a note reports
    /// this.
    bool fromStart = false;
    /// Called with the document when it has been opened, after each step, and at the end. It must
    /// not change the document; exceptions end the replay. May be empty.
    std::function<void(Document&)> afterStep;
    ScriptProgress progress;
};

/// The work recovered from a journal.
struct RecoveredWork {
    /// Its document is in the state that it had in the process that wrote the journal, except that
    /// an open stroke has been ended after its last complete dab.
    std::unique_ptr<ScriptRunner> runner;
    JournalContent content;
    /// Number of journal steps and dabs that were replayed.
    std::size_t steps = 0;
    uint64_t dabs = 0;
    /// The skipped parts and the reasons, one line each.
    std::vector<std::string> notes;
};

/// Replays a journal step by step and dab by dab, from its base or a saved scene up to the last
/// complete dab. During recovery, steps that would write files skip the write. The result is
/// bit-identical to the original work.
/// \throw HostError that contains the journal's path and the reason: damage; a mesh, scene or stamp
/// that is missing or has changed; a step whose result differs when it is replayed.
/// \throw Cancelled.
TROVIK_API RecoveredWork RedoJournal(const std::string& journalPath,
                                     const RecoveryOptions& options = {});

/// Checks that the scene can be written (CheckWritable), calls RedoJournal, and saves the result as
/// a scene. The journal is not changed.
TROVIK_API RecoveredWork RecoverJournal(const std::string& journalPath,
                                        const std::string& scenePath,
                                        const RecoveryOptions& options = {});

}  // namespace trovik
