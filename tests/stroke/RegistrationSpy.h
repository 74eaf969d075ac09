// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace trovik::test {

/// An object that a library created while it was being loaded.
struct Registered {
    std::string kind;      ///< "ClassDesc", "Plugin", "Bool" or "Float"
    std::string name;      ///< name or key
    std::string category;  ///< of a preference
    std::string label;     ///< of a preference
    std::string categoryLabel;
    float value = 0.0f;  ///< default of a preference
    float minimum = 0.0f;
    float maximum = 0.0f;
    bool lastArgument = false;
};

/// Descriptors, plug-in records and preferences in the order of their construction since the start
/// of the process. Objects of the host library itself may be missing.
std::vector<Registered>& RegistrationLog();

}  // namespace trovik::test
