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

/// Makes the `number`-th allocation from now on fail, counted from 1, and no other; with 0, none
/// fails.
void RefuseAllocation(uint64_t number);
/// Returns whether that allocation has failed.
bool HasRefused();

}  // namespace trovik::test
