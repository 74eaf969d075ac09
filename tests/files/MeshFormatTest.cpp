// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshFormat.h"
#include "tests/files/FileRefusal.h"
#include "tests/files/SampleMeshes.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trovik::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;

std::vector<std::string> Extensions(bool (*isWanted)(const MeshFormat&)) {
    std::vector<std::string> extensions;
    for (const MeshFormat& format : MeshFormats())
        if (isWanted(format)) extensions.emplace_back(format.extension);
    return extensions;
}

TEST(MeshFormats, AreListedByExtension) {
    EXPECT_THAT(Extensions([](const MeshFormat& format) { return format.read != nullptr; }),
                ElementsAre(".glb", ".gltf", ".obj", ".ply", ".stl"));
    EXPECT_THAT(Extensions([](const MeshFormat& format) { return format.write != nullptr; }),
                ElementsAre(".glb", ".gltf", ".obj", ".ply", ".stl", ".usda"));
    for (const MeshFormat& format : MeshFormats()) {
        EXPECT_NE(format.name, nullptr) << format.extension;
        EXPECT_NE(format.keeps, nullptr) << format.extension;
    }
}

TEST(MeshFormats, AreFoundInAnyCase) {
    ASSERT_NE(FindMeshFormat("folder.obj/Head.STL"), nullptr);
    EXPECT_STREQ(FindMeshFormat("folder.obj/Head.STL")->extension, ".stl");
    EXPECT_EQ(FindMeshFormat("folder.obj/head"), nullptr);
    EXPECT_EQ(FindMeshFormat("head.obj.txt"), nullptr);
}

TEST(MeshFormats, OtherExtensionsAreRefusedWithTheAcceptedOnes) {
    EXPECT_THAT(MessageOf<HostError>([] { ReadMeshFile("a.usda"); }),
                EndsWith("the extension must be .glb, .gltf, .obj, .ply or .stl"));
    EXPECT_THAT(MessageOf<HostError>([] { RequireWritableMesh("a.txt"); }),
                EndsWith("the extension must be .glb, .gltf, .obj, .ply, .stl or .usda"));
}

}  // namespace
}  // namespace trovik::test
