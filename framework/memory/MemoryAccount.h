// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <functional>
#include <string>

namespace trovik {

/// The memory accounting that Block uses: the total size of all arrays and the limit on this size.
/// Must be used only on the host's main thread.
class TROVIK_API MemoryAccount {
public:
    /// Sets the limit beyond which Block::RegisterMemoryBlock fails. By default, there is no limit.
    static void SetLimit(int64_t bytes);
    static int64_t Limit();
    static int64_t Total();
    /// Sets the function that receives the output of Block::LogAll, one line per call. Null selects
    /// the default: the standard log stream if the environment variable TROVIK_MEMORY_LOG is set
    /// and not empty, otherwise no output.
    static void SetLogSink(std::function<void(const std::string&)> sink);
};

}  // namespace trovik
