// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/json/JsonText.h"
#include "tests/files/FileRefusal.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace trovik::test {
namespace {

using testing::HasSubstr;

std::string ErrorOf(const std::string& text) {
    return MessageOf<HostError>([&] { ParseDocument(text, "a.json"); });
}

TEST(JsonText, SyntaxErrorsNameLineAndColumn) {
    const std::string invalid = "not valid JSON: ";
    EXPECT_EQ(ErrorOf(""), "a.json: " + invalid + "the file is empty");
    EXPECT_EQ(ErrorOf(" \n\t\r\n"), "a.json: " + invalid + "the file is empty");
    EXPECT_EQ(ErrorOf("\xef\xbb\xbf"), "a.json: " + invalid + "the file is empty");
    EXPECT_EQ(
        ErrorOf("{\"a\": 1,\n // no\n \"b\": 2}"),
        "a.json: line 2, column 2: " + invalid + "JSON has no comments; use a \"comment\" field");
    EXPECT_THAT(ErrorOf("{\"a\": /* no */ 1}"),
                HasSubstr("line 1, column 7: " + invalid + "JSON has"));
    EXPECT_THAT(ErrorOf("# no\n{}"), HasSubstr("line 1, column 1: " + invalid + "JSON has"));
    EXPECT_EQ(ErrorOf("{\"a\": 1,\n \"b\": 2,\n}"),
              "a.json: line 3, column 1: " + invalid + "there is a comma before '}'");
    EXPECT_EQ(ErrorOf("[1, 2, ]"),
              "a.json: line 1, column 8: " + invalid + "there is a comma before ']'");
    EXPECT_EQ(ErrorOf("{'a': 1}"),
              "a.json: line 1, column 2: " + invalid + "strings must be in double quotes");
    EXPECT_EQ(ErrorOf("{radius: 1}"),
              "a.json: line 1, column 2: " + invalid + "the field name radius needs double quotes");
    EXPECT_EQ(
        ErrorOf("{\"a\": 1, radius: 1}"),
        "a.json: line 1, column 10: " + invalid + "the field name radius needs double quotes");
    EXPECT_THAT(ErrorOf("{\"a\": NaN}"),
                HasSubstr("line 1, column 7: " + invalid + "NaN is not a JSON value"));
    EXPECT_THAT(ErrorOf("{\"a\": True}"), HasSubstr("True is not a JSON value"));
    EXPECT_THAT(ErrorOf("{\"a\": 1\n \"b\": 2}"),
                HasSubstr("line 2, column 2: " + invalid + "a comma is missing before this"));
    EXPECT_THAT(ErrorOf("{\"a\": 1e999}"), HasSubstr("1e999"));
    EXPECT_THAT(ErrorOf("{\"a\": "), HasSubstr("the file ends too early"));
    EXPECT_THAT(ErrorOf("{\"a\": \"b"), HasSubstr("missing closing quote"));
    EXPECT_THAT(ErrorOf("{\"a\": \"\xff\"}"), HasSubstr("ill-formed UTF-8"));
    EXPECT_THAT(ErrorOf(std::string("\xff\xfe{\0}\0", 6)), HasSubstr("UTF-16"));
    EXPECT_THAT(ErrorOf("{} {}"), HasSubstr("line 1, column 4"));
}

TEST(JsonText, ColumnsCountCharacters) {
    EXPECT_THAT(ErrorOf("{\"\xc3\xa4\xc3\xa4\": x}"), HasSubstr("line 1, column 8: "));
}

TEST(JsonText, ErrorsAreOneLineWhateverTheText) {
    for (const char* text : {"{\"a\n\": 1}", "{\"a\": \"\x01\"}", "{\"a\nb", "\x01\n", "[1\n2]"}) {
        const std::string message = ErrorOf(text);
        EXPECT_FALSE(message.empty());
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    }
}

TEST(JsonText, RepeatedFieldsAreRefusedWithTheirPointer) {
    EXPECT_EQ(ErrorOf(R"({"a": [{"b": 1}, {"b": {"c/d": 1, "c/d": 2}}]})"),
              "a.json: /a/1/b/c~1d: the field is given more than once");
    EXPECT_EQ(ErrorOf(R"({"a": 1, "\u0061": 2})"), "a.json: /a: the field is given more than once");
    std::vector<JsonFault> repeated;
    const auto document =
        ParseDocument(R"({"a": {"x": [1]}, "a": {"x": 2, "x": 3}, "b": [{}, {"c": 1, "c": 2}]})",
                      "a.json",
                      &repeated);
    ASSERT_EQ(repeated.size(), 3u);
    EXPECT_EQ(repeated[0].pointer, "/a");
    EXPECT_EQ(repeated[1].pointer, "/a/x");
    EXPECT_EQ(repeated[2].pointer, "/b/1/c");
    EXPECT_EQ(document.dump(), R"({"a":{"x":[1]},"b":[{},{"c":1}]})")
        << "the first value must be used";
}

TEST(JsonText, DeepNestingIsRefused) {
    EXPECT_NO_THROW(ParseDocument(std::string(64, '[') + std::string(64, ']'), "a.json"));
    EXPECT_THAT(ErrorOf(std::string(65, '[') + std::string(65, ']')), HasSubstr("nested"));
    EXPECT_THAT(ErrorOf(std::string(1000000, '[')), HasSubstr("nested"));
    std::string parents;
    for (int i = 0; i < 63; ++i) parents += "/0";
    const std::string outer(63, '[');
    EXPECT_EQ(ErrorOf(outer + "[[]]"), "a.json: " + parents + "/0: more than 64 nested values");
    EXPECT_EQ(ErrorOf(outer + "[1, 2, []]"),
              "a.json: " + parents + "/2: more than 64 nested values");
    EXPECT_EQ(ErrorOf(outer + R"({"a": 1, "b": {}})"),
              "a.json: " + parents + "/b: more than 64 nested values");
}

TEST(JsonText, ValuesEqualThoseOfThePlainParser) {
    const std::string text =
        R"({"n": null, "t": true, "i": -3, "u": 18446744073709551615, "f": 0.1, "s": "\u00e4\n",
            "a": [1, [], {}, [2, {"x": 1}]], "o": {"p": {"q": 1e-7}}})";
    EXPECT_EQ(ParseDocument(text, "a"), nlohmann::json::parse(text));
}

TEST(JsonText, CommentsAreRemovedEverywhere) {
    nlohmann::json document = nlohmann::json::parse(
        R"({"comment": "a", "x": [{"comment": "b", "y": {"comment": "c", "z": "comment"}}]})");
    RemoveComments(document);
    EXPECT_EQ(document.dump(), R"({"x":[{"y":{"z":"comment"}}]})");
}

TEST(JsonText, FilesAreReadUpToTheirLimit) {
    const TemporaryFolder folder;
    const std::string path = folder.Fill("a", std::string(100000, ' '));
    EXPECT_EQ(ReadDocument(path, 100000).size(), 100000u);
    EXPECT_EQ(MessageOf<HostError>([&] { ReadDocument(path, 65536); }),
              path + ": larger than 65536 bytes");
    EXPECT_EQ(MessageOf<HostError>([] { ReadDocument("/dev/zero", std::size_t{1} << 20); }),
              "/dev/zero: larger than 1 MiB");
    const std::string missing = folder.Path("missing");
    EXPECT_EQ(MessageOf<HostError>([&] { ReadDocument(missing, 10); }),
              missing + ": cannot read: No such file or directory");
    EXPECT_EQ(MessageOf<HostError>([] { ReadDocument("/", 10); }),
              "/: cannot read: Is a directory");
}

}  // namespace
}  // namespace trovik::test
