// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshFormat.h"
#include "framework/files/MeshWriters.h"
#include "framework/io/FilePath.h"

#include <algorithm>
#include <cassert>
#include <string>
#include <string_view>

namespace trovik {

namespace {

// Constants in other files register themselves while the library is being loaded, in an unspecified
// order.
std::vector<MeshFormat>& Table() {
    static std::vector<MeshFormat> table;
    return table;
}

/// \param isUsable  selects the formats that are listed.
template <typename Condition>
[[noreturn]] void RefuseExtension(const std::string& path, const char* action, Condition isUsable) {
    std::vector<std::string> extensions;
    for (const MeshFormat& format : MeshFormats())
        if (isUsable(format)) extensions.emplace_back(format.extension);
    std::string list;
    for (std::size_t i = 0; i < extensions.size(); ++i) {
        if (i > 0) list += i + 1 < extensions.size() ? ", " : " or ";
        list += extensions[i];
    }
    throw HostError(path + ": cannot be " + action + " as a mesh: the extension must be " + list);
}

const MeshFormat& WritableFormat(const std::string& path) {
    const MeshFormat* format = FindMeshFormat(path);
    if (format == nullptr || format->write == nullptr) {
        RefuseExtension(
            path, "written", [](const MeshFormat& one) { return one.write != nullptr; });
    }
    return *format;
}

}  // namespace

MeshFormatRegistration::MeshFormatRegistration(const MeshFormat& format) {
    std::vector<MeshFormat>& table = Table();
    const std::string_view extension = format.extension;
    const auto at = std::lower_bound(
        table.begin(), table.end(), extension, [](const MeshFormat& row, std::string_view wanted) {
            return std::string_view(row.extension) < wanted;
        });
    assert(at == table.end() || at->extension != extension);
    table.insert(at, format);
}

const std::vector<MeshFormat>& MeshFormats() { return Table(); }

const MeshFormat* FindMeshFormat(const std::string& path) {
    const std::string extension = LowerExtension(path);
    for (const MeshFormat& format : MeshFormats())
        if (extension == format.extension) return &format;
    return nullptr;
}

PolygonMesh ReadMeshFile(const std::string& path, JobControl* job) {
    const MeshFormat* format = FindMeshFormat(path);
    if (format == nullptr || format->read == nullptr)
        RefuseExtension(path, "read", [](const MeshFormat& one) { return one.read != nullptr; });
    return format->read(path, job);
}

void RequireWritableMesh(const std::string& path) { WritableFormat(path); }

std::vector<std::string> WriteMeshFile(const std::string& path,
                                       const MeshSource& source,
                                       JobControl* job) {
    const MeshFormat& format = WritableFormat(path);
    CheckFinite(path, source, job);
    return format.write(path, source, job);
}

void WriteMeshFile(const std::string& path, const PolygonMesh& mesh) {
    WriteMeshFile(path,
                  PolygonSource(mesh, SpaceForFile(path, mesh.attributes.space, MeshSpace())));
}

MeshSpace SpaceForFile(const std::string& path, const MeshSpace& present, const MeshSpace& asked) {
    const MeshFormat* format = FindMeshFormat(path);
    if (format == nullptr || !format->space) return Overlaid(present, asked);
    const MeshFormat::FixedSpace& fixed = *format->space;
    if (Overlaid(fixed.space, asked) != fixed.space) {
        throw HostError(path + ": " + format->name + " files are always " + fixed.description);
    }
    return fixed.space;
}

}  // namespace trovik
