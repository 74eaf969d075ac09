// SPDX-License-Identifier: Apache-2.0
#include "input/TabletTester.h"

#include "input/PointerRouter.h"

#include <QClipboard>
#include <QCursor>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointingDevice>
#include <QPushButton>
#include <QTabletEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace trovik::studio {

namespace {

/// Number of log lines that are kept.
constexpr int maxLogLines = 500;
/// If pen and cursor are farther apart than this, strokes appear next to the pen tip.
constexpr double maxOffset = 20.0;

QString Kind(const QTabletEvent& event) {
    switch (event.type()) {
        case QEvent::TabletPress:
            return QStringLiteral("press");
        case QEvent::TabletRelease:
            return QStringLiteral("release");
        default:
            return QStringLiteral("move");
    }
}

}  // namespace

TabletTester::TabletTester(const PointerRouter& viewportRouter, QWidget* parent) : QDialog(parent) {
    setWindowTitle(tr("Tablet Tester"));
    resize(620, 560);
    auto* layout = new QVBoxLayout(this);
    auto* area = new QLabel(tr("Draw here with the pen, or on the viewport."), this);
    area->setAlignment(Qt::AlignCenter);
    area->setMinimumHeight(180);
    area->setFrameShape(QFrame::StyledPanel);
    area->setAccessibleName(tr("Test area"));
    area->setToolTip(tr("Pen and mouse events over this area are listed below"));
    layout->addWidget(area, 1);
    figures = new QLabel(this);
    figures->setTextInteractionFlags(Qt::TextSelectableByMouse);
    figures->setAccessibleName(tr("Measurements"));
    layout->addWidget(figures);
    log = new QPlainTextEdit(this);
    log->setReadOnly(true);
    log->setMaximumBlockCount(maxLogLines);
    log->setAccessibleName(tr("Events"));
    log->setToolTip(tr("All tablet events as received"));
    layout->addWidget(log, 1);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    QPushButton* copy = buttons->addButton(tr("Copy Report"), QDialogButtonBox::ActionRole);
    copy->setToolTip(tr("Copies the measurements and events to the clipboard"));
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(copy, &QPushButton::clicked, this, [this] {
        QGuiApplication::clipboard()->setText(Report());
    });

    auto* router = new PointerRouter(area);
    for (const PointerRouter* source :
         {static_cast<const PointerRouter*>(router), &viewportRouter}) {
        connect(source, &PointerRouter::TabletArrived, this, [this](const QTabletEvent* event) {
            Note(*event);
        });
        connect(source, &PointerRouter::Pointer, this, [this](const PointerEvent& event) {
            Note(event);
        });
    }
    Show();
}

void TabletTester::Note(const QTabletEvent& event) {
    ++tabletEvents;
    const QPointingDevice* from = event.pointingDevice();
    device = from == nullptr ? tr("unknown") : from->name();
    if (event.type() == QEvent::TabletPress) {
        const QPointF distance = event.globalPosition() - QPointF(QCursor::pos());
        offset = std::hypot(distance.x(), distance.y());
    }
    hasTilt = hasTilt || event.xTilt() != 0 || event.yTilt() != 0;
    hasRotation = hasRotation || event.rotation() != 0;
    log->appendPlainText(
        QStringLiteral("%1 t=%2 x=%3 y=%4 pressure=%5 tilt=%6,%7 rotation=%8 buttons=%9")
            .arg(Kind(event))
            .arg(event.timestamp())
            .arg(event.position().x(), 0, 'f', 2)
            .arg(event.position().y(), 0, 'f', 2)
            .arg(event.pressure(), 0, 'f', 4)
            .arg(event.xTilt())
            .arg(event.yTilt())
            .arg(event.rotation())
            .arg(static_cast<uint>(event.buttons())));
}

void TabletTester::Note(const PointerEvent& event) {
    if (event.device == PointerEvent::Device::Mouse) ++mouseEvents;
    if (event.kind == PointerEvent::Kind::Press) samples.clear();
    if (event.buttons != Qt::NoButton || event.kind == PointerEvent::Kind::Release) {
        samples.push_back({event.milliseconds, event.pressure});
        minPressure = std::min(minPressure, static_cast<double>(event.pressure));
        maxPressure = std::max(maxPressure, static_cast<double>(event.pressure));
    }
    Show();
}

void TabletTester::Show() {
    QStringList lines;
    lines.append(tr("Device: %1").arg(device.isEmpty() ? tr("no tablet events yet") : device));
    lines.append(tr("Events: %1 from tablets, %2 from mice").arg(tabletEvents).arg(mouseEvents));
    if (samples.size() >= 2) {
        const double duration = samples.back().milliseconds - samples.front().milliseconds;
        const auto steps = static_cast<double>(samples.size() - 1);
        const double mean = duration / steps;
        double squares = 0.0;
        for (std::size_t i = 1; i < samples.size(); ++i) {
            const double step = samples[i].milliseconds - samples[i - 1].milliseconds - mean;
            squares += step * step;
        }
        lines.append(tr("Last stroke: %1 samples, %2 per second, jitter %3 ms")
                         .arg(samples.size())
                         .arg(duration > 0.0 ? 1000.0 / mean : 0.0, 0, 'f', 0)
                         .arg(std::sqrt(squares / steps), 0, 'f', 1));
        lines.append(tr("Pressure: %1 to %2; tilt: %3; rotation: %4")
                         .arg(minPressure, 0, 'f', 3)
                         .arg(maxPressure, 0, 'f', 3)
                         .arg(hasTilt ? tr("yes") : tr("no"))
                         .arg(hasRotation ? tr("yes") : tr("no")));
    }
    if (offset > maxOffset)
        lines.append(tr("Pen and cursor are %1 pixels apart: set \"Pen position\" to the cursor in "
                        "the preferences.")
                         .arg(offset, 0, 'f', 0));
    figures->setText(lines.join(u'\n'));
}

QString TabletTester::Report() const {
    return QStringLiteral("trovik-studio %1, Qt %2, platform %3\n%4\n%5")
        .arg(QGuiApplication::applicationVersion(),
             QString::fromLatin1(qVersion()),
             QGuiApplication::platformName(),
             figures->text(),
             log->toPlainText());
}

}  // namespace trovik::studio
