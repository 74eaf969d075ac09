// SPDX-License-Identifier: Apache-2.0
#include "framework/files/GltfDocument.h"

#include "framework/errors/HostError.h"
#include "framework/files/GltfBuffers.h"
#include "framework/io/InputFile.h"

#include <cstring>
#include <limits>
#include <string_view>
#include <vector>

namespace trovik {

namespace {

/// Exceeds the nesting depth of any real file. A limit is needed because the loader recurses into
/// nested values.
constexpr int MaxDepth = 64;

void CheckNesting(std::string_view json, const std::string& path) {
    int depth = 0;
    bool inText = false;
    for (std::size_t offset = 0; offset < json.size(); ++offset) {
        const char letter = json[offset];
        if (inText) {
            if (letter == '\\') {
                ++offset;
            } else if (letter == '"') {
                inText = false;
            }
        } else if (letter == '"') {
            inText = true;
        } else if (letter == '[' || letter == '{') {
            if (++depth > MaxDepth) {
                throw HostError(path + ", byte " + std::to_string(offset) +
                                " of its JSON: nested more than " + std::to_string(MaxDepth) +
                                " levels deep");
            }
        } else if (letter == ']' || letter == '}') {
            --depth;
        }
    }
}

/// Offset of the JSON in a binary file. The loader reports faulty chunks.
constexpr std::size_t JsonStart = 20;

std::string_view JsonChunk(std::string_view content) {
    if (content.size() < JsonStart) {
        return {};
    }
    std::uint32_t length = 0;
    std::memcpy(&length, content.data() + 12, sizeof length);
    return content.substr(JsonStart, length);
}

/// Returns the content of a binary file with its JSON replaced.
std::string WithJson(std::string_view content, std::string json) {
    const std::string_view after = content.substr(JsonStart + JsonChunk(content).size());
    json.resize((json.size() + 3) / 4 * 4, ' ');
    std::string changed(content.substr(0, JsonStart));
    const auto put = [&changed](std::size_t at, std::size_t number) {
        const auto word = static_cast<std::uint32_t>(number);
        std::memcpy(changed.data() + at, &word, sizeof word);
    };
    put(8, JsonStart + json.size() + after.size());
    put(12, json.size());
    changed += json;
    changed += after;
    return changed;
}

/// Returns the first line, because error messages consist of one line.
std::string FirstLine(const std::string& text) {
    const std::string line = text.substr(0, text.find('\n'));
    std::string shown;
    for (const char letter : line.substr(0, 200)) {
        shown += letter >= ' ' && letter <= '~' ? letter : '?';
    }
    return shown.empty() ? "it is not a glTF file" : shown;
}

/// The loader must not read files: buffers are read here, and images are not read at all.
bool NoFileIsThere(const std::string&, void*) { return false; }

std::string AsItIs(const std::string& name, void*) { return name; }

bool ReadNothing(std::vector<unsigned char>*, std::string*, const std::string&, void*) {
    return false;
}

bool WriteNothing(std::string*, const std::string&, const std::vector<unsigned char>&, void*) {
    return false;
}

bool PassOverPicture(
    tinygltf::Image*, int, std::string*, std::string*, int, int, const unsigned char*, int, void*) {
    return true;
}

}  // namespace

GltfDocument::GltfDocument(const std::string& filePath, JobControl* job) : path(filePath) {
    InputFile file(path, job);
    const auto size = static_cast<std::size_t>(file.Remaining());
    if (size > std::numeric_limits<std::uint32_t>::max()) {
        throw HostError(path + ": glTF files of more than 4 GiB are not supported");
    }
    const unsigned char* bytes = size == 0 ? nullptr : file.Take(size);
    if (bytes == nullptr) {
        throw HostError(path + ": the file is empty or truncated");
    }
    std::string_view content(reinterpret_cast<const char*>(bytes), size);
    const bool isBinary = content.starts_with("glTF");
    const std::string_view text = isBinary ? JsonChunk(content) : content;
    CheckNesting(text, path);
    GltfBuffers buffers(path, text, job);
    std::string changed;
    if (!buffers.Empty()) {
        changed = isBinary ? WithJson(content, buffers.Json()) : buffers.Json();
        content = changed;
    }

    tinygltf::TinyGLTF loader;
    loader.SetImageLoader(PassOverPicture, nullptr);
    loader.SetFsCallbacks({NoFileIsThere, AsItIs, ReadNothing, WriteNothing, nullptr});
    std::string error;
    std::string warning;
    bool isRead = false;
    try {
        const auto length = static_cast<unsigned>(content.size());
        isRead = isBinary ? loader.LoadBinaryFromMemory(
                                &model,
                                &error,
                                &warning,
                                reinterpret_cast<const unsigned char*>(content.data()),
                                length,
                                "")
                          : loader.LoadASCIIFromString(
                                &model, &error, &warning, content.data(), length, "");
    } catch (const std::exception& thrown) {
        error = thrown.what();
    }
    if (!isRead) {
        throw HostError(path + ": " + FirstLine(error));
    }
    buffers.MoveInto(model);
}

void GltfLocation::Refuse(const std::string& reason) const {
    throw HostError(text + ": " + reason);
}

std::size_t GltfLocation::Checked(int number, std::size_t count, const char* what) const {
    if (number < 0 || static_cast<std::size_t>(number) >= count) {
        Refuse(std::string("it refers to ") + what + " " + std::to_string(number) +
               ", but there are only " + std::to_string(count));
    }
    return static_cast<std::size_t>(number);
}

}  // namespace trovik
