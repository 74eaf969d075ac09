// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/levels/LevelSource.h"
#include "framework/scene/SceneFile.h"
#include "tests/files/AttributeSamples.h"
#include "tests/scene/SampleScene.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trovik::test {
namespace {

PolygonMesh Shown(SculptSession& session) {
    return GatherPolygons(LevelSource(session.Geometry(), {}));
}

TEST(SceneAttributes, WhatTheMeshCarriesComesBackWithTheScene) {
    const TemporaryFolder folder;
    PolygonMesh mesh = AttributedMesh();
    mesh.attributes.hasAlpha = true;
    mesh.attributes.space = {0.01, UpAxis::Z};
    WriteMeshFile(folder.Path("mesh.obj"), mesh);
    SculptSession session(folder.Path("mesh.obj"), {0.001, UpAxis::Unknown});
    session.Subdivide();
    session.Save(folder.Path("a.trovik"));
    const PolygonMesh before = Shown(session);
    EXPECT_EQ(before.attributes.space, (MeshSpace{0.001, UpAxis::Z}));

    const auto opened = SculptSession::OpenScene(folder.Path("a.trovik"));
    EXPECT_TRUE(opened->Notes().empty());
    PolygonMesh after = Shown(*opened);
    EXPECT_EQ(after.attributes.uvs, before.attributes.uvs);
    EXPECT_EQ(after.attributes.cornerUvs, before.attributes.cornerUvs);
    EXPECT_EQ(after.attributes.colors, before.attributes.colors);
    EXPECT_TRUE(after.attributes.hasAlpha);
    EXPECT_EQ(after.attributes.space, before.attributes.space);
    ExpectSameGroups(after, before);
    // A reset keeps them too.
    opened->Reset();
    opened->Subdivide();
    after = Shown(*opened);
    EXPECT_EQ(CornerUvValues(after), CornerUvValues(before));
    EXPECT_EQ(after.attributes.colors, before.attributes.colors);
}

TEST(SceneAttributes, ListsThatDoNotFitLevel0AreRefused) {
    const TemporaryFolder folder;
    WriteMeshFile(folder.Path("mesh.obj"), AttributedMesh());
    SculptSession session(folder.Path("mesh.obj"));
    SurfaceAttributes attributes = session.Geometry().Attributes();
    attributes.cornerUvs.pop_back();
    session.Geometry().RestoreAttributes(attributes);
    session.Save(folder.Path("a.trovik"));
    EXPECT_THAT(
        MessageOf<HostError>([&] { SculptSession::OpenScene(folder.Path("a.trovik")); }),
        testing::AllOf(testing::HasSubstr("a.trovik: byte "),
                       testing::HasSubstr("texture coordinates of corners has 63 entries")));
}

}  // namespace
}  // namespace trovik::test
