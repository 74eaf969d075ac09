// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace trovik::studio {

/// The options of the trovik-studio command line.
struct CommandLine {
    /// Mesh or scene to open, unless the user recovers unsaved work at startup. If empty, a new
    /// sphere is opened.
    std::string file;
    /// Event file to play back.
    std::string events;
    /// Whether the viewport draws only the frames that events wait for.
    bool skipsFrames = false;
    /// Scene to save after the events have been played, or immediately if there are none.
    std::string save;
    /// Image of the window to write after saving.
    std::string screenshot;
    /// Whether to quit after all of the above.
    bool quits = false;
    /// Qt platform; if empty, PlatformFor chooses it.
    std::string platform;
    /// Viewport size in logical pixels; if 0, the window determines it.
    int viewportWidth = 0;
    int viewportHeight = 0;
    /// Whether to run without a journal; nothing can then be recovered after a crash.
    bool hasNoJournal = false;
    /// Whether to run without reading or writing preferences.
    bool hasNoPreferences = false;
};

/// Parses the arguments and, if necessary, prints help, the version or an error. \return nothing if
/// the program should end; `status` then receives the exit status.
std::optional<CommandLine> ReadCommandLine(int argc, char** argv, int& status);

/// The platform to use: the requested one (by option or QT_QPA_PLATFORM); otherwise xcb if an X
/// server is available, because Qt's Wayland platform loses pen pressure and modifier keys before
/// version 6.8.
std::string PlatformFor(const CommandLine& commandLine);

}  // namespace trovik::studio
