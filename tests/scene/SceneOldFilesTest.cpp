// SPDX-License-Identifier: Apache-2.0

/// \file Tests scenes with older formats and class versions, and scenes with unknown content.
#include "framework/errors/HostError.h"
#include "framework/mesh/LevelPositions.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/scene/SampleScene.h"
#include "tests/scene/SceneBytes.h"

#include <gmock/gmock.h>

namespace trovik::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class OldScene : public ::testing::Test {
protected:
    OldScene() : document(RichDocument(folder)) {}

    std::unique_ptr<Document> ReopenUnder(const SceneStream& header) {
        document->WriteScene(path, header);
        return Document::OpenScene(path);
    }
    bool Flag(Document& of, const char* name) {
        return of.Brush().AttributeByName(QString::fromLatin1(name))->AsString() ==
               QStringLiteral("true");
    }
    void SetFlag(const char* name, bool on) {
        dynamic_cast<AttributeInstance<bool>*>(
            document->Brush().AttributeByName(QString::fromLatin1(name)))
            ->SetValue(on, true);
    }
    /// Replaces a string in a chunk by another of the same length, and updates the checksums.
    void Replace(const std::string& chunkName, const std::string& from, const std::string& to) {
        const std::string bytes = TemporaryFolder::Content(path);
        RawScene scene = SplitScene(bytes);
        std::string header = bytes.substr(0, scene.headerBytes);
        bool found = false;
        const auto exchange = [&](std::string& text) {
            for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; ++at) {
                text.replace(at, from.size(), to);
                found = true;
            }
        };
        if (chunkName == "header") exchange(header);
        for (RawChunk& chunk : scene.chunks)
            if (chunk.name == chunkName) exchange(chunk.content);
        ASSERT_TRUE(found);
        folder.Fill("scene.trovik", JoinScene(header, scene.chunks));
    }

    TemporaryFolder folder;
    std::string path = folder.Path("scene.trovik");
    std::unique_ptr<Document> document;
};

TEST_F(OldScene, BeforeFormat328ThereIsNoPatchMapUntilTheNextStroke) {
    const auto table = PatchTable(*document->Geometry().Level(0));
    ASSERT_EQ(table.size(), 60u);
    auto read = ReopenUnder(SceneStream(327));
    LevelMesh& base = *read->Geometry().Level(0);
    EXPECT_EQ(SplitScene(TemporaryFolder::Content(path)).format, 327u);
    ASSERT_TRUE(HasPatchMap(base));
    EXPECT_TRUE(PatchTable(base).empty());
    StrokeOver(*read, {1}, 1.0f);
    EXPECT_EQ(PatchTable(base), table);
    EXPECT_EQ(base.FirstChild()->NextSibling(), nullptr) << "the empty map must be removed";
}

TEST_F(OldScene, BeforeFormat328ContinuesToTheSameBits) {
    auto read = ReopenUnder(SceneStream(327));
    for (Document* each : {document.get(), read.get()}) StrokeOver(*each, {1, 7}, 1.5f);
    // The comparison excludes the state that the current level had when level 0 was last updated,
    // because formats below 331 do not store it.
    document->WriteScene(path, SceneStream(330));
    const std::string expected = TemporaryFolder::Content(path);
    read->WriteScene(path, SceneStream(330));
    EXPECT_TRUE(TemporaryFolder::Content(path) == expected);
}

TEST_F(OldScene, BeforeFormat331NoChangesArePendingDownwards) {
    ASSERT_FALSE(document->Geometry().Seen(1).fromBelow.vertices.empty());
    auto read = ReopenUnder(SceneStream(330));
    const LevelMesh& base = *read->Geometry().Level(0);
    const std::vector<Vector> before = PositionsOf(base);
    read->BindLevel(0);
    for (uint32_t v = 0; v < base.VertexCount(); ++v) EXPECT_EQ(base.Position(v), before[v]);
}

TEST_F(OldScene, FromFormat328OnTheTableInTheFileIsUsed) {
    for (const uint32_t format : {328u, SceneStream::currentFormat}) {
        document->WriteScene(path, SceneStream(format));
        // A different order within the first row is equally valid, but differs from a newly built
        // table.
        const auto table = PatchTable(*document->Geometry().Level(0));
        auto other = table;
        std::swap(other[0], other[1]);
        const auto bytesOf = [](const std::vector<uint32_t>& row) {
            return BytesOf(row[0]) + BytesOf(row[1]) + BytesOf(row[2]) + BytesOf(row[3]);
        };
        Replace(
            "NODE", BytesOf(uint32_t{60}) + bytesOf(table), BytesOf(uint32_t{60}) + bytesOf(other));
        auto read = Document::OpenScene(path);
        EXPECT_EQ(PatchTable(*read->Geometry().Level(0)), other);
        StrokeOver(*read, {1}, 1.0f);
        EXPECT_EQ(PatchTable(*read->Geometry().Level(0)), other);
    }
}

TEST_F(OldScene, TableThatDoesNotMatchTheMeshIsRefused) {
    document->Save(path);
    const auto table = PatchTable(*document->Geometry().Level(0));
    const std::string row = BytesOf(uint32_t{60}) + BytesOf(table[0]);
    Replace("NODE", row, BytesOf(uint32_t{60}) + BytesOf(uint32_t{6}));
    EXPECT_THAT(MessageOf<HostError>([&] { Document::OpenScene(path); }),
                HasSubstr("chunk NODE: there is no face 6"));
    document->Save(path);
    Replace("NODE",
            BytesOf(uint32_t{60}) + BytesOf(table[0]),
            BytesOf(uint32_t{59}) + BytesOf(table[0]));
    EXPECT_THAT(MessageOf<HostError>([&] { Document::OpenScene(path); }),
                HasSubstr("a table of 59 entries does not match 6 faces"));
}

TEST_F(OldScene, BrushOfClassVersionZeroKeepsDefaultsForMissingValues) {
    document->SelectTool("Flatten");
    SetFlag("affectalllayers", false);
    SetFlag("globalplane", true);
    SetFlag("updateplane", false);
    SetFlag("bilinearsample", true);
    SceneStream header;
    header.SetClassVersion(document->Brush().RuntimeClass(), 0);
    auto read = ReopenUnder(header);
    EXPECT_EQ(read->Brush().ActiveConfiguration()->Name(), QStringLiteral("Flatten"));
    EXPECT_TRUE(Flag(*read, "affectalllayers"));
    EXPECT_FALSE(Flag(*read, "globalplane"));
    EXPECT_TRUE(Flag(*read, "updateplane"));
    EXPECT_TRUE(Flag(*read, "bilinearsample"));
    EXPECT_EQ(read->Brush().BrushStrengthBias(), 12.0f);
    // With the current version, all values are read.
    read = ReopenUnder(SceneStream());
    EXPECT_FALSE(Flag(*read, "affectalllayers"));
    EXPECT_TRUE(Flag(*read, "globalplane"));
    EXPECT_FALSE(Flag(*read, "updateplane"));
}

TEST_F(OldScene, NewerFormatIsRefused) {
    document->WriteScene(path, SceneStream(SceneStream::currentFormat + 1));
    EXPECT_EQ(MessageOf<HostError>([&] { Document::OpenScene(path); }),
              path +
                  ": byte 8: the file has format 335 or is damaged; this program reads formats "
                  "up to 334");
}

TEST_F(OldScene, NewerClassIsRefused) {
    SceneStream header;
    header.SetClassVersion(document->Brush().RuntimeClass(), 2);
    document->WriteScene(path, header);
    EXPECT_THAT(MessageOf<HostError>([&] { Document::OpenScene(path); }),
                HasSubstr("chunk BRSH: class SwiftStroke was written in version 2; this program "
                          "supports versions up to 1"));
}

/// A node with a number, for scenes from programs that have more classes than this one.
class Numbered : public TreeNode {
public:
    uint32_t number = 0;
    void Serialize(Stream& stream) override {
        TreeNode::Serialize(stream);
        stream.Transfer(number);
    }
    static const ClassDesc* registered;
    const ClassDesc* RuntimeClass() const override { return registered; }
};
const ClassDesc* Numbered::registered = nullptr;

TEST_F(OldScene, NodesOfKnownClassesAreReadAndOthersSkipped) {
    {
        const ClassDesc desc(
            TreeNode::StaticClass(),
            TreeNode::StaticClass(),
            QStringLiteral("Numbered"),
            QString(),
            [](unsigned) -> Node* { return new Numbered; },
            0,
            3);
        Numbered::registered = &desc;
        auto* outer = new Numbered;
        outer->number = 41;
        auto* inner = new Numbered;
        inner->number = 42;
        outer->AddChild(inner);
        document->Geometry().Level(1)->AddChild(outer);
        auto* ofGeometry = new Numbered;
        ofGeometry->number = 43;
        document->Geometry().AddChild(ofGeometry);
        auto read = ReopenUnder(SceneStream());
        auto* child = dynamic_cast<Numbered*>(read->Geometry().Level(1)->FirstChild());
        ASSERT_NE(child, nullptr);
        EXPECT_EQ(child->number, 41u);
        ASSERT_NE(child->FirstChild(), nullptr);
        EXPECT_EQ(dynamic_cast<Numbered*>(child->FirstChild())->number, 42u);
        EXPECT_EQ(dynamic_cast<Numbered*>(read->Geometry().FirstChild())->number, 43u);
        EXPECT_TRUE(read->Notes().empty());
        delete outer;
        delete ofGeometry;
    }
    auto read = Document::OpenScene(path);
    EXPECT_EQ(read->Geometry().Level(1)->FirstChild(), nullptr);
    EXPECT_TRUE(HasPatchMap(*read->Geometry().Level(0)));
    const std::string note = "skipped a node of class Numbered, which no plug-in provides";
    EXPECT_THAT(read->Notes(), ElementsAre(note, note));
}

TEST_F(OldScene, BeforeFormat332PenAndFreezeBrushHaveTheirDefaults) {
    document->SelectTool("Freeze");
    auto read = ReopenUnder(SceneStream(331));
    EXPECT_TRUE(read->Notes().empty());
    EXPECT_TRUE(read->Settings().dynamics.strengthCurve.IsIdentity());
    EXPECT_EQ(read->Settings().dynamics.airbrush, 0.0f);
    EXPECT_EQ(read->Settings().radius, 0.75f);
    EXPECT_FALSE(read->IsFreezing());
    read->SelectTool("Freeze");
    EXPECT_EQ(read->Brush().BrushStrength(), 100.0f);
}

TEST_F(OldScene, UnknownBrushClassSkipsItsSettingsAndReadsTheMesh) {
    document->Save(path);
    Replace("BRSH", "SwiftStroke", "QuickStroke");
    auto read = Document::OpenScene(path);
    EXPECT_EQ(read->Brush().ActiveConfiguration(), nullptr);
    EXPECT_EQ(read->Geometry().LevelCount(), 3u);
    EXPECT_THAT(
        read->Notes(),
        ElementsAre(
            "skipped the settings of the brush QuickStroke, which is not the current brush"));
}

TEST_F(OldScene, UnknownToolIsSkipped) {
    document->Save(path);
    Replace("BRSH", "Flatten", "Flattem");
    auto read = Document::OpenScene(path);
    EXPECT_EQ(read->Brush().ActiveConfiguration()->Name(), QStringLiteral("Bulge"));
    EXPECT_THAT(
        read->Notes(),
        ElementsAre("skipped the settings of the tool Flattem, which the brush does not have"));
}

TEST_F(OldScene, UnknownChunkIsSkipped) {
    document->Save(path);
    const std::string bytes = TemporaryFolder::Content(path);
    RawScene scene = SplitScene(bytes);
    scene.chunks.insert(scene.chunks.begin() + 1, RawChunk{"ANIM", 0, 0, "whatever"});
    folder.Fill("scene.trovik", JoinScene(bytes.substr(0, scene.headerBytes), scene.chunks));
    auto read = Document::OpenScene(path);
    EXPECT_THAT(read->Notes(), ElementsAre("skipped the unknown chunk ANIM"));
    EXPECT_TRUE(StateOf(*read, folder) == StateOf(*document, folder));
}

}  // namespace
}  // namespace trovik::test
