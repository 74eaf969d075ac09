// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace trovik {

/// Progress on standard error: one bar that is drawn over on a terminal, a plain line per step
/// elsewhere. While it exists it receives the notes of file writing (SetFileNotes), so there is at
/// most one at a time.
class ProgressLine {
public:
    explicit ProgressLine(bool quiet);
    ~ProgressLine();

    void Step(std::size_t done, std::size_t count, const std::string& what);
    void Dab();
    /// Elements of a file that were written, and how many there will be. Shown on terminals only.
    void File(uint64_t written, uint64_t total);
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
    std::size_t done = 0;
    std::size_t count = 0;
    uint64_t dabs = 0;
    /// Of the file being written, in percent; 100 while there is none.
    unsigned share = 100;
    /// The name of the step, printable.
    std::string what;
    std::chrono::steady_clock::time_point lastDrawn;
};

}  // namespace trovik
