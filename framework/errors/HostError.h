// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <stdexcept>
#include <string>

namespace trovik {

/// An error that the host library reports: invalid input, or a failure of the environment, such as
/// an unreadable file or insufficient memory.
///
/// The message is one complete sentence for the user at the command line. It contains the file, the
/// location in the file (line, byte or field) and the reason. An example is `ship.obj, line 12:
/// face refers to vertex 9, but only 8 vertices are defined`. The message is one line of printable
/// UTF-8: the constructor escapes all other bytes, which may come from quoted input
/// (PrintableText). Incorrect use of the library triggers an assertion instead.
class TROVIK_API HostError : public std::runtime_error {
public:
    explicit HostError(const std::string& message);
    HostError(const HostError& other) noexcept = default;
    HostError& operator=(const HostError& other) noexcept = default;
    ~HostError() override;
};

}  // namespace trovik
