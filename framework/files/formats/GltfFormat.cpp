// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshFormat.h"
#include "framework/files/MeshWriters.h"

#include <QtGlobal>

namespace trovik {

namespace {

template <bool isBinary>
std::vector<std::string> Write(const std::string& path, const MeshSource& source, JobControl* job) {
    WriteGltf(path, source, isBinary, job);
    return {};
}

constexpr const char* keeps =
    QT_TRANSLATE_NOOP("MeshFormat",
                      "triangles, UVs, colours, materials, layers as morph targets; in metres, "
                      "y up");
constexpr MeshFormat::FixedSpace space = {{1.0, UpAxis::Y}, "in metres with y up"};

const MeshFormatRegistration binary({.extension = ".glb",
                                     .name = QT_TRANSLATE_NOOP("MeshFormat", "glTF"),
                                     .encoding = QT_TRANSLATE_NOOP("MeshFormat", "binary"),
                                     .keeps = keeps,
                                     .read = &ReadGltf,
                                     .write = &Write<true>,
                                     .space = space});
const MeshFormatRegistration text({.extension = ".gltf",
                                   .name = QT_TRANSLATE_NOOP("MeshFormat", "glTF"),
                                   .encoding = QT_TRANSLATE_NOOP("MeshFormat", "text"),
                                   .keeps = keeps,
                                   .read = &ReadGltf,
                                   .write = &Write<false>,
                                   .space = space});

}  // namespace

}  // namespace trovik
