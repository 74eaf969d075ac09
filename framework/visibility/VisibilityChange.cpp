// SPDX-License-Identifier: Apache-2.0
#include "framework/visibility/VisibilityChange.h"

#include <cassert>

namespace trovik {

namespace {

FaceVisibility Wanted(VisibilityChange change, bool isChosen, bool isHidden) {
    switch (change) {
        case VisibilityChange::Hide:
            return isChosen ? FaceVisibility::Hide : FaceVisibility::Keep;
        case VisibilityChange::Show:
            return isChosen ? FaceVisibility::Show : FaceVisibility::Keep;
        case VisibilityChange::Isolate:
            return isChosen ? FaceVisibility::Show : FaceVisibility::Hide;
        case VisibilityChange::Invert:
            return isHidden ? FaceVisibility::Show : FaceVisibility::Hide;
        case VisibilityChange::ShowAll:
            return FaceVisibility::Show;
    }
    return FaceVisibility::Keep;
}

const char* LabelOf(VisibilityChange change) {
    switch (change) {
        case VisibilityChange::Hide:
            return "Hide";
        case VisibilityChange::Show:
            return "Show";
        case VisibilityChange::Isolate:
            return "Isolate";
        case VisibilityChange::Invert:
            return "Invert Visibility";
        case VisibilityChange::ShowAll:
            return "Show All";
    }
    return "";
}

}  // namespace

std::unique_ptr<VisibilityStep> ChangeVisibilityAsStep(LevelGeometry& geometry,
                                                       VisibilityChange change,
                                                       const FaceChoice& chosen) {
    const LevelMesh& level = *geometry.Bound();
    const bool usesChoice =
        change != VisibilityChange::Invert && change != VisibilityChange::ShowAll;
    assert((!usesChoice || chosen.size() == level.faceCount) && "one byte for each face");
    std::vector<FaceVisibility> wanted(level.faceCount);
    for (uint32_t face = 0; face < level.faceCount; ++face)
        wanted[face] = Wanted(change, usesChoice && chosen[face] != 0, level.IsFaceHidden(face));
    return SetVisibilityAsStep(geometry, wanted, LabelOf(change));
}

}  // namespace trovik
