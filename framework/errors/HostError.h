// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <stdexcept>
#include <string>

namespace trovik {

/// A refusal by the host library: bad input, or an environment that does not play along (a file
/// that cannot be read, memory that may not grow).
///
/// The message is one complete sentence for the person at the command line. It names the file,
/// the place in it (line, byte or field) and the reason, for example
/// `ship.obj, line 12: face names vertex 9, but only 8 vertices are defined`.
/// It is one line of printable UTF-8: the constructor escapes other bytes that the message quotes
/// (PrintableText). Wrong use of the library by its caller is an assert instead.
class TROVIK_API HostError : public std::runtime_error {
public:
    explicit HostError(const std::string& message);
    HostError(const HostError& other) noexcept = default;
    HostError& operator=(const HostError& other) noexcept = default;
    ~HostError() override;
};

}  // namespace trovik
