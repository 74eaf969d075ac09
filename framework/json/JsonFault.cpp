// SPDX-License-Identifier: Apache-2.0
#include "framework/json/JsonFault.h"

namespace trovik {

std::string FieldPointer(const std::string& pointer, std::string_view name) {
    std::string field = pointer + "/";
    for (const char letter : name) {
        if (letter == '~')
            field += "~0";
        else if (letter == '/')
            field += "~1";
        else
            field += static_cast<unsigned char>(letter) < ' ' || letter == '\x7f' ? ' ' : letter;
    }
    return field;
}

std::string ItemPointer(const std::string& pointer, std::size_t index) {
    return pointer + "/" + std::to_string(index);
}

std::string FaultMessage(const std::string& name, const JsonFault& fault) {
    return name + ": " + (fault.pointer.empty() ? "/" : fault.pointer) + ": " + fault.reason;
}

}  // namespace trovik
