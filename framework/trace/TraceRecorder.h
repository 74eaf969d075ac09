// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/multires/LevelGeometry.h"
#include "framework/strokes/StrokeObserver.h"
#include "framework/trace/HostChanges.h"
#include "framework/trace/JsonFields.h"
#include "framework/trace/TraceArrays.h"

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

struct TraceOptions {
    /// Folder of the trace, which is created if necessary. An earlier trace in it is replaced.
    std::string folder;
    /// Number of dabs after which the state of every mesh is written again; 0 turns this off.
    unsigned every = 0;
};

/// Writes a trace: the inputs of every call into a brush, and the effects that the host can
/// observe. docs/trace.md describes the format.
///
/// The state `before` is written when the first stroke begins, so that it includes the setup up to
/// that point. The recorder observes all geometries in the scene while a call is running. The lines
/// for a call are on disk when the call returns, so after a crash, the trace includes every
/// completed call.
///
/// If the host changes a mesh between two calls, the mesh's state is written before the second
/// call. Between strokes, any change is detected by comparing hashes of all arrays; within a
/// stroke, only changes after a BeforeCommand are detected. Cost: two passes over all arrays of all
/// meshes per stroke, and one pass per command.
///
/// Errors: the trace never causes a call into the brush to throw. After a failure, nothing more is
/// written, and ThrowIfFailed reports the failure.
class TROVIK_API TraceRecorder final : public StrokeObserver, private GeometryObserver {
public:
    /// Prepares the folder. \throw HostError if it cannot be created, or contains files that are
    /// not part of a trace.
    explicit TraceRecorder(const TraceOptions& options);
    ~TraceRecorder();
    TraceRecorder(const TraceRecorder&) = delete;
    TraceRecorder& operator=(const TraceRecorder&) = delete;

    void BeforeCall(const BrushCall& call) override;
    void AfterCall(const BrushCall& call, const std::string* error) override;
    void BeforeCommand(BrushOperation& brush, const std::string& name) override;
    void AfterSettling(BrushOperation& brush,
                       const LevelMesh& mesh,
                       const std::vector<uint32_t>& vertices) override;

    /// \throw HostError with the first failure, if there was one.
    void ThrowIfFailed() const;
    /// Writes the state `after` and, if the host has changed anything since the last call, the line
    /// for that change. Call this after the last call into the brush; if no stroke has begun, it
    /// writes `before` as well. \throw HostError.
    void WriteAfter(BrushOperation& brush);

private:
    void WalkEnded(const LevelMesh& level, const std::vector<FaceVisit>& visits) override;
    void ChangeFinished(const LevelMesh& level, bool keepTopology, bool joinPrevious) override;

    void Prepare(const BrushCall& call);
    void Record(const BrushCall& call, const std::string* error);
    void FillInput(const BrushCall& call);
    void AddFreezeQuery(Mesh* mesh, bool always);
    void AddOutcome(JsonFields& out, const BrushCall& call, const std::string* error) const;
    void AddTouched(JsonFields& out, const BrushCall& call) const;
    std::string MessagesSince() const;
    void Watch(bool on);
    /// Runs a function that may throw; the first failure is stored for ThrowIfFailed and ends the
    /// trace.
    template <typename Work>
    void Guarded(Work work) {
        if (!failure.empty()) return;
        try {
            work();
        } catch (const std::exception& error) {
            failure = error.what();
        }
    }
    HostChanges::States HashStates(BrushOperation& brush) const;
    void WriteState(const std::string& folder, std::size_t mesh, BrushOperation& brush) const;
    void WriteStates(const std::string& name, BrushOperation& brush);
    void WriteHostChanges(BrushOperation& brush);
    void WriteSettled();
    void WriteCall(const char* name, const JsonFields& in, const JsonFields& out);
    void WriteLine(const JsonFields& line);

    TraceOptions options;
    std::FILE* lines = nullptr;
    std::unique_ptr<TraceArrays> arrays;
    std::string failure;
    bool begun = false;
    unsigned dabCount = 0;
    HostChanges hostChanges;
    unsigned changeCount = 0;
    bool inStroke = false;
    /// Settings after the last call, for detecting later changes by the host.
    JsonFields settings;
    std::map<const Mesh*, int> freezeQueries;

    // State of the current call.
    JsonFields input;
    std::size_t messagesBefore = 0;
    /// Value of "builduprate" when the stroke began, as JSON text.
    std::string buildUpRateBefore;
    bool directionWasSet = false;
    bool walked = false;
    std::vector<FaceVisit> lastWalk;
    std::vector<std::string> finished;

    /// Vertices that SettleSymmetry changed before the call to EndStroke. They are written on a
    /// line of their own after the line for that call.
    struct Settled {
        JsonFields in, out;
        std::size_t mesh = 0;
        bool hasLayer = false;
    };
    std::vector<Settled> settled;
};

}  // namespace trovik
