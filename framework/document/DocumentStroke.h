// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/strokes/LiveStroke.h"
#include "host/Api.h"

#include <functional>
#include <memory>
#include <optional>

namespace trovik {

/// Options of a live stroke, in addition to the settings of document and tool.
struct TROVIK_API PenStrokeOptions {
    BrushOperation::Modifier modifier = BrushOperation::ModifierNone;
    /// Seed of the stroke's random choices; without a value it follows from the document's seed and
    /// the number of the stroke.
    std::optional<uint64_t> seed;
    /// Whether faults of pens are removed; see PointerFilter.
    bool isFiltered = true;
    PointerLimits limits;
    /// Except for its two lengths, which are those of the tool unless given below.
    PathShape shape;
    /// Pixels, instead of the tool's own, which are fractions of the viewport's height.
    std::optional<float> smoothing;
    /// Multiplies the tool's own smoothing length. The path trails the pen by half that length.
    float smoothingScale = 1.0f;
    std::optional<float> steady;
    /// Called after each dab.
    std::function<void()> progress;
    /// Called now and then while the path is walked, with dabs or without. An exception, such as
    /// Cancelled, ends the stroke where it is.
    std::function<void()> poll;

    /// Options for a pen that is in use now, where dabs have to follow the pen closely:
    /// `limits.lateTime` is 0, because window systems deliver samples in order, which leaves a
    /// delay of 4 samples (30 ms at 133 Hz, 4 ms at 1 kHz) instead of 50 to 88 ms; and
    /// `smoothingScale` is 1/4, which with the usual tool setting trails the pen by 8 pixels at a
    /// viewport height of 1080 instead of 34.
    static PenStrokeOptions Interactive();
};

/// The settings of a live stroke that follow from the document, its tool and the options.
/// \throw HostError when the document's spacing is out of its bounds; see CheckSpacing.
TROVIK_API LiveStrokeSettings PenStrokeSettings(Document& document,
                                                const PenStrokeOptions& options);

/// Begins a stroke of the document's loop as a script does: labelled by the tool, with the next
/// seed if none is given. \throw HostError while a stroke is open, which stays open.
TROVIK_API void BeginStroke(Document& document,
                            BrushOperation::Modifier modifier,
                            std::optional<uint64_t> seed);

/// A stroke that a user draws with pen or mouse over a document's view, from press to release. The
/// same samples in a script's stroke "pen" give the same bits. It is one undo step, and a journal
/// records it.
///
/// While it is open, Document refuses everything that would change the mesh, the tool or the
/// mirrors. A stroke that is ended through the document's loop is over: it accepts samples without
/// effect. The document has to outlive it. Strokes of several documents may be open at a time.
///
/// A mouse is a pen with pressure 1. Samples hold pixels of Document::View, a pressure from 0 to 1,
/// and seconds; see LiveStroke for what comes when, and for errors.
class TROVIK_API DocumentStroke {
public:
    /// Begins a stroke with PenStrokeOptions::Interactive.
    explicit DocumentStroke(Document& document);
    /// Begins the stroke. The document's tool, view and settings must not change until its end.
    /// \throw HostError while another stroke is open, which stays open, and when radius or spacing
    /// of the document are out of their bounds.
    DocumentStroke(Document& document, const PenStrokeOptions& options);
    /// Releases a stroke that is still open; errors are dropped.
    ~DocumentStroke();
    DocumentStroke(const DocumentStroke&) = delete;
    DocumentStroke& operator=(const DocumentStroke&) = delete;

    /// Applies the dabs that no later sample can change.
    void Add(const std::vector<PathSample>& samples);
    void Add(const PathSample& sample) { Add(std::vector<PathSample>{sample}); }
    /// See LiveStroke::Add and Continue: applies dabs until the budget is spent and returns whether
    /// some remain.
    bool Add(const std::vector<PathSample>& samples, LiveStroke::Budget budget);
    bool Continue(LiveStroke::Budget budget);
    /// See LiveStroke::Tick.
    void Tick(double time);
    /// Applies the remaining dabs and ends the stroke.
    void Release();
    /// Ends the stroke and reverts the surface to the bits of before, without an undo step.
    void Abandon();

    std::vector<PathSample> Preview() const { return live->Preview(); }
    unsigned Count() const { return live->Count(); }
    /// Released, abandoned, or ended by an error.
    bool IsOver() const { return isOver || !IsOpen(); }

private:
    template <typename Work>
    void Do(Work work);
    /// Whether this is the document's open stroke.
    bool IsOpen() const;

    Document& document;
    std::optional<LiveStroke> live;
    uint64_t number = 0;
    bool isOver = false;
};

}  // namespace trovik
