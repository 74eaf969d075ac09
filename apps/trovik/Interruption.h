// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik {

/// From now on Ctrl-C (SIGINT) and SIGTERM ask the work to stop where it can be left in good order;
/// a second one ends the program at once. A signal that was ignored at the start, as under nohup,
/// stays so.
void ListenForInterruption();
/// From now on a write beyond the limit for the size of files (RLIMIT_FSIZE) fails as on a full
/// disk, and the work can leave files as they were. Otherwise SIGXFSZ ends the program.
void IgnoreFileSizeSignal();
bool IsInterrupted();
/// \throw Cancelled when the program was asked to stop.
void StopIfInterrupted();
/// Exit status of an interrupted program: 128 and the signal's number, as shells have it.
int InterruptionStatus();

}  // namespace trovik
