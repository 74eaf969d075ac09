// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QObject>
#include <QSet>

#include <map>

namespace trovik::studio {

/// Reads the files of reference images on other threads and keeps them in memory.
///
/// Call on the UI thread only.
class ReferencePictures : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;

    /// The longer side of an image; larger files are scaled down.
    static constexpr int maxSide = 4096;

    /// Frees the images of other files, and begins to read those that are not in memory.
    void Keep(const QStringList& paths);
    /// Null while the file is being read, and if it cannot be read.
    QImage Image(const QString& path) const;
    bool IsLoading() const { return !loading.isEmpty(); }

Q_SIGNALS:
    void Loaded();

private:
    std::map<QString, QImage> images;
    QSet<QString> loading;
};

}  // namespace trovik::studio
