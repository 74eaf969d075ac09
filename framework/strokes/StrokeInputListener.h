// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <cstdint>

namespace trovik {

struct StrokeDab;

/// Hears what a StrokeLoop is told to do, once it is done: the inputs that make the stroke again
/// when they are given once more. For a StrokeObserver it tells of each call into the brush
/// instead, mirrored dabs among them.
class TROVIK_API StrokeInputListener {
public:
    virtual void OnStrokeBegun(BrushOperation::Modifier modifier, uint64_t seed) = 0;
    /// \param dab  as it was given, before a stamp's settings moved it. \param failed  the brush
    /// threw, having done what it did until then; the stroke ends next.
    virtual void OnDab(const StrokeDab& dab, bool failed) = 0;
    virtual void OnWholeMesh(float strength, bool byFacing) = 0;
    virtual void OnPutBack() = 0;
    /// \param brokenOff  the stroke ended without mirrored sides that it still owed, or its end
    /// failed. StrokeLoop::Break then reproduces it, except for sides that were already complete.
    virtual void OnStrokeEnded(bool brokenOff) = 0;

protected:
    ~StrokeInputListener() = default;
};

}  // namespace trovik
