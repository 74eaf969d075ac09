// SPDX-License-Identifier: Apache-2.0
#include "commands/Preferences.h"
#include "commands/StudioActions.h"
#include "commands/StudioScene.h"
#include "commands/ViewModel.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageReader>

#include <cmath>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(ReferenceActions)
};

QString Ask(const ActionContext& context) {
    QStringList filters;
    for (const QByteArray& format : QImageReader::supportedImageFormats())
        filters << QStringLiteral("*.") + QString::fromLatin1(format);
    const QString purpose = QStringLiteral("reference");
    QString path = QFileDialog::getOpenFileName(context.window,
                                                Text::tr("Reference Image"),
                                                context.preferences.LastFolder(purpose),
                                                Text::tr("Images (%1)").arg(filters.join(u' ')));
    if (!path.isEmpty()) context.preferences.SetLastFolder(purpose, QFileInfo(path).absolutePath());
    return path;
}

bool CanRead(const ActionContext& context, const QString& path) {
    QImageReader reader(path);
    if (reader.canRead()) return true;
    context.scene.Note(Text::tr("%1: the image cannot be read").arg(path));
    return false;
}

void Replace(const ActionContext& context) {
    const QString path = Ask(context);
    std::vector<ReferenceImage> images = context.scene.References();
    const auto index = static_cast<std::size_t>(context.scene.CurrentReference());
    if (path.isEmpty() || index >= images.size() || !CanRead(context, path)) return;
    images[index].path = QFileInfo(path).absoluteFilePath();
    context.scene.SetReferences(std::move(images));
}

void Delete(const ActionContext& context) {
    std::vector<ReferenceImage> images = context.scene.References();
    images.erase(images.begin() + context.scene.CurrentReference());
    context.scene.SetReferences(std::move(images));
}

/// If the camera looks along an axis, locks an image to that direction and makes it as high as the
/// surface.
void LockToView(const ActionContext& context, ReferenceImage& image) {
    if (!context.view.pose || !context.view.bounds) return;
    const CameraPose pose = context.view.pose();
    const AxisAlignedBoundingBox box = context.view.bounds();
    image.lock = LockFor((pose.target - pose.eye).Normalized());
    const auto directions = DirectionsOf(image.lock);
    if (!directions || box.IsEmpty()) {
        image.lock = ReferenceImage::Lock::Screen;
        return;
    }
    const Vector size(box.maxX - box.minX, box.maxY - box.minY, box.maxZ - box.minZ);
    image.centre = Vector(box.minX, box.minY, box.minZ) + size * 0.5f;
    image.height = std::abs(size | directions->up);
}

}  // namespace

bool IsReferenceFile(const QString& path) {
    return QImageReader::supportedImageFormats().contains(
        QFileInfo(path).suffix().toLower().toLatin1());
}

void AddReference(const ActionContext& context, const QString& path) {
    if (!CanRead(context, path)) return;
    ReferenceImage image;
    image.path = QFileInfo(path).absoluteFilePath();
    LockToView(context, image);
    std::vector<ReferenceImage> images = context.scene.References();
    images.push_back(image);
    const int added = static_cast<int>(images.size()) - 1;
    context.scene.SetReferences(std::move(images));
    context.scene.SelectReference(added);
}

void AddReferenceActions(const ActionContext& context) {
    ActionRegistry& actions = context.actions;
    QAction* add =
        actions.Add({.id = "reference.add",
                     .text = Text::tr("Add Reference Image…"),
                     .description = Text::tr("Shows an image behind or in front of the surface."),
                     .keys = {QKeySequence("Ctrl+Shift+R")},
                     .icon = "reference-add",
                     .run = [context] {
                         const QString path = Ask(context);
                         if (!path.isEmpty()) AddReference(context, path);
                     }});
    context.EnableWithDocument(add);
    QAction* replace =
        actions.Add({.id = "reference.replace",
                     .text = Text::tr("Replace Reference Image…"),
                     .description = Text::tr("Chooses another file for the selected image."),
                     .icon = "open",
                     .run = [context] { Replace(context); }});
    QAction* remove =
        actions.Add({.id = "reference.delete",
                     .text = Text::tr("Delete Reference Image"),
                     .description = Text::tr("Removes the selected image from the scene; the file "
                                             "remains."),
                     .icon = "trash",
                     .run = [context] { Delete(context); }});
    for (QAction* action : {replace, remove})
        EnableWhen(context.scene, action, [](const StudioScene& scene) {
            return scene.CurrentReference() >= 0;
        });
}

}  // namespace trovik::studio
