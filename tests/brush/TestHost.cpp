// SPDX-License-Identifier: Apache-2.0

/// \file Creates the kernel, which a brush needs from its construction on, even if a single test
/// runs.
#include "framework/nodes/HostKernel.h"

namespace trovik::test {
namespace {

[[maybe_unused]] const HostKernel& hostAtHand = HostKernel::Instance();

}  // namespace
}  // namespace trovik::test
