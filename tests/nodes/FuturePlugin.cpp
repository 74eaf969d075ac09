// SPDX-License-Identifier: Apache-2.0
#include "host/ClassDesc.h"
#include "host/Contract.h"

namespace trovik {
namespace {

/// Like TROVIK_PLUGIN_CONTRACT, with a higher version.
[[gnu::used,
  gnu::section(".note.trovik.contract"),
  gnu::aligned(4)]] constexpr ContractNote futureNote{.version = contractVersion + 1};

/// Shows whether code of the file has run.
const ClassDesc futureClass(
    nullptr, nullptr, QStringLiteral("FutureClass"), QStringLiteral("Future class"), nullptr, 0, 1);

}  // namespace
}  // namespace trovik
