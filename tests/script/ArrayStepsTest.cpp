// SPDX-License-Identifier: Apache-2.0

/// \file Tests steps with one value per vertex: "setPositions", and "mask" with "values".
#include "framework/errors/HostError.h"
#include "framework/io/Base64.h"
#include "framework/mesh/LevelPositions.h"
#include "framework/multires/Steps.h"
#include "framework/script/CommandRunner.h"
#include "tests/document/SculptedDocument.h"
#include "tests/files/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trovik::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

std::string Text(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

TEST(Base64, DecodesWithAndWithoutPadding) {
    EXPECT_EQ(Text(DecodeBase64("")), "");
    EXPECT_EQ(Text(DecodeBase64("TQ==")), "M");
    EXPECT_EQ(Text(DecodeBase64("TWE=")), "Ma");
    EXPECT_EQ(Text(DecodeBase64("TWFu")), "Man");
    EXPECT_EQ(Text(DecodeBase64("TWFuTWE=")), "ManMa");
    EXPECT_EQ(DecodeBase64("+/8A"), (std::vector<std::uint8_t>{0xfb, 0xff, 0x00}));
}

TEST(Base64, RefusesOtherText) {
    for (const char* text : {"A", "Zm9", "Zm9v\n", "Z===", "====", "Zg==Zg==", "Zm_v", "Zm 9"})
        EXPECT_THROW(DecodeBase64(text), HostError) << text;
    EXPECT_EQ(MessageOf<HostError>([] { DecodeBase64("Zm9vZ!Fy"); }),
              "not valid base64 at character 5");
}

class ArraySteps : public testing::Test {
protected:
    ArraySteps() { Use(SphereDocument()); }
    void Use(std::unique_ptr<Document> other) {
        runner.reset();
        document = std::move(other);
        CommandOptions options;
        options.name = "steps";
        runner = std::make_unique<CommandRunner>(*document, options);
    }
    LevelMesh& Level() { return *document->Geometry().Bound(); }
    void Do(const json& step) { runner->Do(step); }
    std::string Refusal(const json& step) {
        return MessageOf<HostError>([&] { Do(step); });
    }
    /// The positions moved by an offset.
    json Moved(const Vector& offset) {
        json values = json::array();
        for (const Vector& p : PositionsOf(Level()))
            values.push_back({p.x + offset.x, p.y + offset.y, p.z + offset.z});
        return values;
    }

    std::unique_ptr<Document> document;
    std::unique_ptr<CommandRunner> runner;
};

TEST_F(ArraySteps, PositionsAreOneUndoStep) {
    const std::vector<Vector> before = PositionsOf(Level());
    Do({{"setPositions", {{"values", Moved({0.0f, 0.5f, 0.0f})}, {"label", "Lift"}}}});
    for (uint32_t v = 0; v < Level().VertexCount(); ++v)
        EXPECT_EQ(Level().Position(v), Vector(before[v].x, before[v].y + 0.5f, before[v].z));
    EXPECT_EQ(document->State()->history.back().label, "Lift");
    Do({{"undo", 1}});
    EXPECT_EQ(PositionsOf(Level()), before);
    EXPECT_EQ(document->HistoryPosition(), 0u);
}

TEST_F(ArraySteps, MaskReducesDisplacements) {
    const std::vector<Vector> before = PositionsOf(Level());
    json amounts = json::array();
    for (uint32_t v = 0; v < Level().VertexCount(); ++v)
        amounts.push_back(v == 0 ? 127 : v == 1 ? 64 : 0);
    Do({{"mask", {{"values", amounts}}}});
    Do({{"setPositions", {{"values", Moved({1.0f, 0.0f, 0.0f})}}}});
    EXPECT_EQ(Level().Position(0), before[0]);
    EXPECT_NEAR(Level().Position(1).x - before[1].x, 63.0f / 127.0f, 1e-6f);
    EXPECT_EQ(Level().Position(2).x, before[2].x + 1.0f);
}

TEST_F(ArraySteps, BytesAndNumbersGiveTheSameResult) {
    // Three vertices of one face.
    PolygonMesh triangle;
    triangle.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    triangle.faceSizes = {3};
    triangle.faceVertices = {0, 1, 2};
    Use(std::make_unique<Document>("triangle", std::move(triangle)));
    // Little-endian floats: 0 0 0, 2 0 0, 0 1 0.
    Do({{"setPositions", {{"values", "AAAAAAAAAAAAAAAAAAAAQAAAAAAAAAAAAAAAAAAAgD8AAAAA"}}}});
    EXPECT_EQ(Level().Position(1), Vector(2, 0, 0));
    EXPECT_EQ(Level().Position(2), Vector(0, 1, 0));
    Do({{"mask", {{"values", "AEB/"}}}});
    EXPECT_EQ(FreezeAmounts(Level()), (std::vector<uint8_t>{0, 64, 127}));
    Do({{"mask", {{"values", {10, 20, 30}}, {"mode", "subtract"}, {"amount", 0.5}}}});
    EXPECT_EQ(FreezeAmounts(Level()), (std::vector<uint8_t>{0, 54, 112}));
}

TEST_F(ArraySteps, WrongValuesAreRefused) {
    const std::string before = BitsOf(*document);
    EXPECT_THAT(Refusal({{"setPositions", {{"values", json::array()}}}}),
                HasSubstr("steps: /setPositions/values: expected one position for each of the "));
    EXPECT_THAT(Refusal({{"setPositions", {{"values", "AAAA"}}}}),
                HasSubstr("/setPositions/values: expected three 32-bit floats per vertex"));
    EXPECT_THAT(
        Refusal({{"setPositions", {{"values", "A"}}}}),
        HasSubstr("/setPositions/values: the length of base64 text must be a multiple of 4"));
    EXPECT_THAT(Refusal({{"setPositions", json::object()}}), HasSubstr("values"));
    EXPECT_THAT(Refusal({{"mask", {{"values", {1, 2}}}}}),
                HasSubstr("/mask/values: expected one amount for each of the "));
    EXPECT_THAT(Refusal({{"mask", {{"values", {1, 128}}}}}), HasSubstr("/mask/values/1"));
    EXPECT_THAT(Refusal({{"mask", {{"values", "AEB/"}, {"all", true}}}}),
                HasSubstr("cannot be combined"));
    EXPECT_EQ(BitsOf(*document), before);
    EXPECT_EQ(document->HistoryPosition(), 0u);
}

}  // namespace
}  // namespace trovik::test
