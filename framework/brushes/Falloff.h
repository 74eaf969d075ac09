// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/FalloffIndex.h"
#include "host/Store.h"

#include <string>
#include <vector>

namespace trovik {

class BrushOperation;

/// Returns the names of the falloff curves, by index.
TROVIK_API const std::vector<std::string>& FalloffNames();
/// \return the index of a curve, or -1 for an unknown name.
TROVIK_API int FalloffIndexOf(const std::string& name);
/// Returns whether the table has a curve with this index.
TROVIK_API bool IsFalloffIndex(int index);
/// Returns the name of the curve with this index, or "custom" for user-defined samples.
TROVIK_API std::string FalloffName(int index);

/// Samples per curve.
inline constexpr unsigned falloffSampleCount = 256;

/// Returns the value of a curve at distance x, where x is 0 at the centre and 1 at the rim. It is
/// computed with additions, multiplications and square roots only, so that the table is the same on
/// every machine.
TROVIK_API float FalloffValue(int index, float x);

/// Fills `samples` with the curve, from the centre to the rim. An index outside the table selects
/// the "smooth" curve.
TROVIK_API void FillFalloff(Store<float>& samples, int index);
/// Fills `samples` with user-defined values.
TROVIK_API void FillFalloff(Store<float>& samples, const std::vector<float>& values);

/// Sets a user-defined curve for the brush; `samples` run from the centre to the rim. The curve is
/// stored with the tool like the other settings.
TROVIK_API void SetFalloffSamples(BrushOperation& brush, const std::vector<float>& samples);

}  // namespace trovik
