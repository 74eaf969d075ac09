// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace trovik::test {

/// The maximum number of bytes that operator new has held at one time since the last ForgetPeak, in
/// the whole process.
uint64_t PeakBytes();
/// Resets the peak to the bytes that are held now.
void ForgetPeak();
uint64_t BytesHeld();

/// Refuses the `number`-th allocation from now on, counted from 1, and no other; 0 refuses none.
void RefuseAllocation(uint64_t number);
/// Returns whether that allocation has been requested.
bool HasRefused();

}  // namespace trovik::test
