// SPDX-License-Identifier: Apache-2.0
#include "CommandLine.h"

#include <CLI/CLI.hpp>

#include <cstdlib>

namespace trovik::studio {

std::optional<CommandLine> ReadCommandLine(int argc, char** argv, int& status) {
    CommandLine commandLine;
    CLI::App program("Sculpts meshes of many millions of faces with a pen or mouse.",
                     "trovik-studio");
    program.set_version_flag("--version", std::string("trovik-studio ") + TROVIK_VERSION);
    program.add_option(
        "file", commandLine.file, "Mesh (OBJ, PLY, STL, glTF, GLB) or scene (*.trovik) to open");
    program
        .add_option("--play",
                    commandLine.events,
                    "Plays an event file (docs/studio-events.md), such as one recorded with File > "
                    "Record Events")
        ->check(CLI::ExistingFile);
    program.add_flag("--skip-frames",
                     commandLine.skipsFrames,
                     "Draws only the frames that the played events wait for, such as screenshots");
    program.add_option(
        "--save", commandLine.save, "Saves the scene under this name after opening and playback");
    program.add_option("--screenshot",
                       commandLine.screenshot,
                       "Writes an image of the window (PNG) after opening and playback");
    program.add_flag("--quit", commandLine.quits, "Quits after all of the above");
    program.add_option(
        "--platform",
        commandLine.platform,
        "Qt platform plug-in, such as xcb or wayland (default: xcb if an X server is available)");
    program
        .add_option("--viewport-width",
                    commandLine.viewportWidth,
                    "Sets a fixed viewport width, in logical pixels")
        ->check(CLI::Range(64, 16384));
    program
        .add_option("--viewport-height",
                    commandLine.viewportHeight,
                    "Sets a fixed viewport height, in logical pixels")
        ->check(CLI::Range(64, 16384));
    program.add_flag("--no-journal",
                     commandLine.hasNoJournal,
                     "Writes no journal; work cannot be recovered after a crash");
    program.add_flag("--no-preferences",
                     commandLine.hasNoPreferences,
                     "Starts with the default preferences and does not store any changes");
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        status = program.exit(error);
        return std::nullopt;
    }
    return commandLine;
}

std::string PlatformFor(const CommandLine& commandLine) {
    if (!commandLine.platform.empty()) return commandLine.platform;
    if (const char* chosen = std::getenv("QT_QPA_PLATFORM"); chosen != nullptr) return chosen;
    const char* display = std::getenv("DISPLAY");
    return display != nullptr && *display != '\0' ? "xcb" : "";
}

}  // namespace trovik::studio
