// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshFormat.h"
#include "framework/files/MeshWriters.h"

#include <QtGlobal>

namespace trovik {

namespace {

std::vector<std::string> Write(const std::string& path, const MeshSource& source, JobControl* job) {
    WriteStl(path, source, StlEncoding::Binary, job);
    return {};
}

const MeshFormatRegistration stl({.extension = ".stl",
                                  .name = QT_TRANSLATE_NOOP("MeshFormat", "STL"),
                                  .encoding = QT_TRANSLATE_NOOP("MeshFormat", "binary"),
                                  .keeps = QT_TRANSLATE_NOOP("MeshFormat", "triangles only"),
                                  .read = &ReadStl,
                                  .write = &Write});

}  // namespace

void WriteStl(const std::string& path, const PolygonMesh& mesh, StlEncoding encoding) {
    const PolygonSource source(mesh);
    CheckFinite(path, source);
    WriteStl(path, source, encoding, nullptr);
}

}  // namespace trovik
