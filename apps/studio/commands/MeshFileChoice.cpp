// SPDX-License-Identifier: Apache-2.0
#include "commands/MeshFileChoice.h"

#include "commands/Preferences.h"
#include "framework/files/MeshFormat.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(MeshFileChoice)
};

}  // namespace

QString ChooseMeshFile(const ActionContext& context, const QString& title) {
    QStringList patterns;
    for (const MeshFormat& format : MeshFormats())
        if (format.read != nullptr)
            patterns << QStringLiteral("*") + QString::fromLatin1(format.extension);
    const QString purpose = QStringLiteral("open");
    QString path = QFileDialog::getOpenFileName(context.window,
                                                title,
                                                context.preferences.LastFolder(purpose),
                                                Text::tr("Meshes (%1)").arg(patterns.join(u' ')));
    if (!path.isEmpty()) context.preferences.SetLastFolder(purpose, QFileInfo(path).absolutePath());
    return path;
}

}  // namespace trovik::studio
