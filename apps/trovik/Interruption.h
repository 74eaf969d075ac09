// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik {

/// Installs handlers by which Ctrl-C (SIGINT) and SIGTERM request an orderly stop; a second signal
/// ends the program at once. A signal that is already ignored, as under nohup, stays ignored.
void InstallInterruptionHandlers();
/// Ignores SIGXFSZ, which would end the program. A write beyond the file size limit (RLIMIT_FSIZE)
/// then fails as on a full disk, and the old files stay intact.
void IgnoreFileSizeSignal();
bool IsInterrupted();
/// \throw Cancelled if the program has been interrupted.
void ThrowIfInterrupted();
/// Exit status of an interrupted program: 128 + signal number, the convention of shells.
int InterruptionStatus();

}  // namespace trovik
