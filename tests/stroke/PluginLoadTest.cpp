// SPDX-License-Identifier: Apache-2.0

/// \file Tests the module from a host's point of view: it is loaded at run time and accessed only
/// through the registries.
#include "framework/multires/LevelGeometry.h"
#include "framework/nodes/HostKernel.h"
#include "framework/nodes/PreferenceFile.h"
#include "framework/pluginhost/PluginLoader.h"
#include "host/BrushOperation.h"
#include "host/ClassDesc.h"
#include "host/Plugin.h"
#include "host/Preferences.h"
#include "tests/stroke/RegistrationSpy.h"

#include <gtest/gtest.h>

#include <memory>

namespace trovik::test {
namespace {

/// The path of the built module.
std::string ModulePath() {
    for (const std::string& folder : PluginFolders()) return folder + "/SwiftStroke.so";
    return "SwiftStroke.so";
}

const Plugin* Record() {
    for (unsigned i = 0; i < Plugin::Count(); ++i)
        if (Plugin::At(i)->Name() == QStringLiteral("Swift Stroke")) return Plugin::At(i);
    return nullptr;
}

const ClassDesc* BrushClass() { return ClassDesc::ByName(QStringLiteral("SwiftStroke")); }

/// The content of the registries before the module was loaded.
struct Before {
    uint32_t rows = 99;
    unsigned plugins = 99;
    bool described = true;
    bool preference = true;
};

/// Loads the module once; only the tests that need the tools register them.
class PluginLoad : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        before.rows = BrushOperation::ConfigurationCount();
        before.plugins = Plugin::Count();
        before.described = BrushClass() != nullptr;
        before.preference = FindPreference("Render Swift Stroke") != nullptr;
        LoadPlugin(ModulePath(), false);
        rowsAfterOpening = BrushOperation::ConfigurationCount();
        initialisedAfterOpening = Record() != nullptr && Record()->IsInitialised();
    }
    static BrushConfiguration* Row(uint32_t id) {
        LoadPlugin(ModulePath());
        return BrushOperation::Configuration(id);
    }

    static inline Before before;
    static inline uint32_t rowsAfterOpening = 99;
    static inline bool initialisedAfterOpening = true;
};

TEST_F(PluginLoad, RegistersRecordDescriptorsAndPreferencesButNoTools) {
    EXPECT_EQ(before.rows, 0u);
    EXPECT_EQ(before.plugins, 0u);
    EXPECT_FALSE(before.described);
    EXPECT_FALSE(before.preference);
    EXPECT_EQ(Plugin::Count(), 1u);
    ASSERT_NE(Record(), nullptr);
    EXPECT_EQ(Record()->Description(),
              QStringLiteral("Hardware accelerated simple sculptor brush"));
    ASSERT_NE(BrushClass(), nullptr);
    EXPECT_EQ(BrushClass()->Version(), 1);
    ASSERT_NE(ClassDesc::ByName(QStringLiteral("PatchMap")), nullptr);
    EXPECT_EQ(rowsAfterOpening, 0u);
    EXPECT_FALSE(initialisedAfterOpening);
}

TEST_F(PluginLoad, ObjectsAreConstructedInAFixedOrder) {
    std::vector<std::string> order;
    bool seen = false;
    for (const Registered& entry : RegistrationLog()) {
        // Objects that the host's own library creates meanwhile do not belong to the module.
        if (entry.kind == "ClassDesc" && entry.name != "SwiftStroke" && entry.name != "PatchMap")
            continue;
        seen = true;
        order.push_back(entry.kind + " " + entry.name);
    }
    EXPECT_TRUE(seen);
    EXPECT_EQ(order,
              (std::vector<std::string>{"ClassDesc SwiftStroke",
                                        "Plugin Swift Stroke",
                                        "Bool Render Swift Stroke",
                                        "Float Swift Stroke Level Factor",
                                        "Bool Use Original Data For Flatten",
                                        "Bool Use Vertex Weights For Flatten",
                                        "Bool Wax Fills Only",
                                        "Bool Wax Scrapes Only",
                                        "ClassDesc PatchMap"}));
}

TEST_F(PluginLoad, PreferencesHaveTheirLabelsDefaultsAndRange) {
    int preferences = 0;
    for (const Registered& entry : RegistrationLog()) {
        if (entry.kind != "Bool" && entry.kind != "Float") continue;
        ++preferences;
        EXPECT_EQ(entry.category, "Sculpting");
        EXPECT_EQ(entry.categoryLabel, "Sculpting");
        EXPECT_TRUE(entry.lastArgument);
        EXPECT_EQ(entry.label,
                  entry.name == "Wax Scrapes Only" ? std::string("Wax Fills Only") : entry.name);
        const bool on =
            entry.name == "Render Swift Stroke" || entry.name == "Swift Stroke Level Factor";
        EXPECT_EQ(entry.value, on ? 1.0f : 0.0f) << entry.name;
        if (entry.kind == "Float") {
            EXPECT_EQ(entry.minimum, 0.25f);
            EXPECT_EQ(entry.maximum, 4.0f);
        }
    }
    EXPECT_EQ(preferences, 6);
}

TEST_F(PluginLoad, InitialiserRegistersFifteenToolsOnce) {
    LoadPlugin(ModulePath());
    EXPECT_TRUE(Record()->IsInitialised());
    EXPECT_EQ(BrushOperation::ConfigurationCount(), 15u);
    LoadPlugin(ModulePath());
    EXPECT_EQ(BrushOperation::ConfigurationCount(), 15u);
    for (uint32_t i = 0; i < 15; ++i) {
        EXPECT_EQ(BrushOperation::Configuration(i)->ID(), i);
        EXPECT_EQ(BrushOperation::Configuration(i)->BrushClass(), BrushClass());
    }
    EXPECT_EQ(BrushOperation::Configuration(14)->Name(), QStringLiteral("Imprint"));
}

TEST_F(PluginLoad, BrushFromTheModuleSculptsThroughTheContractAlone) {
    BrushConfiguration* sculpt = Row(0);
    const std::unique_ptr<Node> node(BrushClass()->Create());
    auto* brush = dynamic_cast<BrushOperation*>(node.get());
    ASSERT_NE(brush, nullptr);
    EXPECT_EQ(brush->BuildUpRate(), 0.5f);
    EXPECT_EQ(brush->RuntimeClass(), BrushClass());
    brush->SetActiveConfiguration(sculpt);

    PolygonMesh quad;
    quad.positions = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    quad.faceSizes = {4};
    quad.faceVertices = {0, 1, 2, 3};
    LevelGeometry geometry(quad);
    for (int i = 0; i < 4; ++i) geometry.Subdivide();
    LevelMesh& mesh = *geometry.Bound();
    const SurfacePoint hit(&mesh, 0, 100);
    brush->BeginStroke(&mesh, BrushOperation::ModifierNone, BrushOperation::TriggerStroke);
    AxisAlignedBoundingBox box;
    brush->ApplyDab(hit, hit.position, 0.2f, 1.0f, 0.5f, box);
    brush->EndStroke();
    EXPECT_FALSE(box.IsEmpty());
    EXPECT_GT(mesh.Position(mesh.faceVertexIndices[400]).z, 0.01f);
    ASSERT_TRUE(geometry.History().Undo(geometry));
    EXPECT_EQ(mesh.Position(mesh.faceVertexIndices[400]).z, 0.0f);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
}

TEST_F(PluginLoad, ErrorsOfTheModuleReachTheHost) {
    // The error is thrown in the module and caught here, which works only if both have the same
    // type information.
    const std::unique_ptr<TreeNode> parent(new TreeNode);
    std::unique_ptr<Node> map(ClassDesc::ByName(QStringLiteral("PatchMap"))->Create());
    auto* child = dynamic_cast<TreeNode*>(map.get());
    ASSERT_NE(child, nullptr);
    Error* caught = nullptr;
    try {
        parent->AddChild(child);
        static_cast<void>(map.release());
    } catch (Error* error) {
        caught = error;
    }
    ASSERT_NE(caught, nullptr);
    EXPECT_EQ(caught->ErrorCode(), Error::InvalidUse);
    EXPECT_STREQ(caught->Function(), "PatchMap::OnLinked");
    EXPECT_EQ(caught->Message(), QStringLiteral("Wrong parrent for PatchMap class"));
    Error::Dispose(caught);
    EXPECT_EQ(HostKernel::Instance().crashFlags, 0u);
    // The child was linked before it was notified.
    if (child->Parent() != nullptr) static_cast<void>(map.release());
}

}  // namespace
}  // namespace trovik::test
