// SPDX-License-Identifier: Apache-2.0
#include "tests/brush/ToolRows.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

TEST(ToolQueries, ImprintReturnsOtherValuesThanAllOtherTools) {
    for (const Tool tool : allTools) {
        SwiftStroke brush;
        brush.SetActiveConfiguration(RowOf(tool));
        const bool imprint = tool == Tool::Imprint;
        EXPECT_EQ(brush.IsImprintTool(), imprint);
        EXPECT_EQ(brush.NonImprintQueryA(), !imprint);
        EXPECT_EQ(brush.NonImprintQueryB(), !imprint);
        for (const bool fromCenter : {true, false}) {
            brush.drawFromCenter.SetValue(fromCenter, true);
            const int expected = !imprint ? 0 : fromCenter ? 1 : 2;
            EXPECT_EQ(brush.StrokeDrawMode(), expected);
        }
    }
}

TEST(ToolQueries, WithoutAToolTheValuesAreThoseOfMostTools) {
    NeedTools();
    SwiftStroke brush;
    EXPECT_EQ(brush.StrokeDrawMode(), 0);
    EXPECT_FALSE(brush.IsImprintTool());
    EXPECT_TRUE(brush.NonImprintQueryA());
    EXPECT_TRUE(brush.NonImprintQueryB());
}

TEST(ToolQueries, AlwaysTrueQueryReturnsTrue) {
    NeedTools();
    SwiftStroke brush;
    EXPECT_TRUE(brush.AlwaysTrueQuery());
}

TEST(ToolQueries, BuildUpRateIsThatOfTheAttribute) {
    NeedTools();
    SwiftStroke brush;
    brush.buildUpRate.SetValue(0.375f, true);
    EXPECT_EQ(brush.BuildUpRate(), 0.375f);
}

}  // namespace
}  // namespace trovik::test
