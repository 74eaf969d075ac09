// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/StampFiles.h"
#include "framework/errors/HostError.h"
#include "tests/brushes/LoopFixture.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace trovik::test {
namespace {

/// Two stamp folders, set through the environment variable.
class StampFiles : public testing::Test {
protected:
    StampFiles() {
        HostKernel::Instance();
        for (const char* name : {"one", "two", "one/Stamps"})
            std::filesystem::create_directory(folder.Path(name));
        setenv("TROVIK_STAMP_PATH", (folder.Path("one") + ":" + folder.Path("two")).c_str(), 1);
    }
    ~StampFiles() override { unsetenv("TROVIK_STAMP_PATH"); }

    std::string Write(const std::string& name, float value) {
        WriteFloatImageFile(folder.Path(name), GreyImage(2, 2, std::vector<float>(4, value)));
        return folder.Path(name);
    }
    float FirstPixel() {
        float value = 0.0f;
        const PixelDescriptor descriptor{1, 3, 5, 0};
        brush.MaskImage(-1)->getTile(0, 0, 1, 1, &value, &descriptor);
        return value;
    }

    TemporaryFolder folder;
    BrushOperation brush;
};

TEST_F(StampFiles, EnvironmentSpecifiesTheFolders) {
    EXPECT_EQ(StampFolders(), (std::vector<std::string>{folder.Path("one"), folder.Path("two")}));
}

TEST_F(StampFiles, NamesAreLookedUpInTheFoldersInOrder) {
    const std::string knife = Write("one/Stamps/knife.tif", 1.0f);
    const std::string rivet = Write("two/rivet.exr", 2.0f);
    EXPECT_EQ(FindStampFile("Stamps/knife.tif"), knife);
    EXPECT_EQ(FindStampFile("knife.tif"), knife);
    EXPECT_EQ(FindStampFile("knife"), knife);
    EXPECT_EQ(FindStampFile("rivet"), rivet);
    EXPECT_EQ(FindStampFile("Stamps/rivet.exr"), rivet);
    EXPECT_EQ(FindStampFile("none"), std::nullopt);
    EXPECT_EQ(FindStampFile("none.tif"), std::nullopt);
    EXPECT_EQ(FindStampFile(""), std::nullopt);
    EXPECT_EQ(FindStampFile("Stamps/"), std::nullopt);
    const std::string nearer = Write("one/rivet.tif", 3.0f);
    EXPECT_EQ(FindStampFile("rivet"), nearer);
}

TEST_F(StampFiles, AbsolutePathIsUsedUnchanged) {
    const std::string path = Write("mine.tif", 1.0f);
    EXPECT_EQ(FindStampFile(path), path);
    EXPECT_EQ(FindStampFile(folder.Path("mine")), path);
    EXPECT_EQ(FindStampFile(folder.Path("other.tif")), std::nullopt);
    EXPECT_EQ(FindStampFile(folder.Path("one")), std::nullopt) << "a folder is not a stamp";
}

TEST_F(StampFiles, BrushUsesTheImageOfItsStamp) {
    Write("one/Stamps/knife.tif", 0.5f);
    brush.SetStamp(true, QStringLiteral("Stamps/knife.tif"));
    EXPECT_EQ(brush.MaskImage(-1)->Width(), 0u);
    RefreshStamp(brush);
    EXPECT_EQ(brush.MaskImage(-1)->Width(), 2u);
    EXPECT_EQ(FirstPixel(), 0.5f);
    EXPECT_EQ(brush.MaskName(-1), QStringLiteral("Stamps/knife.tif"));
    // After switching to another stamp and back, the image is still loaded.
    const Image* image = brush.MaskImage(-1);
    brush.SetStamp(true, QStringLiteral("Stamps/other.tif"));
    EXPECT_EQ(brush.MaskImage(-1)->Width(), 0u);
    RefreshStamp(brush);
    EXPECT_EQ(brush.MaskImage(-1)->Width(), 0u) << "the file does not exist";
    brush.SetStamp(true, QStringLiteral("Stamps/knife.tif"));
    EXPECT_EQ(brush.MaskImage(-1), image);
}

TEST_F(StampFiles, ChangedFileIsReadForTheNextStroke) {
    RecordingBrush recording;
    LoopFixture bench(recording, FlatGrid(4));
    const std::string path = Write("mine.tif", 0.5f);
    recording.SetStamp(true, QString::fromStdString(path));
    const auto stroke = [&] {
        bench.loop.Begin(BrushOperation::ModifierNone);
        bench.loop.End();
    };
    stroke();
    Image* image = recording.MaskImage(-1);
    const uint32_t version = image->Version();
    EXPECT_EQ(image->Width(), 2u);
    stroke();
    EXPECT_EQ(image->Version(), version);
    WriteFloatImageFile(path, GreyImage(4, 1, std::vector<float>(4, 1.0f)));
    stroke();
    EXPECT_EQ(recording.MaskImage(-1), image);
    EXPECT_NE(image->Version(), version);
    EXPECT_EQ(image->Width(), 4u);
    folder.Fill("mine.tif", "damaged");
    recording.calls.clear();
    EXPECT_THROW(stroke(), HostError);
    EXPECT_TRUE(recording.calls.empty()) << "the stroke has not begun yet";
    EXPECT_FALSE(bench.loop.IsActive());
    std::filesystem::remove(path);
    stroke();
    EXPECT_EQ(image->Width(), 4u) << "the loaded image survives the deletion of its file";
}

TEST_F(StampFiles, NameOfAFileElsewhereHasNoFolders) {
    std::filesystem::create_directory(folder.Path("my_vdm"));
    const std::string path = Write("my_vdm/plain.tif", 1.0f);
    brush.SetStamp(true, QString::fromStdString(path));
    EXPECT_EQ(brush.MaskName(-1), QStringLiteral("plain.tif"));
}

TEST_F(StampFiles, DisabledStampIsNotRead) {
    const std::string path = folder.Fill("bad.tif", "damaged");
    brush.SetStamp(false, QString::fromStdString(path));
    RefreshStamp(brush);
    EXPECT_EQ(brush.MaskImage(-1)->Width(), 0u);
}

TEST_F(StampFiles, ConfigurationResetsEverything) {
    BrushOperation::Private& settings = brush.Settings();
    settings.stampTiled = settings.stampInverted = settings.stampBuildUp = true;
    settings.stampFactor = 3.0f;
    settings.stampOffset = 4.0f;
    brush.SetOrientedToSurface(false);
    StampConfiguration plain;
    brush.SetStampConfig(plain);
    EXPECT_FALSE(brush.IsMaskTiled(-1) || brush.IsMaskInverted(-1) || brush.MaskBuildUp(-1));
    EXPECT_EQ(brush.MaskFactor(-1), 1.0f);
    EXPECT_EQ(brush.MaskOffset(-1), 0.0f);
    EXPECT_TRUE(brush.IsOrientedToSurface());
}

}  // namespace
}  // namespace trovik::test
