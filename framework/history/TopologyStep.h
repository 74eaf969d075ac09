// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/history/UndoHistory.h"

#include <cstddef>

namespace trovik {

/// An undo step that adds, deletes or renumbers levels, changes the faces of a level, or makes
/// another level current. When it is
/// applied, pointers to the arrays of the current level become invalid. All other steps change the
/// content of the arrays and keep their addresses.
class TROVIK_API TopologyStep : public UndoStep {
public:
    ~TopologyStep() override;
};

/// Whether the next `count` calls of Undo, or of Redo if `redo` is set, apply a TopologyStep. Cost:
/// O(steps), without unpacking them.
TROVIK_API bool ChangesTopology(const UndoHistory& history, std::size_t count, bool redo);

}  // namespace trovik
