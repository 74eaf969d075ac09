// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik {

/// From now on Ctrl-C (SIGINT) and SIGTERM ask the work to stop where it can be left in good order;
/// a second one ends the program at once. A signal that was ignored at the start, as under nohup,
/// stays so.
void ListenForInterruption();
bool IsInterrupted();
/// \throw WorkStopped when the program was asked to stop.
void StopIfInterrupted();
/// Exit status of an interrupted program: 128 and the signal's number, as shells have it.
int InterruptionStatus();

}  // namespace trovik
