// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QString>
#include <nlohmann/json.hpp>

#include <vector>

namespace trovik::studio {

class Engine;

/// Runs a stroke script on the open document, or on the mesh or scene that it names, step by step.
/// Files that the script reads are searched in its folder. All fields of the script's setup are
/// applied, except that "memoryLimit" is refused, and without a mesh or scene all but "transform",
/// "mirror" and "camera". It stops at the first error, which the
/// engine reports.
///
/// Call on the UI thread only.
class ScriptPlayer : public QObject {
    Q_OBJECT
public:
    explicit ScriptPlayer(Engine& engine, QObject* parent = nullptr);

    /// Starts a script. \return an error that names the file, if it cannot be read; in that case,
    /// nothing has changed.
    QString Run(const QString& path);
    bool IsRunning() const { return isRunning; }
    /// Stops before the next step.
    void Stop();

Q_SIGNALS:
    /// \param done  number of steps that were run. \param error  empty if all steps were run.
    void Finished(int done, const QString& error);

private:
    void Next();
    void Finish(const QString& error);

    Engine& engine;
    std::vector<nlohmann::json> steps;
    std::size_t next = 0;
    bool isRunning = false;
    QMetaObject::Connection opened, failed;
};

}  // namespace trovik::studio
