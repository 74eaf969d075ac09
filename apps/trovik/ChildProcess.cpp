// SPDX-License-Identifier: Apache-2.0
#include "ChildProcess.h"

#include "framework/errors/HostError.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trovik {

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
    const int failure =
        posix_spawnp(&process, pointers.front(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        throw HostError("cannot start " + arguments.front() + ": " + std::strerror(failure));
}

ChildProcess::~ChildProcess() {
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
}

bool ChildProcess::HasEnded() {
    if (!hasEnded) Reap(WNOHANG);
    return hasEnded;
}

void ChildProcess::Terminate() const {
    if (!hasEnded) kill(process, SIGTERM);
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
