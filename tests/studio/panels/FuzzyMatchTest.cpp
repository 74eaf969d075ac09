// SPDX-License-Identifier: Apache-2.0
#include "commands/FuzzyMatch.h"

#include <gtest/gtest.h>

namespace trovik::studio {

TEST(FuzzyMatch, RequiresAllLettersInOrder) {
    EXPECT_GT(FuzzyScore("inv", "Invert Mask"), 0);
    EXPECT_GT(FuzzyScore("im", "Invert Mask"), 0);
    EXPECT_EQ(FuzzyScore("xyz", "Invert Mask"), 0);
    EXPECT_EQ(FuzzyScore("mi", "Invert Mesh"), 0);
    EXPECT_EQ(FuzzyScore("", "Invert Mask"), 1);
}

TEST(FuzzyMatch, WordsMatchInAnyOrder) {
    EXPECT_GT(FuzzyScore("mask inv", "Invert Mask"), 0);
    EXPECT_EQ(FuzzyScore("mask layer", "Invert Mask"), 0);
}

TEST(FuzzyMatch, PrefersStartsAndRuns) {
    EXPECT_GT(FuzzyScore("sub", "Subdivide"), FuzzyScore("sub", "Unsubdivide"));
    EXPECT_GT(FuzzyScore("mask", "Mask Cavities"), FuzzyScore("mask", "Mirror as Kept"));
    EXPECT_GT(FuzzyScore("la", "Layer"), FuzzyScore("la", "Clear"));
}

}  // namespace trovik::studio
