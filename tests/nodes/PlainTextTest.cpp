// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/PlainText.h"

#include <gtest/gtest.h>

namespace trovik {
namespace {

std::string Plain(const char* text) { return PlainText(QString::fromUtf8(text)); }

TEST(PlainText, TagsAndCommandMarksAreRemovedAndSpacesAreCollapsed) {
    EXPECT_EQ(Plain("too coarse<br>\t\t\tfor the size.<p>\t\t\tPress <b>%%Subdivide faces%%</b> to "
                    "subdivide.\n"),
              "too coarse for the size. Press Subdivide faces to subdivide.");
    EXPECT_EQ(Plain("<div style=\"color:White;\">Wax</div><p>Adds<br/>wax."), "Wax Adds wax.");
    EXPECT_EQ(Plain("<p></p>"), "");
}

TEST(PlainText, OtherTextIsKept) {
    EXPECT_EQ(Plain("1 < 2 and 3 > 2; 50 %, <3"), "1 < 2 and 3 > 2; 50 %, <3");
    EXPECT_EQ(Plain("gr\xc3\xb6\xc3\x9f"
                    "er <b"),
              "gr\xc3\xb6\xc3\x9f"
              "er <b");
    // Without a closing bracket, these are not tags.
    QString open;
    for (int i = 0; i < 100000; ++i) open += QStringLiteral("<a");
    EXPECT_EQ(PlainText(open), open.toStdString());
}

}  // namespace
}  // namespace trovik
