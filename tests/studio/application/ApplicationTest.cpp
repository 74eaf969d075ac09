// SPDX-License-Identifier: Apache-2.0
#include "StudioApplication.h"
#include "commands/CommandPalette.h"
#include "commands/Keymap.h"
#include "commands/KeymapEditor.h"
#include "tests/SourceFolder.h"
#include "tests/studio/WaitFor.h"
#include "viewport/ViewportWidget.h"
#include "window/MainWindow.h"

#include <QApplication>
#include <QFile>
#include <QRegularExpression>
#include <QTest>
#include <QTreeWidget>
#include <gtest/gtest.h>

#include <map>

namespace trovik::studio {

namespace {

/// The studio with the sphere that it opens at the first start.
class Application : public testing::Test {
protected:
    Application() {
        CommandLine line;
        line.hasNoPreferences = true;
        line.hasNoJournal = true;
        line.viewportWidth = 400;
        line.viewportHeight = 300;
        studio = std::make_unique<StudioApplication>(line);
        studio->Start();
    }

    void WaitForSphere() {
        ASSERT_TRUE(WaitFor([this] {
            Engine& engine = studio->GetEngine();
            return engine.HasDocument() && engine.IsIdle() && studio->Viewport().IsComplete();
        }));
    }

    std::unique_ptr<StudioApplication> studio;
};

TEST_F(Application, ThePaletteFindsEveryActionByItsName) {
    WaitForSphere();
    CommandPalette& palette = studio->Window().Palette();
    ASSERT_GT(studio->Actions().Infos().size(), 110u);
    for (const ActionInfo& info : studio->Actions().Infos()) {
        palette.Open();
        palette.SetQuery(info.text);
        // Several actions may have the same name in different categories.
        EXPECT_LT(palette.Listed().indexOf(info.id), 3) << info.id.toStdString();
        EXPECT_GE(palette.Listed().indexOf(info.id), 0) << info.id.toStdString();
    }
    palette.hide();
}

TEST_F(Application, TheKeymapEditorBindsAKeyToEveryAction) {
    WaitForSphere();
    ActionRegistry& actions = studio->Actions();
    Keymap keymap(actions, {});
    KeymapEditor editor(actions, keymap);
    editor.show();
    auto* list = editor.findChild<QTreeWidget*>();
    const QKeySequence key(QKeyCombination(Qt::ControlModifier | Qt::AltModifier, Qt::Key_F9));
    for (const ActionInfo& info : actions.Infos()) {
        editor.Capture(info.id);
        ASSERT_EQ(editor.Capturing(), info.id);
        // The key belongs to the previous action; the second press rebinds it.
        QTest::keyClick(list, Qt::Key_F9, Qt::ControlModifier | Qt::AltModifier);
        if (!editor.Capturing().isEmpty())
            QTest::keyClick(list, Qt::Key_F9, Qt::ControlModifier | Qt::AltModifier);
        EXPECT_EQ(actions.Keys(info.id), QList<QKeySequence>{key}) << info.id.toStdString();
    }
}

TEST_F(Application, TheGuideNamesWhatExists) {
    WaitForSphere();
    // Names that users see: actions, panels, and the controls of the window.
    QStringList names;
    std::map<QString, QString> ids;
    for (const ActionInfo& info : studio->Actions().Infos()) {
        names << info.text;
        ids[info.text] = info.id;
        if (info.id.startsWith("panel.")) names << QString(info.text).remove("Show ");
    }
    for (const QWidget* widget : studio->Window().findChildren<QWidget*>())
        names << widget->accessibleName();
    QFile file(QString::fromStdString(trovik::test::SourceFolder() + "/docs/studio.md"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString guide = QString::fromUtf8(file.readAll()).simplified();
    const QRegularExpression bold("\\*\\*([^*]+)\\*\\*(?: \\(`([^`]+)`\\))?");
    int found = 0;
    for (auto match = bold.globalMatch(guide); match.hasNext(); ++found) {
        const QRegularExpressionMatch one = match.next();
        const QString name = one.captured(1);
        if (name == "bold") continue;
        EXPECT_TRUE(names.contains(name)) << name.toStdString();
        if (one.captured(2).isEmpty()) continue;
        EXPECT_TRUE(studio->Actions().Keys(ids[name]).contains(QKeySequence(one.captured(2))))
            << name.toStdString() << " does not have the key " << one.captured(2).toStdString();
    }
    EXPECT_GT(found, 30);
}

TEST_F(Application, AFrameShowsTheSphere) {
    WaitForSphere();
    const QImage image = studio->Viewport().Grab();
    ASSERT_EQ(image.size(), QSize(400, 300) * studio->Viewport().devicePixelRatioF());
    const QRgb middle = image.pixel(image.width() / 2, image.height() / 2);
    const QRgb corner = image.pixel(2, image.height() / 2);
    EXPECT_GT(std::abs(qGray(middle) - qGray(corner)), 40);
}

}  // namespace

}  // namespace trovik::studio
