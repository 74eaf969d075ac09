// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/strokes/StrokeInputListener.h"

#include <string>

namespace trovik {

class JobControl;

/// Records the strokes and saves of a Document, so that its work can be recovered after a crash.
/// The document calls it; see Document::SetJournal.
class TROVIK_API DocumentJournal : public StrokeInputListener {
public:
    /// Called when a scene has been written completely to a temporary file, just before that file
    /// replaces `scenePath`.
    /// \param job  the job of the save; may be null.
    /// \throw HostError or Cancelled to cancel the save; the old scene is then kept.
    virtual void OnSceneWritten(const std::string& scenePath,
                                const std::string& temporaryPath,
                                JobControl* job) = 0;
    /// Called after the scene has been saved; the journal can restart from it. Must not throw.
    virtual void OnSaved(const std::string& scenePath) = 0;

protected:
    ~DocumentJournal() = default;
};

}  // namespace trovik
