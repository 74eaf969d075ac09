// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobControl.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

/// Progress on standard error: one bar that is drawn over on a terminal, a plain line per step
/// elsewhere. While it exists it receives the notes of file writing (SetFileNotes), so there is at
/// most one at a time. As a JobControl it shows the phase of a long operation (on terminals only),
/// and cancels the operation after an interrupt.
class ProgressLine : public JobControl {
public:
    explicit ProgressLine(bool quiet);
    ~ProgressLine() override;

    bool Report(uint64_t done, uint64_t total, const char* phase) override;

    void Step(std::size_t done, std::size_t count, const std::string& name);
    void Dab();
    /// A line of its own, between the progress.
    void Message(const std::string& text);
    /// A line that is written even when the command is to be quiet, and kept for Warnings.
    void Warning(const std::string& text);
    const std::vector<std::string>& Warnings() const { return warnings; }
    /// Messages about a file.
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
    /// Of the long operation, with its progress in percent; null while there is none.
    const char* phase = nullptr;
    unsigned percent = 0;
    /// The name of the step, printable.
    std::string what;
    std::chrono::steady_clock::time_point lastDrawn;
};

}  // namespace trovik
