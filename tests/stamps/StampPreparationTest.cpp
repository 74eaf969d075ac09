// SPDX-License-Identifier: Apache-2.0

/// \file Tests how the stamp is prepared at the start of a stroke: its switches and the pixel
/// cache.
#include "tests/brush/ToolRows.h"
#include "tests/stamps/StampFixture.h"

#include <gtest/gtest.h>

#include <limits>

namespace trovik::test {
namespace {

constexpr const char* noImageText =
    "Please choose a stamp image first,\notherwise the brush will take no effect.";

class StampPreparation : public ::testing::Test {
protected:
    void Begin() { bench.Begin(); }
    void End() { bench.End(); }
    /// Makes a stroke without dabs. \return how often the image has been read so far.
    std::size_t StrokeAndCountReads() {
        Begin();
        End();
        return image->reads.size();
    }
    TestImage& Give(const char* name, uint32_t w, uint32_t h, std::vector<float> pixels) {
        image = &SetTestStamp(brush, QString::fromLatin1(name), w, h, std::move(pixels));
        // Keeps the images alive. Otherwise, a new image could have the address of a deleted one
        // and be mistaken for it.
        given.push_back(settings.stampImage);
        return *image;
    }
    void Dab() { bench.Dab(bench.HitFace(0), 0.5f, 0.1f); }
    /// The cached pixels of the stamp.
    std::vector<float> Cached() const {
        const std::size_t channels = brush.stampIsVector ? 3 : 1;
        return {brush.stampPixels,
                brush.stampPixels + brush.stampWidth * brush.stampHeight * channels};
    }

    StrokeFixture bench{FlatGrid(2)};
    SwiftStroke& brush = *bench.brush;
    BrushOperation::Private& settings = brush.Settings();
    TestImage* image = nullptr;
    std::vector<std::shared_ptr<Image>> given;
};

TEST(VectorStampName, HasTheMarkAnywhereInAnyCase) {
    for (const char* name : {"folds.vdm.tif",
                             "folds.VDM",
                             "FOLDS.VdM.EXR",
                             "Stamps/ear_vdm_left.tif",
                             "Stamps/ear_VDM.tif",
                             "_vdm",
                             ".vdm",
                             "sets.vdm/plain.tif"})
        EXPECT_TRUE(SwiftStroke::IsVectorStampName(QString::fromLatin1(name))) << name;
    for (const char* name :
         {"", "vdm", "vdm.tif", "earvdm.tif", "ear-vdm.tif", "ear vdm.tif", "ear.vd_m", "ear_v.dm"})
        EXPECT_FALSE(SwiftStroke::IsVectorStampName(QString::fromLatin1(name))) << name;
}

TEST_F(StampPreparation, ReadsTheWholeImageOnceAsOneChannelOfFloats) {
    Give("wave.tif", 3, 2, {0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f});
    Begin();
    ASSERT_EQ(image->reads.size(), 1u);
    const TestImage::Read& read = image->reads[0];
    EXPECT_EQ(read.x, 0);
    EXPECT_EQ(read.y, 0);
    EXPECT_EQ(read.width, 3);
    EXPECT_EQ(read.height, 2);
    EXPECT_EQ(read.descriptor.channels, 1);
    EXPECT_EQ(read.descriptor.format, 3u);
    EXPECT_EQ(read.descriptor.depth, 5u);
    EXPECT_EQ(read.descriptor.flags, 0);
    EXPECT_TRUE(brush.stampEnabled);
    EXPECT_FALSE(brush.stampIsVector);
    EXPECT_EQ(brush.stampImage, image);
    EXPECT_EQ(brush.stampImageVersion, image->Version());
    EXPECT_EQ(brush.stampName, QStringLiteral("wave.tif"));
    EXPECT_EQ(brush.stampWidth, 3u);
    EXPECT_EQ(brush.stampHeight, 2u);
    EXPECT_EQ(Cached(), (std::vector<float>{0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f}));
    End();
}

TEST_F(StampPreparation, ReadsThreeChannelsOfAVectorStamp) {
    const std::vector<float> pixels = {1.0f, 2.0f, 3.0f, -4.0f, 5.0f, 6.0f};
    Give("ear_vdm.exr", 1, 2, pixels);
    Begin();
    ASSERT_EQ(image->reads.size(), 1u);
    EXPECT_EQ(image->reads[0].descriptor.channels, 3);
    EXPECT_EQ(image->reads[0].descriptor.format, 3u);
    EXPECT_EQ(image->reads[0].descriptor.depth, 5u);
    EXPECT_TRUE(brush.stampIsVector);
    EXPECT_EQ(Cached(), pixels);
    End();
}

TEST_F(StampPreparation, LaterStrokesWithTheSameStampReadNothing) {
    Give("wave.tif", 2, 1, {0.25f, 0.5f});
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    const float* const pixels = brush.stampPixels;
    Begin();
    Dab();
    End();
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_EQ(brush.stampPixels, pixels);
    EXPECT_EQ(Cached(), (std::vector<float>{0.25f, 0.5f}));
}

TEST_F(StampPreparation, ImageWithChangedContentIsReadAgain) {
    Give("wave.tif", 2, 1, {0.25f, 0.5f});
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    image->pixels = {0.75f, 1.0f, 0.0f, 0.125f};
    image->height = 2;
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    image->ContentChanged();
    EXPECT_EQ(StrokeAndCountReads(), 2u);
    EXPECT_EQ(brush.stampHeight, 2u);
    EXPECT_EQ(brush.stampImageVersion, image->Version());
    EXPECT_EQ(Cached(), (std::vector<float>{0.75f, 1.0f, 0.0f, 0.125f}));
}

TEST_F(StampPreparation, AnotherImageOfTheSameNameAndVersionIsReadAgain) {
    Give("wave.tif", 2, 1, {0.25f, 0.5f});
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    const std::shared_ptr<Image> kept = settings.stampImage;
    Give("wave.tif", 2, 1, {1.0f, 2.0f});
    ASSERT_EQ(image->Version(), kept->Version());
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_EQ(brush.stampImage, image);
    EXPECT_EQ(Cached(), (std::vector<float>{1.0f, 2.0f}));
}

TEST_F(StampPreparation, NameAloneMakesTheImageAVectorStamp) {
    Give("ear.exr", 1, 1, {1.0f, 2.0f, 3.0f});
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_EQ(Cached(), std::vector<float>{1.0f});
    settings.stampName = QStringLiteral("ear.vdm.exr");
    EXPECT_EQ(StrokeAndCountReads(), 2u);
    EXPECT_TRUE(brush.stampIsVector);
    EXPECT_EQ(Cached(), (std::vector<float>{1.0f, 2.0f, 3.0f}));
}

TEST_F(StampPreparation, OffsetIsSubtractedFromAPlainStampWithoutClamping) {
    Give("wave.tif", 3, 1, {1.0f, 0.0f, 0.5f});
    settings.stampOffset = 0.25f;
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_EQ(Cached(), (std::vector<float>{0.75f, -0.25f, 0.25f}));
    EXPECT_EQ(brush.stampOffset, 0.25f);

    settings.stampOffset = -2.0f;
    EXPECT_EQ(StrokeAndCountReads(), 2u);
    EXPECT_EQ(Cached(), (std::vector<float>{3.0f, 2.0f, 2.5f}));
}

TEST_F(StampPreparation, OffsetIsAddedToAnInvertedStamp) {
    Give("wave.tif", 3, 1, {1.0f, 0.0f, 0.5f});
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    settings.stampInverted = true;
    EXPECT_EQ(StrokeAndCountReads(), 2u);
    EXPECT_TRUE(brush.stampInverted);
    EXPECT_EQ(Cached(), (std::vector<float>{0.0f, 1.0f, 0.5f}));
    settings.stampOffset = 0.25f;
    EXPECT_EQ(StrokeAndCountReads(), 3u);
    EXPECT_EQ(Cached(), (std::vector<float>{0.25f, 1.25f, 0.75f}));
}

TEST_F(StampPreparation, InversionAndOffsetApplyToEachChannelOfAVectorStamp) {
    Give("ear_vdm.exr", 1, 1, {1.0f, 0.0f, -2.0f});
    settings.stampInverted = true;
    settings.stampOffset = 0.5f;
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_EQ(Cached(), (std::vector<float>{0.5f, 1.5f, 3.5f}));
}

TEST_F(StampPreparation, FactorAppliesToTheNextDabWithoutANewRead) {
    Give("wave.tif", 2, 1, {0.25f, 0.5f});
    settings.stampFactor = 3.0f;
    Begin();
    EXPECT_EQ(brush.stampFactor, 3.0f);
    EXPECT_EQ(Cached(), (std::vector<float>{0.25f, 0.5f}));
    settings.stampFactor = 5.0f;
    EXPECT_EQ(brush.stampFactor, 3.0f);
    Dab();
    EXPECT_EQ(brush.stampFactor, 5.0f);
    EXPECT_EQ(image->reads.size(), 1u);
    End();
    // A change of the factor is detected by comparison with the last dab's factor.
    EXPECT_EQ(StrokeAndCountReads(), 1u);

    settings.stampFactor = 7.0f;
    EXPECT_EQ(StrokeAndCountReads(), 2u);
    EXPECT_EQ(brush.stampFactor, 7.0f);
    EXPECT_EQ(Cached(), (std::vector<float>{0.25f, 0.5f}));
    EXPECT_EQ(StrokeAndCountReads(), 2u);
}

TEST_F(StampPreparation, NaNFactorAlwaysCountsAsChanged) {
    Give("wave.tif", 1, 1, {0.25f});
    settings.stampFactor = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_EQ(StrokeAndCountReads(), 2u);
}

TEST_F(StampPreparation, ChangedBuildUpSettingAloneCausesNoNewRead) {
    Give("wave.tif", 1, 1, {0.25f});
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_FALSE(brush.stampBuildUp);
    settings.stampBuildUp = true;
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_FALSE(brush.stampBuildUp);
    settings.stampOffset = 1.0f;
    EXPECT_EQ(StrokeAndCountReads(), 2u);
    EXPECT_TRUE(brush.stampBuildUp);
}

TEST_F(StampPreparation, TilingIsReadAtEveryStroke) {
    Give("wave.tif", 1, 1, {0.25f});
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_FALSE(brush.stampTiled);
    settings.stampTiled = true;
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_TRUE(brush.stampTiled);
    brush.SetStamp(false, QStringLiteral("wave.tif"));
    settings.stampTiled = false;
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_FALSE(brush.stampTiled);
}

TEST_F(StampPreparation, CacheSurvivesAStrokeWithoutTheStamp) {
    Give("ear_vdm.exr", 1, 1, {1.0f, 2.0f, 3.0f});
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    const float* const pixels = brush.stampPixels;
    brush.SetStamp(false, QStringLiteral("ear_vdm.exr"));
    Begin();
    EXPECT_FALSE(brush.stampEnabled);
    EXPECT_FALSE(brush.stampIsVector);
    EXPECT_EQ(brush.stampPixels, pixels);
    End();
    brush.SetStamp(true, QStringLiteral("ear_vdm.exr"));
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_TRUE(brush.stampIsVector);
    EXPECT_EQ(Cached(), (std::vector<float>{1.0f, 2.0f, 3.0f}));
}

TEST_F(StampPreparation, DisabledStampIsNotRead) {
    Give("wave.tif", 1, 1, {0.25f});
    brush.SetStamp(false, QStringLiteral("wave.tif"));
    EXPECT_EQ(StrokeAndCountReads(), 0u);
    EXPECT_EQ(brush.stampPixels, nullptr);
    EXPECT_EQ(brush.stampImage, nullptr);
}

TEST_F(StampPreparation, ImageMayBeDestroyedAfterItIsRead) {
    Give("wave.tif", 1, 1, {0.25f});
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    image = nullptr;
    given.clear();
    brush.SetStamp(false, QString());
    ASSERT_EQ(settings.stampImage, nullptr);
    Begin();
    Dab();
    End();
    EXPECT_EQ(Cached(), std::vector<float>{0.25f});
}

TEST_F(StampPreparation, StrokeWithoutSculptingReadsNothing) {
    Give("wave.tif", 1, 1, {0.25f});
    brush.BeginStroke(nullptr, BrushOperation::ModifierNone, BrushOperation::TriggerOther);
    brush.EndStroke();
    EXPECT_TRUE(image->reads.empty());
    EXPECT_FALSE(brush.stampEnabled);
}

TEST_F(StampPreparation, SmoothIgnoresAVectorStampForThatStroke) {
    Give("ear_vdm.exr", 1, 1, {1.0f, 2.0f, 3.0f});
    image->kind = 1;
    const std::shared_ptr<Image> kept = settings.stampImage;
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_TRUE(brush.stampEnabled);
    const float* const pixels = brush.stampPixels;

    bench.Activate(Tool::Smooth);
    brush.SetStamp(true, QStringLiteral("ear_vdm.exr"));
    settings.stampImage = kept;
    // While the stamp is disabled, changes that would require re-reading it have no effect.
    settings.stampOffset = 1.0f;
    settings.stampTiled = true;
    EXPECT_EQ(StrokeAndCountReads(), 1u);
    EXPECT_FALSE(brush.stampEnabled);
    EXPECT_FALSE(brush.stampIsVector);
    EXPECT_TRUE(brush.stampTiled);
    EXPECT_EQ(brush.stampPixels, pixels);
    EXPECT_EQ(brush.stampOffset, 0.0f);
    EXPECT_TRUE(brush.IsMaskEnabled(-1));
    EXPECT_TRUE(HostKernel::Instance().HUDMessages().empty());
}

TEST_F(StampPreparation, SmoothUsesOtherStamps) {
    for (const int kind : {0, 2, -1}) {
        bench.Activate(Tool::Smooth);
        Give("ear_vdm.exr", 1, 1, {1.0f, 2.0f, 3.0f});
        image->kind = kind;
        EXPECT_EQ(StrokeAndCountReads(), 1u);
        EXPECT_TRUE(brush.stampEnabled);
        EXPECT_TRUE(brush.stampIsVector);
    }
}

TEST_F(StampPreparation, StampWithoutAnImageIsReportedAtEachStrokeAndMovesNothing) {
    brush.SetStamp(true, QStringLiteral("gone.tif"));
    HostKernel& kernel = HostKernel::Instance();
    const auto before = BitsOf(bench.Mesh());
    for (std::size_t stroke = 1; stroke <= 3; ++stroke) {
        Begin();
        EXPECT_TRUE(brush.stampEnabled);
        EXPECT_EQ(kernel.HUDMessages().size(), stroke);
        Dab();
        End();
        EXPECT_EQ(kernel.HUDMessages(), std::vector<std::string>(stroke, noImageText));
    }
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
    settings.stampTiled = true;
    Begin();
    Dab();
    End();
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
    EXPECT_EQ(brush.stampWidth, 0u);
    EXPECT_EQ(kernel.crashFlags, 0u);
}

TEST_F(StampPreparation, ImageWithoutRowsIsReadWithoutAMessage) {
    Give("thin.tif", 4, 0, {});
    const auto before = BitsOf(bench.Mesh());
    Begin();
    Dab();
    End();
    EXPECT_TRUE(HostKernel::Instance().HUDMessages().empty());
    EXPECT_EQ(image->reads.size(), 1u);
    EXPECT_EQ(brush.stampWidth, 4u);
    EXPECT_EQ(brush.stampHeight, 0u);
    EXPECT_EQ(BitsOf(bench.Mesh()), before);
}

TEST(StampOfATool, IsSetOnlyForSprayRepeatKnifeAndImprint) {
    for (std::size_t i = 0; i < allTools.size(); ++i) {
        SCOPED_TRACE(toolNames[i]);
        // The fixture disables the stamp; a new brush has the tool's default settings.
        StrokeFixture bench(FlatGrid(2));
        SwiftStroke brush;
        brush.SetActiveConfiguration(RowOf(allTools[i]));
        HostKernel::Instance().ClearHUDMessages();
        brush.BeginStroke(
            &bench.Mesh(), BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
        const Tool tool = allTools[i];
        const bool stamped = tool == Tool::Spray || tool == Tool::Repeat || tool == Tool::Knife ||
                             tool == Tool::Imprint;
        EXPECT_EQ(brush.stampEnabled, stamped);
        // The stamp's image has not been loaded yet.
        EXPECT_EQ(HostKernel::Instance().HUDMessages(),
                  std::vector<std::string>(stamped ? 1 : 0, noImageText));
        brush.EndStroke();
    }
}

TEST(StampOfATool, IsRestoredWithTheToolAndRemovedWithIt) {
    SwiftStroke brush;
    brush.SetActiveConfiguration(RowOf(Tool::Knife));
    EXPECT_TRUE(brush.IsMaskEnabled(-1));
    EXPECT_EQ(brush.MaskName(-1), QStringLiteral("Stamps/knife.tif"));
    brush.SetActiveConfiguration(RowOf(Tool::Bulge));
    EXPECT_FALSE(brush.IsMaskEnabled(-1));
    EXPECT_EQ(brush.MaskName(-1), QString());
    brush.SetActiveConfiguration(RowOf(Tool::Knife));
    EXPECT_TRUE(brush.IsMaskEnabled(-1));
    EXPECT_EQ(brush.MaskName(-1), QStringLiteral("Stamps/knife.tif"));
    brush.SetStamp(false, QStringLiteral("mine.tif"));
    brush.SetActiveConfiguration(RowOf(Tool::Spray));
    EXPECT_EQ(brush.MaskName(-1), QStringLiteral("Stamps/bw_brickTile.tif"));
    EXPECT_TRUE(brush.UsesStampRandomize());
    brush.SetActiveConfiguration(RowOf(Tool::Knife));
    EXPECT_FALSE(brush.IsMaskEnabled(-1));
    EXPECT_EQ(brush.MaskName(-1), QStringLiteral("mine.tif"));
    EXPECT_FALSE(brush.UsesStampRandomize());
}

TEST(StampOfATool, IsNotUsedByTemporarySmooth) {
    StrokeFixture bench(FlatGrid(2));
    SwiftStroke& brush = *bench.brush;
    bench.Activate(Tool::Repeat);
    SetTestStamp(brush, QStringLiteral("wave.tif"), 1, 1, {0.5f});
    bench.Begin(BrushOperation::ModifierSmooth);
    EXPECT_TRUE(brush.isSmooth);
    EXPECT_FALSE(brush.stampEnabled);
    bench.End();
    EXPECT_TRUE(brush.IsMaskEnabled(-1));
    EXPECT_EQ(brush.MaskName(-1), QStringLiteral("wave.tif"));
}

}  // namespace
}  // namespace trovik::test
