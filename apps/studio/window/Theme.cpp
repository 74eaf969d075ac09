// SPDX-License-Identifier: Apache-2.0
#include "window/Theme.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QPalette>
#include <QProxyStyle>

namespace trovik::studio {

namespace {

struct Colors {
    QColor window, panel, base, raised, edge, text, faint, accent, onAccent;
    /// Background of checked buttons, whose icons have the colour of the text.
    QColor checked;
};

const Colors dark{QColor(38, 39, 42),
                  QColor(46, 47, 51),
                  QColor(28, 29, 31),
                  QColor(62, 64, 69),
                  QColor(76, 78, 84),
                  QColor(222, 223, 226),
                  QColor(150, 152, 158),
                  QColor(70, 124, 190),
                  QColor(255, 255, 255),
                  QColor(70, 124, 190)};
const Colors light{QColor(222, 223, 226),
                   QColor(236, 237, 239),
                   QColor(252, 252, 253),
                   QColor(247, 247, 249),
                   QColor(176, 179, 186),
                   QColor(30, 32, 36),
                   QColor(98, 101, 108),
                   QColor(52, 114, 190),
                   QColor(255, 255, 255),
                   QColor(158, 194, 236)};

QPalette PaletteOf(const Colors& colors) {
    QPalette palette;
    palette.setColor(QPalette::Window, colors.panel);
    palette.setColor(QPalette::WindowText, colors.text);
    palette.setColor(QPalette::Base, colors.base);
    palette.setColor(QPalette::AlternateBase, colors.window);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::Button, colors.raised);
    palette.setColor(QPalette::ButtonText, colors.text);
    palette.setColor(QPalette::BrightText, colors.onAccent);
    palette.setColor(QPalette::Highlight, colors.accent);
    palette.setColor(QPalette::HighlightedText, colors.onAccent);
    palette.setColor(QPalette::PlaceholderText, colors.faint);
    palette.setColor(QPalette::ToolTipBase, colors.base);
    palette.setColor(QPalette::ToolTipText, colors.text);
    palette.setColor(QPalette::Link, colors.accent.lighter(120));
    palette.setColor(QPalette::Mid, colors.edge);
    palette.setColor(QPalette::Midlight, colors.raised.lighter(110));
    palette.setColor(QPalette::Light, colors.raised.lighter(120));
    palette.setColor(QPalette::Dark, colors.window.darker(130));
    palette.setColor(QPalette::Shadow, QColor(0, 0, 0, 120));
    QColor disabled = colors.faint;
    disabled.setAlphaF(0.6f);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, disabled);
    return palette;
}

/// Fusion with icons that are as large as the text.
class StudioStyle : public QProxyStyle {
public:
    explicit StudioStyle(double factor) : QProxyStyle(QStringLiteral("Fusion")), scale(factor) {}

    int pixelMetric(PixelMetric metric,
                    const QStyleOption* option,
                    const QWidget* widget) const override {
        const int value = QProxyStyle::pixelMetric(metric, option, widget);
        const bool isIcon = metric == PM_SmallIconSize || metric == PM_ButtonIconSize ||
                            metric == PM_ListViewIconSize;
        return isIcon ? qRound(value * scale) : value;
    }

private:
    double scale;
};

/// Contains only what a palette cannot express.
QString StyleSheetOf(const Colors& colors, int lineHeight) {
    return QStringLiteral(R"(
QToolTip { background: %base; color: %text; border: 1px solid %edge; padding: 4px; }
QMainWindow, QStatusBar, QMenuBar, QToolBar { background: %window; }
QMenuBar { padding: 1px 4px; }
QMenuBar::item { padding: 4px 8px; background: transparent; border-radius: 3px; }
QMenuBar::item:selected { background: %raised; }
QMainWindow::separator { background: %window; width: 4px; height: 4px; }
QToolBar { border: none; spacing: 4px; padding: 2px 4px; }
QToolBar::separator { background: %edge; width: 1px; margin: 4px 4px; }
QStatusBar { color: %faint; }
QStatusBar::item { border: none; }
QStatusBar QLabel { color: %faint; }
QDockWidget::title { background: %window; padding: 5px 8px; }
QToolButton { border: 1px solid transparent; border-radius: 3px; padding: 3px; }
QToolButton[hasText="true"] { background: %raised; border-color: %edge; }
QToolButton[hasText="true"]:hover { background: %edge; }
QToolButton[hasText="true"]:checked { background: %checked; }
QToolButton:hover { background: %raised; }
QToolButton:pressed { background: %base; }
QToolButton:checked { background: %checked; }
QToolButton#sectionHeader { background: %head; border: none; border-radius: 0; padding: 5px 6px;
    font-weight: 600; }
QToolButton#sectionHeader:checked { background: %head; }
QToolButton#sectionHeader:hover { background: %raised; }
QScrollArea { border: none; background: transparent; }
QDialogButtonBox { dialogbuttonbox-buttons-have-icons: 0; }
QCheckBox::indicator, QAbstractItemView::indicator { width: %boxpx; height: %boxpx;
    border: 1px solid %edge; border-radius: 3px; background: %base; }
QCheckBox::indicator:checked, QAbstractItemView::indicator:checked { background: %accent;
    image: url(:/studio/icons/tick.svg); }
QCheckBox::indicator:checked { border-color: %accent; }
QCheckBox::indicator:disabled { border-color: %raised; }
QLabel#hint { color: %faint; }
QLabel#panelTitle { font-weight: 600; }
QFrame#dropLine { background: %accent; border: none; }
QFrame#palette { background: %panel; border: 1px solid %edge; border-radius: 6px; }
QFrame#welcome { background: %panel; border: 1px solid %edge; border-radius: 6px; }
QFrame#message { background: %panel; border: 1px solid %edge; border-radius: 4px; }
QFrame#message[isError="true"] { border-color: #c8584e; }
QListWidget, QTreeWidget { border: 1px solid %edge; border-radius: 3px; background: %base; }
QTreeWidget::item { padding: 2px 0; }
QFrame#palette QListWidget { border: none; background: %panel; }
QScrollBar:vertical { background: transparent; width: 9px; margin: 0; }
QScrollBar::handle:vertical { background: %edge; border-radius: 4px; min-height: 24px; margin: 1px; }
QScrollBar::add-line, QScrollBar::sub-line { height: 0; width: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QProgressBar { border: 1px solid %edge; border-radius: 3px; background: %base; text-align: center; }
QProgressBar::chunk { background: %accent; border-radius: 2px; }
)")
        .replace(QLatin1String("%box"), QString::number(lineHeight - 3))
        .replace(QLatin1String("%checked"), colors.checked.name())
        .replace(QLatin1String("%window"), colors.window.name())
        .replace(QLatin1String("%panel"), colors.panel.name())
        .replace(QLatin1String("%base"), colors.base.name())
        .replace(QLatin1String("%raised"), colors.raised.name())
        .replace(QLatin1String("%head"), colors.window.name())
        .replace(QLatin1String("%edge"), colors.edge.name())
        .replace(QLatin1String("%text"), colors.text.name())
        .replace(QLatin1String("%faint"), colors.faint.name())
        .replace(QLatin1String("%accent"), colors.accent.name())
        .replace(QLatin1String("%onAccent"), colors.onAccent.name());
}

}  // namespace

void ApplyTheme(const QString& theme, double scale) {
    static const double usualSize = QApplication::font().pointSizeF();
    const Colors& colors = theme == QLatin1String("light") ? light : dark;
    QFont font = QApplication::font();
    font.setPointSizeF(usualSize * scale);
    const QString styleSheet = StyleSheetOf(colors, QFontMetrics(font).height());
    // Applying it again would update the style of every widget.
    if (qApp->styleSheet() == styleSheet && QApplication::font() == font) return;
    QApplication::setStyle(new StudioStyle(scale));
    QApplication::setFont(font);
    QApplication::setPalette(PaletteOf(colors));
    qApp->setStyleSheet(styleSheet);
}

}  // namespace trovik::studio
