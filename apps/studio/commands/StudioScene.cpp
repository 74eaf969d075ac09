// SPDX-License-Identifier: Apache-2.0
#include "commands/StudioScene.h"

#include "engine/Engine.h"
#include "framework/display/DisplayVertex.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace trovik::studio {

namespace {

using nlohmann::json;

json ToJson(const Vector& v) { return {v.x, v.y, v.z}; }

Vector VectorOf(const json& value) {
    return {value.at(0).get<float>(), value.at(1).get<float>(), value.at(2).get<float>()};
}

json ToJson(const CameraBookmark& bookmark) {
    return {{"name", bookmark.name.toStdString()},
            {"eye", ToJson(bookmark.camera.eye)},
            {"target", ToJson(bookmark.camera.target)},
            {"up", ToJson(bookmark.camera.up)},
            {"fieldOfView", bookmark.camera.fieldOfView},
            {"orthographic", bookmark.camera.isOrthographic}};
}

CameraBookmark BookmarkOf(const json& value) {
    return {QString::fromStdString(value.at("name").get<std::string>()),
            {VectorOf(value.at("eye")),
             VectorOf(value.at("target")),
             VectorOf(value.at("up")),
             value.at("fieldOfView").get<float>(),
             value.at("orthographic").get<bool>()}};
}

json ToJson(const ReferenceImage& image, const QString& folder) {
    const QString path = folder.isEmpty() ? image.path : QDir(folder).relativeFilePath(image.path);
    return {{"file", path.toStdString()},
            {"lock", referenceLockNames[static_cast<std::size_t>(image.lock)]},
            {"centre", ToJson(image.centre)},
            {"height", image.height},
            {"opacity", image.opacity},
            {"inFront", image.isInFront},
            {"visible", image.isVisible}};
}

/// The path of an image in the first folder that contains it, or else in the first folder. An
/// absolute path remains as it is.
QString PathIn(const QStringList& folders, const QString& file) {
    QStringList paths;
    for (const QString& folder : folders) paths << QDir::cleanPath(QDir(folder).filePath(file));
    for (const QString& path : paths)
        if (QFileInfo::exists(path)) return path;
    return paths.value(0, file);
}

ReferenceImage ReferenceOf(const json& value, const QStringList& folders) {
    ReferenceImage image;
    image.path = PathIn(folders, QString::fromStdString(value.at("file").get<std::string>()));
    const auto lock = value.at("lock").get<std::string>();
    const auto* const found =
        std::find(std::begin(referenceLockNames), std::end(referenceLockNames), lock);
    if (found != std::end(referenceLockNames))
        image.lock = static_cast<ReferenceImage::Lock>(found - std::begin(referenceLockNames));
    image.centre = VectorOf(value.at("centre"));
    image.height = value.at("height").get<float>();
    image.opacity = value.at("opacity").get<float>();
    image.isInFront = value.at("inFront").get<bool>();
    image.isVisible = value.at("visible").get<bool>();
    return image;
}

QStringList Listed(const QString& folder) {
    return folder.isEmpty() ? QStringList() : QStringList(folder);
}

/// The folders to which the paths in a document refer.
QStringList FoldersOf(const OpenedDocument& document) {
    // Recovery writes the scene into the folder of the journals.
    if (document.isRecovered) return Listed(QString::fromStdString(document.workFolder));
    return {QFileInfo(QString::fromStdString(document.sourcePath)).absolutePath()};
}

int Selected(int index, std::size_t count) {
    return index >= 0 && static_cast<std::size_t>(index) < count ? index : -1;
}

}  // namespace

StudioScene::StudioScene(Engine& ofEngine, QObject* parent) : QObject(parent), engine(ofEngine) {
    connect(&engine, &Engine::Opened, this, [this] {
        Clear();
        const OpenedDocument& document = engine.Document();
        const auto stored = document.applicationData.find(entryName);
        if (stored != document.applicationData.end())
            Load(std::string(stored->second.begin(), stored->second.end()), FoldersOf(document));
        // A journal that starts from the recovered scene does not contain the folder.
        if (document.isRecovered && !references.empty()) Store({});
        ListGroups();
        Q_EMIT Changed();
        NoteMissingFiles();
    });
    connect(&engine, &Engine::Saved, this, [this] { isModified = false; });
    connect(&engine, &Engine::StepRequested, this, &StudioScene::FollowStep);
}

void StudioScene::Clear() {
    bookmarks.clear();
    references.clear();
    currentBookmark = currentReference = -1;
    isModified = false;
    storedFolder.clear();
    storedText.clear();
}

void StudioScene::Load(const std::string& text, QStringList folders) {
    try {
        const json data = json::parse(text);
        const QString folder = QString::fromStdString(data.value("folder", std::string()));
        if (!folder.isEmpty()) folders << folder;
        std::vector<CameraBookmark> readBookmarks;
        std::vector<ReferenceImage> readReferences;
        for (const json& one : data.at("bookmarks")) readBookmarks.push_back(BookmarkOf(one));
        for (const json& one : data.at("references"))
            readReferences.push_back(ReferenceOf(one, folders));
        bookmarks = std::move(readBookmarks);
        references = std::move(readReferences);
        storedFolder = folder;
        storedText = text;
    } catch (const json::exception&) {
        Q_EMIT Noted(tr("The bookmarks and reference images of the scene cannot be read"));
    }
}

void StudioScene::Store(const QString& folder) {
    json data = {{"version", 1}, {"bookmarks", json::array()}, {"references", json::array()}};
    for (const CameraBookmark& one : bookmarks) data["bookmarks"].push_back(ToJson(one));
    for (const ReferenceImage& one : references) data["references"].push_back(ToJson(one, folder));
    if (!references.empty() && !folder.isEmpty()) data["folder"] = folder.toStdString();
    std::string text = data.dump();
    if (text == storedText) return;
    storedText = std::move(text);
    storedFolder = folder;
    isModified = true;
    isStoring = true;
    engine.Run({{"applicationData", {{"name", entryName}, {"text", storedText}}}});
    isStoring = false;
}

void StudioScene::FollowStep(const json& step) {
    if (isStoring) return;
    const auto saved = step.find("save");
    if (saved != step.end() && saved->is_string()) {
        // Runs before the scene is written, because paths are relative to its folder.
        const QString folder =
            QFileInfo(QString::fromStdString(saved->get<std::string>())).absolutePath();
        if (!references.empty() && folder != storedFolder) Store(folder);
        return;
    }
    const auto stored = step.find("applicationData");
    if (stored == step.end() || !stored->is_object()) return;
    // The data comes from a script or an event file.
    const auto name = stored->find("name");
    const auto text = stored->find("text");
    if (name == stored->end() || *name != json(entryName)) return;
    if (text != stored->end() && text->is_string())
        Load(text->get<std::string>(), Listed(SceneFolder()));
    else
        Clear();
    isModified = true;
    Q_EMIT Changed();
    NoteMissingFiles();
}

void StudioScene::NoteMissingFiles() {
    QStringList missing;
    for (const ReferenceImage& image : references)
        if (!QFileInfo::exists(image.path)) missing << image.path;
    if (!missing.isEmpty())
        Q_EMIT Noted(tr("Reference images not found: %1").arg(missing.join(QStringLiteral(", "))));
}

QString StudioScene::SceneFolder() const {
    const std::string& scene = engine.HasDocument() ? engine.Document().scenePath : std::string();
    return scene.empty() ? QString() : QFileInfo(QString::fromStdString(scene)).absolutePath();
}

void StudioScene::ListGroups() {
    groups.clear();
    currentGroup = -1;
    const OpenedDocument& document = engine.Document();
    for (const std::string& name : document.groups)
        groups.push_back({name,
                          QString::fromStdString(name),
                          DisplayGroup(static_cast<uint32_t>(groups.size()))});
    if (!groups.empty() && document.hasUngroupedFaces)
        groups.push_back({nullptr, tr("Faces without a group"), 0});
}

void StudioScene::SelectGroup(int index) {
    currentGroup = Selected(index, groups.size());
    Q_EMIT Changed();
}

void StudioScene::SetBookmarks(std::vector<CameraBookmark> changed) {
    bookmarks = std::move(changed);
    currentBookmark = Selected(currentBookmark, bookmarks.size());
    Store(SceneFolder());
    Q_EMIT Changed();
}

void StudioScene::SelectBookmark(int index) {
    currentBookmark = Selected(index, bookmarks.size());
    Q_EMIT Changed();
}

void StudioScene::SetReferences(std::vector<ReferenceImage> changed) {
    PreviewReferences(std::move(changed));
    Store(SceneFolder());
}

void StudioScene::PreviewReferences(std::vector<ReferenceImage> changed) {
    if (changed == references) return;
    references = std::move(changed);
    currentReference = Selected(currentReference, references.size());
    Q_EMIT Changed();
}

void StudioScene::SelectReference(int index) {
    currentReference = Selected(index, references.size());
    Q_EMIT Changed();
}

}  // namespace trovik::studio
