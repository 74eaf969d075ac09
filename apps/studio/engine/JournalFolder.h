// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// \file
/// The folder of the studio's journals. A journal FOLDER/NAME.journal can have these companions:
///
/// - NAME.png: an image of the document, shown when the work is offered for recovery
/// - NAME.journal.N.trovik, NAME.journal.base.EXTENSION: scenes from which the journal starts, and
///   copies of replaced files; see docs/journal.md
/// - NAME.journal.trovik: the recovered work, from which the next journal starts
/// - NAME.journal.recovered: the journal after its work was recovered
namespace trovik::studio {

/// A path in the folder that no other journal has.
std::string NewJournalPath(const std::string& folder);
std::string PicturePathOf(const std::string& journalPath);
/// The scene that recovery writes.
std::string RecoveredScenePathOf(const std::string& journalPath);
/// Renames a journal whose work was recovered, so that it is no longer offered.
void MarkAsRecovered(const std::string& journalPath);

/// Removes a journal with all of its companions. Errors are ignored.
void RemoveJournal(const std::string& journalPath);
/// Removes what is left of a recovered journal after the recovered work was saved, except for the
/// recovered scene, from which the journal of the current work starts.
void RemoveRecovered(const std::string& journalPath);
/// Removes companions of journals that no longer exist, and journals that were closed. Keeps the
/// files from which any other journal starts, and everything if a journal cannot be read. Cost:
/// reads all journals.
void RemoveLeftovers(const std::string& folder);

}  // namespace trovik::studio
