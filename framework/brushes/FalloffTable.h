// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Store.h"

#include <memory>
#include <vector>

namespace trovik {

/// The samples of a brush's falloff curve, from the centre to the rim.
///
/// A brush borrows the array for the length of a stroke, while the setting may change at any time.
/// So samples are immutable: a change installs a new array and applies to strokes that begin later,
/// and an array that was lent stays valid until the next stroke of the brush begins.
///
/// For one thread.
class TROVIK_API FalloffTable {
public:
    using Samples = std::shared_ptr<const Store<float>>;

    explicit FalloffTable(int index) { Set(index); }

    /// Installs a curve of the table; see FillFalloff. Where memory is refused,
    /// Error::s_cBadAlloc is thrown and the present samples stay.
    void Set(int index);
    /// Installs a user-defined curve; empty: none.
    void Set(const std::vector<float>& values);
    void Set(Samples samples) { current = std::move(samples); }

    /// Shares the array of a table. It never changes.
    const Samples& Current() const { return current; }
    /// Lends the current samples: the array stays where it is until BeginStroke.
    const Store<float>& Lend();
    /// Ends every loan of earlier strokes.
    void BeginStroke() { lent.clear(); }

private:
    Samples current;
    std::vector<Samples> lent;
};

}  // namespace trovik
