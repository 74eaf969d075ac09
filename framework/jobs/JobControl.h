// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>

namespace trovik {

/// Receives the progress of a long operation and can cancel it.
///
/// Every operation that can take longer than 200 ms accepts a JobControl. It calls Report on the
/// thread that runs the operation, at least every 50 ms of work where that is possible without
/// cost, and throws Cancelled when Report returned false. A cancelled operation leaves the document
/// and all files as they were.
class TROVIK_API JobControl {
public:
    virtual ~JobControl() = default;
    /// \param done, total  work finished and in all, in a unit of the operation's own, such as
    /// vertices; `total` 0 if it is not known yet. A phase of its own starts again at 0.
    /// \param phase  what is done now, such as "Reading faces"; a string literal.
    /// \return false to cancel. Throws nothing.
    virtual bool Report(uint64_t done, uint64_t total, const char* phase) = 0;
};

}  // namespace trovik
