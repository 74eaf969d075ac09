// SPDX-License-Identifier: Apache-2.0

/// \file The files from which a journal starts, initially and after saves and snapshots.
#include "framework/errors/HostError.h"
#include "framework/nodes/PreferenceFile.h"
#include "framework/script/JournalRecorder.h"

#include <filesystem>
#include <utility>

namespace trovik {

namespace {

namespace fs = std::filesystem;

/// Setup fields that the steps depend on and that a scene does not contain.
constexpr const char* setupNotInScene[] = {
    "preferences", "testMode", "memoryLimit", "undoBudget", "renderers"};

/// All current preferences, because they may have changed by the time the work is replayed.
nlohmann::json PresentPreferences() {
    nlohmann::json values = nlohmann::json::object();
    for (const std::string& key : PreferenceKeys()) {
        const std::string text = FindPreference(key)->AsString().toStdString();
        const nlohmann::json value = nlohmann::json::parse(text, nullptr, false);
        if (value.is_boolean() || value.is_number()) values[key] = value;
    }
    return values;
}

std::string ProgramName() { return std::string("trovik ") + TROVIK_VERSION; }

}  // namespace

std::string JournalRecorder::Absolute(const std::string& path) {
    std::error_code failed;
    const fs::path absolute = fs::absolute(path, failed);
    return failed ? path : absolute.lexically_normal().string();
}

JournalBase JournalRecorder::MakeBase(Document& document,
                                      const nlohmann::json& setup,
                                      const std::string& script,
                                      const ScriptFiles& files,
                                      JobControl* job) {
    JournalBase base;
    base.output = Absolute(files.OutputFolder());
    base.outsideAllowed = files.IsOutsideAllowed();
    base.program = ProgramName();
    base.script = Absolute(script);
    base.source = Absolute(document.MeshPath());
    base.content = HashFile(base.source, job);
    base.setup = setup;
    base.setup.erase("steps");
    base.setup[setup.contains("scene") ? "scene" : "mesh"] = base.source;
    base.setup["preferences"] = PresentPreferences();
    return base;
}

JournalBase JournalRecorder::BaseFrom(const JournalFile& scene) {
    nlohmann::json reduced = nlohmann::json::object();
    for (const char* field : setupNotInScene)
        if (setup.contains(field)) reduced[field] = setup.at(field);
    reduced["scene"] = scene.path;
    reduced["preferences"] = PresentPreferences();
    setup = reduced;
    source = scene.path;
    return {Absolute(script),
            setup,
            scene.path,
            scene.content,
            ProgramName(),
            {},
            Absolute(files.OutputFolder()),
            files.IsOutsideAllowed()};
}

void JournalRecorder::ForgetPreviousJournal() {
    recordedFiles.clear();
    if (journal.IsAlive() && !keptSource.empty()) {
        std::error_code ignored;
        fs::remove(std::exchange(keptSource, {}), ignored);
    }
    MarkHistory();
}

void JournalRecorder::OnSceneWritten(const std::string& scenePath,
                                     const std::string& temporaryPath,
                                     JobControl* job) {
    if (!journal.IsAlive()) return;
    saved = {Absolute(scenePath), HashFile(temporaryPath, job)};
    if (journal.IsInteractive()) KeepSource(saved.path);
    journal.Saved(saved);
}

void JournalRecorder::KeepSource(const std::string& scenePath) {
    losesSource = false;
    std::error_code failed;
    const std::string kept = KeptSourceOf(journal.Path(), source);
    if (!keptSource.empty() || !fs::equivalent(scenePath, source, failed)) return;
    const fs::path original = fs::canonical(source, failed);
    fs::create_hard_link(original, kept, failed);
    // The journal can be on another file system.
    if (failed) fs::copy_file(original, kept, failed);
    losesSource = static_cast<bool>(failed);
    if (!losesSource) keptSource = kept;
}

// No matter when the process ends, everything can be restored from the files on disk: from the old
// scene and the old journal, or from the new scene and either journal.
void JournalRecorder::OnSaved(const std::string&) {
    if (!journal.IsAlive()) return;
    if (journal.IsInteractive() && !losesSource) return;
    journal.RestartFrom(BaseFrom(saved));
    ForgetPreviousJournal();
    if (snapshot.empty() || !journal.IsAlive()) return;
    std::error_code ignored;
    fs::remove(snapshot, ignored);
    snapshot.clear();
}

void JournalRecorder::EndStepBySnapshot(const StepEnd& end, const std::string& label) {
    const std::string before = snapshot;
    JournalFile scene;
    try {
        if (journal.IsAlive()) scene = WriteSnapshot(nullptr);
    } catch (const HostError& error) {
        journal.GiveUp(error.what());
    }
    journal.EndStepAndRestart(end, label, BaseFrom(scene));
    ForgetPreviousJournal();
    RemoveOlderSnapshot(before);
}

JournalFile JournalRecorder::WriteSnapshot(JobControl* job) {
    JournalFile scene{Absolute(journal.Path() + "." + std::to_string(++snapshots) + ".trovik"), {}};
    document.WriteScene(scene.path, SceneStream(), {}, job);
    scene.content = HashFile(scene.path, job);
    snapshot = scene.path;
    return scene;
}

void JournalRecorder::RemoveOlderSnapshot(const std::string& before) {
    if (before.empty() || before == snapshot || !journal.IsAlive()) return;
    std::error_code ignored;
    fs::remove(before, ignored);
}

void JournalRecorder::Resume(JobControl* job) {
    if (journal.IsAlive()) return;
    const std::string before = snapshot;
    const nlohmann::json setupBefore = setup;
    const std::string sourceBefore = source;
    try {
        if (!journal.Resume(BaseFrom(WriteSnapshot(job))))
            throw HostError(journal.Path() + ": the journal cannot be written");
    } catch (...) {
        std::error_code ignored;
        if (snapshot != before) fs::remove(snapshot, ignored);
        snapshot = before;
        setup = setupBefore;
        source = sourceBefore;
        throw;
    }
    ForgetPreviousJournal();
    RemoveOlderSnapshot(before);
}

}  // namespace trovik
