// SPDX-License-Identifier: Apache-2.0
#include "JsonOutput.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace trovik {

void PrintJson(const nlohmann::json& document) {
    using Handler = nlohmann::json::error_handler_t;
    std::printf("%s\n", document.dump(2, ' ', false, Handler::replace).c_str());
}

}  // namespace trovik
