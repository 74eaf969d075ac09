// SPDX-License-Identifier: Apache-2.0

/// \file Tests that UVs, colours and groups are preserved when a level is added below level 0.
#include "framework/multires/LevelSource.h"
#include "framework/multires/Steps.h"
#include "tests/files/AttributeSamples.h"
#include "tests/files/SampleMeshes.h"

#include <gtest/gtest.h>

namespace trovik {
namespace {

PolygonMesh Shown(const LevelGeometry& geometry) {
    return GatherPolygons(LevelSource(geometry, {}));
}

void ExpectSameSurface(const PolygonMesh& a, const PolygonMesh& b) {
    EXPECT_EQ(CornerUvValues(a), CornerUvValues(b));
    EXPECT_EQ(a.attributes.colors, b.attributes.colors);
    ExpectSameGroups(a, b);
}

TEST(CarriedAttributes, StayWithTheSurfaceWhenLowerLevelsAreDeletedAndRebuilt) {
    LevelGeometry geometry(TwoQuads());
    geometry.Subdivide();
    geometry.Subdivide();
    geometry.Subdivide();
    const PolygonMesh finest = Shown(geometry);
    geometry.BindLevel(2);
    const PolygonMesh before = Shown(geometry);
    geometry.History().Push(DeleteLevelsAsStep(geometry, true));
    ExpectSameSurface(Shown(geometry), before);
    geometry.BindLevel(1);
    ExpectSameSurface(Shown(geometry), finest);
    ASSERT_TRUE(geometry.History().Undo(geometry));
    EXPECT_EQ(geometry.Attributes().cornerUvs, TwoQuads().attributes.cornerUvs);
    EXPECT_EQ(geometry.Attributes().colors, TwoQuads().attributes.colors);
    ExpectSameSurface(Shown(geometry), before);
    ASSERT_TRUE(geometry.History().Redo(geometry));
    ExpectSameSurface(Shown(geometry), before);
}

TEST(CarriedAttributes, OfARebuiltBaseAreThoseBeforeRefinement) {
    LevelGeometry coarse(TwoQuads());
    const PolygonMesh wanted = Shown(coarse);
    coarse.Subdivide();
    const PolygonMesh fine = Shown(coarse);

    LevelGeometry geometry(fine);
    geometry.History().Push(UnsubdivideAsStep(geometry));
    ExpectSameSurface(Shown(geometry), fine);
    geometry.BindLevel(0);
    ExpectSameSurface(Shown(geometry), wanted);
    EXPECT_LE(geometry.Attributes().uvs.size(), 8u) << "unused UVs were not removed";
    ASSERT_TRUE(geometry.History().Undo(geometry));
    EXPECT_EQ(geometry.Attributes().cornerUvs, fine.attributes.cornerUvs);
    ExpectSameSurface(Shown(geometry), fine);
}

TEST(CarriedAttributes, FollowRenumberedFacesAndRotatedCorners) {
    LevelGeometry original(TwoQuads());
    original.Subdivide();
    PolygonMesh fine = Shown(original);
    // The faces in reverse order, each with its corners rotated by one.
    PolygonMesh turned = fine;
    const std::size_t faces = fine.faceSizes.size();
    for (std::size_t face = 0; face < faces; ++face) {
        const std::size_t from = faces - 1 - face;
        for (std::size_t k = 0; k < 4; ++k) {
            turned.faceVertices[face * 4 + k] = fine.faceVertices[from * 4 + (k + 1) % 4];
            turned.attributes.cornerUvs[face * 4 + k] =
                fine.attributes.cornerUvs[from * 4 + (k + 1) % 4];
        }
        turned.attributes.faceGroups[face] = fine.attributes.faceGroups[from];
        turned.attributes.faceMaterials[face] = fine.attributes.faceMaterials[from];
    }
    LevelGeometry geometry(turned);
    geometry.History().Push(UnsubdivideAsStep(geometry));
    geometry.BindLevel(0);
    // The faces of the coarse mesh may be in a different order, but each has its own UVs and group.
    const PolygonMesh found = Shown(geometry);
    const PolygonMesh wanted = TwoQuads();
    ASSERT_EQ(found.faceSizes.size(), 2u);
    const auto uvs = CornerUvValues(found);
    const auto wantedUvs = CornerUvValues(wanted);
    for (std::size_t face = 0; face < 2; ++face) {
        for (std::size_t k = 0; k < 4; ++k) {
            const uint32_t vertex = found.faceVertices[face * 4 + k];
            bool isThere = false;
            for (std::size_t corner = 0; corner < 8; ++corner) {
                isThere = isThere || (found.attributes.colors[vertex] ==
                                          wanted.attributes.colors[wanted.faceVertices[corner]] &&
                                      uvs[face * 4 + k] == wantedUvs[corner] &&
                                      found.attributes.faceGroups[face] ==
                                          wanted.attributes.faceGroups[corner / 4]);
            }
            EXPECT_TRUE(isThere) << face << " " << k;
        }
    }
}

}  // namespace
}  // namespace trovik
