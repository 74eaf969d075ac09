// SPDX-License-Identifier: Apache-2.0
#include "commands/FileActions.h"

#include "commands/FileDialogs.h"
#include "commands/Preferences.h"
#include "commands/ScriptPlayer.h"
#include "commands/StudioScene.h"
#include "commands/ViewModel.h"
#include "framework/files/MeshFormat.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QRegularExpression>

namespace trovik::studio {

namespace {

/// Extensions of the mesh files that can be read, without dots.
QStringList MeshExtensions() {
    QStringList extensions;
    for (const MeshFormat& format : MeshFormats())
        if (format.read != nullptr) extensions << QString::fromLatin1(format.extension).mid(1);
    return extensions;
}

constexpr const char* sceneExtension = "trovik";

}  // namespace

FileActions::FileActions(const ActionContext& given, QObject* parent)
    : QObject(parent), context(given), player(new ScriptPlayer(given.engine, this)) {
    AddDocumentActions();
    AddTransferActions();
    AddScriptActions();
    connect(&context.engine, &Engine::Saved, this, [this](const QString& path) {
        context.preferences.AddRecentFile(path);
        Q_EMIT Succeeded(tr("Saved %1").arg(path));
    });
    connect(&context.engine, &Engine::Opened, this, [this] {
        const OpenedDocument& document = context.engine.Document();
        const QString source = QString::fromStdString(document.sourcePath);
        // Primitives are not the user's own files.
        if (!document.isRecovered && !source.isEmpty() &&
            !source.startsWith(StudioFolders::Primitives()))
            context.preferences.AddRecentFile(source);
    });
    connect(player, &ScriptPlayer::Refused, this, &FileActions::Refused);
    connect(player, &ScriptPlayer::Finished, this, [this](int done, const QString& error) {
        if (error.isEmpty())
            Q_EMIT Succeeded(done == 1 ? tr("The script has finished: 1 step")
                                       : tr("The script has finished: %1 steps").arg(done));
    });
}

void FileActions::Open(const QString& path) {
    const QString extension = QFileInfo(path).suffix().toLower();
    if (extension == QLatin1String("json")) {
        player->Run(path);
        return;
    }
    OpenRequest request;
    if (extension == QLatin1String(sceneExtension))
        request.scenePath = path.toStdString();
    else if (MeshExtensions().contains(extension))
        request.meshPath = path.toStdString();
    else {
        Q_EMIT Refused(tr("%1: expected a scene (.trovik), a mesh (.%2) or a script (.json)")
                           .arg(path, MeshExtensions().join(QStringLiteral(", ."))));
        return;
    }
    WhenSaved([this, request] { context.engine.Open(request); });
}

void FileActions::OpenPrimitive(std::optional<Primitive> primitive,
                                std::uint32_t segments,
                                int levels) {
    OpenRequest request;
    request.levels = levels;
    if (primitive) {
        request.title = NameOf(*primitive);
        const std::string folder = StudioFolders::Primitives().toStdString();
        request.makeMesh = [shape = *primitive, segments, folder] {
            return WritePrimitive(shape, segments, folder);
        };
    } else {
        request.meshPath = FindShippedMesh("bust.obj");
        request.title = "bust";
        if (request.meshPath.empty()) {
            Q_EMIT Refused(tr("bust.obj is not installed"));
            return;
        }
    }
    WhenSaved([this, request] { context.engine.Open(request); });
}

bool FileActions::HasUnsavedWork() const {
    if (!context.engine.HasDocument()) return false;
    const DocumentState& state = context.State();
    return state.isModified || state.isStrokeOpen || context.engine.IsBusy() ||
           context.engine.Document().isRecovered || context.scene.IsModified();
}

void FileActions::WhenSaved(const std::function<void()>& go) {
    if (!HasUnsavedWork()) {
        go();
        return;
    }
    QMessageBox box(QMessageBox::Question,
                    tr("Unsaved Changes"),
                    tr("Save the changes to %1?").arg(Stem()),
                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel,
                    context.window);
    box.setDefaultButton(QMessageBox::Save);
    const int answer = box.exec();
    if (answer == QMessageBox::Discard) go();
    // Asks again if there were changes while the file was being written.
    if (answer == QMessageBox::Save) Save([this, go] { WhenSaved(go); });
}

QString FileActions::NextIncrement(const QString& path) {
    const QFileInfo file(path);
    static const QRegularExpression numbered(QStringLiteral("^(.*)_(\\d+)$"));
    const auto match = numbered.match(file.completeBaseName());
    const QString stem = match.hasMatch() ? match.captured(1) : file.completeBaseName();
    const int digits = match.hasMatch() ? static_cast<int>(match.captured(2).size()) : 3;
    int number = match.hasMatch() ? match.captured(2).toInt() : 0;
    QString next;
    do {
        next = file.dir().filePath(QStringLiteral("%1_%2.%3")
                                       .arg(stem)
                                       .arg(++number, digits, 10, QLatin1Char('0'))
                                       .arg(file.suffix()));
    } while (QFileInfo::exists(next));
    return next;
}

void FileActions::FillRecent(QMenu* menu) {
    const auto fill = [this, menu] {
        menu->clear();
        const QStringList files = context.preferences.RecentFiles();
        for (const QString& path : files) {
            QAction* action = menu->addAction(QFileInfo(path).fileName());
            action->setToolTip(path);
            action->setStatusTip(path);
            connect(action, &QAction::triggered, this, [this, path] { Open(path); });
        }
        menu->setEnabled(!files.isEmpty());
        if (files.isEmpty()) return;
        menu->addSeparator();
        connect(menu->addAction(tr("Clear List")), &QAction::triggered, this, [this] {
            context.preferences.ClearRecentFiles();
        });
    };
    menu->setToolTipsVisible(true);
    connect(
        &context.preferences, &Preferences::RecentFilesChanged, menu, fill, Qt::QueuedConnection);
    fill();
}

QString FileActions::Stem() const {
    if (!context.engine.HasDocument()) return tr("sculpture");
    const OpenedDocument& document = context.engine.Document();
    const std::string& scene = context.State().scenePath;
    const QString path = QString::fromStdString(!scene.empty()           ? scene
                                                : document.title.empty() ? document.sourcePath
                                                                         : document.title);
    return QFileInfo(path).completeBaseName();
}

QString FileActions::AskToOpen(const QString& title,
                               const QString& purpose,
                               const QString& filter) {
    QString path = QFileDialog::getOpenFileName(
        context.window, title, context.preferences.LastFolder(purpose), filter);
    if (!path.isEmpty()) context.preferences.SetLastFolder(purpose, QFileInfo(path).absolutePath());
    return path;
}

QString FileActions::AskToSave(const QString& title,
                               const QString& purpose,
                               const QString& extension,
                               const QString& filter) {
    const QString proposal =
        QDir(context.preferences.LastFolder(purpose)).filePath(Stem() + extension);
    QFileDialog dialog(context.window, title, QFileInfo(proposal).absolutePath(), filter);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(extension.mid(1));
    dialog.selectFile(QFileInfo(proposal).fileName());
    if (dialog.exec() != QDialog::Accepted) return {};
    QString path = dialog.selectedFiles().value(0);
    context.preferences.SetLastFolder(purpose, QFileInfo(path).absolutePath());
    return path;
}

void FileActions::AskAndOpen(bool withOptions) {
    const QString meshes = QStringLiteral("*.") + MeshExtensions().join(QStringLiteral(" *."));
    if (!withOptions) {
        const QString path =
            AskToOpen(tr("Open"),
                      QStringLiteral("open"),
                      tr("Scenes and meshes (*.trovik %1);;All files (*)").arg(meshes));
        if (!path.isEmpty()) Open(path);
        return;
    }
    const QString path =
        AskToOpen(tr("Import Mesh"), QStringLiteral("open"), tr("Meshes (%1)").arg(meshes));
    if (path.isEmpty()) return;
    ImportDialog dialog(QFileInfo(path).fileName(), context.window);
    if (dialog.exec() != QDialog::Accepted) return;
    OpenRequest request;
    request.meshPath = path.toStdString();
    request.units = dialog.Units();
    request.up = dialog.Up();
    request.levels = dialog.Levels();
    WhenSaved([this, request] { context.engine.Open(request); });
}

void FileActions::Save(const std::function<void()>& then) {
    // Recovered work has not yet been saved to one of the user's files.
    const std::string& scene = context.engine.Document().scenePath;
    if (scene.empty())
        SaveAs(then);
    else
        SaveTo(QString::fromStdString(scene), then);
}

void FileActions::SaveAs(const std::function<void()>& then) {
    const QString path = AskToSave(
        tr("Save As"), QStringLiteral("save"), QStringLiteral(".trovik"), tr("Scenes (*.trovik)"));
    if (!path.isEmpty()) SaveTo(path, then);
}

void FileActions::SaveTo(const QString& path, const std::function<void()>& then) {
    context.engine.Run({{"save", path.toStdString()}}, tr("Saving"), [then](const QString& error) {
        if (error.isEmpty() && then) then();
    });
}

void FileActions::SaveCopy() {
    const QString path = AskToSave(tr("Save a Copy"),
                                   QStringLiteral("save"),
                                   QStringLiteral(".trovik"),
                                   tr("Scenes (*.trovik)"));
    if (path.isEmpty()) return;
    context.engine.SaveCopy(path.toStdString(), [this, path](const QString& error) {
        if (error.isEmpty()) Q_EMIT Succeeded(tr("Saved a copy as %1").arg(path));
    });
}

void FileActions::SaveIncremental() {
    const std::string& scene = context.engine.Document().scenePath;
    if (scene.empty())
        SaveAs();
    else
        SaveTo(NextIncrement(QString::fromStdString(scene)));
}

}  // namespace trovik::studio
