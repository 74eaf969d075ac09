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

/// The buffers of a glTF document that have a URI: data URIs, and files in the folder of the
/// document or below, symbolic links followed.
///
/// tinygltf refuses buffers that are longer than their `byteLength`, although the format allows
/// them, and reads any file that a link leads to. So these buffers are read here, and tinygltf gets
/// a document in which each of them is a single byte.
class GltfBuffers {
public:
    /// Reads them. A text that is not JSON, or without such buffers, has none; tinygltf reports
    /// what is wrong with it. \throw HostError naming the file, the buffer and the reason.
    /// \throw Cancelled.
    GltfBuffers(const std::string& path, std::string_view json, JobControl* job);

    bool Empty() const { return contents.empty(); }
    /// The document for tinygltf.
    const std::string& Json() const { return changed; }
    /// Puts the contents where tinygltf has put single bytes. To be called once.
    void MoveInto(tinygltf::Model& model);

private:
    /// By the number of the buffer.
    std::map<std::size_t, std::vector<unsigned char>> contents;
    std::string changed;
};

}  // namespace trovik
