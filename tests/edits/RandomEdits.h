// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerStack.h"
#include "tests/random/RandomStroke.h"

#include <memory>
#include <string>

namespace trovik::test {

/// Chooses a random mesh and random edits of it that each become one undo step: strokes of the
/// brush, masks, hidden faces, layers, levels, transforms.
class RandomEdits {
public:
    explicit RandomEdits(RandomNumbers& numbers);

    /// Makes one edit; some edits have nothing to do and leave no undo step.
    void Edit();

    LevelGeometry& Geometry() { return geometry; }
    /// Describes the last mesh and edit, for failure messages.
    std::string CaseDescription() const;

private:
    float Reach() const;
    bool MayStroke() const;
    void Push(std::unique_ptr<UndoStep> step);
    void Freeze();
    void Hide();
    void Level();
    void Unsubdivide();
    void Transform();
    void Layer();
    void MergeOrErase(SculptLayer& layer, const LayerBase::Layers& layers);

    RandomNumbers& random;
    RandomStrokeFixture drawn;
    LevelGeometry& geometry;
    float reach = 0.0f;
    int named = 0;
    /// The current edit, for failure messages.
    uint32_t kind = 0;
    uint32_t layerKind = 0;
};

}  // namespace trovik::test
