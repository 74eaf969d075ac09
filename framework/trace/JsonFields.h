// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <string>
#include <utility>
#include <vector>

namespace trovik {

/// \file JSON text for traces. General JSON libraries convert a float to double before writing it;
/// these functions write enough digits to identify the float.

/// Returns a float as text with nine significant digits, so that it round-trips. The text always
/// contains a decimal point or an exponent, so that readers do not parse it as an integer and lose
/// the sign of a zero. Infinities and NaN become the strings "inf", "-inf" and "nan".
TROVIK_API std::string JsonFloat(float value);
TROVIK_API std::string JsonFloats(const float* values, std::size_t count);
inline std::string JsonVector(const Vector& v) {
    const float values[3] = {v.x, v.y, v.z};
    return JsonFloats(values, 3);
}
/// Returns a list of the 16 elements, row by row.
inline std::string JsonMatrix(const Matrix& matrix) { return JsonFloats(&matrix.m[0][0], 16); }
/// Returns a list of the minimum x, y and z, followed by the maximum x, y and z.
inline std::string JsonBox(const AxisAlignedBoundingBox& box) { return JsonFloats(&box.minX, 6); }
inline std::string JsonBool(bool value) { return value ? "true" : "false"; }
/// Returns the text as a quoted string; bytes that are not valid UTF-8 become the replacement
/// character.
TROVIK_API std::string JsonString(const std::string& text);
inline std::string JsonString(const QString& text) { return JsonString(text.toStdString()); }
inline std::string JsonNull() { return "null"; }
/// Returns a JSON list "[a,b,...]" of JSON texts.
TROVIK_API std::string JsonList(const std::vector<std::string>& items);

/// The members of a JSON object, in order, as names and JSON texts.
class TROVIK_API JsonFields {
public:
    /// Adds a member, or replaces the text of an existing one.
    void Set(const std::string& name, std::string text);
    /// Adds the members of `other`.
    void Append(const JsonFields& other);
    /// \return null if there is no such member.
    const std::string* Find(const std::string& name) const;
    /// Returns the members whose text differs from that in `earlier`.
    JsonFields ChangedSince(const JsonFields& earlier) const;
    /// Returns the object as one line of JSON text.
    std::string Text() const;
    bool IsEmpty() const { return fields.empty(); }

private:
    std::vector<std::pair<std::string, std::string>> fields;
};

}  // namespace trovik
