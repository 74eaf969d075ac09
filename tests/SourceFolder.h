// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace trovik::test {

/// Returns the absolute path of the source tree, without a slash at the end. A function rather than
/// a macro, so that only one object file of the tests depends on where the tree is checked out.
std::string SourceFolder();

}  // namespace trovik::test
