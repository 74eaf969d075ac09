// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <exception>

namespace trovik {

/// An operation was cancelled by its JobControl or by a callback. Not a HostError: nothing is wrong
/// with the input, and callers must not add a location to it. Files that were being written are as
/// they were before; a journal ends as after a crash.
class TROVIK_API Cancelled : public std::exception {
public:
    Cancelled() noexcept = default;
    Cancelled(const Cancelled& other) noexcept = default;
    Cancelled& operator=(const Cancelled& other) noexcept = default;
    ~Cancelled() override;
    const char* what() const noexcept override;
};

}  // namespace trovik
