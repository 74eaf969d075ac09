// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <cstdint>

namespace trovik {

struct StrokeDab;

/// Receives each operation of a StrokeLoop after its completion. Replaying these operations
/// reproduces the stroke. A StrokeObserver is notified of each call into the brush instead,
/// including mirrored dabs.
class TROVIK_API StrokeInputListener {
public:
    virtual void OnStrokeBegun(BrushOperation::Modifier modifier, uint64_t seed) = 0;
    /// \param dab  the dab before stamp settings moved it. \param failed  whether the brush threw
    /// an exception partway through, which ends the stroke.
    virtual void OnDab(const StrokeDab& dab, bool failed) = 0;
    virtual void OnWholeMesh(float strength, bool byFacing) = 0;
    virtual void OnReverted() = 0;
    /// \param brokenOff  whether the stroke ended before all mirrored sides were applied, or
    /// whether an error occurred while it ended. In these cases, StrokeLoop::Break reproduces the
    /// end of the stroke, except for sides that were already complete.
    virtual void OnStrokeEnded(bool brokenOff) = 0;

protected:
    ~StrokeInputListener() = default;
};

}  // namespace trovik
