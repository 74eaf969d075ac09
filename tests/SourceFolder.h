// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace trovik::test {

/// Returns the absolute path of the source tree, without a trailing slash. It is a function rather
/// than a macro so that only one object file of the tests depends on the location of the checkout.
std::string SourceFolder();

}  // namespace trovik::test
