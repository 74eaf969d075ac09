// SPDX-License-Identifier: Apache-2.0
#include "commands/ReplacementNote.h"

#include "commands/SubdivideDialog.h"

#include <QCoreApplication>
#include <QLabel>

#include <algorithm>

namespace trovik::studio {

namespace {

struct Text {
    Q_DECLARE_TR_FUNCTIONS(TopologyActions)
};

}  // namespace

uint64_t FacesOf(const DocumentState& state) {
    return state.levels.empty() ? 0 : state.levels[state.currentLevel].faces;
}

int InitialFaces(const DocumentState& state, int lowest) {
    return static_cast<int>(
        std::clamp<uint64_t>(FacesOf(state), static_cast<uint64_t>(lowest), maxReplacementFaces));
}

void AddReplacementNote(FormDialog& dialog, const DocumentState& state) {
    dialog.AddText(Text::tr("Before"))
        ->setText(Text::tr("%1 faces on the current level").arg(CountText(FacesOf(state))));
    const std::size_t higher = state.levels.size() - 1 - state.currentLevel;
    QString lost;
    if (higher > 0)
        lost = Text::tr(
            "The detail of %n higher level(s) is dropped. ", nullptr, static_cast<int>(higher));
    if (state.levels.size() > 1)
        lost += Text::tr(
            "All levels are replaced. Layers of other levels become part of the "
            "surface or are dropped.");
    if (lost.isEmpty()) return;
    QLabel* note = dialog.AddText(Text::tr("Note"));
    note->setText(lost);
    note->setWordWrap(true);
}

}  // namespace trovik::studio
