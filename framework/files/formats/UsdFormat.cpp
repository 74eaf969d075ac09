// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshFormat.h"
#include "framework/files/MeshWriters.h"

#include <QtGlobal>

namespace trovik {

namespace {

std::vector<std::string> Write(const std::string& path, const MeshSource& source, JobControl* job) {
    WriteUsd(path, source, job);
    return {};
}

const MeshFormatRegistration usd(
    {.extension = ".usda",
     .name = QT_TRANSLATE_NOOP("MeshFormat", "USD"),
     .encoding = QT_TRANSLATE_NOOP("MeshFormat", "text"),
     .keeps = QT_TRANSLATE_NOOP("MeshFormat", "quads, UVs, colours, groups, materials"),
     .write = &Write});

}  // namespace

}  // namespace trovik
