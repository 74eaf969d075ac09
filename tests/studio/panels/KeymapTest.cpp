// SPDX-License-Identifier: Apache-2.0
#include "commands/ActionRegistry.h"
#include "commands/Keymap.h"
#include "commands/KeymapEditor.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <QWidget>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace trovik::studio {

namespace {

using Keys = QList<QKeySequence>;

class KeymapTest : public testing::Test {
protected:
    QTemporaryDir folder;
    QWidget window;
    ActionRegistry actions{&window};
    int runs = 0;

    void SetUp() override { Fill(actions); }

    void Fill(ActionRegistry& registry) {
        registry.Add({.id = "edit.undo",
                      .text = "Undo",
                      .description = "Reverts.",
                      .keys = {QKeySequence("Ctrl+Z")},
                      .run = [this] { ++runs; }});
        registry.Add({.id = "edit.redo",
                      .text = "Redo",
                      .description = "Repeats.",
                      .keys = {QKeySequence("Ctrl+Y"), QKeySequence("Ctrl+Shift+Z")}});
        registry.AddHeld({.id = "stroke.smooth",
                          .text = "Smooth",
                          .description = "Smooths.",
                          .keys = {QKeySequence(Qt::Key_Shift)}});
        registry.AddHeld({.id = "brush.radius",
                          .text = "Radius",
                          .description = "Changes the radius.",
                          .keys = {QKeySequence("F")}});
        registry.Add({.id = "view.frame",
                      .text = "Frame",
                      .description = "Frames.",
                      .keys = {QKeySequence("Num+.")}});
    }

    QString Path(const char* name) { return folder.filePath(name); }
    void Write(const QString& path, const QByteArray& text) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
};

}  // namespace

TEST_F(KeymapTest, ActionsRunByIdAndKnowTheirKeys) {
    EXPECT_TRUE(actions.Trigger("edit.undo"));
    EXPECT_EQ(runs, 1);
    EXPECT_FALSE(actions.Trigger("edit.nothing"));
    EXPECT_FALSE(actions.Trigger("brush.radius"));
    actions.Find("edit.undo")->setEnabled(false);
    EXPECT_FALSE(actions.Trigger("edit.undo"));
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(actions.Owner(QKeySequence("Ctrl+Y")), "edit.redo");
    EXPECT_EQ(actions.HeldKey("brush.radius"), QKeySequence("F"));
    EXPECT_TRUE(actions.HeldKey("edit.undo").isEmpty());
    EXPECT_TRUE(actions.Find("edit.undo")->toolTip().contains("Ctrl+Z"));
    EXPECT_TRUE(actions.Find("edit.undo")->toolTip().contains("Reverts."));
}

TEST_F(KeymapTest, AKeyBelongsToOneAction) {
    EXPECT_EQ(actions.SetKeys("edit.undo", {QKeySequence("Ctrl+Y")}), QStringList{"edit.redo"});
    EXPECT_EQ(actions.Keys("edit.redo"), Keys{QKeySequence("Ctrl+Shift+Z")});
    EXPECT_EQ(actions.Find("edit.redo")->shortcuts(), Keys{QKeySequence("Ctrl+Shift+Z")});
    EXPECT_EQ(actions.Find("edit.undo")->shortcut(), QKeySequence("Ctrl+Y"));
    actions.ResetKeys();
    EXPECT_EQ(actions.Keys("edit.undo"), Keys{QKeySequence("Ctrl+Z")});
    EXPECT_EQ(actions.Keys("edit.redo").size(), 2);
}

TEST_F(KeymapTest, OneIdCannotBeAddedTwice) {
    EXPECT_THROW(actions.Add({.id = "edit.undo"}), std::logic_error);
}

TEST_F(KeymapTest, FilesRoundTrip) {
    Keymap keymap(actions, Path("user.json"));
    keymap.Bind("edit.undo", {QKeySequence("Q"), QKeySequence("Alt+Backspace")});
    keymap.Bind("stroke.smooth", {QKeySequence(Qt::Key_Alt)});
    keymap.Bind("view.frame", {});
    ASSERT_EQ(keymap.Export(Path("exported.json")), "");

    QWidget other;
    ActionRegistry fresh(&other);
    Keymap imported(fresh, Path("second.json"));
    // Actions that are added after the file has been read get their keys as well.
    ASSERT_EQ(imported.Import(Path("exported.json")), "");
    Fill(fresh);
    for (const ActionInfo& info : actions.Infos())
        EXPECT_EQ(fresh.Keys(info.id), actions.Keys(info.id)) << info.id.toStdString();
    EXPECT_EQ(fresh.HeldKey("stroke.smooth"), QKeySequence(Qt::Key_Alt));
    EXPECT_TRUE(fresh.Keys("view.frame").isEmpty());
    // The imported keys were stored as the user's own keymap.
    QWidget third;
    ActionRegistry again(&third);
    Fill(again);
    Keymap loaded(again, Path("second.json"));
    ASSERT_EQ(loaded.Load(), "");
    EXPECT_EQ(again.Keys("edit.undo"), actions.Keys("edit.undo"));
}

TEST_F(KeymapTest, PresetsReplaceAllKeysAndAreRemembered) {
    {
        Keymap keymap(actions, Path("user.json"));
        keymap.Bind("edit.undo", {QKeySequence("U")});
        keymap.SetPreset("alt-drag");
        EXPECT_EQ(actions.Keys("edit.undo"), Keys{QKeySequence("Ctrl+Z")});
        EXPECT_EQ(actions.HeldKey("brush.radius"), QKeySequence("B"));
        EXPECT_EQ(actions.Owner(QKeySequence("F")), "view.frame");
        EXPECT_FALSE(keymap.IsChanged("view.frame"));
    }
    actions.ResetKeys();
    Keymap keymap(actions, Path("user.json"));
    EXPECT_EQ(actions.HeldKey("brush.radius"), QKeySequence("F"));
    ASSERT_EQ(keymap.Load(), "");
    EXPECT_EQ(keymap.Preset(), "alt-drag");
    EXPECT_EQ(actions.HeldKey("brush.radius"), QKeySequence("B"));
}

TEST_F(KeymapTest, ResetOfOneActionTakesItsKeyBack) {
    Keymap keymap(actions, Path("user.json"));
    EXPECT_EQ(keymap.Bind("edit.redo", {QKeySequence("Ctrl+Z")}), QStringList{"edit.undo"});
    EXPECT_TRUE(keymap.IsChanged("edit.undo"));
    EXPECT_EQ(keymap.Reset("edit.undo"), QStringList{"edit.redo"});
    EXPECT_FALSE(keymap.IsChanged("edit.undo"));
    EXPECT_EQ(actions.Keys("edit.undo"), Keys{QKeySequence("Ctrl+Z")});
}

TEST_F(KeymapTest, ErrorsNameFilePlaceAndValueAndChangeNothing) {
    Keymap keymap(actions, Path("user.json"));
    const QString path = Path("bad.json");
    Write(path,
          "{\"format\": \"trovik-keymap\", \"version\": 1, \"preset\": \"default\", "
          "\"keys\": {\"edit.undo\": [\"Hyper+Nonsense\"]}}");
    EXPECT_EQ(keymap.Import(path), path + ": /keys/edit.undo: \"Hyper+Nonsense\" is not a key");
    Write(path, "{\"format\": \"trovik-keymap\", \"version\": 7, \"preset\": \"default\"}");
    EXPECT_EQ(keymap.Import(path), path + ": /version: expected 1, got 7");
    Write(path, "{\"format\": \"trovik-keymap\", \"version\": 1, \"preset\": \"mine\"}");
    EXPECT_TRUE(
        keymap.Import(path).contains("/preset: expected one of default, alt-drag, pen, got "
                                     "\"mine\""));
    Write(path, "{\"format\": ");
    EXPECT_TRUE(keymap.Import(path).startsWith(path + ": byte "));
    EXPECT_EQ(actions.Keys("edit.undo"), Keys{QKeySequence("Ctrl+Z")});
}

TEST_F(KeymapTest, StoringFailuresAreReported) {
    Write(Path("file"), "not a folder");
    Keymap keymap(actions, Path("file") + "/user.json");
    QSignalSpy failed(&keymap, &Keymap::StoreFailed);
    keymap.Bind("edit.undo", {QKeySequence("U")});
    ASSERT_EQ(failed.count(), 1);
    EXPECT_TRUE(failed[0][0].toString().startsWith(Path("file")));
}

TEST_F(KeymapTest, TheEditorBindsTheNextKeyAndReportsConflicts) {
    Keymap keymap(actions, Path("user.json"));
    KeymapEditor editor(actions, keymap);
    editor.show();
    auto* list = editor.findChild<QTreeWidget*>();
    editor.Capture("edit.undo");
    EXPECT_EQ(editor.Capturing(), "edit.undo");
    QTest::keyClick(list, Qt::Key_U, Qt::ControlModifier);
    EXPECT_EQ(actions.Keys("edit.undo"), Keys{QKeySequence("Ctrl+U")});
    EXPECT_EQ(editor.Capturing(), "");

    editor.Capture("edit.undo");
    QTest::keyClick(list, Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(actions.Keys("edit.undo"), Keys{QKeySequence("Ctrl+U")})
        << "reassigned at the first press";
    EXPECT_TRUE(editor.Message().contains("Ctrl+Y is already assigned to Redo"));
    QTest::keyClick(list, Qt::Key_Y, Qt::ControlModifier);
    EXPECT_EQ(actions.Keys("edit.undo"), Keys{QKeySequence("Ctrl+Y")});
    EXPECT_TRUE(editor.Message().contains("Redo has lost it"));

    editor.Capture("edit.undo");
    QTest::keyClick(list, Qt::Key_Escape);
    EXPECT_EQ(actions.Keys("edit.undo"), Keys{QKeySequence("Ctrl+Y")});
    editor.Capture("edit.undo");
    QTest::keyClick(list, Qt::Key_Backspace);
    EXPECT_TRUE(actions.Keys("edit.undo").isEmpty());
    EXPECT_TRUE(editor.isVisible()) << "Escape closed the dialog while it was waiting for a key";
}

TEST_F(KeymapTest, TheEditorTakesModifiersAloneForHeldKeysOnly) {
    Keymap keymap(actions, Path("user.json"));
    KeymapEditor editor(actions, keymap);
    editor.show();
    auto* list = editor.findChild<QTreeWidget*>();
    editor.Capture("stroke.smooth");
    QTest::keyClick(list, Qt::Key_Control);
    EXPECT_EQ(actions.HeldKey("stroke.smooth"), QKeySequence(Qt::Key_Control));
    editor.Capture("edit.undo");
    QTest::keyClick(list, Qt::Key_Control);
    EXPECT_EQ(editor.Capturing(), "edit.undo");
    // A key that belongs to another action has to be pressed twice; releasing its modifier in
    // between binds nothing.
    editor.Capture("stroke.smooth");
    QTest::keyClick(list, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(editor.Capturing(), "stroke.smooth");
    QTest::keyClick(list, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(actions.HeldKey("stroke.smooth"), QKeySequence("Ctrl+Z"));
}

TEST_F(KeymapTest, TheEditorFindsActionsByNameAndKey) {
    Keymap keymap(actions, {});
    KeymapEditor editor(actions, keymap);
    auto* list = editor.findChild<QTreeWidget*>();
    const auto found = [&] {
        QStringList texts;
        for (int i = 0; i < list->topLevelItemCount(); ++i)
            for (int row = 0; row < list->topLevelItem(i)->childCount(); ++row)
                texts.append(list->topLevelItem(i)->child(row)->text(0));
        return texts;
    };
    EXPECT_EQ(found().size(), 5);
    editor.Search("redo");
    EXPECT_EQ(found(), QStringList{"Redo"});
    editor.Search("Ctrl+Z");
    EXPECT_EQ(found(), QStringList{"Undo"});
}

}  // namespace trovik::studio
