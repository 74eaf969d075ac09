// SPDX-License-Identifier: Apache-2.0
#include "framework/journal/JournalWriter.h"

#include "framework/errors/HostError.h"
#include "framework/io/Crc32.h"
#include "framework/io/DiskCalls.h"
#include "framework/io/FilePath.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace trovik {

namespace {

void Put(unsigned char* target, uint32_t number) { std::memcpy(target, &number, sizeof number); }

}  // namespace

JournalWriter::JournalWriter(const std::string& journalPath)
    : path(journalPath), replacement(std::make_unique<FileReplacement>(journalPath)) {
    file = DiskCalls::Current().Open(
        replacement->TemporaryPath().c_str(), O_WRONLY | O_APPEND | O_CLOEXEC, 0);
    if (file < 0) ThrowFileError("write", path, errno);
    waiting.resize(journalHeaderBytes);
    std::memcpy(waiting.data(), journalMagic.data(), journalMagic.size());
    Put(waiting.data() + 8, journalVersion);
    Put(waiting.data() + 12, Crc32(waiting.data(), 12));
}

JournalWriter::~JournalWriter() {
    if (file >= 0) DiskCalls::Current().Close(file);
    if (lock >= 0) DiskCalls::Current().Close(lock);
}

void JournalWriter::Append(RecordKind kind, const void* content, std::size_t size) {
    if (size > maxRecordBytes)
        throw HostError("cannot write " + path + ": a step of " + std::to_string(size) +
                        " bytes is too long for a journal");
    const std::size_t start = waiting.size();
    waiting.resize(start + recordHeaderBytes + size);
    unsigned char* record = waiting.data() + start;
    Put(record, static_cast<uint32_t>(size));
    Put(record + 4, static_cast<uint32_t>(kind));
    Put(record + 8, count++);
    if (size != 0) std::memcpy(record + recordHeaderBytes, content, size);
    const uint32_t checksum = Crc32(record, 12);
    Put(record + 12, Crc32(record + recordHeaderBytes, size, checksum));
}

void JournalWriter::Flush() {
    const unsigned char* next = waiting.data();
    std::size_t rest = waiting.size();
    while (rest > 0) {
        const ssize_t written = DiskCalls::Current().Write(file, next, rest);
        if (written < 0) {
            if (errno == EINTR) continue;
            ThrowFileError("write", path, errno);
        }
        next += written;
        rest -= static_cast<std::size_t>(written);
    }
    waiting.clear();
}

void JournalWriter::Sync() {
    Flush();
    if (DiskCalls::Current().Sync(file) != 0 && errno != EINVAL && errno != EROFS)
        ThrowFileError("write", path, errno);
}

void JournalWriter::RequireInPlace() const {
    struct stat own {};
    struct stat there {};
    if (::fstat(file, &own) != 0) ThrowFileError("write", path, errno);
    if (::stat(path.c_str(), &there) != 0) ThrowFileError("write", path, errno);
    if (own.st_ino != there.st_ino || own.st_dev != there.st_dev)
        throw HostError("cannot write " + path + ": another file has replaced it");
}

void JournalWriter::PutInPlace(bool mayReplace) {
    Sync();
    if (!mayReplace) replacement->RequireNewTarget();
    replacement->Commit();
    lock = replacement->TakeLock();
    replacement.reset();
}

}  // namespace trovik
