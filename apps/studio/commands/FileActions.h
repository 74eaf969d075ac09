// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ActionContext.h"
#include "commands/Primitives.h"

#include <QObject>

#include <functional>
#include <optional>

class QMenu;

namespace trovik::studio {

class ScriptPlayer;

/// The actions of the File menu. The object also stores the operation to perform after a save.
///
/// Call on the UI thread only.
class FileActions : public QObject {
    Q_OBJECT
public:
    FileActions(const ActionContext& context, QObject* parent);

    /// Opens a scene, mesh or script, identified by its extension, after asking about unsaved
    /// changes. For other files, Refused is sent.
    void Open(const QString& path);
    /// Opens a primitive, or the bust if none is given, with this number of levels.
    void OpenPrimitive(std::optional<Primitive> primitive, std::uint32_t segments, int levels);
    /// Whether closing the document could lose work: changes, including unfinished ones, recovered
    /// work that has not been saved, bookmarks or reference images.
    bool HasUnsavedWork() const;
    /// Calls `go` immediately if no changes would be lost; otherwise asks whether to save first.
    /// `go` is not called if the user cancels or saving fails.
    void WhenSaved(const std::function<void()>& go);
    /// The file with the next free number: "head.trovik" gives "head_001.trovik", and
    /// "head_001.trovik" gives "head_002.trovik".
    static QString NextIncrement(const QString& path);
    /// Fills a menu with the recent files, and updates it when they change.
    void FillRecent(QMenu* menu);
    ScriptPlayer& Player() { return *player; }

Q_SIGNALS:
    /// A message to the user about an operation that was refused.
    void Refused(const QString& message);
    /// A short success message.
    void Succeeded(const QString& message);

private:
    void AddDocumentActions();
    void AddTransferActions();
    void AddScriptActions();
    void AskAndOpen(bool withOptions);
    /// \param then  called once the document has been saved; not called if the user cancels or
    /// saving fails.
    void Save(const std::function<void()>& then = {});
    void SaveAs(const std::function<void()>& then = {});
    void SaveTo(const QString& path, const std::function<void()>& then = {});
    void SaveCopy();
    void SaveIncremental();
    void Export();
    void Bake();
    /// Runs the step {name: options} with the file.
    void RunWithFile(const char* name,
                     nlohmann::json options,
                     const QString& path,
                     const QString& label);
    void ImportDisplacement();
    void SaveActions();
    void Screenshot();
    QString AskToSave(const QString& title,
                      const QString& purpose,
                      const QString& extension,
                      const QString& filter);
    QString AskToOpen(const QString& title, const QString& purpose, const QString& filter);
    /// File name of the document without folder and extension.
    QString Stem() const;

    ActionContext context;
    ScriptPlayer* player;
};

}  // namespace trovik::studio
