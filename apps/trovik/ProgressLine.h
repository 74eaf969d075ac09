// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobControl.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

/// Progress on standard error: on a terminal, a bar that is redrawn; elsewhere, one line per step.
/// While a ProgressLine exists, it receives the notes about written files (SetFileNotes), so only
/// one can exist at a time. As a JobControl, it shows the phase of a long operation (on terminals
/// only), and cancels the operation after an interrupt signal.
class ProgressLine : public JobControl {
public:
    explicit ProgressLine(bool quiet);
    ~ProgressLine() override;

    bool Report(uint64_t done, uint64_t total, const char* phase) override;

    void Step(std::size_t done, std::size_t count, const std::string& name);
    void Dab();
    /// Prints a separate line, unless quiet.
    void Message(const std::string& text);
    /// Prints a separate line, even if quiet, and stores it for Warnings.
    void Warning(const std::string& text);
    const std::vector<std::string>& Warnings() const { return warnings; }
    /// Prints each note as a message about the file.
    void Notes(const std::string& file, const std::vector<std::string>& notes);
    void Finish();

private:
    void Draw();
    void WriteLine(const char* kind, const std::string& text);

    std::vector<std::string> warnings;
    bool quiet;
    bool terminal;
    bool drawn = false;
    std::size_t stepsDone = 0;
    std::size_t stepCount = 0;
    uint64_t dabs = 0;
    /// The phase of the current long operation, or null; its progress is `percent`.
    const char* phase = nullptr;
    unsigned percent = 0;
    /// The name of the step, as printable text.
    std::string what;
    std::chrono::steady_clock::time_point lastDrawn;
};

}  // namespace trovik
