// SPDX-License-Identifier: Apache-2.0
#include "ChildProcess.h"

#include "framework/errors/HostError.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace trovik {

namespace {

/// A process that does not end within this time after SIGTERM is killed.
constexpr auto timeToEnd = std::chrono::seconds(10);
constexpr auto pollInterval = std::chrono::milliseconds(5);
/// The waitpid status of a process that exited with status 1.
constexpr int unknownStatus = 1 << 8;

}  // namespace

ChildProcess::File ChildProcess::NewFile() {
    File file(std::tmpfile(), std::fclose);
    if (file == nullptr)
        throw HostError(std::string("cannot create a temporary file: ") + std::strerror(errno));
    return file;
}

ChildProcess::ChildProcess(const std::vector<std::string>& arguments)
    : out(NewFile()), error(NewFile()) {
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, fileno(out.get()), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(error.get()), STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    const int failure =
        posix_spawnp(&process, pointers.front(), &actions, &attributes, pointers.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        throw HostError("cannot start " + arguments.front() + ": " + std::strerror(failure));
}

ChildProcess::~ChildProcess() {
    Terminate();
    const auto deadline = std::chrono::steady_clock::now() + timeToEnd;
    while (!HasEnded() && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(pollInterval);
    if (hasEnded) return;
    kill(process, SIGKILL);
    Reap(0);
}

void ChildProcess::Reap(int options) {
    pid_t ended = 0;
    do {
        ended = waitpid(process, &waitStatus, options);
    } while (ended < 0 && errno == EINTR);
    if (ended != 0) hasEnded = true;
    // The status is lost, so the process must not count as successful.
    if (ended < 0) waitStatus = unknownStatus;
}

bool ChildProcess::HasEnded() {
    if (!hasEnded) Reap(WNOHANG);
    return hasEnded;
}

void ChildProcess::Terminate() {
    if (hasEnded || isTerminated) return;
    isTerminated = true;
    kill(process, SIGTERM);
}

std::string ChildProcess::Content(std::FILE* file) {
    std::string text;
    std::rewind(file);
    char block[4096];
    for (std::size_t count = 0; (count = std::fread(block, 1, sizeof block, file)) > 0;)
        text.append(block, count);
    return text;
}

ChildResult ChildProcess::Wait() {
    if (!hasEnded) Reap(0);
    ChildResult result;
    const bool wasSignalled = WIFSIGNALED(waitStatus);
    result.status = wasSignalled ? -1 : WEXITSTATUS(waitStatus);
    result.endingSignal = wasSignalled ? WTERMSIG(waitStatus) : 0;
    result.out = Content(out.get());
    result.error = Content(error.get());
    return result;
}

std::string ThisProgram() {
    std::error_code failed;
    const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", failed);
    if (failed) throw HostError("cannot find the path of this program: " + failed.message());
    return path.string();
}

}  // namespace trovik
