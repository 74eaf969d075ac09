// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Implemented by brushes that change data other than positions and revert these changes
/// themselves.
class TROVIK_API StrokeRevert {
public:
    /// Restores everything bit-exactly to its state before the stroke, which continues as if no dab
    /// had been applied.
    virtual void RevertBrushStroke() = 0;

protected:
    ~StrokeRevert() = default;
};

}  // namespace trovik
