// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/ContentHash.h"
#include "framework/journal/JournalReader.h"
#include "host/Api.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <vector>

namespace trovik {

/// What the work of a journal started from.
struct JournalBase {
    /// Where the script lies, absolute; paths in steps are relative to its folder.
    std::string script;
    /// A stroke script without its steps: all that sets the work up.
    nlohmann::json setup;
    /// The mesh or scene file that the setup opens, absolute, and what it held.
    std::string source;
    ContentHash content;
    /// Name and version of the program.
    std::string program;
    /// Steps that set again what was set before and is not in the source; null for none.
    nlohmann::json carried;
    /// The folder of the files that the script writes, absolute; empty in journals of programs that
    /// did not record it.
    std::string output;
    /// Whether the script may write outside of that folder.
    bool outsideAllowed = false;
};

TROVIK_API nlohmann::json ToJson(const JournalBase& base);

/// A file by its place and content.
struct JournalFile {
    std::string path;
    ContentHash content;
};

TROVIK_API nlohmann::json ToJson(const JournalFile& file);

/// One call into a stroke that is not a step's doing.
struct StrokeCall {
    RecordKind kind;
    StrokeInput dab;
    WholeMeshInput whole;
};

/// A step, or a stroke that no step makes, as far as the journal has it. A stroke during which
/// steps are done is one of these up to the first of them, another up to the next, and so on.
struct JournalStep {
    uint64_t byte = 0;
    /// Null for a stroke that no step makes.
    nlohmann::json step;
    /// Where the stroke begins here.
    std::optional<StrokeStart> start;
    std::vector<StrokeCall> calls;
    bool endsStroke = false;
    /// Of its step of undo; empty where the journal does not tell.
    std::string label;
    /// Finished ones.
    uint32_t dabs = 0;
    uint64_t vertices = 0;
    uint64_t undoBytes = 0;
    /// It came to its end before the journal did; and that was an error's doing.
    bool isOver = false;
    bool failed = false;
};

/// A scene that was complete before one of the steps.
struct JournalSave {
    JournalFile scene;
    /// See JournalBase.
    nlohmann::json carried;
    std::size_t stepsBefore = 0;
};

/// What a journal tells.
struct JournalContent {
    JournalBase base;
    std::vector<JournalStep> steps;
    std::vector<JournalSave> saves;
    std::vector<JournalFile> stamps;
    /// Lines of what was done before the journal started; see SummaryOf.
    nlohmann::json past = nlohmann::json::array();
    bool isClosed = false;
    /// What was left out, one line each.
    std::vector<std::string> notes;
};

/// Reads a journal. A torn end is left out and noted. Everything is checked that can be without
/// opening another file.
/// \param untilDamage  takes what comes before the first damage, which is noted, instead of
/// refusing. \throw HostError "FILE: byte N: reason".
TROVIK_API JournalContent ReadJournal(const std::string& path, bool untilDamage = false);

/// A step as lists show it: "step", "dabs", "vertices", "undoBytes", "finished".
TROVIK_API nlohmann::json SummaryOf(const JournalStep& step);

}  // namespace trovik
