// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tinygltf {
class Model;
}

namespace trovik {

class JobControl;

/// The buffers of a glTF document that have a URI. A URI may contain the data itself or name a file
/// in the document's folder or a subfolder, after symbolic links are resolved.
///
/// tinygltf rejects buffers that are longer than their `byteLength`, although the format allows
/// them, and it follows symbolic links to any file. These buffers are therefore read here, and
/// tinygltf receives a document in which each of them is replaced by a single byte.
class GltfBuffers {
public:
    /// Reads the buffers. If the text is not JSON or has no such buffers, nothing is read; tinygltf
    /// reports any errors in the text.
    /// \throw HostError with the file, the buffer and the reason.
    /// \throw Cancelled.
    GltfBuffers(const std::string& path, std::string_view json, JobControl* job);

    bool Empty() const { return contents.empty(); }
    /// Returns the JSON of the document for tinygltf.
    const std::string& Json() const { return changed; }
    /// Replaces the single-byte buffers in the model with the actual contents. Call it once.
    void MoveInto(tinygltf::Model& model);

private:
    /// The contents of the buffers, by their index.
    std::map<std::size_t, std::vector<unsigned char>> contents;
    std::string changed;
};

/// Reads a file that a glTF document names, in the document's folder or a subfolder.
/// \param document  path of the document. \param uri  the name, with percent escapes.
/// \param wanted  number of bytes to read from its start; empty: all of them.
/// \throw HostError that begins with `location`, if the file is in another folder, shorter than
/// `wanted` or cannot be read.
std::vector<unsigned char> ReadGltfFile(const std::string& document,
                                        const std::string& uri,
                                        std::optional<std::uint64_t> wanted,
                                        const std::string& location,
                                        JobControl* job = nullptr);

}  // namespace trovik
