// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/script/ScriptFiles.h"
#include "framework/script/ScriptProgress.h"

#include <any>
#include <limits>
#include <string>
#include <typeindex>
#include <unordered_map>
#include <vector>

namespace trovik {

/// The environment in which commands run: the document, the script's files, and progress reporting.
/// Each CommandRunner owns one.
class TROVIK_API CommandContext {
public:
    CommandContext(Document& ofDocument, ScriptFiles& scriptFiles, ScriptProgress listener);

    Document& document;
    ScriptFiles& files;
    ScriptProgress progress;
    /// Whether parameters are only checked, without sculpting or writing files.
    bool isChecking = false;
    /// During a check: whether a stroke would be open after the steps checked so far.
    bool leavesStrokeOpen = false;
    /// Memory limit, in bytes, for all levels that one command creates.
    uint64_t subdivideBudget = std::numeric_limits<uint64_t>::max();
    /// Reasons why the current step had no effect, or not the intended one.
    std::vector<std::string> warnings;
    /// Files written, in order.
    std::vector<std::string> written;

    bool IsStrokeOpen() const;
    /// The job of long operations; may be null. Borrowed.
    JobControl* Job() const { return progress.job; }
    /// \throw Cancelled if the job has been cancelled.
    void ThrowIfCancelled() const;
    /// Returns the function to call after each dab.
    std::function<void()> DabProgress() const;
    void Warn(const std::string& reason) { warnings.push_back(reason); }
    /// Adds a warning for world-space points that should lie on the surface but do not.
    /// \param name  the list's field name in its step.
    /// \param reach  distance within which a point counts as on the surface.
    void WarnOfFarPoints(const std::string& name, const std::vector<Vector>& points, float reach);
    /// Passes notes about a file to `progress.message`.
    void ReportNotes(const std::string& file, const std::vector<std::string>& notes) const;

    /// Resolves a parameter that names a file to read.
    /// \param pointer  JSON pointer of the parameter.
    /// \throw FieldFault if the file does not exist.
    std::string InputPath(const std::string& name, const std::string& pointer) const;
    /// Resolves a parameter that names a file to write, and creates the file's folder unless
    /// `isChecking` is set.
    /// \throw FieldFault if the file must not be written.
    std::string OutputPath(const std::string& name, const std::string& pointer) const;
    /// Records that a file has been written or, when checking, would be written.
    void NoteWritten(const std::string& file);

    /// Diagonal of the current level's bounding box, in world units.
    float Diagonal() const;
    /// Radius of a dab at a point, in world units.
    float RadiusAt(const Vector& point) const;

    /// State that the commands of one source file share across steps; created at first use.
    template <typename T>
    T& Kept() {
        std::any& slot = kept[std::type_index(typeid(T))];
        if (!slot.has_value()) slot.emplace<T>();
        return std::any_cast<T&>(slot);
    }

private:
    std::unordered_map<std::type_index, std::any> kept;
};

}  // namespace trovik
