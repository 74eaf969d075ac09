// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/SculptSession.h"
#include "framework/strokes/LiveStroke.h"

#include <functional>
#include <memory>
#include <optional>

namespace trovik {

/// What a pen's stroke is told beside the settings of session and tool.
struct PenStrokeOptions {
    BrushOperation::Modifier modifier = BrushOperation::ModifierNone;
    /// Of what the stroke leaves to chance; without, it follows from the session's seed and the
    /// number of the stroke.
    std::optional<uint64_t> seed;
    bool isFiltered = true;
    PointerLimits limits;
    /// Without its two lengths: those are the tool's, see below.
    PathShape shape;
    /// Pixels; by default the tool's own, which are fractions of the viewport's height.
    std::optional<float> smoothing;
    /// Multiplies the tool's own smoothing length. The path trails the pen by half that length.
    float smoothingScale = 1.0f;
    std::optional<float> steady;
    /// Called after each dab.
    std::function<void()> progress;
    /// Called now and then while the path is walked, with dabs or without. What it throws, such as
    /// WorkStopped, ends the stroke where it is.
    std::function<void()> poll;

    /// Options for a pen that is in use now, where dabs have to follow the pen closely:
    /// `limits.lateTime` is 0, because window systems deliver samples in order, which leaves a
    /// delay of 4 samples (30 ms at 133 Hz, 4 ms at 1 kHz) instead of 50 to 88 ms; and
    /// `smoothingScale` is 1/4, which with the usual tool setting trails the pen by 8 pixels at a
    /// viewport height of 1080 instead of 34.
    static PenStrokeOptions Interactive();
};

/// What the session's settings and its tool make of a pen's samples on the viewport.
/// \throw HostError when the session's spacing is out of its bounds; see CheckSpacing.
TROVIK_API LiveStrokeSettings PenStrokeSettings(SculptSession& session,
                                                const PenStrokeOptions& options);

/// Begins a stroke of the session's loop as a script does: labelled by the tool, with the next seed
/// where none is given. \throw HostError while a stroke is open, which goes on.
TROVIK_API void BeginStroke(SculptSession& session,
                            BrushOperation::Modifier modifier,
                            std::optional<uint64_t> seed);

/// A stroke that a user draws with pen or mouse over a session's view, from press to release: what
/// an application does between a button that goes down and one that goes up. The same samples in a
/// script's stroke "pen" give the same bits. It is one step of undo, and a journal records it.
///
/// While it is open, SculptSession refuses everything that would change the mesh, the tool or the
/// mirrors under it. A stroke that is ended through the session's loop is over: it takes samples
/// without effect. The session has to outlive it.
///
/// A mouse is a pen with pressure 1. Samples hold pixels of SculptSession::View, 0 to 1 for the
/// pressure, and seconds; see LiveStroke for what comes when, and for errors.
class TROVIK_API SessionStroke {
public:
    /// Begins a stroke with PenStrokeOptions::Interactive.
    explicit SessionStroke(SculptSession& session);
    /// Begins the stroke. The session's tool, view and settings stay as they are until its end.
    /// \throw HostError while another stroke is open, which goes on, and when radius or spacing of
    /// the session are out of their bounds.
    SessionStroke(SculptSession& session, const PenStrokeOptions& options);
    /// Releases a stroke that is still drawn, and keeps quiet about errors.
    ~SessionStroke();
    SessionStroke(const SessionStroke&) = delete;
    SessionStroke& operator=(const SessionStroke&) = delete;

    void Add(const std::vector<PathSample>& samples);
    void Add(const PathSample& sample) { Add(std::vector<PathSample>{sample}); }
    /// See LiveStroke::Add and Continue: applies dabs until the budget is spent and returns whether
    /// some remain.
    bool Add(const std::vector<PathSample>& samples, LiveStroke::Budget budget);
    bool Continue(LiveStroke::Budget budget);
    /// See LiveStroke::Tick.
    void Tick(double time);
    /// Lays the rest and ends the stroke.
    void Release();
    /// Ends the stroke and leaves the surface as it was before, to the bit, with no step of undo.
    void Abandon();

    std::vector<PathSample> Preview() const { return live.Preview(); }
    unsigned Count() const { return live.Count(); }
    /// Released, abandoned, or ended by an error.
    bool IsOver() const { return isOver || !IsOpen(); }

private:
    template <typename Work>
    void Do(Work work);
    /// Whether the session's open stroke is this one.
    bool IsOpen() const;

    SculptSession& session;
    LiveStroke live;
    uint64_t number = 0;
    bool isOver = false;
};

}  // namespace trovik
