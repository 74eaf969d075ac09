// SPDX-License-Identifier: Apache-2.0
#pragma once

/// \file Indices of the falloff curves that hosts and brushes refer to; see
/// BrushOperation::SetFalloffIndex.
namespace trovik {

/// The default of most tools, and the host's fallback for unknown curves.
inline constexpr int smoothFalloffIndex = 2;
/// Full strength almost up to the rim.
inline constexpr int plateauFalloffIndex = 7;
/// User-defined samples, named "custom".
inline constexpr int customFalloffIndex = -1;

}  // namespace trovik
