// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"
#include "framework/strokes/LiveStroke.h"

#include <functional>
#include <memory>
#include <optional>

namespace trovik {

/// What a pen's stroke is told beside the settings of document and tool.
struct PenStrokeOptions {
    BrushOperation::Modifier modifier = BrushOperation::ModifierNone;
    /// Of what the stroke leaves to chance; without, it follows from the document's seed and the
    /// number of the stroke.
    std::optional<uint64_t> seed;
    bool isFiltered = true;
    PointerLimits limits;
    /// Without its two lengths: those are the tool's, see below.
    PathShape shape;
    /// Pixels, in place of the tool's own, which are shares of the viewport's height.
    std::optional<float> smoothing;
    std::optional<float> steady;
    /// Called after each dab.
    std::function<void()> progress;
    /// Called now and then while the path is walked, with dabs or without. What it throws, such as
    /// WorkStopped, ends the stroke where it is.
    std::function<void()> poll;
};

/// What the document's settings and its tool make of a pen's samples on the viewport.
/// \throw HostError when the document's spacing is out of its bounds; see CheckSpacing.
TROVIK_API LiveStrokeSettings PenStrokeSettings(Document& document,
                                                const PenStrokeOptions& options);

/// Begins a stroke of the document's loop as a script does: labelled by the tool, with the next
/// seed where none is given. \throw HostError while a stroke is open, which goes on.
TROVIK_API void BeginStroke(Document& document,
                            BrushOperation::Modifier modifier,
                            std::optional<uint64_t> seed);

/// A stroke that a user draws with pen or mouse over a document's view, from press to release: what
/// an application does between a button that goes down and one that goes up. The same samples in a
/// script's stroke "pen" give the same bits. It is one step of undo, and a journal records it.
///
/// While it is open, Document refuses everything that would change the mesh, the tool or the
/// mirrors under it. A stroke that is ended through the document's loop is over: it takes samples
/// without effect. The document has to outlive it.
///
/// A mouse is a pen with pressure 1. Samples hold pixels of Document::View, 0 to 1 for the
/// pressure, and seconds; see LiveStroke for what comes when, and for errors.
class TROVIK_API DocumentStroke {
public:
    /// Begins the stroke. The document's tool, view and settings stay as they are until its end.
    /// \throw HostError while another stroke is open, which goes on, and when radius or spacing of
    /// the document are out of their bounds.
    explicit DocumentStroke(Document& document, const PenStrokeOptions& options = {});
    /// Releases a stroke that is still drawn, and keeps quiet about errors.
    ~DocumentStroke();
    DocumentStroke(const DocumentStroke&) = delete;
    DocumentStroke& operator=(const DocumentStroke&) = delete;

    void Add(const std::vector<PathSample>& samples);
    void Add(const PathSample& sample) { Add(std::vector<PathSample>{sample}); }
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
    /// Whether the document's open stroke is this one.
    bool IsOpen() const;

    Document& document;
    LiveStroke live;
    uint64_t number = 0;
    bool isOver = false;
};

}  // namespace trovik
