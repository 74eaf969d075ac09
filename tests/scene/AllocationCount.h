// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace trovik::test {

/// Returns the peak number of bytes allocated by operator new since the last ForgetPeak, in the
/// whole process.
uint64_t PeakBytes();
/// Resets the peak to the number of bytes that are currently allocated.
void ForgetPeak();
uint64_t BytesHeld();

/// Makes only the `number`-th allocation after this call fail, counted from 1. If `number` is 0, no
/// allocation fails.
void RefuseAllocation(uint64_t number);
/// Returns whether that allocation has failed.
bool HasRefused();

}  // namespace trovik::test
