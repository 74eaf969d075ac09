// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tinygltf {
class Model;
}

namespace trovik {

class JobControl;

/// The buffers of a glTF document that have a URI: data URIs, and files that, with symbolic links
/// resolved, are in the document's folder or a subfolder.
///
/// tinygltf rejects buffers that are longer than their `byteLength`, although the format allows
/// them, and it follows links to any file. These buffers are therefore read here, and tinygltf
/// receives a document in which each of them is a single byte.
class GltfBuffers {
public:
    /// Reads the buffers. If the text is not JSON or has no such buffers, the list is empty;
    /// tinygltf reports any errors of the text.
    /// \throw HostError with the file, the buffer and the reason.
    /// \throw Cancelled.
    GltfBuffers(const std::string& path, std::string_view json, JobControl* job);

    bool Empty() const { return contents.empty(); }
    /// The document for tinygltf.
    const std::string& Json() const { return changed; }
    /// Replaces the single bytes in the model by the contents. Called once.
    void MoveInto(tinygltf::Model& model);

private:
    /// The contents of the buffers, by their index.
    std::map<std::size_t, std::vector<unsigned char>> contents;
    std::string changed;
};

}  // namespace trovik
