// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "FrameSequence.h"
#include "RenderArguments.h"
#include "framework/journal/JournalContent.h"

#include <CLI/CLI.hpp>

#include <cstddef>
#include <string>
#include <vector>

namespace trovik {

/// The arguments of a time lapse: RenderArguments without `levels`, and the choice of frames.
struct TimeLapseArguments : RenderArguments, FrameSequenceArguments {
    /// One frame for each `every` changes of the surface.
    std::size_t every = 1;
    /// If not 0, this number of frames, or one per change if there are fewer changes.
    std::size_t count = 0;
    /// The surface that the camera frames: "final" or "first"; "view" uses the camera at the end of
    /// the work.
    std::string fit = "final";
};

/// Adds --frames, which sets the destination, and the other options, which require it.
/// \param arguments  must outlive the parsing.
void AddTimeLapseArguments(CLI::App& command, TimeLapseArguments& arguments);

/// Replays a journal and writes a render of the first state and of the states after steps that
/// changed the surface, all with the same camera.
/// \param file  the file given by the user, for the summary.
/// \param content  the content of the journal; its notes are added to those of the replay.
/// \throw HostError if the journal has no steps, if no step changes the surface, if there are too
/// many frames, or if the replay fails (RedoJournal); Cancelled. Frames that have been written are
/// kept.
void WriteTimeLapse(const TimeLapseArguments& wanted,
                    const std::string& file,
                    const std::string& journal,
                    const JournalContent& content,
                    bool untilDamage);

}  // namespace trovik
