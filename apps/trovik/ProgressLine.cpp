// SPDX-License-Identifier: Apache-2.0
#include "ProgressLine.h"

#include "Interruption.h"
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

void ProgressLine::Step(std::size_t done, std::size_t count, const std::string& name) {
    stepsDone = done;
    stepCount = count;
    what = PrintableText(name);
    phase = nullptr;
    if (quiet) return;
    if (terminal)
        Draw();
    else if (!what.empty())
        std::fprintf(stderr,
                     "[%zu/%zu] %s\n",
                     stepsDone + (stepsDone < stepCount ? 1 : 0),
                     stepCount,
                     what.c_str());
}

void ProgressLine::Dab() {
    ++dabs;
    const auto now = std::chrono::steady_clock::now();
    if (quiet || !terminal || now - lastDrawn < redrawEvery) return;
    Draw();
}

bool ProgressLine::Report(uint64_t phaseDone, uint64_t phaseTotal, const char* phaseName) {
    if (IsInterrupted()) return false;
    // A phase without a total adds nothing to the displayed steps and dabs.
    if (phaseTotal == 0) return true;
    phase = phaseName;
    percent = static_cast<unsigned>(phaseDone * 100 / phaseTotal);
    if (quiet || !terminal || std::chrono::steady_clock::now() - lastDrawn < redrawEvery)
        return true;
    Draw();
    return true;
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
    const std::string start = file + ": ";
    for (const std::string& note : notes) Message(start + note);
}

void ProgressLine::Draw() {
    lastDrawn = std::chrono::steady_clock::now();
    std::string text;
    if (stepCount != 0) {
        const std::size_t filled = barWidth * stepsDone / stepCount;
        text = "[" + std::string(filled, '#') + std::string(barWidth - filled, '.') + "] " +
               std::to_string(stepsDone) + "/" + std::to_string(stepCount) + " " + what;
        if (dabs != 0) text += ", " + std::to_string(dabs) + " dabs";
        if (phase != nullptr) text += ": ";
    }
    if (phase != nullptr) text += std::string(phase) + ", " + std::to_string(percent) + " %";
    std::fprintf(stderr, "\r\033[K%s", text.c_str());
    std::fflush(stderr);
    drawn = true;
}

void ProgressLine::Finish() {
    if (drawn) std::fputs("\r\033[K", stderr);
    drawn = false;
}

}  // namespace trovik
