// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/AttributeChunk.h"

#include "framework/errors/HostError.h"
#include "framework/scene/SceneChunks.h"

#include <filesystem>
#include <system_error>

namespace trovik {

namespace {

using Uv = std::array<float, 2>;
using Color = std::array<float, 4>;

/// The first format that also contains material files and smoothing groups.
constexpr uint32_t smoothingFormat = 333;

/// Size of an empty string: its length field.
constexpr uint64_t minTextBytes = sizeof(uint32_t);

void WriteText(SceneStream& stream, const std::string& text) {
    QString shown = QString::fromStdString(text);
    static_cast<Stream&>(stream).Transfer(shown);
}

std::string ReadText(SceneStream& stream) {
    QString text;
    static_cast<Stream&>(stream).Transfer(text);
    return text.toStdString();
}

void WriteNames(SceneStream& stream, const std::vector<std::string>& names) {
    auto count = static_cast<uint32_t>(names.size());
    stream.Transfer(count);
    for (const std::string& name : names) WriteText(stream, name);
}

std::vector<std::string> ReadNames(SceneStream& stream) {
    uint32_t count = 0;
    stream.Transfer(count);
    stream.Expect(count, minTextBytes);
    std::vector<std::string> names;
    for (uint32_t i = 0; i < count; ++i) names.push_back(ReadText(stream));
    return names;
}

std::vector<std::string> SeenFromScene(std::vector<std::string> files,
                                       const std::string& scenePath) {
    std::filesystem::path folder = std::filesystem::path(scenePath).parent_path();
    if (folder.empty()) folder = ".";
    for (std::string& file : files) {
        std::error_code failed;
        const std::filesystem::path relative = std::filesystem::proximate(file, folder, failed);
        if (!failed) file = relative.generic_string();
    }
    return files;
}

std::vector<std::string> SeenFromHere(std::vector<std::string> files,
                                      const std::string& scenePath) {
    const std::filesystem::path folder = std::filesystem::path(scenePath).parent_path();
    for (std::string& file : files) file = (folder / file).lexically_normal().string();
    return files;
}

}  // namespace

bool HasAttributes(const SurfaceAttributes& attributes) {
    return !attributes.cornerUvs.empty() || !attributes.colors.empty() ||
           !attributes.faceGroups.empty() || !attributes.faceMaterials.empty() ||
           !attributes.faceSmoothing.empty() || attributes.space != MeshSpace();
}

void WriteAttributes(SceneStream& stream,
                     const SurfaceAttributes& attributes,
                     const std::string& scenePath) {
    WriteText(stream, UnitName(attributes.space.metersPerUnit));
    WriteText(stream, UpAxisName(attributes.space.up));
    WriteList(stream, attributes.uvs);
    WriteList(stream, attributes.cornerUvs);
    uint8_t hasAlpha = attributes.hasAlpha ? 1 : 0;
    stream.Transfer(hasAlpha);
    WriteList(stream, attributes.colors);
    WriteNames(stream, attributes.groupNames);
    WriteList(stream, attributes.faceGroups);
    WriteNames(stream, attributes.materialNames);
    WriteList(stream, attributes.faceMaterials);
    if (!stream.IsFormatAtLeast(smoothingFormat)) return;
    WriteNames(stream, SeenFromScene(attributes.materialFiles, scenePath));
    WriteList(stream, attributes.faceSmoothing);
}

SurfaceAttributes ReadAttributes(SceneStream& stream,
                                 const SurfaceCounts& counts,
                                 const std::string& name,
                                 const std::string& scenePath) {
    SurfaceAttributes attributes;
    attributes.space.metersPerUnit = MetersPerUnit(ReadText(stream));
    attributes.space.up = UpAxisOf(ReadText(stream));
    attributes.uvs = ReadList<Uv>(stream);
    attributes.cornerUvs = ReadList<uint32_t>(stream);
    uint8_t hasAlpha = 0;
    stream.Transfer(hasAlpha);
    attributes.hasAlpha = hasAlpha != 0;
    attributes.colors = ReadList<Color>(stream);
    attributes.groupNames = ReadNames(stream);
    attributes.faceGroups = ReadList<uint32_t>(stream);
    attributes.materialNames = ReadNames(stream);
    attributes.faceMaterials = ReadList<uint32_t>(stream);
    if (stream.IsFormatAtLeast(smoothingFormat)) {
        attributes.materialFiles = SeenFromHere(ReadNames(stream), scenePath);
        attributes.faceSmoothing = ReadList<uint32_t>(stream);
    }
    try {
        CheckSurfaceAttributes(attributes, counts, name);
    } catch (const HostError& error) {
        SceneStream::Refuse(QString::fromStdString(error.what()));
    }
    return attributes;
}

}  // namespace trovik
