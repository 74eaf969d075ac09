// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "viewport/Camera.h"
#include "viewport/ReferenceImage.h"

#include <QObject>
#include <nlohmann/json.hpp>

#include <vector>

namespace trovik::studio {

class Engine;

/// A camera that the user has stored.
struct CameraBookmark {
    QString name;
    CameraPose camera;
    bool operator==(const CameraBookmark&) const = default;
};

/// A face group of the mesh, or the faces without a group.
struct FaceGroup {
    /// The name in steps; null for the faces without a group.
    nlohmann::json name;
    QString title;
    /// See DisplayGroup.
    uint8_t displayGroup = 0;
};

/// The data that the studio stores in a scene along with the sculpture: camera bookmarks and
/// reference images. Each change runs the step "applicationData", which is not an undo step, so
/// that the journal, scripts and event files contain it. A scene stores image paths relative to its
/// own folder. It also stores the path of that folder, so that the images are found from a copy of
/// the scene and from recovered work. This class also lists the face groups and stores which of
/// them is selected.
///
/// Call on the UI thread only.
class StudioScene : public QObject {
    Q_OBJECT
public:
    explicit StudioScene(Engine& engine, QObject* parent = nullptr);

    const std::vector<CameraBookmark>& Bookmarks() const { return bookmarks; }
    void SetBookmarks(std::vector<CameraBookmark> changed);
    /// Index of the bookmark that was chosen last; -1 if there is none.
    int CurrentBookmark() const { return currentBookmark; }
    /// An index out of range selects none.
    void SelectBookmark(int index);

    const std::vector<ReferenceImage>& References() const { return references; }
    void SetReferences(std::vector<ReferenceImage> changed);
    /// Shows a change that is in progress, such as the drag of a slider. Call SetReferences when it
    /// is complete.
    void PreviewReferences(std::vector<ReferenceImage> changed);
    /// Index of the selected image; -1 if there is none.
    int CurrentReference() const { return currentReference; }
    /// An index out of range selects none.
    void SelectReference(int index);

    /// Empty for a mesh without groups.
    const std::vector<FaceGroup>& Groups() const { return groups; }
    /// Index of the selected group; -1 if there is none.
    int CurrentGroup() const { return currentGroup; }
    /// An index out of range selects none.
    void SelectGroup(int index);

    /// Whether anything has changed since the document was opened or saved.
    bool IsModified() const { return isModified; }

    /// Sends Noted.
    void Note(const QString& message) { Q_EMIT Noted(message); }

    /// Name of the entry in the scene's application data.
    static constexpr const char* entryName = "trovik-studio/scene";

Q_SIGNALS:
    /// Bookmarks, images, groups or a selection have changed.
    void Changed();
    /// A note for the user, one line per problem.
    void Noted(const QString& message);

private:
    /// \param folders  the folders to which relative paths refer; the first one that contains the
    /// file is used.
    void Load(const std::string& text, QStringList folders);
    void Clear();
    /// Runs the step that stores the data. \param folder  the scene's folder; if empty, absolute
    /// paths are stored.
    void Store(const QString& folder);
    void FollowStep(const nlohmann::json& step);
    void NoteMissingFiles();
    void ListGroups();
    /// Folder of the document's scene file; empty if there is none.
    QString SceneFolder() const;

    Engine& engine;
    std::vector<CameraBookmark> bookmarks;
    std::vector<ReferenceImage> references;
    std::vector<FaceGroup> groups;
    int currentGroup = -1;
    int currentBookmark = -1;
    int currentReference = -1;
    bool isModified = false;
    /// Whether this object started the step that is running.
    bool isStoring = false;
    /// The text that was stored last.
    std::string storedText;
    /// The folder to which the stored paths are relative.
    QString storedFolder;
};

/// Enables an action or a widget while a condition on the scene's data holds.
template <typename Target, typename Condition>
void EnableWhen(const StudioScene& scene, Target* target, Condition condition) {
    const auto update = [&scene, target, condition] { target->setEnabled(condition(scene)); };
    QObject::connect(&scene, &StudioScene::Changed, target, update);
    update();
}

}  // namespace trovik::studio
