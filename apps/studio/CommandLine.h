// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace trovik::studio {

/// What the command line of trovik-studio asks for.
struct CommandLine {
    /// Mesh or scene to open; empty: a new sphere, or the recovery of unfinished work.
    std::string file;
    /// Event file to play.
    std::string events;
    /// Scene to save when the events have been played, or at once without events.
    std::string save;
    /// Image of the window to write then.
    std::string screenshot;
    /// Ends the program then.
    bool quits = false;
    /// Platform of Qt; empty: chosen by PlatformFor.
    std::string platform;
    /// Size of the viewport in logical pixels; 0: as the window gives it.
    int viewportWidth = 0;
    int viewportHeight = 0;
    /// Keeps no journal: nothing can be recovered after a crash.
    bool hasNoJournal = false;
    /// Reads and writes no preferences.
    bool hasNoPreferences = false;
};

/// Reads the arguments. Prints help, version or an error itself.
/// \return nothing if the program is to end, with its exit status in `status`.
std::optional<CommandLine> ReadCommandLine(int argc, char** argv, int& status);

/// The platform to use: what was asked for, by option or QT_QPA_PLATFORM; otherwise xcb where an X
/// server is there, since Qt's Wayland platform loses pressure and modifiers of pens before 6.8.
std::string PlatformFor(const CommandLine& commandLine);

}  // namespace trovik::studio
