// SPDX-License-Identifier: Apache-2.0
#include "framework/files/GltfBuffers.h"

#include "framework/errors/HostError.h"
#include "framework/io/InputFile.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <filesystem>
#include <system_error>
#include <tiny_gltf.h>

namespace trovik {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using Bytes = std::vector<unsigned char>;

/// Returns a URI with its percent escapes decoded.
std::string Decoded(const std::string& uri) {
    const auto digit = [](char letter) {
        return letter >= '0' && letter <= '9'   ? letter - '0'
               : letter >= 'a' && letter <= 'f' ? letter - 'a' + 10
               : letter >= 'A' && letter <= 'F' ? letter - 'A' + 10
                                                : -1;
    };
    std::string name;
    for (std::size_t at = 0; at < uri.size(); ++at) {
        const int high = uri[at] == '%' && at + 2 < uri.size() ? digit(uri[at + 1]) : -1;
        const int low = high >= 0 ? digit(uri[at + 2]) : -1;
        name += low >= 0 ? static_cast<char>(high * 16 + low) : uri[at];
        at += low >= 0 ? 2 : 0;
    }
    return name;
}

/// Returns the name in quotes, shortened if necessary, for a one-line message.
std::string Shown(const std::string& name) {
    std::string shown;
    for (const char letter : name.substr(0, 100)) {
        shown += letter >= ' ' && letter != '\x7f' ? letter : '?';
    }
    return "'" + shown + "'";
}

/// The path of a file in the document's folder or a subfolder. \throw HostError like ReadGltfFile.
fs::path ExternalPath(const std::string& document,
                      const std::string& name,
                      const std::string& location) {
    if (name.find('\0') != std::string::npos) {
        throw HostError(location + Shown(name) + " is not the name of a file");
    }
    const auto refuseOutside = [&] {
        throw HostError(location + Shown(name) +
                        " is outside the folder of the file; only files in that folder and its "
                        "subfolders are read");
    };
    // Checked before the file system is accessed, so that no file outside the folder is opened.
    const fs::path plain = fs::path(name).lexically_normal();
    if (plain.is_absolute() || plain.empty() || *plain.begin() == "..") {
        refuseOutside();
    }
    const auto canonical = [&](const fs::path& path) {
        std::error_code failed;
        fs::path resolved = fs::canonical(path, failed);
        if (failed) {
            throw HostError(location + Shown(name) + ": " + failed.message());
        }
        return resolved;
    };
    const fs::path given = fs::path(document).parent_path();
    const fs::path folder = canonical(given.empty() ? fs::path(".") : given);
    const fs::path path = canonical(folder / plain);
    const fs::path relative = path.lexically_relative(folder);
    if (relative.empty() || *relative.begin() == "..") {
        refuseOutside();
    }
    return path;
}

Bytes ReadDataUri(const std::string& uri, std::uint64_t wanted, const std::string& location) {
    Bytes bytes;
    std::string kind;
    if (!tinygltf::DecodeDataURI(&bytes, kind, uri, 0, false)) {
        throw HostError(location + "its data URI " + Shown(uri.substr(0, 40)) +
                        " cannot be decoded or is empty");
    }
    if (bytes.size() < wanted) {
        throw HostError(location + "its data URI has " + std::to_string(bytes.size()) +
                        " bytes, fewer than its byteLength of " + std::to_string(wanted));
    }
    bytes.resize(static_cast<std::size_t>(wanted));
    return bytes;
}

}  // namespace

GltfBuffers::GltfBuffers(const std::string& path, std::string_view text, JobControl* job) {
    json document = json::parse(text.begin(), text.end(), nullptr, false);
    if (!document.is_object() || !document.contains("buffers") || !document["buffers"].is_array()) {
        return;
    }
    json& buffers = document["buffers"];
    for (std::size_t number = 0; number < buffers.size(); ++number) {
        json& buffer = buffers[number];
        const bool isKnown = buffer.is_object() && buffer.contains("uri") &&
                             buffer["uri"].is_string() && buffer.contains("byteLength") &&
                             buffer["byteLength"].is_number_unsigned();
        if (!isKnown) {
            continue;
        }
        const std::string uri = std::move(buffer["uri"].get_ref<std::string&>());
        const auto wanted = buffer["byteLength"].get<std::uint64_t>();
        const std::string location = path + ": buffer " + std::to_string(number) + ": ";
        contents[number] = uri.starts_with("data:")
                               ? ReadDataUri(uri, wanted, location)
                               : ReadGltfFile(path, uri, wanted, location, job);
        buffer["uri"] = "data:application/octet-stream;base64,AA==";
        buffer["byteLength"] = 1;
    }
    if (!contents.empty()) {
        changed = document.dump();
    }
}

std::vector<unsigned char> ReadGltfFile(const std::string& document,
                                        const std::string& uri,
                                        std::optional<std::uint64_t> wanted,
                                        const std::string& location,
                                        JobControl* job) {
    const std::string name = Decoded(uri);
    const fs::path path = ExternalPath(document, name, location);
    std::string reason;
    try {
        InputFile file(path.string(), job);
        if (file.Remaining() >= wanted.value_or(0)) {
            const auto count = static_cast<std::size_t>(wanted.value_or(file.Remaining()));
            const unsigned char* bytes = count == 0 ? nullptr : file.Take(count);
            if (bytes != nullptr) {
                return Bytes(bytes, bytes + count);
            }
            return {};
        }
        reason = Shown(name) + " has " + std::to_string(file.Remaining()) +
                 " bytes, fewer than its byteLength of " + std::to_string(*wanted);
    } catch (const HostError& refused) {
        reason = refused.what();
    }
    throw HostError(location + reason);
}

void GltfBuffers::MoveInto(tinygltf::Model& model) {
    for (auto& [number, content] : contents) {
        if (number < model.buffers.size()) {
            model.buffers[number].data = std::move(content);
        }
    }
}

}  // namespace trovik
