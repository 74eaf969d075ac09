// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/strokes/LiveStroke.h"
#include "host/Api.h"

#include <functional>
#include <memory>
#include <optional>

namespace trovik {

/// Options of a live stroke, in addition to the settings of the document and the tool.
struct TROVIK_API PenStrokeOptions {
    BrushOperation::Modifier modifier = BrushOperation::ModifierNone;
    /// Seed of the stroke's random choices; without a value, it is derived from the document's seed
    /// and the stroke's number.
    std::optional<uint64_t> seed;
    /// Whether to filter out pen and driver artefacts; see PointerFilter.
    bool isFiltered = true;
    PointerLimits limits;
    /// Its two lengths are ignored: they come from the tool unless they are set below.
    PathShape shape;
    /// Smoothing length in pixels; overrides the tool's length, which is a fraction of the
    /// viewport's height.
    std::optional<float> smoothing;
    /// Multiplies the tool's own smoothing length. The path trails the pen by half of the resulting
    /// length.
    float smoothingScale = 1.0f;
    std::optional<float> steady;
    /// Called after each dab.
    std::function<void()> progress;
    /// Called regularly while the path is traversed, whether or not dabs are applied. An exception,
    /// such as Cancelled, ends the stroke at that point.
    std::function<void()> poll;
    /// Called after the last dab of the path, once for each dab of the mirrored sides that are
    /// applied in additional strokes; see StrokeLoop::End. An exception skips the remaining ones.
    std::function<void()> mirrorPoll;

    /// Options for live pen input, where dabs have to follow the pen closely. `limits.lateTime` is
    /// 0, because window systems deliver samples in order; the delay is then 4 samples (30 ms at
    /// 133 Hz, 4 ms at 1 kHz) instead of 50 to 88 ms. `smoothingScale` is 1/4; with the usual tool
    /// setting and a viewport height of 1080 pixels, the path then trails the pen by 8 pixels
    /// instead of 34.
    static PenStrokeOptions Interactive();
};

/// Returns the settings of a live stroke, combined from the settings of the document, its tool and
/// the options.
/// \throw HostError if the document's spacing is out of range; see CheckSpacing.
TROVIK_API LiveStrokeSettings PenStrokeSettings(Document& document,
                                                const PenStrokeOptions& options);

/// Begins a stroke of the document's loop with the document's detail, without any other setting.
/// Used to repeat recorded strokes; all other code calls BeginStroke.
TROVIK_API void BeginLoop(Document& document, BrushOperation::Modifier modifier, uint64_t seed);

/// Begins a stroke in the document's stroke loop, as scripts do. The undo step is labelled with the
/// tool's name. Without a seed, the document's next seed is used.
/// \throw HostError if a stroke is already open; that stroke stays open.
TROVIK_API void BeginStroke(Document& document,
                            BrushOperation::Modifier modifier,
                            std::optional<uint64_t> seed);

/// A stroke that a user draws with a pen or mouse in a document's view, from press to release. A
/// "pen" stroke in a script with the same samples gives a bit-identical result. The stroke is one
/// undo step and is recorded in the document's journal, if it has one.
///
/// While the stroke is open, Document rejects every operation that would change the mesh, the tool
/// or the mirrors. If the stroke is ended through the document's loop, this object ignores further
/// samples. The document must outlive it. Several documents may have open strokes at the same time.
///
/// A mouse is treated as a pen with pressure 1. Sample positions are in pixels of Document::View,
/// pressures are from 0 to 1, and times are in seconds; see LiveStroke for delays and errors.
class TROVIK_API DocumentStroke {
public:
    /// Begins a stroke with PenStrokeOptions::Interactive.
    explicit DocumentStroke(Document& document);
    /// Begins the stroke. The document's tool, view and settings must not change until the stroke
    /// ends.
    /// \throw HostError if another stroke is open, which then stays open, or if the document's
    /// radius or spacing is out of range.
    DocumentStroke(Document& document, const PenStrokeOptions& options);
    /// Releases the stroke if it is still open; errors are discarded.
    ~DocumentStroke();
    DocumentStroke(const DocumentStroke&) = delete;
    DocumentStroke& operator=(const DocumentStroke&) = delete;

    /// Adds samples and applies the dabs that no later sample can change.
    void Add(const std::vector<PathSample>& samples);
    void Add(const PathSample& sample) { Add(std::vector<PathSample>{sample}); }
    /// Applies dabs until the budget is spent, and returns whether any remain; see LiveStroke::Add
    /// and LiveStroke::Continue.
    bool Add(const std::vector<PathSample>& samples, LiveStroke::Budget budget);
    bool Continue(LiveStroke::Budget budget);
    /// See LiveStroke::Tick.
    void Tick(double time);
    /// Applies the remaining dabs and ends the stroke.
    void Release();
    /// Releases the stroke within a time budget: no samples are accepted afterwards. \return
    /// whether dabs remain. Continue applies the remaining dabs, and the call that applies the last
    /// one ends the stroke. Until then, Abandon reverts the stroke.
    bool Release(LiveStroke::Budget budget);
    /// Ends the stroke and restores the surface bit-exactly, without an undo step.
    void Abandon();

    std::vector<PathSample> Preview() const { return live->Preview(); }
    unsigned Count() const { return live->Count(); }
    /// Whether the stroke was released, abandoned, or ended by an error.
    bool IsOver() const { return isOver || !IsOpen(); }

private:
    template <typename Work>
    void Do(Work work);
    /// Whether this is the document's open stroke.
    bool IsOpen() const;
    void End();

    Document& document;
    std::optional<LiveStroke> live;
    std::function<void()> mirrorPoll;
    uint64_t number = 0;
    bool isReleased = false;
    bool isOver = false;
};

}  // namespace trovik
