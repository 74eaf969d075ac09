// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/BrushOperation.h"

#include <string>
#include <utility>
#include <vector>

namespace trovik {

/// \file
/// JSON text of a trace. A general JSON library writes a float as the double nearest to it; here
/// the text says that it is a float.

/// Nine significant digits, which bring the same float back; always with a point or an exponent, so
/// that no reader takes it for an integer and loses the sign of a zero. What is no number becomes
/// the text "inf", "-inf" or "nan".
TROVIK_API std::string JsonFloat(float value);
/// A list of floats.
TROVIK_API std::string JsonFloats(const float* values, std::size_t count);
inline std::string JsonVector(const Vector& v) {
    const float values[3] = {v.x, v.y, v.z};
    return JsonFloats(values, 3);
}
/// 16 floats, row by row.
inline std::string JsonMatrix(const Matrix& matrix) { return JsonFloats(&matrix.m[0][0], 16); }
/// Minimum x, y, z, then maximum x, y, z.
inline std::string JsonBox(const AxisAlignedBoundingBox& box) { return JsonFloats(&box.minX, 6); }
inline std::string JsonBool(bool value) { return value ? "true" : "false"; }
/// A quoted text; bytes that are no UTF-8 become the replacement character.
TROVIK_API std::string JsonString(const std::string& text);
inline std::string JsonString(const QString& text) { return JsonString(text.toStdString()); }
inline std::string JsonNull() { return "null"; }
/// "[a,b,...]" of texts that are JSON already.
TROVIK_API std::string JsonList(const std::vector<std::string>& items);

/// The members of a JSON object, in order, as names and JSON texts.
class TROVIK_API JsonFields {
public:
    /// Adds a member, or gives the one of this name another text.
    void Set(const std::string& name, std::string text);
    /// Adds the members of `other`.
    void Append(const JsonFields& other);
    /// Null where there is none.
    const std::string* Find(const std::string& name) const;
    /// The members whose text is not the one in `earlier`.
    JsonFields ChangedSince(const JsonFields& earlier) const;
    /// The object on one line.
    std::string Text() const;
    bool IsEmpty() const { return fields.empty(); }

private:
    std::vector<std::pair<std::string, std::string>> fields;
};

}  // namespace trovik
