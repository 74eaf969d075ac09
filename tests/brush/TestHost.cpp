// SPDX-License-Identifier: Apache-2.0

/// \file Creates the kernel, which must exist before any brush is constructed, even if only one
/// test runs.
#include "framework/nodes/HostKernel.h"

namespace trovik::test {
namespace {

[[maybe_unused]] const HostKernel& hostAtHand = HostKernel::Instance();

}  // namespace
}  // namespace trovik::test
