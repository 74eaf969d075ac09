// SPDX-License-Identifier: Apache-2.0
#include "framework/files/GltfDocument.h"

#include "framework/errors/HostError.h"
#include "framework/files/InputFile.h"

#include <cstring>
#include <filesystem>
#include <limits>
#include <string_view>
#include <vector>

namespace trovik {

namespace {

namespace fs = std::filesystem;

/// Far beyond any real file; the loader follows nesting by calling itself.
constexpr int MaxDepth = 64;

void CheckNesting(std::string_view json, const std::string& path) {
    int depth = 0;
    bool inText = false;
    for (std::size_t place = 0; place < json.size(); ++place) {
        const char letter = json[place];
        if (inText) {
            if (letter == '\\') {
                ++place;
            } else if (letter == '"') {
                inText = false;
            }
        } else if (letter == '"') {
            inText = true;
        } else if (letter == '[' || letter == '{') {
            if (++depth > MaxDepth) {
                throw HostError(path + ", byte " + std::to_string(place) +
                                " of its JSON: nested deeper than any real file");
            }
        } else if (letter == ']' || letter == '}') {
            --depth;
        }
    }
}

/// The JSON of a binary file; what is wrong with its chunks the loader tells.
std::string_view JsonChunk(std::string_view content) {
    constexpr std::size_t Lead = 20;
    if (content.size() < Lead) {
        return {};
    }
    std::uint32_t length = 0;
    std::memcpy(&length, content.data() + 12, sizeof length);
    return content.substr(Lead, length);
}

/// The first line, since messages are one line.
std::string FirstLine(const std::string& text) {
    const std::string line = text.substr(0, text.find('\n'));
    std::string shown;
    for (const char letter : line.substr(0, 200)) {
        shown += letter >= ' ' && letter <= '~' ? letter : '?';
    }
    return shown.empty() ? "it is no glTF file" : shown;
}

bool IsBelow(const std::string& name) {
    const fs::path relative = fs::path(name).lexically_normal();
    return relative.is_relative() && !relative.empty() && *relative.begin() != "..";
}

/// What the loader may touch: regular files in the folder of the document.
struct Folder {
    fs::path path;
};

bool FileIsThere(const std::string& name, void* folder) {
    const fs::path relative = fs::path(name).lexically_relative(static_cast<Folder*>(folder)->path);
    std::error_code failed;
    return IsBelow(relative.string()) && fs::is_regular_file(name, failed) && !failed;
}

std::string AsItIs(const std::string& name, void*) { return name; }

bool ReadFile(std::vector<unsigned char>* content,
              std::string* error,
              const std::string& name,
              void*) {
    try {
        InputFile file(name);
        const auto size = static_cast<std::size_t>(file.Remaining());
        const unsigned char* bytes = size == 0 ? nullptr : file.Take(size);
        if (bytes == nullptr) {
            *error += name + " is empty or was cut off";
            return false;
        }
        content->assign(bytes, bytes + size);
        return true;
    } catch (const HostError& refused) {
        *error += refused.what();
        return false;
    }
}

bool WriteNothing(std::string*, const std::string&, const std::vector<unsigned char>&, void*) {
    return false;
}

bool PassOverPicture(
    tinygltf::Image*, int, std::string*, std::string*, int, int, const unsigned char*, int, void*) {
    return true;
}

}  // namespace

GltfDocument::GltfDocument(const std::string& filePath) : path(filePath) {
    InputFile file(path);
    const auto size = static_cast<std::size_t>(file.Remaining());
    if (size > std::numeric_limits<std::uint32_t>::max()) {
        throw HostError(path + ": a glTF file of more than 4 GiB is not read");
    }
    const unsigned char* bytes = size == 0 ? nullptr : file.Take(size);
    if (bytes == nullptr) {
        throw HostError(path + ": the file is empty or was cut off");
    }
    const std::string_view content(reinterpret_cast<const char*>(bytes), size);
    const bool isBinary = content.starts_with("glTF");
    CheckNesting(isBinary ? JsonChunk(content) : content, path);

    Folder folder{fs::path(path).parent_path()};
    tinygltf::TinyGLTF loader;
    loader.SetImageLoader(PassOverPicture, nullptr);
    loader.SetFsCallbacks({FileIsThere, AsItIs, ReadFile, WriteNothing, &folder});
    std::string error;
    std::string warning;
    bool isRead = false;
    try {
        const std::string base = folder.path.string();
        isRead =
            isBinary
                ? loader.LoadBinaryFromMemory(
                      &model, &error, &warning, bytes, static_cast<unsigned>(size), base)
                : loader.LoadASCIIFromString(
                      &model, &error, &warning, content.data(), static_cast<unsigned>(size), base);
    } catch (const std::exception& thrown) {
        error = thrown.what();
    }
    if (!isRead) {
        throw HostError(path + ": " + FirstLine(error));
    }
}

void GltfPlace::Refuse(const std::string& reason) const { throw HostError(text + ": " + reason); }

std::size_t GltfPlace::Checked(int number, std::size_t count, const char* what) const {
    if (number < 0 || static_cast<std::size_t>(number) >= count) {
        Refuse(std::string("it names ") + what + " " + std::to_string(number) +
               ", but there are only " + std::to_string(count));
    }
    return static_cast<std::size_t>(number);
}

}  // namespace trovik
