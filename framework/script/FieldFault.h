// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/HostError.h"
#include "framework/script/FieldReader.h"
#include "host/Api.h"

#include <string>

namespace trovik {

/// Thrown for a parameter that a command rejects. CommandRunner converts it to a HostError that
/// names the script, the JSON pointer of the parameter and the reason.
class TROVIK_API FieldFault : public HostError {
public:
    /// \param relative  JSON pointer within the command's parameters, such as "/stamp/path"; empty
    /// for all parameters.
    FieldFault(std::string relative, const std::string& reason)
        : HostError(reason), pointer(std::move(relative)) {}

    const std::string& Pointer() const { return pointer; }

private:
    std::string pointer;
};

/// Runs a function and attributes its errors to one parameter.
template <typename Work>
auto AtField(const std::string& pointer, const Work& work) {
    try {
        return work();
    } catch (const FieldFault&) {
        throw;
    } catch (const HostError& error) {
        throw FieldFault(pointer, error.what());
    }
}

/// Runs a function on values that were read from `parameters`, and adds the position of the
/// parameters to its errors.
template <typename Work>
void AtParameters(const FieldReader& parameters, const Work& work) {
    try {
        work();
    } catch (const FieldFault& fault) {
        parameters.FailAt(fault.Pointer(), fault.what());
    }
}

}  // namespace trovik
