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

/// What commands work on: the document, the files of the script, and how they report. One for each
/// CommandRunner; lives as long as it.
class TROVIK_API CommandContext {
public:
    CommandContext(Document& ofDocument, ScriptFiles& scriptFiles, ScriptProgress listener);

    Document& document;
    ScriptFiles& files;
    ScriptProgress progress;
    /// Parameters are checked, and nothing is sculpted or written.
    bool isChecking = false;
    /// While checking: whether the strokes so far leave one open.
    bool leavesStrokeOpen = false;
    /// Bytes that the levels of one command may take together.
    uint64_t subdivideBudget = std::numeric_limits<uint64_t>::max();
    /// Of the current step: reasons why it had no effect, or not the intended one.
    std::vector<std::string> warnings;
    /// Files that were written, in order.
    std::vector<std::string> written;

    bool IsStrokeOpen() const;
    /// For long operations; null: nobody receives their progress. Borrowed.
    JobControl* Job() const { return progress.job; }
    /// \throw Cancelled if the job cancels.
    void ThrowIfCancelled() const;
    /// To be called after each dab.
    std::function<void()> DabProgress() const;
    void Warn(const std::string& reason) { warnings.push_back(reason); }
    /// Warns of world points that are to lie on the surface and do not. \param name  of the list in
    /// its step. \param reach  a point within this distance of the surface is near enough.
    void WarnOfFarPoints(const std::string& name, const std::vector<Vector>& points, float reach);
    /// Passes notes about a file to `progress.message`.
    void ReportNotes(const std::string& file, const std::vector<std::string>& notes) const;

    /// The file to read that a parameter names. \param pointer  of the parameter.
    /// \throw FieldFault if there is none.
    std::string InputPath(const std::string& name, const std::string& pointer) const;
    /// The file to write that a parameter names; its folder is created unless only checking.
    /// \throw FieldFault if it must not be written.
    std::string OutputPath(const std::string& name, const std::string& pointer) const;
    /// A file is complete, or would be.
    void NoteWritten(const std::string& file);

    /// Diagonal of the box of the current level, world units.
    float Diagonal() const;
    /// Radius of a dab at a point, world units.
    float RadiusAt(const Vector& point) const;

    /// What commands of one file keep from one step to the next; created at first use.
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
