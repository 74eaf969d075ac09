// SPDX-License-Identifier: Apache-2.0
#include "framework/io/OutputFile.h"

#include "framework/io/DiskCalls.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace trovik {

OutputFile::OutputFile(const std::string& path)
    : replacement(path), buffer(new char[BufferBytes]), next(buffer.get()) {
    file = DiskCalls::Current().Open(
        replacement.TemporaryPath().c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC, 0);
    if (file < 0) {
        ThrowFileError("write", path, errno);
    }
}

OutputFile::~OutputFile() {
    if (file >= 0) {
        DiskCalls::Current().Close(file);
    }
}

void OutputFile::Write(const void* data, std::size_t sizeBytes) {
    if (sizeBytes > BufferBytes) {
        Flush();
        WriteThrough(static_cast<const char*>(data), sizeBytes);
        return;
    }
    Room(sizeBytes);
    if (sizeBytes > 0) {
        std::memcpy(next, data, sizeBytes);
        next += sizeBytes;
    }
}

void OutputFile::Flush() {
    WriteThrough(buffer.get(), static_cast<std::size_t>(next - buffer.get()));
    next = buffer.get();
}

void OutputFile::WriteThrough(const char* data, std::size_t sizeBytes) {
    while (sizeBytes > 0) {
        const ssize_t written = DiskCalls::Current().Write(file, data, sizeBytes);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            ThrowFileError("write", replacement.Path(), errno);
        }
        data += written;
        sizeBytes -= static_cast<std::size_t>(written);
    }
}

void OutputFile::Commit(const std::function<void(const std::string&)>& beforeReplacing) {
    Flush();
    // Network file systems may report a full disk only here.
    const int result = DiskCalls::Current().Close(file);
    file = -1;
    if (result != 0) {
        ThrowFileError("write", replacement.Path(), errno);
    }
    replacement.Commit(beforeReplacing);
}

}  // namespace trovik
