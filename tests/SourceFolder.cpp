// SPDX-License-Identifier: Apache-2.0
#include "tests/SourceFolder.h"

namespace trovik::test {

std::string SourceFolder() { return TROVIK_SOURCE_DIR; }

}  // namespace trovik::test
