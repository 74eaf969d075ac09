// SPDX-License-Identifier: Apache-2.0
#include "window/FrameWriter.h"

#include <QDir>

namespace trovik::studio {

namespace {

constexpr int threads = 2;
/// Frames in memory.
constexpr int maxWaiting = 8;
constexpr int digits = 5;

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
    ++waiting;
    pool.start([this, frame, path] {
        if (!frame.save(path)) hasFailed = true;
        --waiting;
    });
}

bool FrameWriter::Finish() {
    pool.waitForDone();
    return !hasFailed;
}

}  // namespace trovik::studio
