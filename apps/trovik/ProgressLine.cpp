// SPDX-License-Identifier: Apache-2.0
#include "ProgressLine.h"

#include "framework/errors/PrintableText.h"
#include "framework/io/FilePath.h"

#include <cstdio>
#include <unistd.h>

namespace trovik {

namespace {

constexpr std::size_t barWidth = 30;
constexpr auto redrawEvery = std::chrono::milliseconds(50);

}  // namespace

ProgressLine::ProgressLine(bool beQuiet) : quiet(beQuiet), terminal(isatty(STDERR_FILENO) == 1) {
    SetFileNotes([this](const std::string& text) { Message(text); });
}

ProgressLine::~ProgressLine() {
    SetFileNotes(nullptr);
    Finish();
}

void ProgressLine::Step(std::size_t stepsDone, std::size_t stepCount, const std::string& name) {
    done = stepsDone;
    count = stepCount;
    what = PrintableText(name);
    if (quiet) return;
    if (terminal)
        Draw();
    else if (!what.empty())
        std::fprintf(stderr, "[%zu/%zu] %s\n", done + (done < count ? 1 : 0), count, what.c_str());
}

void ProgressLine::Dab() {
    ++dabs;
    const auto now = std::chrono::steady_clock::now();
    if (quiet || !terminal || now - lastDrawn < redrawEvery) return;
    Draw();
}

void ProgressLine::File(uint64_t written, uint64_t total) {
    const uint64_t percent = total == 0 ? 100 : written * 100 / total;
    const auto now = std::chrono::steady_clock::now();
    const bool ends = percent >= 100;
    share = static_cast<unsigned>(percent);
    if (quiet || !terminal || (!ends && now - lastDrawn < redrawEvery)) return;
    Draw();
}

void ProgressLine::Message(const std::string& text) {
    if (!quiet) WriteLine("note", text);
}

void ProgressLine::Warning(const std::string& text) {
    warnings.push_back(text);
    WriteLine("warning", text);
}

void ProgressLine::WriteLine(const char* kind, const std::string& text) {
    const bool wasDrawn = drawn;
    Finish();
    std::fprintf(stderr, "%s: %s\n", kind, PrintableText(text).c_str());
    if (wasDrawn) Draw();
}

void ProgressLine::Notes(const std::string& file, const std::vector<std::string>& notes) {
    for (const std::string& note : notes) Message(file + ": " + note);
}

void ProgressLine::Draw() {
    lastDrawn = std::chrono::steady_clock::now();
    const std::size_t filled = count == 0 ? 0 : barWidth * done / count;
    const std::string bar = std::string(filled, '#') + std::string(barWidth - filled, '.');
    std::fprintf(stderr, "\r\033[K[%s] %zu/%zu %s", bar.c_str(), done, count, what.c_str());
    if (dabs != 0) std::fprintf(stderr, ", %llu dabs", static_cast<unsigned long long>(dabs));
    if (share < 100) std::fprintf(stderr, ", %u %% of the file", share);
    std::fflush(stderr);
    drawn = true;
}

void ProgressLine::Finish() {
    if (drawn) std::fputs("\r\033[K", stderr);
    drawn = false;
}

}  // namespace trovik
