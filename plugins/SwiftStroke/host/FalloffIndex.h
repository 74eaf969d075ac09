// SPDX-License-Identifier: Apache-2.0
#pragma once

/// \file
/// Indices of falloff curves, as BrushOperation::SetFalloffIndex takes them, that hosts and brushes
/// refer to.
namespace trovik {

/// The default of most tools, and of the host in place of an unknown curve.
inline constexpr int smoothFalloffIndex = 2;
/// Full nearly to the rim.
inline constexpr int plateauFalloffIndex = 7;
/// Samples of the user's own, under the name "custom".
inline constexpr int customFalloffIndex = -1;

}  // namespace trovik
