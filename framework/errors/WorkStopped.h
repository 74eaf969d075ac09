// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <exception>

namespace trovik {

/// Whoever waits for the work asked to stop it. No refusal, so no HostError: nothing is wrong with
/// the input, and nobody on the way is to add where it happened. Files that were being written are
/// as they were before; a journal ends as after a crash.
class TROVIK_API WorkStopped : public std::exception {
public:
    WorkStopped() noexcept = default;
    WorkStopped(const WorkStopped& other) noexcept = default;
    WorkStopped& operator=(const WorkStopped& other) noexcept = default;
    ~WorkStopped() override;
    const char* what() const noexcept override;
};

}  // namespace trovik
