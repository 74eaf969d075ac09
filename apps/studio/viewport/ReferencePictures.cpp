// SPDX-License-Identifier: Apache-2.0
#include "viewport/ReferencePictures.h"

#include <QCoreApplication>
#include <QImageReader>
#include <QPointer>
#include <QThreadPool>

namespace trovik::studio {

namespace {

QImage Read(const QString& path) {
    QImageReader reader(path);
    reader.setAutoTransform(true);
    QImage image = reader.read();
    if (image.isNull()) return image;
    constexpr int side = ReferencePictures::maxSide;
    if (image.width() > side || image.height() > side)
        image = image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image.convertToFormat(QImage::Format_RGBA8888);
}

}  // namespace

void ReferencePictures::Keep(const QStringList& paths) {
    for (auto it = images.begin(); it != images.end();)
        it = paths.contains(it->first) ? std::next(it) : images.erase(it);
    for (const QString& path : paths) {
        if (images.count(path) != 0 || loading.contains(path)) continue;
        loading.insert(path);
        QThreadPool::globalInstance()->start([self = QPointer(this), path] {
            const QImage image = Read(path);
            QMetaObject::invokeMethod(
                qApp,
                [self, path, image] {
                    if (self.isNull()) return;
                    self->loading.remove(path);
                    self->images[path] = image;
                    Q_EMIT self->Loaded();
                },
                Qt::QueuedConnection);
        });
    }
}

QImage ReferencePictures::Image(const QString& path) const {
    const auto found = images.find(path);
    return found == images.end() ? QImage() : found->second;
}

}  // namespace trovik::studio
