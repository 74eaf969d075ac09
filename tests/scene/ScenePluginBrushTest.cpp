// SPDX-License-Identifier: Apache-2.0

/// \file Tests that scenes contain the settings of brushes of further plug-ins.
#include "framework/nodes/HostKernel.h"
#include "framework/scene/SceneFile.h"
#include "tests/meshes/MeshZoo.h"
#include "tests/scene/SampleScene.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace trovik::test {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

ClassDesc MakeClass(Node* (*factory)(unsigned)) {
    return {BrushOperation::StaticClass(),
            BrushOperation::StaticClass(),
            QStringLiteral("ScenePluginBrush"),
            QStringLiteral("Scene plug-in brush"),
            factory,
            0,
            1};
}

/// A brush without dabs, of the class that its tools have.
class PluginBrush : public BrushOperation {
public:
    const ClassDesc* RuntimeClass() const override { return &Desc(); }
    static const ClassDesc& Desc() {
        static const ClassDesc desc = MakeClass([](unsigned) -> Node* { return new PluginBrush; });
        return desc;
    }
};

/// A brush of a class with the same name, but without tools, as if another version of the plug-in
/// were installed.
class ToollessBrush : public BrushOperation {
public:
    explicit ToollessBrush(const ClassDesc& brushClass) : desc(brushClass) {}
    const ClassDesc* RuntimeClass() const override { return &desc; }

private:
    const ClassDesc& desc;
};

class ScenePluginBrush : public ::testing::Test {
protected:
    ScenePluginBrush() {
        HostKernel::Instance();
        static const bool isRegistered = [] {
            uint32_t id = 0;
            // The second and third tool have the names of other tools.
            for (const char* name : {"Scene plug-in", "Sculpt", "Freeze"})
                BrushOperation::AddConfiguration(new BrushConfiguration(&PluginBrush::Desc(),
                                                                        id++,
                                                                        QString::fromLatin1(name),
                                                                        QString::fromLatin1(name),
                                                                        PredefinedCategory::Sculpt,
                                                                        QString(),
                                                                        0));
            return true;
        }();
        EXPECT_TRUE(isRegistered);
        document = DocumentOn(folder, Cube());
        EXPECT_TRUE(document->SelectTool("Scene plug-in"));
        document->Brush().SetBrushStrength(37.0f);
    }
    std::unique_ptr<Document> Reopen() {
        document->Save(path);
        return Document::OpenScene(path);
    }

    TemporaryFolder folder;
    const std::string path = folder.Path("scene.trovik");
    std::unique_ptr<Document> document;
};

TEST_F(ScenePluginBrush, RestoresTheActiveToolAndItsSettings) {
    auto read = Reopen();
    EXPECT_THAT(read->Notes(), IsEmpty());
    EXPECT_EQ(read->Brush().RuntimeClass(), &PluginBrush::Desc());
    EXPECT_EQ(read->Brush().ActiveConfiguration(), document->Brush().ActiveConfiguration());
    EXPECT_EQ(read->Brush().BrushStrength(), 37.0f);
}

TEST_F(ScenePluginBrush, RestoresSettingsOfABrushThatIsNotActive) {
    ASSERT_TRUE(document->SelectTool("Sculpt"));
    auto read = Reopen();
    EXPECT_EQ(read->Brush().RuntimeClass()->Name(), QStringLiteral("SwiftStroke"));
    ASSERT_TRUE(read->SelectTool("Scene plug-in"));
    EXPECT_EQ(read->Brush().BrushStrength(), 37.0f);
}

TEST_F(ScenePluginBrush, SettingsWithoutThePluginAreSkippedWithANote) {
    document->Save(path);
    const auto brush = NewBrush();
    const LoadedScene scene = LoadScene(path, brush.get());
    EXPECT_EQ(scene.activePluginBrush, nullptr);
    EXPECT_THAT(scene.notes, Contains(HasSubstr("ScenePluginBrush, which no plug-in provides")));
    EXPECT_THAT(LoadScene(path, nullptr).notes, IsEmpty()) << "settings are not wanted";
}

TEST_F(ScenePluginBrush, BrushWithoutTheToolDoesNotBecomeActive) {
    document->Save(path);
    const ClassDesc toolless = MakeClass(nullptr);
    ToollessBrush plugin(toolless);
    const auto brush = NewBrush();
    const LoadedScene scene = LoadScene(path, brush.get(), nullptr, nullptr, {&plugin});
    EXPECT_EQ(plugin.ActiveConfiguration(), nullptr);
    EXPECT_EQ(scene.activePluginBrush, nullptr);
    EXPECT_THAT(scene.notes, Contains(HasSubstr("which the brush does not have")));
}

TEST_F(ScenePluginBrush, ToolsOfTheHostAndTheSculptingBrushHavePrecedence) {
    const std::vector<std::string> names = document->ToolNames();
    for (const char* name : {"Sculpt", "Freeze"})
        EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
    ASSERT_TRUE(document->SelectTool("Sculpt"));
    EXPECT_EQ(document->Brush().RuntimeClass()->Name(), QStringLiteral("SwiftStroke"));
    ASSERT_TRUE(document->SelectTool("Freeze"));
    EXPECT_TRUE(document->IsFreezing());
}

}  // namespace
}  // namespace trovik::test
