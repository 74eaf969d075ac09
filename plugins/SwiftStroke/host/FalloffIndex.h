// SPDX-License-Identifier: Apache-2.0
#pragma once

/// \file The indices of falloff curves (see BrushOperation::SetFalloffIndex) to which hosts and
/// brushes refer.
namespace trovik {

/// The default of most tools; the host also uses it instead of an unknown curve.
inline constexpr int smoothFalloffIndex = 2;
/// Full strength nearly up to the rim.
inline constexpr int plateauFalloffIndex = 7;
/// User-defined samples, named "custom".
inline constexpr int customFalloffIndex = -1;

}  // namespace trovik
