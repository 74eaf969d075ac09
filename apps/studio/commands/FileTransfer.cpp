// SPDX-License-Identifier: Apache-2.0

/// \file
/// Files other than scenes that FileActions reads and writes: meshes, maps, images, scripts.
#include "commands/BakeDialog.h"
#include "commands/FileActions.h"
#include "commands/FileDialogs.h"
#include "commands/ViewModel.h"
#include "framework/remesh/ReducedFiles.h"

#include <QFileInfo>
#include <QImage>
#include <QMessageBox>

namespace trovik::studio {

void FileActions::RunWithFile(const char* name,
                              nlohmann::json options,
                              const QString& path,
                              const QString& label) {
    options["file"] = path.toStdString();
    context.Run(name, std::move(options), label);
}

void FileActions::Export() {
    ExportDialog dialog(context.window);
    if (dialog.exec() != QDialog::Accepted) return;
    const QString path = AskToSave(tr("Export Mesh"),
                                   QStringLiteral("export"),
                                   dialog.Extension(),
                                   QStringLiteral("*") + dialog.Extension());
    if (path.isEmpty()) return;
    const nlohmann::json options = dialog.Options();
    // The file dialog asks only about the first file.
    for (uint32_t lod = 1; lod <= options.value("lods", 0u); ++lod) {
        const QString file = QString::fromStdString(LodPath(path.toStdString(), lod));
        if (!QFileInfo::exists(file)) continue;
        const auto answer = QMessageBox::question(
            context.window,
            tr("Export Mesh"),
            tr("The levels of detail replace existing files, such as %1. Do you want to replace "
               "them?")
                .arg(QFileInfo(file).fileName()));
        if (answer != QMessageBox::Yes) return;
        break;
    }
    RunWithFile("export", options, path, tr("Export"));
}

void FileActions::Bake() {
    BakeDialog dialog(context.engine, context.State(), context.window);
    if (dialog.exec() != QDialog::Accepted) return;
    const QString path = AskToSave(tr("Bake Map"),
                                   QStringLiteral("export"),
                                   dialog.Extension(),
                                   QStringLiteral("*") + dialog.Extension());
    if (!path.isEmpty()) RunWithFile("bake", dialog.Options(), path, tr("Bake"));
}

void FileActions::ImportDisplacement() {
    const QString path = AskToOpen(tr("Import Displacement"),
                                   QStringLiteral("displacement"),
                                   tr("Images (*.exr *.tif *.tiff *.png)"));
    if (path.isEmpty()) return;
    DisplacementDialog dialog(QFileInfo(path).fileName(), context.window);
    if (dialog.exec() != QDialog::Accepted) return;
    RunWithFile("displace", dialog.Options(), path, tr("Displace"));
}

void FileActions::Screenshot() {
    const QImage image = context.view.grab ? context.view.grab() : QImage();
    if (image.isNull()) {
        Q_EMIT Refused(tr("There is no viewport to take a screenshot of"));
        return;
    }
    const QString path = AskToSave(tr("Save Screenshot"),
                                   QStringLiteral("screenshot"),
                                   QStringLiteral(".png"),
                                   tr("PNG (*.png)"));
    if (path.isEmpty()) return;
    if (image.save(path))
        Q_EMIT Succeeded(tr("Saved %1").arg(path));
    else
        Q_EMIT Refused(tr("%1: the image could not be written").arg(path));
}

void FileActions::SaveActions() {
    const QString path = AskToSave(tr("Save Actions as Script"),
                                   QStringLiteral("script"),
                                   QStringLiteral(".json"),
                                   tr("Scripts (*.json)"));
    if (path.isEmpty()) return;
    context.engine.SaveActions(
        path.toStdString(), [this, path](const QString& error, const QString& start) {
            if (!error.isEmpty()) return;
            // Without this file, the script cannot run.
            Q_EMIT Succeeded(start.isEmpty()
                                 ? tr("Saved %1").arg(path)
                                 : tr("Saved %1. It starts from %2, a copy of the opened file")
                                       .arg(path, QFileInfo(start).fileName()));
        });
}

}  // namespace trovik::studio
