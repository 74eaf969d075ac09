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

/// The state from which the steps of a journal start.
struct JournalBase {
    /// Absolute path of the script; paths in steps are relative to its folder.
    std::string script;
    /// A stroke script without steps: the complete setup.
    nlohmann::json setup;
    /// Absolute path and content hash of the mesh or scene file that the setup opens.
    std::string source;
    ContentHash content;
    /// Name and version of the program.
    std::string program;
    /// Steps that restore settings that the source's format does not store; null if there are none.
    nlohmann::json carried;
    /// Absolute path of the folder for files that the script writes; empty in journals from older
    /// versions, which did not record it.
    std::string output;
    /// Whether the script may write outside that folder.
    bool outsideAllowed = false;
};

TROVIK_API nlohmann::json ToJson(const JournalBase& base);

/// A file, identified by its path and content.
struct JournalFile {
    std::string path;
    ContentHash content;
};

TROVIK_API nlohmann::json ToJson(const JournalFile& file);

/// A recorded operation of a stroke that is not part of a step.
struct StrokeCall {
    RecordKind kind;
    StrokeInput dab;
    WholeMeshInput whole;
};

/// The recorded part of a step, or of a stroke that is not part of a step. If steps run during a
/// stroke, the part of the stroke up to the first step is one JournalStep, the part up to the next
/// step another, and so on.
struct JournalStep {
    uint64_t byte = 0;
    /// Null for a stroke that is not part of a step.
    nlohmann::json step;
    /// Set if the stroke begins here.
    std::optional<StrokeStart> start;
    std::vector<StrokeCall> calls;
    bool endsStroke = false;
    /// Label of the undo step; empty if the journal does not contain it.
    std::string label;
    /// Number of completed dabs.
    uint32_t dabs = 0;
    uint64_t vertices = 0;
    uint64_t undoBytes = 0;
    /// Whether the step is complete, and whether it ended with an error.
    bool isOver = false;
    bool failed = false;
    /// Whether the step was cancelled; `failed` is then false.
    bool cancelled = false;
};

/// A scene that was saved, and the step before which it was saved.
struct JournalSave {
    JournalFile scene;
    /// See JournalBase.
    nlohmann::json carried;
    std::size_t stepsBefore = 0;
};

/// The content of a journal.
struct JournalContent {
    JournalBase base;
    std::vector<JournalStep> steps;
    std::vector<JournalSave> saves;
    std::vector<JournalFile> stamps;
    /// Summary lines of the steps before the journal started; see SummaryOf.
    nlohmann::json past = nlohmann::json::array();
    bool isClosed = false;
    /// Parts that were skipped, one line each.
    std::vector<std::string> notes;
};

/// Reads a journal. A truncated end is skipped and noted. Everything that can be checked without
/// other files is checked.
/// \param untilDamage  if the journal is damaged, reads the part before the damage and adds a note
/// instead of throwing.
/// \throw HostError "FILE: byte N: reason".
TROVIK_API JournalContent ReadJournal(const std::string& path, bool untilDamage = false);

/// Path of the copy of a journal's source file that is made when a save replaces that file; see
/// JournalOptions::isInteractive. \param source  JournalBase::source.
TROVIK_API std::string KeptSourceOf(const std::string& journalPath, const std::string& source);

/// Whether this step and all later ones can be replayed from a scene that was saved before this
/// step. A scene has no undo history, so none of them may undo or redo a step from before the save.
/// May return false even if the steps can be replayed, but never returns true if they cannot.
TROVIK_API bool CanStartAt(const JournalContent& content, std::size_t step);

/// Returns a summary of a step for lists, with the fields "step", "dabs", "vertices", "undoBytes"
/// and "finished".
TROVIK_API nlohmann::json SummaryOf(const JournalStep& step);

}  // namespace trovik
