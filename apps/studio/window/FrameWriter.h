// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QThreadPool>

#include <atomic>

namespace trovik::studio {

/// Writes the frames of a film as numbered PNG files: frame_00001.png and so on. Files of the same
/// name are replaced. All frames have the size of the first one; others are scaled to fit.
///
/// Call on one thread; files are written on others.
class FrameWriter {
public:
    explicit FrameWriter(const QString& folder);
    /// Waits until all frames are written.
    ~FrameWriter();
    FrameWriter(const FrameWriter&) = delete;
    FrameWriter& operator=(const FrameWriter&) = delete;

    /// Waits if several frames are being written.
    void Add(const QImage& frame);
    int Count() const { return count; }
    /// Waits until all frames are written. \return whether all of them could be written.
    bool Finish();
    const QString& Folder() const { return folder; }

private:
    QString folder;
    QThreadPool pool;
    QSize size;
    int count = 0;
    std::atomic<int> waiting = 0;
    std::atomic<bool> hasFailed = false;
};

}  // namespace trovik::studio
