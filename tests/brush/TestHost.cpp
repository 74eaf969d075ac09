// SPDX-License-Identifier: Apache-2.0

/// \file A brush needs a kernel from its construction on, even in a test that runs alone.
#include "framework/nodes/HostKernel.h"

namespace trovik::test {
namespace {

[[maybe_unused]] const HostKernel& hostAtHand = HostKernel::Instance();

}  // namespace
}  // namespace trovik::test
