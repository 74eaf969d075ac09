// SPDX-License-Identifier: Apache-2.0
#include "framework/trace/JsonFields.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

namespace trovik::test {
namespace {

TEST(JsonFloat, HasNineSignificantDigits) {
    EXPECT_EQ(JsonFloat(0.1f), "0.100000001");
    EXPECT_EQ(JsonFloat(1.0f / 3.0f), "0.333333343");
    EXPECT_EQ(JsonFloat(16777217.5f), "16777218.0");
    EXPECT_EQ(JsonFloat(-123.456f), "-123.456001");
    EXPECT_EQ(JsonFloat(1e-45f), "1.40129846e-45");
    EXPECT_EQ(JsonFloat(std::numeric_limits<float>::max()), "3.40282347e+38");
}

TEST(JsonFloat, IsNeverWrittenAsAnInteger) {
    EXPECT_EQ(JsonFloat(1.0f), "1.0");
    EXPECT_EQ(JsonFloat(0.0f), "0.0");
    EXPECT_EQ(JsonFloat(-0.0f), "-0.0");
    EXPECT_EQ(JsonFloat(1e9f), "1e+09");
    EXPECT_EQ(JsonFloat(-100.0f), "-100.0");
}

TEST(JsonFloat, NaNAndInfinityAreWords) {
    EXPECT_EQ(JsonFloat(std::numeric_limits<float>::infinity()), "\"inf\"");
    EXPECT_EQ(JsonFloat(-std::numeric_limits<float>::infinity()), "\"-inf\"");
    EXPECT_EQ(JsonFloat(std::nanf("")), "\"nan\"");
    EXPECT_EQ(JsonFloat(-std::nanf("")), "\"nan\"");
}

TEST(JsonFloat, RoundTripsBitExactly) {
    std::mt19937 random(7);
    for (int i = 0; i < 200000; ++i) {
        const auto value = std::bit_cast<float>(static_cast<uint32_t>(random()));
        if (!std::isfinite(value)) continue;
        const auto back = static_cast<float>(nlohmann::json::parse(JsonFloat(value)).get<double>());
        ASSERT_EQ(std::bit_cast<uint32_t>(back), std::bit_cast<uint32_t>(value))
            << JsonFloat(value);
    }
}

TEST(JsonFields, ObjectKeepsTheOrderAndReplacesByName) {
    JsonFields fields;
    EXPECT_EQ(fields.Text(), "{}");
    fields.Set("b", "1");
    fields.Set("a", JsonString(std::string("x \"y\"\n")));
    fields.Set("b", JsonList({"2", "[3]"}));
    EXPECT_EQ(fields.Text(), R"({"b":[2,[3]],"a":"x \"y\"\n"})");
}

TEST(JsonFields, OnlyADifferentTextIsAChange) {
    JsonFields before, now;
    before.Set("same", "1");
    before.Set("other", "1.0");
    before.Set("gone", "true");
    now.Set("same", "1");
    now.Set("other", "1.5");
    now.Set("added", "null");
    EXPECT_EQ(now.ChangedSince(before).Text(), R"({"other":1.5,"added":null})");
    EXPECT_TRUE(now.ChangedSince(now).IsEmpty());
}

TEST(JsonString, InvalidTextDoesNotBreakTheLine) {
    EXPECT_EQ(JsonString(std::string("a\xff")), "\"a\xef\xbf\xbd\"");
    EXPECT_EQ(JsonString(QString::fromUtf8("\u00e4<br>\t")), "\"\u00e4<br>\\t\"");
}

TEST(JsonBox, IsMinimumThenMaximum) {
    AxisAlignedBoundingBox box;
    EXPECT_EQ(JsonBox(box), "[1.0,1.0,1.0,-1.0,-1.0,-1.0]");
    box.Extend({1.0f, 2.0f, 3.0f});
    box.Extend({-4.0f, 5.0f, 6.0f});
    EXPECT_EQ(JsonBox(box), "[-4.0,2.0,3.0,1.0,5.0,6.0]");
}

}  // namespace
}  // namespace trovik::test
