// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace trovik::test {

/// Most bytes that operator new has held at one time since the last ForgetPeak, in the whole
/// process.
uint64_t PeakBytes();
/// Bytes held now count as the peak from here on.
void ForgetPeak();
uint64_t BytesHeld();

}  // namespace trovik::test
