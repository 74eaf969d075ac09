// SPDX-License-Identifier: Apache-2.0
#include "host/Attribute.h"

#include <charconv>
#include <string>

namespace trovik {

namespace {

// The standard conversions do not depend on the locale, and the shortest text that they write for a
// float round-trips.
template <typename T>
QString NumberText(T value) {
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
    return QString::fromLatin1(buffer, static_cast<int>(result.ptr - buffer));
}

template <typename T>
bool ParseNumber(const QString& text, T& value) {
    const std::string ascii = text.trimmed().toStdString();
    const auto result = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
    return result.ec == std::errc() && result.ptr == ascii.data() + ascii.size();
}

}  // namespace

QString AttributeValue<int>::ToText(const int& value) { return NumberText(value); }
bool AttributeValue<int>::FromText(const QString& text, int& value) {
    return ParseNumber(text, value);
}
void AttributeValue<int>::Transfer(Stream& stream, int& value) { stream.Transfer(value); }

QString AttributeValue<float>::ToText(const float& value) { return NumberText(value); }
bool AttributeValue<float>::FromText(const QString& text, float& value) {
    return ParseNumber(text, value);
}
void AttributeValue<float>::Transfer(Stream& stream, float& value) { stream.Transfer(value); }

QString AttributeValue<bool>::ToText(const bool& value) {
    return value ? QStringLiteral("true") : QStringLiteral("false");
}
bool AttributeValue<bool>::FromText(const QString& text, bool& value) {
    const QString word = text.trimmed().toLower();
    const bool yes = word == QStringLiteral("true") || word == QStringLiteral("1");
    if (!yes && word != QStringLiteral("false") && word != QStringLiteral("0")) return false;
    value = yes;
    return true;
}
void AttributeValue<bool>::Transfer(Stream& stream, bool& value) {
    uint8_t byte = value ? 1 : 0;
    stream.Transfer(byte);
    value = byte != 0;
}

QString AttributeValue<QString>::ToText(const QString& value) { return value; }
bool AttributeValue<QString>::FromText(const QString& text, QString& value) {
    value = text;
    return true;
}
void AttributeValue<QString>::Transfer(Stream& stream, QString& value) { stream.Transfer(value); }

QString AttributeValue<CheckableFloat>::ToText(const CheckableFloat& value) {
    return AttributeValue<bool>::ToText(value.checked) + QStringLiteral(" ") +
           AttributeValue<float>::ToText(value.value);
}
bool AttributeValue<CheckableFloat>::FromText(const QString& text, CheckableFloat& value) {
    const qsizetype blank = text.indexOf(QLatin1Char(' '));
    if (blank < 0) return false;
    CheckableFloat parsed;
    if (!AttributeValue<bool>::FromText(text.left(blank), parsed.checked)) return false;
    if (!AttributeValue<float>::FromText(text.mid(blank + 1), parsed.value)) return false;
    value = parsed;
    return true;
}
void AttributeValue<CheckableFloat>::Transfer(Stream& stream, CheckableFloat& value) {
    AttributeValue<bool>::Transfer(stream, value.checked);
    stream.Transfer(value.value);
}

}  // namespace trovik
