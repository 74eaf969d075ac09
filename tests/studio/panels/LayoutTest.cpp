// SPDX-License-Identifier: Apache-2.0

/// \file
/// Tests the layout of the whole window with each panel, in both themes. ctest runs this program at
/// one and two device pixels per logical pixel.
#include "commands/StudioScene.h"
#include "panels/ValueSlider.h"
#include "tests/studio/panels/StudioWindow.h"
#include "window/PanelStack.h"
#include "window/Theme.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QDockWidget>
#include <QKeyEvent>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <map>

namespace trovik::studio {

namespace {

/// The name of a label or button for messages: its class, text and the panels around it.
std::string NameOf(const QWidget& widget) {
    QString text;
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) text = label->text();
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) text = button->text();
    QString path = QString::fromLatin1(widget.metaObject()->className());
    for (const QWidget* parent = widget.parentWidget(); parent != nullptr;
         parent = parent->parentWidget())
        if (!parent->accessibleName().isEmpty()) path.prepend(parent->accessibleName() + " / ");
    return (path + " \"" + text + '"').toStdString();
}

void ExpectNoClippedText(const QLabel& label) {
    if (label.text().isEmpty() || !label.pixmap().isNull()) return;
    if (label.wordWrap()) {
        EXPECT_LE(label.heightForWidth(label.width()), label.height() + 1) << NameOf(label);
        return;
    }
    EXPECT_LE(label.minimumSizeHint().width(), label.width() + 1) << NameOf(label);
    EXPECT_LE(label.sizeHint().width(), label.width() + 1) << NameOf(label);
    EXPECT_LE(label.fontMetrics().height(), label.height() + 1) << NameOf(label);
}

void ExpectNoClippedText(const QToolButton& button) {
    // Qt's own buttons, such as the extension of a tool bar, have no text.
    if (button.objectName().startsWith("qt_") || button.width() == 0) return;
    EXPECT_LE(button.iconSize().width(), button.width()) << NameOf(button);
    EXPECT_LE(button.iconSize().height(), button.height()) << NameOf(button);
    if (button.toolButtonStyle() == Qt::ToolButtonIconOnly || button.text().isEmpty()) return;
    EXPECT_LE(button.sizeHint().width(), button.width() + 1) << NameOf(button);
    EXPECT_LE(button.fontMetrics().height(), button.height() + 1) << NameOf(button);
}

/// Checks that the widgets around a widget do not cut it off at the sides. Panels scroll only
/// vertically.
void ExpectInsideOfParents(const QWidget& widget) {
    for (const QWidget* outer = widget.parentWidget(); outer != nullptr;
         outer = outer->parentWidget()) {
        const int left = widget.mapTo(outer, QPoint()).x();
        EXPECT_GE(left, 0) << NameOf(widget);
        EXPECT_LE(left + widget.width(), outer->width()) << NameOf(widget);
        if (outer->isWindow()) break;
    }
}

class Layout : public StudioWindow {
protected:
    void ShowLayers() {
        OpenSphere(2);
        engine.Run({{"layer", {{"add", "Wrinkles of the forehead"}}}});
        engine.Run({{"layer", {{"add", "Pores"}}}});
        engine.Run({{"mask", "invert"}});
        ReferenceImage image;
        image.path = folder.filePath("a front view with a long name.png");
        window->Scene().SetReferences({image, image});
        window->Scene().SelectReference(0);
        Finish();
    }

    void CheckTexts() {
        int labels = 0;
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            if (!widget->isVisible() || viewport->isAncestorOf(widget)) continue;
            const auto* label = qobject_cast<QLabel*>(widget);
            const auto* button = qobject_cast<QToolButton*>(widget);
            if (label != nullptr) ExpectNoClippedText(*label);
            if (button != nullptr) ExpectNoClippedText(*button);
            if (label == nullptr && button == nullptr) continue;
            ++labels;
            ExpectInsideOfParents(*widget);
        }
        EXPECT_GT(labels, 40);
    }

    /// Checks that an image of the window is not empty: outside the viewport, no single colour
    /// covers nearly all of it.
    void CheckPicture() {
        const QImage image = window->grab().toImage();
        ASSERT_EQ(image.size(), window->size() * window->devicePixelRatioF());
        std::map<QRgb, int> pixels;
        int total = 0;
        const QRect middle(viewport->mapTo(window.get(), QPoint()) * window->devicePixelRatioF(),
                           viewport->size() * window->devicePixelRatioF());
        for (int y = 0; y < image.height(); y += 2) {
            for (int x = 0; x < image.width(); x += 2) {
                if (middle.contains(x, y)) continue;
                ++pixels[image.pixel(x, y)];
                ++total;
            }
        }
        ASSERT_GT(total, 0);
        EXPECT_GT(pixels.size(), 60u);
        for (const auto& [color, count] : pixels) EXPECT_LT(count, total * 9 / 10) << color;
    }
};

TEST_F(Layout, NoTextIsClippedInAnyPanelAndTheme) {
    ShowLayers();
    for (const char* theme : {"dark", "light"}) {
        ApplyTheme(QString::fromLatin1(theme), 1.0);
        for (const QString& panel : window->Panels().Ids()) {
            SCOPED_TRACE(panel.toStdString() + ", " + theme);
            window->Panels().Show(panel);
            FinishLayout();
            CheckTexts();
        }
        CheckPicture();
    }
    ApplyTheme(QStringLiteral("dark"), 1.0);
}

TEST_F(Layout, TheThemesDifferInBrightness) {
    const auto brightness = [this](const char* theme) {
        ApplyTheme(QString::fromLatin1(theme), 1.0);
        FinishLayout();
        const QImage small = window->Panels().grab().toImage().scaled(
            1, 1, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        return qGray(small.pixel(0, 0));
    };
    const int dark = brightness("dark");
    EXPECT_GT(brightness("light"), dark + 80);
    ApplyTheme(QStringLiteral("dark"), 1.0);
}

TEST_F(Layout, SettingTheCurrentThemeAgainUpdatesNoWidget) {
    class StyleChanges : public QObject {
    public:
        int count = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            if (event->type() == QEvent::StyleChange) ++count;
            return false;
        }
    };
    ApplyTheme(QStringLiteral("dark"), 1.0);
    StyleChanges changes;
    window->installEventFilter(&changes);
    ApplyTheme(QStringLiteral("dark"), 1.0);
    EXPECT_EQ(changes.count, 0);
    ApplyTheme(QStringLiteral("light"), 1.0);
    EXPECT_GT(changes.count, 0);
    ApplyTheme(QStringLiteral("dark"), 1.0);
}

/// Clicks into a panel: on its background, on every slider and on every list.
void ClickInto(QWidget& panel) {
    QTest::mouseClick(&panel, Qt::LeftButton, {}, panel.rect().bottomRight() - QPoint(3, 3));
    for (QWidget* widget : panel.findChildren<QWidget*>()) {
        if (!widget->isVisible() || !widget->isEnabled()) continue;
        if (auto* list = qobject_cast<QAbstractItemView*>(widget))
            QTest::mouseClick(list->viewport(), Qt::LeftButton);
        else if (qobject_cast<ValueSlider*>(widget) != nullptr ||
                 qobject_cast<QLabel*>(widget) != nullptr)
            QTest::mouseClick(widget, Qt::LeftButton);
    }
}

class KeyCounter : public QObject {
public:
    std::map<int, int> presses;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::KeyPress) ++presses[static_cast<QKeyEvent*>(event)->key()];
        return false;
    }
};

TEST_F(Layout, EveryLetterReachesTheViewportAfterAClickIntoEachPanel) {
    ShowLayers();
    ASSERT_TRUE(WaitFor([this] { return QApplication::focusWidget() == viewport; }));
    KeyCounter counter;
    viewport->installEventFilter(&counter);
    std::vector<QWidget*> panels{&window->Panels()};
    for (QDockWidget* dock : window->findChildren<QDockWidget*>())
        if (!dock->isAncestorOf(&window->Panels())) panels.push_back(dock->widget());
    QStringList ids = window->Panels().Ids();
    ASSERT_GT(ids.size(), 5);
    for (const QString& id : ids) {
        window->Panels().Show(id);
        FinishLayout();
        for (QWidget* panel : panels) {
            SCOPED_TRACE(id.toStdString() + ", " + panel->metaObject()->className());
            ClickInto(*panel);
            // The pointer returns to the viewport.
            QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
            QApplication::sendEvent(viewport, &enter);
            ASSERT_EQ(QApplication::focusWidget(), viewport);
            for (int key = Qt::Key_A; key <= Qt::Key_Z; ++key) {
                const QString owner = actions.Owner(QKeySequence(key));
                QAction* action = actions.Find(owner);
                QSignalSpy triggered(&actions, &ActionRegistry::Triggered);
                const int before = counter.presses[key];
                QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key));
                if (action != nullptr) {
                    EXPECT_EQ(triggered.count(), action->isEnabled() ? 1 : 0)
                        << QKeySequence(key).toString().toStdString() << " " << owner.toStdString();
                } else {
                    EXPECT_EQ(counter.presses[key], before + 1)
                        << QKeySequence(key).toString().toStdString();
                }
            }
            Finish();
        }
    }
}

}  // namespace

}  // namespace trovik::studio
