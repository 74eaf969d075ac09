// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Suggestion.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

const std::vector<std::string> words = {"radius", "radiusPixels", "spacing", "strength", "x"};

TEST(Suggestion, FindsWordsWithASmallEditDistance) {
    EXPECT_EQ(ClosestWord("raduis", words), "radius");
    EXPECT_EQ(ClosestWord("radius", words), "radius");
    EXPECT_EQ(ClosestWord("RADIUS", words), "radius");
    EXPECT_EQ(ClosestWord("radiuspixel", words), "radiusPixels");
    EXPECT_EQ(ClosestWord("spcing", words), "spacing");
    EXPECT_EQ(ClosestWord("strengthh", words), "strength");
    EXPECT_EQ(ClosestWord("y", words), "x");
}

TEST(Suggestion, IgnoresDistantWords) {
    EXPECT_EQ(ClosestWord("falloff", words), "");
    EXPECT_EQ(ClosestWord("rds", words), "");
    EXPECT_EQ(ClosestWord("", words), "");
    EXPECT_EQ(ClosestWord(std::string(100000, 'r'), words), "");
}

TEST(Suggestion, ListsTheCandidatesIfNoneIsNear) {
    EXPECT_EQ(Suggestion("raduis", words), "; did you mean \"radius\"?");
    EXPECT_EQ(Suggestion("falloff", words),
              "; known names: radius, radiusPixels, spacing, strength, x");
    EXPECT_EQ(Suggestion("falloff", {}), "");
}

}  // namespace
}  // namespace trovik::test
