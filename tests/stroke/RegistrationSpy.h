// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace trovik::test {

/// One object that a library made while it was opened.
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

/// Descriptors, plug-in records and preferences in the order of their construction, from the start
/// of the process on. Only what other libraries than the host's make is sure to be seen.
std::vector<Registered>& RegistrationLog();

}  // namespace trovik::test
