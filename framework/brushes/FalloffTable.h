// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Store.h"

#include <memory>
#include <vector>

namespace trovik {

/// The samples of a brush's falloff curve, from the centre to the rim.
///
/// A brush borrows the array for the duration of a stroke, while the setting may change at any
/// time. Samples are therefore immutable: a change installs a new array, which applies to later
/// strokes. A borrowed array stays valid until the brush's next stroke begins.
///
/// Not thread-safe.
class TROVIK_API FalloffTable {
public:
    using Samples = std::shared_ptr<const Store<float>>;

    explicit FalloffTable(int index) { Set(index); }

    /// Installs one of the predefined curves; see FillFalloff. If an allocation fails,
    /// Error::s_cBadAlloc is thrown and the current samples are kept.
    void Set(int index);
    /// Installs a user-defined curve; `values` may be empty.
    void Set(const std::vector<float>& values);
    void Set(Samples samples) { current = std::move(samples); }

    /// Returns the current samples, which are immutable; copy the pointer to share ownership.
    const Samples& Current() const { return current; }
    /// Lends the current samples; the array stays valid until BeginStroke.
    const Store<float>& Lend();
    /// Invalidates the arrays borrowed by earlier strokes.
    void BeginStroke() { lent.clear(); }

private:
    Samples current;
    std::vector<Samples> lent;
};

}  // namespace trovik
