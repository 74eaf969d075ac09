// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshFormat.h"
#include "framework/files/MeshWriters.h"

#include <QtGlobal>

namespace trovik {

namespace {

std::vector<std::string> Write(const std::string& path, const MeshSource& source, JobControl* job) {
    WritePly(path, source, PlyEncoding::BinaryLittleEndian, job);
    return {};
}

const MeshFormatRegistration ply({.extension = ".ply",
                                  .name = QT_TRANSLATE_NOOP("MeshFormat", "PLY"),
                                  .encoding = QT_TRANSLATE_NOOP("MeshFormat", "binary"),
                                  .keeps = QT_TRANSLATE_NOOP("MeshFormat", "quads, UVs, colours"),
                                  .read = &ReadPly,
                                  .write = &Write});

}  // namespace

void WritePly(const std::string& path, const PolygonMesh& mesh, PlyEncoding encoding) {
    const PolygonSource source(mesh);
    CheckFinite(path, source);
    WritePly(path, source, encoding, nullptr);
}

}  // namespace trovik
