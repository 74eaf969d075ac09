// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// \file
/// The folder of the studio's journals. A journal FOLDER/NAME.journal can have these companions:
///
/// - NAME.png: an image of the document, shown when the work is offered for recovery
/// - NAME.journal.N.trovik, NAME.journal.base.EXTENSION: scenes from which the journal starts, and
///   copies of replaced files; see docs/journal.md
/// - NAME.journal.start.EXTENSION: the opened file before it was replaced; see ActionStart
/// - NAME.journal.trovik: the recovered work, from which the next journal starts
/// - NAME.journal.recovered: the journal after its work was recovered
namespace trovik {
struct JournalContent;
struct JournalStep;
}  // namespace trovik

namespace trovik::studio {

/// Whether a step may have changed the sculpture: tools, settings and cameras do not count.
bool IsChange(const JournalStep& step);
/// The number of steps that the newest saved scene contains; nothing if there is no such scene, or
/// its file has changed since. Cost: reads that file.
std::optional<std::size_t> SavedSteps(const JournalContent& content);
/// Whether a journal contains work that is not in any file of the user. \param saved  from
/// SavedSteps.
bool HasUnsavedWork(const JournalContent& content, std::optional<std::size_t> saved);

/// The folder of the user's file that was saved last or, if nothing was saved, opened; empty if the
/// journal does not contain it.
std::string WorkFolderOf(const JournalContent& content);

/// A path in the folder that no other journal uses.
std::string NewJournalPath(const std::string& folder);
std::string PicturePathOf(const std::string& journalPath);
/// The scene that recovery writes.
std::string RecoveredScenePathOf(const std::string& journalPath);
/// Renames a journal whose work was recovered, so that it is no longer offered.
void MarkAsRecovered(const std::string& journalPath);

/// Removes a journal with all of its companions. Errors are ignored.
void RemoveJournal(const std::string& journalPath);
/// Removes the remaining files of a recovered journal after the recovered work was saved, except
/// for the recovered scene, from which the journal of the current work starts.
void RemoveRecovered(const std::string& journalPath);
/// Removes journals that were closed or contain no unsaved work, unless a process is writing them,
/// and companions of journals that do not exist. Keeps the files from which any other journal
/// starts, and everything if a journal cannot be read. Cost: reads all journals.
void RemoveLeftovers(const std::string& folder);

}  // namespace trovik::studio
