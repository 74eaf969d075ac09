// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/errors/PrintableText.h"

#include <gtest/gtest.h>

#include <string>

namespace trovik::test {
namespace {

TEST(PrintableText, KeepsPrintableCharacters) {
    for (const std::string text : {"", "plain", "Größe 3 µm", "头像.obj", "\xf0\x9f\x97\xbf"})
        EXPECT_EQ(PrintableText(text), text);
}

TEST(PrintableText, EscapesBytesThatAreNotUtf8) {
    EXPECT_EQ(PrintableText("a\x86z"), "a\\x86z");
    EXPECT_EQ(PrintableText("cut \xe5\xa4"), "cut \\xe5\\xa4");
    // Invalid UTF-8: overlong forms, surrogates, and code points beyond the last one.
    EXPECT_EQ(PrintableText("\xc0\xaf"), "\\xc0\\xaf");
    EXPECT_EQ(PrintableText("\xe0\x80\xaf"), "\\xe0\\x80\\xaf");
    EXPECT_EQ(PrintableText("\xed\xa0\x80"), "\\xed\\xa0\\x80");
    EXPECT_EQ(PrintableText("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
}

TEST(PrintableText, EscapesControlCharactersAndDirectionMarks) {
    EXPECT_EQ(PrintableText("one\ntwo\tthree\r"), "one\\ntwo\\tthree\\r");
    EXPECT_EQ(PrintableText(std::string("\0\x1b[31m\x7f", 7)), "\\u{0}\\u{1b}[31m\\u{7f}");
    EXPECT_EQ(PrintableText("gpj\u202eexe\u0085"), "gpj\\u{202e}exe\\u{85}");
}

TEST(PrintableText, MakesEveryMessageOfAnErrorOneLine) {
    EXPECT_STREQ(HostError("head.obj, line 3: 'x\n\x80' is not a number").what(),
                 "head.obj, line 3: 'x\\n\\x80' is not a number");
}

}  // namespace
}  // namespace trovik::test
