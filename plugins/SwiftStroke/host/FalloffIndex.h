// SPDX-License-Identifier: Apache-2.0
#pragma once

/// \file Indices of the falloff curves that hosts and brushes refer to; see
/// BrushOperation::SetFalloffIndex.
namespace trovik {

/// The default of most tools. The host also falls back to it if a curve is unknown.
inline constexpr int smoothFalloffIndex = 2;
/// Full strength nearly up to the rim.
inline constexpr int plateauFalloffIndex = 7;
/// User-defined samples, named "custom".
inline constexpr int customFalloffIndex = -1;

}  // namespace trovik
