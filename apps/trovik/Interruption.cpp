// SPDX-License-Identifier: Apache-2.0
#include "Interruption.h"

#include "framework/errors/Cancelled.h"

#include <csignal>

namespace trovik {

namespace {

constexpr int handledSignals[] = {SIGINT, SIGTERM};

volatile std::sig_atomic_t received = 0;

extern "C" void NoteInterruption(int number) {
    received = number;
    for (const int one : handledSignals) std::signal(one, SIG_DFL);
}

}  // namespace

void InstallInterruptionHandlers() {
    struct sigaction action = {};
    action.sa_handler = NoteInterruption;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    // If both signals arrive at the same time, they count as a first and a second signal.
    for (const int one : handledSignals) sigaddset(&action.sa_mask, one);
    for (const int one : handledSignals) {
        struct sigaction present = {};
        if (sigaction(one, nullptr, &present) == 0 && present.sa_handler != SIG_IGN)
            sigaction(one, &action, nullptr);
    }
}

void IgnoreFileSizeSignal() { std::signal(SIGXFSZ, SIG_IGN); }

void RestoreChildSignal() { std::signal(SIGCHLD, SIG_DFL); }

bool IsInterrupted() { return received != 0; }

void ThrowIfInterrupted() {
    if (IsInterrupted()) throw Cancelled();
}

int InterruptionStatus() { return 128 + received; }

}  // namespace trovik
