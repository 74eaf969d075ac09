// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <exception>

namespace trovik {

/// Thrown when an operation is cancelled by its JobControl or by a callback. It is not a HostError:
/// the input is not at fault, and callers must not add a location to it. Files that were being
/// written keep their old content; a journal ends as it would after a crash.
class TROVIK_API Cancelled : public std::exception {
public:
    Cancelled() noexcept = default;
    Cancelled(const Cancelled& other) noexcept = default;
    Cancelled& operator=(const Cancelled& other) noexcept = default;
    ~Cancelled() override;
    const char* what() const noexcept override;
};

}  // namespace trovik
