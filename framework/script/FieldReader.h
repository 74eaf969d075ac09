// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Vector.h"

#include <nlohmann/json.hpp>

#include <string>

namespace trovik {

/// A value in a script, with its position for error messages. The schema has already checked names
/// and types; this class checks the rest.
class TROVIK_API FieldReader {
public:
    FieldReader(const nlohmann::json& value, std::string file, std::string pointer);

    bool Has(const char* key) const { return value.contains(key); }
    FieldReader At(const char* key) const;
    FieldReader At(std::size_t index) const;
    /// Returns a reader for `other` that reports the position of this value; `other` must outlive
    /// the reader.
    FieldReader With(const nlohmann::json& other) const { return {other, file, pointer}; }
    std::size_t Size() const { return value.size(); }
    const nlohmann::json& Json() const { return value; }
    const std::string& Pointer() const { return pointer; }

    /// A finite float. \throw HostError for a number that single precision cannot represent.
    float Number() const;
    Vector ThreeNumbers() const;
    int Integer() const;
    bool Flag() const { return value.get<bool>(); }
    std::string Text() const { return value.get<std::string>(); }

    bool FlagOr(const char* key, bool otherwise) const;
    std::string TextOr(const char* key, const std::string& otherwise) const;

    /// \throw HostError "FILE: POINTER: reason".
    [[noreturn]] void Fail(const std::string& reason) const;
    /// Like Fail, but for a value within this one.
    /// \param relative  JSON pointer relative to this value.
    [[noreturn]] void FailAt(const std::string& relative, const std::string& reason) const;

private:
    const nlohmann::json& value;
    std::string file;
    std::string pointer;
};

}  // namespace trovik
