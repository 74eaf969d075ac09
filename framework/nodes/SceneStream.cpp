// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/SceneStream.h"

#include "framework/errors/HostError.h"
#include "framework/io/InputFile.h"
#include "framework/io/OutputFile.h"
#include "framework/jobs/JobPhase.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
#include <utility>

namespace trovik {

static_assert(std::endian::native == std::endian::little,
              "scene files are little-endian, and values are copied without conversion");

namespace {

constexpr char magic[8] = {'T', 'R', 'O', 'V', 'I', 'K', 'S', 'C'};

/// No progress is reported for smaller arrays, because copying them takes less than a millisecond.
constexpr std::size_t reportedBytes = std::size_t{1} << 20;

void AppendInRuns(std::vector<uint8_t>& to,
                  const uint8_t* bytes,
                  std::size_t size,
                  JobControl* job) {
    JobPhase phase(size < reportedBytes ? nullptr : job, "Gathering the scene", size);
    phase.ForEachRun(
        [&](uint64_t first, uint64_t end) { to.insert(to.end(), bytes + first, bytes + end); });
    phase.Finish();
}

[[noreturn]] void Fail(const QString& reason, int line) {
    throw(new Error(QString(), Error::InvalidUse, "SceneStream", __FILE__, line))->Format(reason);
}

}  // namespace

SceneStream::SceneStream(uint32_t formatNumber) : storing(true), format(formatNumber) {
    for (unsigned i = 0; i < ClassDesc::Count(); ++i) {
        const ClassDesc* desc = ClassDesc::At(i);
        versions[desc->Name().toStdString()] = desc->Version();
    }
}

SceneStream::SceneStream(std::vector<uint8_t> bytes)
    : storing(false), format(0), data(std::move(bytes)), size(data.size()) {
    char found[8] = {};
    if (data.size() < sizeof(magic))
        Fail(QStringLiteral("not a scene: shorter than its header"), __LINE__);
    ReadElements(found, 1, sizeof(found));
    if (std::memcmp(found, magic, sizeof(magic)) != 0)
        Fail(QStringLiteral("not a scene: the first eight bytes are not TROVIKSC"), __LINE__);
    Transfer(format);
    uint32_t classes = 0;
    Transfer(classes);
    for (uint32_t i = 0; i < classes; ++i) {
        QString name;
        int32_t version = 0;
        Stream::Transfer(name);
        Transfer(version);
        versions[name.toStdString()] = version;
    }
}

SceneStream SceneStream::Section() const {
    SceneStream section(format);
    section.versions = versions;
    section.job = job;
    return section;
}

SceneStream SceneStream::Section(const uint8_t* bytes,
                                 uint64_t sizeBytes,
                                 uint64_t offset,
                                 QString what) const {
    SceneStream section = Section();
    section.storing = false;
    section.borrowed = bytes;
    section.size = sizeBytes;
    section.origin = offset;
    section.title = std::move(what);
    return section;
}

void SceneStream::SetClassVersion(const ClassDesc* classDesc, int version) {
    versions[classDesc->Name().toStdString()] = version;
}

std::vector<uint8_t> SceneStream::ToBytes() const {
    SceneStream header(format);
    header.WriteElements(magic, 1, sizeof(magic));
    uint32_t value = format;
    header.Transfer(value);
    auto classes = static_cast<uint32_t>(versions.size());
    header.Transfer(classes);
    for (const auto& [name, version] : versions) {
        QString text = QString::fromStdString(name);
        int32_t number = version;
        static_cast<Stream&>(header).Transfer(text);
        header.Transfer(number);
    }
    std::vector<uint8_t> bytes = std::move(header.data);
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

void SceneStream::ToFile(const std::string& path) const {
    const std::vector<uint8_t> bytes = ToBytes();
    OutputFile file(path);
    file.Write(bytes.data(), bytes.size());
    file.Commit();
}

SceneStream SceneStream::FromFile(const std::string& path) {
    InputFile file(path);
    const auto size = static_cast<std::size_t>(file.Remaining());
    const unsigned char* begin = file.Take(size);
    if (begin == nullptr) throw HostError(path + ": the file was truncated while it was read");
    std::vector<uint8_t> bytes(begin, begin + size);
    try {
        return SceneStream(std::move(bytes));
    } catch (Error* error) {
        const std::string reason = error->Message().toStdString();
        Error::Dispose(error);
        throw HostError(path + ": " + reason);
    }
}

int SceneStream::ClassVersion(const ClassDesc* classDesc) const {
    const auto found = versions.find(classDesc->Name().toStdString());
    return found == versions.end() ? 0 : found->second;
}

void SceneStream::Expect(uint64_t count, uint64_t elementSize) const {
    const uint64_t left = Remaining();
    if (elementSize == 0 || count <= left / elementSize) return;
    Fail(QStringLiteral("%1 ends at byte %2, where %3 more bytes were expected")
             .arg(title)
             .arg(origin + size)
             .arg(static_cast<double>(count) * static_cast<double>(elementSize) -
                      static_cast<double>(left),
                  0,
                  'f',
                  0),
         __LINE__);
}

void SceneStream::Skip(uint64_t bytes) {
    Expect(bytes, 1);
    position += bytes;
}

void SceneStream::ExpectEnd() const {
    if (Remaining() != 0)
        Fail(QStringLiteral("%1 has %2 bytes too many").arg(title).arg(Remaining()), __LINE__);
}

void SceneStream::Refuse(const QString& reason) { Fail(reason, __LINE__); }

void SceneStream::ReadElements(void* elements, uint32_t elementSize, uint64_t count) {
    assert(!storing);
    Expect(count, elementSize);
    const std::size_t bytes = static_cast<std::size_t>(count) * elementSize;
    if (bytes == 0) return;
    auto* target = static_cast<uint8_t*>(elements);
    JobPhase phase(bytes < reportedBytes ? nullptr : job, "Unpacking the scene", bytes);
    phase.ForEachRun([&](uint64_t first, uint64_t end) {
        std::memcpy(target + first, Next() + first, static_cast<std::size_t>(end - first));
    });
    phase.Finish();
    position += bytes;
}

void SceneStream::Reserve(uint64_t bytes) {
    const std::size_t needed = data.size() + static_cast<std::size_t>(bytes);
    if (needed <= data.capacity()) return;
    std::vector<uint8_t> larger;
    larger.reserve(std::max(needed, data.capacity() * 2));
    AppendInRuns(larger, data.data(), data.size(), job);
    data = std::move(larger);
}

void SceneStream::WriteElements(const void* elements, uint32_t elementSize, uint64_t count) {
    assert(storing);
    const auto* bytes = static_cast<const uint8_t*>(elements);
    const std::size_t total = static_cast<std::size_t>(count) * elementSize;
    if (total < reportedBytes) {
        data.insert(data.end(), bytes, bytes + total);
        return;
    }
    Reserve(total);
    AppendInRuns(data, bytes, total, job);
}

void SceneStream::ReadStore(Store<uint32_t>& store) {
    uint32_t count = 0;
    Transfer(count);
    if (count > Remaining() / sizeof(uint32_t)) {
        Fail(QStringLiteral("an array of %1 entries does not fit into the %2 bytes left")
                 .arg(count)
                 .arg(Remaining()),
             __LINE__);
    }
    store.Clear();
    if (count == 0) return;
    if (!store.SetFill(count, false)) throw Error::s_cBadAlloc;
    ReadElements(store.array, sizeof(uint32_t), count);
}

void SceneStream::WriteStore(const Store<uint32_t>& store) {
    uint32_t count = store.fill;
    Transfer(count);
    WriteElements(store.array, sizeof(uint32_t), count);
}

}  // namespace trovik
