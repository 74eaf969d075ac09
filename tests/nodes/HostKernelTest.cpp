// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/PolygonMesh.h"
#include "framework/multires/LevelGeometry.h"
#include "framework/nodes/HostKernel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <semaphore>
#include <thread>

namespace trovik {
namespace {

class HostKernelTest : public testing::Test {
protected:
    ~HostKernelTest() override {
        kernel.SetTestMode(false);
        kernel.SetHUDListener(nullptr);
        kernel.ClearHUDMessages();
        kernel.Scene()->SetActiveCamera(nullptr);
    }
    HostKernel& kernel = HostKernel::Instance();
};

TEST_F(HostKernelTest, IsTheOneProcessWideKernel) {
    EXPECT_EQ(g_pKernel, &kernel);
    EXPECT_EQ(&HostKernel::Instance(), &kernel);
    EXPECT_EQ(kernel.kernelCommandAttribute.Owner(), &kernel);
}

TEST_F(HostKernelTest, TestModeIsOffUnlessSet) {
    EXPECT_FALSE(g_pKernel->IsTestModeOn());
    kernel.SetTestMode(true);
    EXPECT_TRUE(g_pKernel->IsTestModeOn());
}

TEST_F(HostKernelTest, MessagesAreStoredAndForwarded) {
    std::vector<std::string> heard;
    kernel.SetHUDListener([&heard](const std::string& text) { heard.push_back(text); });
    g_pKernel->Interface()->HUDMessageShow(QStringLiteral("zu grob"), HUDMessageWarning);
    kernel.SetHUDListener(nullptr);
    g_pKernel->Interface()->HUDMessageShow(QStringLiteral("second"), HUDMessageInfo);
    g_pKernel->Interface()->ActivateLayerSystem(LayerUISculpt);
    EXPECT_THAT(heard, testing::ElementsAre("zu grob"));
    EXPECT_THAT(kernel.HUDMessages(), testing::ElementsAre("zu grob", "second"));
    kernel.ClearHUDMessages();
    EXPECT_TRUE(kernel.HUDMessages().empty());
}

TEST_F(HostKernelTest, EachThreadHasItsOwnMessagesAndListener) {
    std::vector<std::string> here;
    std::vector<std::string> there;
    const auto show = [](const char* text) {
        g_pKernel->Interface()->HUDMessageShow(QLatin1String(text), HUDMessageInfo);
    };
    auto listening =
        std::make_unique<HUDListening>([&here](const std::string& text) { here.push_back(text); });
    std::binary_semaphore isListening{0};
    std::binary_semaphore hasEnded{0};
    std::jthread other([&] {
        const HUDListening own([&there](const std::string& text) { there.push_back(text); });
        isListening.release();
        hasEnded.acquire();
        show("there");
        EXPECT_THAT(kernel.HUDMessages(), testing::ElementsAre("there"));
    });
    isListening.acquire();
    show("here");
    // The scopes of the two threads overlap, and this one ends first.
    listening.reset();
    hasEnded.release();
    other.join();
    show("after");
    EXPECT_THAT(here, testing::ElementsAre("here"));
    EXPECT_THAT(there, testing::ElementsAre("there"));
    EXPECT_THAT(kernel.HUDMessages(), testing::ElementsAre("here", "after"));
}

TEST_F(HostKernelTest, ActiveCameraIsNeverNull) {
    Scene* scene = g_pKernel->Scene();
    ASSERT_NE(scene->ActiveCamera(), nullptr);
    EXPECT_EQ(scene->ActiveCamera(), &kernel.Scene()->OwnCamera());
    Vector world;
    const Vector local(1, 2, 3);
    scene->ActiveCamera()->Transformation()->LocalToWorld(&world, &local, 1.0f);
    EXPECT_EQ(world, local) << "it starts at the origin";
    HostCamera other;
    scene->SetActiveCamera(&other);
    EXPECT_EQ(scene->ActiveCamera(), &other);
    scene->SetActiveCamera(nullptr);
    EXPECT_EQ(scene->ActiveCamera(), &kernel.Scene()->OwnCamera());
}

TEST_F(HostKernelTest, GeometriesAreListedInOrder) {
    PolygonMesh triangle;
    triangle.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    triangle.faceSizes = {3};
    triangle.faceVertices = {0, 1, 2};
    LevelGeometry a(triangle);
    LevelGeometry b(triangle);
    HostScene* scene = kernel.Scene();
    const unsigned before = scene->GeometryCount();
    scene->AddGeometry(&a);
    scene->AddGeometry(&b);
    ASSERT_EQ(scene->GeometryCount(), before + 2);
    EXPECT_EQ(scene->GeometryAt(before), &a);
    EXPECT_EQ(scene->GeometryAt(before + 2), nullptr);
    scene->RemoveGeometry(&a);
    EXPECT_EQ(scene->GeometryAt(before), &b);
    scene->RemoveGeometry(&b);
    EXPECT_EQ(scene->GeometryCount(), before);
}

TEST_F(HostKernelTest, GuardsSetTheirBitDuringTheirLifetime) {
    const uint32_t before = kernel.crashFlags;
    {
        const TVCrashReporterFlag outer(4, 64);
        const TVCrashReporterFlag inner(4, 128);
        EXPECT_EQ(kernel.crashFlags, before + 192);
    }
    EXPECT_EQ(kernel.crashFlags, before);
}

}  // namespace
}  // namespace trovik
