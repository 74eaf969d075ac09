// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/jobs/JobControl.h"

#include <cstddef>
#include <string>
#include <tiny_gltf.h>

namespace trovik {

/// A parsed glTF file, text (.gltf) or binary (.glb). The format is detected from the first bytes.
///
/// Referenced buffers are read if GltfBuffers permits their location; images are not read.
/// \throw HostError with the file and the reason; Cancelled, if the job is cancelled while the file
/// is being read.
class GltfDocument {
public:
    explicit GltfDocument(const std::string& path, JobControl* job = nullptr);

    const std::string& Path() const { return path; }
    const tinygltf::Model& Model() const { return model; }

private:
    std::string path;
    tinygltf::Model model;
};

/// A location in the document, for error messages.
class GltfLocation {
public:
    GltfLocation(const GltfDocument& document, const char* what, std::size_t number)
        : text(document.Path() + ": " + what + " " + std::to_string(number)) {}
    GltfLocation(const GltfDocument& document,
                 const char* what,
                 std::size_t number,
                 const char* inner,
                 std::size_t innerNumber)
        : text(document.Path() + ": " + what + " " + std::to_string(number) + ", " + inner + " " +
               std::to_string(innerNumber)) {}

    /// Always throws.
    /// \throw HostError with the message "FILE: WHAT N: reason".
    [[noreturn]] void Refuse(const std::string& reason) const;
    /// Returns `number` as an index after checking that it is valid for `count` elements.
    std::size_t Checked(int number, std::size_t count, const char* what) const;

private:
    std::string text;
};

}  // namespace trovik
