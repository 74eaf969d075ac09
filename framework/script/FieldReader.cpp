// SPDX-License-Identifier: Apache-2.0
#include "framework/script/FieldReader.h"

#include "framework/errors/HostError.h"
#include "framework/json/JsonFault.h"

#include <cmath>
#include <limits>

namespace trovik {

FieldReader::FieldReader(const nlohmann::json& json,
                         std::string scriptFile,
                         std::string jsonPointer)
    : value(json), file(std::move(scriptFile)), pointer(std::move(jsonPointer)) {}

FieldReader FieldReader::At(const char* key) const {
    return {value.at(key), file, FieldPointer(pointer, key)};
}
FieldReader FieldReader::At(std::size_t index) const {
    return {value.at(index), file, ItemPointer(pointer, index)};
}

float FieldReader::Number() const {
    const auto number = static_cast<float>(value.get<double>());
    if (!std::isfinite(number)) Fail("the number is not finite in single precision");
    return number;
}

Vector FieldReader::ThreeNumbers() const {
    return {At(std::size_t{0}).Number(), At(1).Number(), At(2).Number()};
}

int FieldReader::Integer() const {
    const auto number = value.get<double>();
    if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
        Fail("the number is out of range");
    return static_cast<int>(number);
}

bool FieldReader::FlagOr(const char* key, bool otherwise) const {
    return Has(key) ? At(key).Flag() : otherwise;
}
std::string FieldReader::TextOr(const char* key, const std::string& otherwise) const {
    return Has(key) ? At(key).Text() : otherwise;
}

void FieldReader::Fail(const std::string& reason) const { FailAt("", reason); }

void FieldReader::FailAt(const std::string& relative, const std::string& reason) const {
    throw HostError(FaultMessage(file, {pointer + relative, reason}));
}

}  // namespace trovik
