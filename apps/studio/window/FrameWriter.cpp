// SPDX-License-Identifier: Apache-2.0
#include "window/FrameWriter.h"

#include <QDir>
#include <QPainter>

namespace trovik::studio {

namespace {

constexpr int threads = 2;
/// Maximum number of frames in memory.
constexpr int maxWaiting = 8;
constexpr int digits = 5;

/// The frame, scaled to fit and centred in an image of this size.
QImage Fitted(const QImage& frame, const QSize& size) {
    if (frame.size() == size) return frame;
    const QImage scaled = frame.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QImage fitted(size, QImage::Format_RGB32);
    fitted.fill(Qt::black);
    QPainter(&fitted).drawImage(
        (size.width() - scaled.width()) / 2, (size.height() - scaled.height()) / 2, scaled);
    return fitted;
}

}  // namespace

FrameWriter::FrameWriter(const QString& toFolder) : folder(toFolder) {
    pool.setMaxThreadCount(threads);
    QDir().mkpath(folder);
}

FrameWriter::~FrameWriter() { pool.waitForDone(); }

void FrameWriter::Add(const QImage& frame) {
    if (waiting >= maxWaiting) pool.waitForDone();
    const QString path = QDir(folder).filePath(
        QStringLiteral("frame_%1.png").arg(++count, digits, 10, QLatin1Char('0')));
    if (size.isEmpty()) size = frame.size();
    ++waiting;
    pool.start([this, frame, path, whole = size] {
        if (!Fitted(frame, whole).save(path)) hasFailed = true;
        --waiting;
    });
}

bool FrameWriter::Finish() {
    pool.waitForDone();
    return !hasFailed;
}

}  // namespace trovik::studio
