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

/// Refuses the allocation that comes as the `number`-th from now on, counted from 1, and no other;
/// 0: none.
void RefuseAllocation(uint64_t number);
/// Whether that allocation has come.
bool HasRefused();

}  // namespace trovik::test
