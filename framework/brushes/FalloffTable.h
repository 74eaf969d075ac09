// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Store.h"

#include <memory>
#include <vector>

namespace trovik {

/// The samples of a brush's falloff curve, from the centre to the rim.
///
/// A brush borrows the array for the duration of a stroke, while the setting may change at any
/// time. Samples are therefore immutable: a change installs a new array and applies to strokes that
/// begin later, and a borrowed array stays valid until the next stroke of the brush begins.
///
/// Not thread-safe.
class TROVIK_API FalloffTable {
public:
    using Samples = std::shared_ptr<const Store<float>>;

    explicit FalloffTable(int index) { Set(index); }

    /// Installs a curve of the table; see FillFalloff. If an allocation fails, Error::s_cBadAlloc
    /// is thrown and the current samples are kept.
    void Set(int index);
    /// Installs a user-defined curve; empty for no samples.
    void Set(const std::vector<float>& values);
    void Set(Samples samples) { current = std::move(samples); }

    /// Shares ownership of the current samples, which never change.
    const Samples& Current() const { return current; }
    /// Returns the current samples as a borrowed array, which stays at its address until
    /// BeginStroke.
    const Store<float>& Lend();
    /// Invalidates the arrays borrowed by earlier strokes.
    void BeginStroke() { lent.clear(); }

private:
    Samples current;
    std::vector<Samples> lent;
};

}  // namespace trovik
