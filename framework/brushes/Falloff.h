// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/FalloffIndex.h"
#include "host/Store.h"

#include <string>
#include <vector>

namespace trovik {

class BrushOperation;

/// Names of the falloff curves, by index.
TROVIK_API const std::vector<std::string>& FalloffNames();
/// \return -1 for an unknown name.
TROVIK_API int FalloffIndexOf(const std::string& name);
/// Whether the table has a curve of this index.
TROVIK_API bool IsFalloffIndex(int index);
/// Name of a curve of the table, or "custom".
TROVIK_API std::string FalloffName(int index);

/// Samples per curve.
inline constexpr unsigned falloffSampleCount = 256;

/// Value of a curve at distance x, 0 at the centre to 1 at the rim. Additions, multiplications and
/// square roots only, so that every machine makes the same table.
TROVIK_API float FalloffValue(int index, float x);

/// Fills `samples` with the curve, centre first. An index beyond the table takes "smooth".
TROVIK_API void FillFalloff(Store<float>& samples, int index);
/// Fills `samples` with values of the user's own.
TROVIK_API void FillFalloff(Store<float>& samples, const std::vector<float>& values);

/// Gives the brush a curve of the user's own, samples from the centre to the rim. It is kept with
/// the tool like the other settings.
TROVIK_API void SetFalloffSamples(BrushOperation& brush, const std::vector<float>& samples);

}  // namespace trovik
