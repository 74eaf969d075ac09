// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/HostKernel.h"
#include "host/BrushOperation.h"
#include "host/ClassDesc.h"

#include <gtest/gtest.h>

#include <memory>

namespace trovik {
namespace {

TEST(ClassDesc, RegistersAndUnregisters) {
    const unsigned before = ClassDesc::Count();
    {
        const ClassDesc desc(Node::StaticClass(),
                             TreeNode::StaticClass(),
                             QStringLiteral("Passing"),
                             QStringLiteral("Passing by"),
                             nullptr,
                             7,
                             9);
        ASSERT_GT(ClassDesc::Count(), before);
        EXPECT_EQ(ClassDesc::At(ClassDesc::Count() - 1), &desc);
        EXPECT_EQ(ClassDesc::ByName(QStringLiteral("Passing")), &desc);
        EXPECT_EQ(desc.Parent(), Node::StaticClass());
        EXPECT_EQ(desc.DisplayParent(), TreeNode::StaticClass());
        EXPECT_EQ(desc.DisplayName(), QStringLiteral("Passing by"));
        EXPECT_EQ(desc.Flags(), 7);
        EXPECT_EQ(desc.Version(), 9);
        EXPECT_EQ(desc.Create(), nullptr);
    }
    EXPECT_EQ(ClassDesc::ByName(QStringLiteral("Passing")), nullptr);
    EXPECT_EQ(ClassDesc::At(ClassDesc::Count()), nullptr);
}

TEST(ClassDesc, HostClassesAreRegisteredWithTheKernel) {
    HostKernel::Instance();
    for (const char* name : {"Node",
                             "TreeNode",
                             "Mesh",
                             "SubdivisionLevel",
                             "Geometry",
                             "MeshRenderer",
                             "BrushOperation"}) {
        const ClassDesc* desc = ClassDesc::ByName(QString::fromLatin1(name));
        ASSERT_NE(desc, nullptr) << name;
        EXPECT_TRUE(desc->IsDerivedFrom(Node::StaticClass())) << name;
    }
}

TEST(ClassDesc, DerivationFollowsTheParents) {
    EXPECT_TRUE(SubdivisionLevel::StaticClass()->IsDerivedFrom(Mesh::StaticClass()));
    EXPECT_TRUE(SubdivisionLevel::StaticClass()->IsDerivedFrom(TreeNode::StaticClass()));
    EXPECT_TRUE(Mesh::StaticClass()->IsDerivedFrom(Mesh::StaticClass()));
    EXPECT_FALSE(Mesh::StaticClass()->IsDerivedFrom(SubdivisionLevel::StaticClass()));
    EXPECT_FALSE(BrushOperation::StaticClass()->IsDerivedFrom(TreeNode::StaticClass()));
}

TEST(ClassDesc, FactoryReceivesTheCount) {
    static unsigned asked = 0;
    const ClassDesc desc(
        Node::StaticClass(),
        Node::StaticClass(),
        QStringLiteral("Counted"),
        QString(),
        [](unsigned count) {
            asked = count;
            return new Node;
        },
        0,
        0);
    std::unique_ptr<Node> node(desc.Create());
    EXPECT_EQ(asked, 1u);
    node.reset(desc.Create(3));
    EXPECT_EQ(asked, 3u);
}

}  // namespace
}  // namespace trovik
