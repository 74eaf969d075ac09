// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

namespace trovik {

/// A brush that changes something else than places, and knows itself how to put that back.
class TROVIK_API StrokePutBack {
public:
    /// Puts everything back to the bits of before the stroke, which goes on as if no dab had been
    /// made.
    virtual void PutBackStroke() = 0;

protected:
    ~StrokePutBack() = default;
};

}  // namespace trovik
