// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/memory/MemoryAccount.h"

namespace trovik::test {

/// Limits the growth of the accounted memory to this many bytes until the end of the scope.
class MemoryLimit {
public:
    explicit MemoryLimit(int64_t moreBytes) : before(MemoryAccount::Limit()) {
        MemoryAccount::SetLimit(MemoryAccount::Total() + moreBytes);
    }
    ~MemoryLimit() { MemoryAccount::SetLimit(before); }
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

private:
    int64_t before;
};

}  // namespace trovik::test
