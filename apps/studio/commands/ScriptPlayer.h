// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/ScriptFile.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <vector>

namespace trovik::studio {

class Engine;

/// Runs a stroke script on the open document, or on the mesh or scene that it names: at once, step
/// by step, or as a time lapse that shows each dab. Files that the script reads are searched for in
/// its folder. All fields of the script's setup are applied, but a script with "memoryLimit" is
/// refused. So is a script without a mesh or scene if its setup has fields other than "transform",
/// "mirror" and "camera". The player stops at the first error, which the engine reports.
///
/// Call on the UI thread only.
class ScriptPlayer : public QObject {
    Q_OBJECT
public:
    explicit ScriptPlayer(Engine& engine, QObject* parent = nullptr);

    enum class State {
        /// No script is loaded.
        Idle,
        /// The document is being opened, or a step is running without showing its dabs.
        Running,
        /// Shows one dab after the other.
        Playing,
        /// Waits for Play, Step or Stop, also between two dabs of a stroke.
        Paused
    };

    /// Stops the current script, reads another one on the engine thread, and then runs all of its
    /// steps at once. If it cannot be read (Refused), the document does not change. A later call of
    /// Run or Load replaces a script that is being read. If another document is opened meanwhile,
    /// the script is not run (Refused); if it is opened later, the script ends (Finished).
    void Run(const QString& path);
    /// Reads a script as Run does, and opens its document; then the state is Paused before the
    /// first step.
    void Load(const QString& path);
    /// Continues as a time lapse. In the states Idle and Running, it has no effect; the same
    /// applies to Pause and Step.
    void Play();
    /// Pauses after the current dab.
    void Pause();
    /// Runs the next step, or completes the current one, and pauses.
    void Step();
    /// Completes the current step and unloads the script.
    void Stop();

    State GetState() const { return state; }
    bool IsRunning() const { return state != State::Idle; }
    int StepCount() const { return static_cast<int>(steps.size()); }
    /// Number of steps that were run.
    int Done() const { return static_cast<int>(next) - (isStepRunning ? 1 : 0); }
    /// The step that runs next or is running, in a few words; empty at the end.
    QString StepText() const;
    /// Dabs per second of the time lapse; steps without dabs count as one.
    void SetSpeed(double dabsPerSecond) { speed = dabsPerSecond; }

Q_SIGNALS:
    /// A script cannot be read or applied. \param error  names the file.
    void Refused(const QString& error);
    /// State, Done or StepText returns a new value.
    void Changed();
    /// A dab or step of the time lapse is complete; the next one follows later.
    void Shown();
    /// \param done  number of steps that were run. \param error  empty if all steps were run.
    void Finished(int done, const QString& error);

private:
    void Read(const QString& path, State first);
    void Begin(ScriptFile file, State first);
    /// Drops the script when another document is requested.
    void NoteOpen();
    void End(const QString& reason);
    void WhenOpened();
    void RunNext();
    void StepDone(const QString& error);
    void ShowDab();
    void Advance();
    void SetState(State changed);
    void Finish(const QString& error);

    Engine& engine;
    /// Once a step has begun, its JSON has been moved to the engine.
    std::vector<ScriptFile::Step> steps;
    std::size_t next = 0;
    State state = State::Idle;
    /// Whether a step has been requested and is not complete.
    bool isStepRunning = false;
    /// Whether the engine waits after a dab.
    bool isDabWaiting = false;
    /// The state after the current step; Run continues, Step pauses.
    State after = State::Idle;
    /// Counts scripts, so that results of a stopped one are ignored.
    unsigned script = 0;
    /// Counts the calls of Run and Load.
    unsigned newestRead = 0;
    /// Path of the script that is being read; empty if there is none.
    QString reading;
    /// Whether the document of the script is being requested.
    bool isOpening = false;
    double speed = 60.0;
    /// Time between two dabs.
    QTimer timer;
    QMetaObject::Connection opened, failed;
};

}  // namespace trovik::studio
