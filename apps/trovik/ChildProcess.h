// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

namespace trovik {

/// The result of a finished child process.
struct ChildResult {
    /// The exit status, or -1 if a signal ended the process; 1 if the system does not report it.
    int status = 0;
    /// The signal that ended the process, or 0.
    int endingSignal = 0;
    std::string out;
    std::string error;
};

/// A child process whose standard output and standard error are collected in temporary files. Its
/// standard input is empty. It has its own process group, so Ctrl-C in a terminal interrupts only
/// the parent, which then ends its child processes in order.
class ChildProcess {
public:
    /// Starts a program.
    /// \param arguments  the program, which is searched for in PATH unless it contains a slash, and
    /// its arguments.
    /// \throw HostError with the program and the system's reason.
    explicit ChildProcess(const std::vector<std::string>& arguments);
    /// Sends SIGTERM to a process that still runs, and waits for it; after 10 seconds, kills it.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Returns whether the process has ended. Does not wait.
    bool HasEnded();
    /// Sends SIGTERM, at most once: programs end without cleaning up after a second signal.
    void Terminate();
    /// Waits for the end of the process.
    ChildResult Wait();

private:
    using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

    static File NewFile();
    static std::string Content(std::FILE* file);
    void Reap(int options);

    File out;
    File error;
    pid_t process = -1;
    bool hasEnded = false;
    bool isTerminated = false;
    int waitStatus = 0;
};

/// Returns the path of the running program, for starting it again.
/// \throw HostError if the system does not report it.
std::string ThisProgram();

}  // namespace trovik
