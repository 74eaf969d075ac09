// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace trovik {

/// Installs handlers for Ctrl-C (SIGINT) and SIGTERM: the first signal requests an orderly stop,
/// and a second one ends the program immediately. A signal that is already ignored, as under nohup,
/// stays ignored.
void InstallInterruptionHandlers();
/// Ignores SIGXFSZ, which would otherwise end the program. A write beyond the file size limit
/// (RLIMIT_FSIZE) then fails like a write to a full disk, and the old files stay intact.
void IgnoreFileSizeSignal();
/// Restores the default action of SIGCHLD. If the parent process ignores this signal, the setting
/// is inherited, and the system discards the exit statuses of child processes.
void RestoreChildSignal();
bool IsInterrupted();
/// \throw Cancelled if the program has been interrupted.
void ThrowIfInterrupted();
/// Returns the exit status of an interrupted program: 128 plus the signal number, as is the
/// convention in shells.
int InterruptionStatus();

}  // namespace trovik
