// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// Implemented by brushes that change more than positions and revert these changes themselves.
class TROVIK_API StrokePutBack {
public:
    /// Restores everything bit-exactly to its state before the stroke, which continues as if no dab
    /// had been applied.
    virtual void PutBackStroke() = 0;

protected:
    ~StrokePutBack() = default;
};

}  // namespace trovik
