// SPDX-License-Identifier: Apache-2.0
#include "framework/files/StandaloneMesh.h"

#include "framework/errors/HostError.h"
#include "framework/files/GltfBuffers.h"
#include "framework/files/MaterialFiles.h"
#include "framework/files/ObjStatement.h"
#include "framework/io/FilePath.h"
#include "framework/io/InputFile.h"
#include "framework/io/OutputFile.h"

#include <QByteArray>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace trovik {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

std::string ContentOf(const std::string& path) {
    InputFile file(path);
    const auto size = static_cast<std::size_t>(file.Remaining());
    const unsigned char* bytes = size == 0 ? nullptr : file.Take(size);
    return bytes == nullptr ? std::string()
                            : std::string(reinterpret_cast<const char*>(bytes), size);
}

void Write(const std::string& path, const std::string& content) {
    OutputFile file(path);
    file.Write(content);
    file.Commit();
}

/// The media type of an image, by its extension; glTF allows these two.
const char* ImageType(const std::string& uri) {
    return LowerExtension(uri) == ".png" ? "image/png" : "image/jpeg";
}

/// Replaces the file names of the buffers or images of a document by data URIs.
/// \return the number of replaced names.
unsigned Embed(json& document, const char* list, const std::string& source) {
    const bool areBuffers = std::string_view(list) == "buffers";
    if (!document.contains(list) || !document[list].is_array()) return 0;
    unsigned count = 0;
    std::size_t number = 0;
    for (json& entry : document[list]) {
        const std::string location =
            source + ": " + (areBuffers ? "buffer " : "image ") + std::to_string(number++) + ": ";
        if (!entry.is_object() || !entry.contains("uri") || !entry["uri"].is_string()) continue;
        const std::string uri = entry["uri"].get<std::string>();
        if (uri.starts_with("data:")) continue;
        std::optional<uint64_t> size;
        if (areBuffers && entry.contains("byteLength") && entry["byteLength"].is_number_unsigned())
            size = entry["byteLength"].get<uint64_t>();
        try {
            const auto bytes = ReadGltfFile(source, uri, size, location);
            entry["uri"] = std::string("data:") +
                           (areBuffers ? "application/octet-stream" : ImageType(uri)) + ";base64," +
                           QByteArray::fromRawData(reinterpret_cast<const char*>(bytes.data()),
                                                   static_cast<qsizetype>(bytes.size()))
                               .toBase64()
                               .toStdString();
            ++count;
        } catch (const HostError&) {
            // Meshes do not depend on images.
            if (areBuffers) throw;
        }
    }
    return count;
}

bool WriteGltf(const std::string& content, const std::string& source, const std::string& target) {
    json document = json::parse(ContentOf(content), nullptr, false);
    if (!document.is_object()) return false;
    const unsigned count = Embed(document, "buffers", source) + Embed(document, "images", source);
    if (count != 0) Write(target, document.dump());
    return count != 0;
}

/// Appends a statement without its line ends; a backslash at the end of a line continues it on the
/// next line, as in ObjLines. \return the position after the statement.
std::size_t TakeStatement(const std::string& text, std::size_t at, std::string& statement) {
    for (;;) {
        const std::size_t lineEnd = std::min(text.find_first_of("\r\n", at), text.size());
        const bool goesOn = lineEnd > at && text[lineEnd - 1] == '\\';
        statement.append(text, at, lineEnd - at - (goesOn ? 1 : 0));
        const bool isPair = text.compare(lineEnd, 2, "\r\n") == 0;
        at = std::min(lineEnd + (isPair ? 2 : 1), text.size());
        if (!goesOn || at == text.size()) return at;
        statement += ' ';
    }
}

bool WriteObj(const std::string& content, const std::string& source, const std::string& target) {
    constexpr std::string_view keyword = "mtllib";
    const std::string text = ContentOf(content);
    const fs::path folder = fs::path(source).parent_path();
    std::string copy, statement;
    bool isChanged = false;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        statement.clear();
        at = TakeStatement(text, at, statement);
        std::string_view names = statement;
        if (TakeWord(names) != keyword || names.empty()) {
            copy.append(text, start, at - start);
            continue;
        }
        std::vector<std::string> files;
        for (const std::string& name : MaterialFileNames(names))
            files.push_back((folder / name).string());
        for (const std::string& reference : PlaceMaterialFiles(target, files).references)
            copy.append(keyword).append(" ").append(reference).append("\n");
        isChanged = true;
    }
    if (isChanged) Write(target, copy);
    return isChanged;
}

}  // namespace

bool WriteStandaloneMesh(const std::string& content,
                         const std::string& source,
                         const std::string& target) {
    const std::string extension = LowerExtension(content);
    if (extension == ".gltf") return WriteGltf(content, source, target);
    if (extension == ".obj") return WriteObj(content, source, target);
    return false;
}

}  // namespace trovik
