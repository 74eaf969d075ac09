// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <functional>
#include <string>

namespace trovik {

/// The account behind Block: how much memory the arrays of the system hold, and how much they may.
/// Touched on the host's main thread only.
class TROVIK_API MemoryAccount {
public:
    /// Bytes beyond which Block::RegisterMemoryBlock refuses; at first there is no limit.
    static void SetLimit(int64_t bytes);
    static int64_t Limit();
    static int64_t Total();
    /// Where Block::LogAll writes, one line a call. Null: to the standard log stream if the
    /// environment variable TROVIK_MEMORY_LOG is set and not empty, and nowhere otherwise.
    static void SetLogSink(std::function<void(const std::string&)> sink);
};

}  // namespace trovik
