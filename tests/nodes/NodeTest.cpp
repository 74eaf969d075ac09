// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/NodeTemplate.h"
#include "framework/nodes/SceneStream.h"
#include "host/Node.h"
#include "tests/nodes/RecordingNode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace trovik {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A node with attributes of all types, created by its own factory.
class SampleNode : public test::RecordingNode {
public:
    const ClassDesc* RuntimeClass() const override { return Desc(); }
    static const ClassDesc* Desc() {
        static const ClassDesc desc(
            Node::StaticClass(),
            Node::StaticClass(),
            QStringLiteral("SampleNode"),
            QStringLiteral("Sample"),
            [](unsigned) -> Node* { return new SampleNode; },
            0,
            0);
        return &desc;
    }

    AttributeInstance<int> number{this, QStringLiteral("number"), 1};
    AttributeInstance<bool> flag{this, QStringLiteral("flag")};
    AttributeInstance<QString> text{this, QStringLiteral("text")};
    AttributeInstance<CheckableFloat> pair{this, QStringLiteral("pair")};
    AttributeFloatRange range{this, QStringLiteral("range"), 0.0f, 1.0f, 0.5f, 2};
};

class Listener : public Node {
public:
    void OnEvent(const Node& source, NodeEventType type) override {
        heard.emplace_back(&source, type);
        if (atEvent) atEvent();
    }
    std::vector<std::pair<const Node*, NodeEventType>> heard;
    std::function<void()> atEvent;
};

void FillIn(SampleNode& node) {
    node.number = 42;
    node.flag = true;
    node.text = QStringLiteral("über");
    node.pair = CheckableFloat{true, 0.125f};
    node.range.SetValue(0.75f, true);
}

void ExpectFilledIn(const SampleNode& node) {
    EXPECT_EQ(node.number.Value(), 42);
    EXPECT_TRUE(node.flag.Value());
    EXPECT_EQ(node.text.Value(), QStringLiteral("über"));
    EXPECT_EQ(node.pair.Value(), (CheckableFloat{true, 0.125f}));
    EXPECT_EQ(node.range.Value(), 0.75f);
}

TEST(Node, OtherNamesDefaultToTheName) {
    Node node;
    node.SetName(QStringLiteral("head"));
    EXPECT_EQ(node.DisplayName(), QStringLiteral("head"));
    node.SetDisplayName(QStringLiteral("Head"));
    node.SetStringID(QStringLiteral("id-1"));
    node.SetHelpID(QStringLiteral("help"));
    EXPECT_EQ(node.Name(), QStringLiteral("head"));
    EXPECT_EQ(node.DisplayName(), QStringLiteral("Head"));
    EXPECT_EQ(node.StringID(), QStringLiteral("id-1"));
    EXPECT_EQ(node.HelpID(), QStringLiteral("help"));
}

TEST(Node, ContentChangedIncrementsTheVersionAndNotifiesListeners) {
    Node node;
    Listener listener;
    node.AddListener(&listener);
    node.AddListener(&listener);
    EXPECT_EQ(node.Version(), 0u);
    node.ContentChanged();
    node.ContentChanged();
    EXPECT_EQ(node.Version(), 2u);
    ASSERT_EQ(listener.heard.size(), 2u) << "added twice, notified once";
    EXPECT_EQ(listener.heard[0].first, &node);
    EXPECT_EQ(listener.heard[0].second, NodeEventValueChanged);
    node.RemoveListener(&listener);
    node.ContentChanged();
    EXPECT_EQ(listener.heard.size(), 2u);
}

TEST(Node, EitherEndOfAListenerMayBeDestroyedFirst) {
    auto node = std::make_unique<Node>();
    auto listener = std::make_unique<Listener>();
    node->AddListener(listener.get());
    listener.reset();
    node->ContentChanged();
    listener = std::make_unique<Listener>();
    node->AddListener(listener.get());
    node.reset();
    EXPECT_THAT(listener->heard, IsEmpty());
}

TEST(Node, ListenerMayRemoveAnotherDuringItsNotification) {
    Node node;
    Listener first;
    auto second = std::make_unique<Listener>();
    node.AddListener(&first);
    node.AddListener(second.get());
    first.atEvent = [&second] { second.reset(); };
    node.ContentChanged();
    EXPECT_EQ(first.heard.size(), 1u);
}

TEST(Node, CopyToSilentlyCopiesValuesOfTheSameNameAndType) {
    SampleNode from;
    FillIn(from);
    from.SetName(QStringLiteral("origin"));
    from.SetStringID(QStringLiteral("own"));
    SampleNode to;
    from.CopyTo(to);
    ExpectFilledIn(to);
    EXPECT_EQ(to.Name(), QStringLiteral("origin"));
    EXPECT_TRUE(to.StringID().isEmpty());
    EXPECT_THAT(to.TakeEvents(), IsEmpty());

    test::RecordingNode other;
    const AttributeInstance<QString> number(&other, QStringLiteral("number"));
    const AttributeInstance<bool> flag(&other, QStringLiteral("flag"));
    from.CopyTo(other);
    EXPECT_TRUE(number.Value().isEmpty());
    EXPECT_TRUE(flag.Value());
}

TEST(Node, CopyToSkipsConnectedAttributes) {
    AttributeInstance<int> source(nullptr, QString(), 5);
    SampleNode from;
    FillIn(from);
    SampleNode to;
    to.number.Connect(source, true);
    from.CopyTo(to);
    EXPECT_EQ(to.number.Value(), 5);
}

TEST(Node, DuplicateCreatesANodeOfTheSameClass) {
    SampleNode from;
    FillIn(from);
    const std::unique_ptr<Node> copy(from.Duplicate());
    const auto* sample = dynamic_cast<SampleNode*>(copy.get());
    ASSERT_NE(sample, nullptr);
    ExpectFilledIn(*sample);
    const Node plain;
    EXPECT_EQ(plain.Duplicate(), nullptr) << "its class has no factory";
}

TEST(Node, NamesAreStreamed) {
    Node node;
    node.SetName(QStringLiteral("größe"));
    node.SetStringID(QStringLiteral("id"));
    node.SetDisplayName(QStringLiteral("Shown"));
    SceneStream written;
    node.Serialize(written);
    SceneStream read(written.ToBytes());
    Node other;
    other.Serialize(read);
    EXPECT_EQ(other.Name(), QStringLiteral("größe"));
    EXPECT_EQ(other.StringID(), QStringLiteral("id"));
    EXPECT_EQ(other.DisplayName(), QStringLiteral("Shown"));
    EXPECT_EQ(read.Remaining(), 0u);
}

class NodeTemplateTest : public testing::Test {
protected:
    ~NodeTemplateTest() override {
        RemoveTemplate(SampleNode::Desc(), QString());
        RemoveTemplate(SampleNode::Desc(), QStringLiteral("fine"));
    }
};

TEST_F(NodeTemplateTest, WithoutATemplateNothingChanges) {
    SampleNode node;
    node.LoadTemplate(QString(), false);
    EXPECT_EQ(node.number.Value(), 1);
    EXPECT_THAT(node.TakeEvents(), IsEmpty());
}

TEST_F(NodeTemplateTest, TemplateProvidesValuesByName) {
    SampleNode model;
    FillIn(model);
    StoreTemplate(model, QStringLiteral("fine"));
    SampleNode node;
    node.LoadTemplate(QString(), true);
    EXPECT_EQ(node.number.Value(), 1);
    node.LoadTemplate(QStringLiteral("fine"), true);
    ExpectFilledIn(node);
    EXPECT_THAT(node.TakeEvents(), IsEmpty());
    EXPECT_TRUE(RemoveTemplate(SampleNode::Desc(), QStringLiteral("fine")));
    EXPECT_FALSE(RemoveTemplate(SampleNode::Desc(), QStringLiteral("fine")));
}

TEST_F(NodeTemplateTest, LoadingWithEventsNotifiesTheOwner) {
    SampleNode model;
    FillIn(model);
    StoreTemplate(model, QString());
    SampleNode node;
    node.LoadTemplate(QString(), false);
    ExpectFilledIn(node);
    EXPECT_THAT(node.TakeEvents(),
                ElementsAre("number:0", "flag:0", "text:0", "pair:0", "range:0"));
}

}  // namespace
}  // namespace trovik
