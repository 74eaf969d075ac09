// SPDX-License-Identifier: Apache-2.0
#include "tests/brush/TestStream.h"
#include "tests/brush/ToolRows.h"

#include <gtest/gtest.h>

#include <bit>

namespace trovik::test {
namespace {

/// The number of bytes that follow the base class's data: rate, bilinear and the three values of
/// class version 1.
constexpr std::size_t ownBytes = 4 + 1 + 3;

std::size_t BaseBytes(SwiftStroke& brush) {
    TestStream stream(1);
    brush.DetailBrush::Serialize(stream);
    return stream.bytes.size();
}

void SetAll(SwiftStroke& brush, float rate, bool value) {
    brush.buildUpRate.SetValue(rate, true);
    brush.bilinearSample.SetValue(value, true);
    brush.affectAllLayers.SetValue(value, true);
    brush.globalPlane.SetValue(value, true);
    brush.updatePlane.SetValue(value, true);
    brush.drawFromCenter.SetValue(value, true);
}

TEST(BrushStream, OwnDataFollowsTheBaseClassInAFixedOrder) {
    NeedTools();
    SwiftStroke brush;
    brush.buildUpRate.SetValue(0.75f, true);
    brush.bilinearSample.SetValue(true, true);
    brush.affectAllLayers.SetValue(false, true);
    brush.globalPlane.SetValue(true, true);
    brush.updatePlane.SetValue(false, true);
    const std::size_t base = BaseBytes(brush);
    TestStream stream(1);
    brush.Serialize(stream);
    ASSERT_EQ(stream.bytes.size(), base + ownBytes);
    float rate = 0.0f;
    std::memcpy(&rate, stream.bytes.data() + base, 4);
    EXPECT_EQ(rate, 0.75f);
    const std::vector<uint8_t> flags(stream.bytes.end() - 4, stream.bytes.end());
    EXPECT_EQ(flags, (std::vector<uint8_t>{1, 0, 1, 0}));
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

TEST(BrushStream, RoundTripRestoresEverythingButDrawFromCenter) {
    NeedTools();
    SwiftStroke written;
    SetAll(written, 0.25f, true);
    TestStream stream(1);
    written.Serialize(stream);
    stream.Rewind();
    SwiftStroke read;
    SetAll(read, 1.0f, false);
    read.Serialize(stream);
    EXPECT_EQ(stream.position, stream.bytes.size());
    EXPECT_EQ(read.buildUpRate.Value(), 0.25f);
    EXPECT_TRUE(read.bilinearSample.Value());
    EXPECT_TRUE(read.affectAllLayers.Value());
    EXPECT_TRUE(read.globalPlane.Value());
    EXPECT_TRUE(read.updatePlane.Value());
    EXPECT_FALSE(read.drawFromCenter.Value());
}

TEST(BrushStream, ClassVersionZeroLeavesThreeAttributesUnchanged) {
    NeedTools();
    SwiftStroke written;
    SetAll(written, 0.25f, true);
    TestStream stream(0);
    written.Serialize(stream);
    EXPECT_EQ(stream.bytes.size(), BaseBytes(written) + 5);
    for (const bool present : {false, true}) {
        stream.Rewind();
        SwiftStroke read;
        SetAll(read, 1.0f, present);
        read.Serialize(stream);
        EXPECT_EQ(stream.position, stream.bytes.size());
        EXPECT_EQ(read.buildUpRate.Value(), 0.25f);
        EXPECT_TRUE(read.bilinearSample.Value());
        EXPECT_EQ(read.affectAllLayers.Value(), present);
        EXPECT_EQ(read.globalPlane.Value(), present);
        EXPECT_EQ(read.updatePlane.Value(), present);
    }
}

TEST(BrushStream, TruncatedSceneLeavesNoCrashFlag) {
    NeedTools();
    SwiftStroke brush;
    TestStream stream(1);
    brush.Serialize(stream);
    stream.bytes.pop_back();
    stream.Rewind();
    EXPECT_THROW(brush.Serialize(stream), std::out_of_range);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

TEST(BrushCopy, CopiesEverythingButDrawFromCenter) {
    NeedTools();
    SwiftStroke source;
    SetAll(source, 0.25f, true);
    source.SetBrushSize(61.0f);
    SwiftStroke copy;
    SetAll(copy, 1.0f, false);
    BrushOperation& target = copy;
    const BrushOperation& answer = (target = source);
    EXPECT_EQ(&answer, &copy);
    EXPECT_EQ(copy.buildUpRate.Value(), 0.25f);
    EXPECT_TRUE(copy.bilinearSample.Value());
    EXPECT_TRUE(copy.affectAllLayers.Value());
    EXPECT_TRUE(copy.globalPlane.Value());
    EXPECT_TRUE(copy.updatePlane.Value());
    EXPECT_FALSE(copy.drawFromCenter.Value());
    EXPECT_EQ(copy.BrushSize(), 61.0f);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

}  // namespace
}  // namespace trovik::test
