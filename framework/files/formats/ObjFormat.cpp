// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshFormat.h"
#include "framework/files/MeshWriters.h"

#include <QtGlobal>

namespace trovik {

namespace {

std::vector<std::string> Write(const std::string& path, const MeshSource& source, JobControl* job) {
    return WriteObj(path, source, job);
}

const MeshFormatRegistration obj(
    {.extension = ".obj",
     .name = QT_TRANSLATE_NOOP("MeshFormat", "Wavefront OBJ"),
     .keeps = QT_TRANSLATE_NOOP("MeshFormat", "quads, UVs, colours, groups, materials"),
     .read = &ReadObj,
     .write = &Write});

}  // namespace

void WriteObj(const std::string& path, const PolygonMesh& mesh) {
    const PolygonSource source(mesh);
    CheckFinite(path, source);
    WriteObj(path, source, nullptr);
}

}  // namespace trovik
