// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/FieldReader.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

/// \file JSON forms of command parameters. A parameter type lists its fields once, in a member
/// function:
///
///     template <typename Visitor> void Fields(Visitor& visit) {
///         visit("radius", radius);
///         visit("softness", softness);
///     }
///
/// This function is used to read and write values of the type, and to describe the type for the
/// schema test. A field of type std::optional may be missing; any other missing field keeps its
/// initial value. Supported types: float, int, uint32_t, uint64_t, bool, std::string, Vector,
/// std::nullptr_t (null), Yes (true), enumerations with EnumNames, types with Fields, and
/// std::vector, std::array and std::variant of these. For other types, specialise FieldValue.
namespace trovik {

/// The value `true`, for commands and fields that accept no other value.
struct Yes {};

/// Must be specialised for each enumeration, with a static member `names` that lists (name, value)
/// pairs.
template <typename Enum>
struct EnumNames;

/// Provides Read, Write and Describe for one type. Read expects a value that the schema accepts.
/// Describe returns the alternatives that the type accepts: "boolean", "integer", "number",
/// "string", "null", {"enum": […]}, {"array": alternatives of the items} or {"object": {field:
/// alternatives}}.
template <typename T, typename = void>
struct FieldValue;

/// A list with one alternative, in the form that Describe returns.
inline nlohmann::json Alternative(const char* kind) {
    nlohmann::json all = nlohmann::json::array();
    all.push_back(kind);
    return all;
}
inline nlohmann::json Alternative(const char* kind, nlohmann::json content) {
    nlohmann::json one = nlohmann::json::object();
    one[kind] = std::move(content);
    nlohmann::json all = nlohmann::json::array();
    all.push_back(std::move(one));
    return all;
}

/// Reads a value; error messages include its position. \throw HostError for out-of-range numbers.
template <typename T>
T ReadField(const FieldReader& from) {
    T value{};
    FieldValue<T>::Read(from, value);
    return value;
}

template <typename T>
struct IsOptional : std::false_type {};
template <typename T>
struct IsOptional<std::optional<T>> : std::true_type {};

/// Visitors for Fields.
class FieldsIn {
public:
    explicit FieldsIn(const FieldReader& object) : from(object) {}
    template <typename T>
    void operator()(const char* name, T& value) {
        if (!from.Has(name)) return;
        if constexpr (IsOptional<T>::value)
            FieldValue<typename T::value_type>::Read(from.At(name), value.emplace());
        else
            FieldValue<T>::Read(from.At(name), value);
    }

private:
    const FieldReader& from;
};

class FieldsOut {
public:
    template <typename T>
    void operator()(const char* name, const T& value) {
        if constexpr (IsOptional<T>::value) {
            if (value) object[name] = FieldValue<typename T::value_type>::Write(*value);
        } else {
            object[name] = FieldValue<T>::Write(value);
        }
    }
    nlohmann::json object = nlohmann::json::object();
};

class FieldsListed {
public:
    template <typename T>
    void operator()(const char* name, const T&) {
        if constexpr (IsOptional<T>::value)
            fields[name] = FieldValue<typename T::value_type>::Describe();
        else
            fields[name] = FieldValue<T>::Describe();
    }
    nlohmann::json fields = nlohmann::json::object();
};

template <typename T>
concept HasFields = requires(T& value, FieldsListed& visit) {
    value.Fields(visit);
};

template <typename T>
struct FieldValue<T, std::enable_if_t<HasFields<T>>> {
    static bool Accepts(const nlohmann::json& json) { return json.is_object(); }
    static void Read(const FieldReader& from, T& value) {
        FieldsIn visit(from);
        value.Fields(visit);
    }
    static nlohmann::json Write(const T& value) {
        FieldsOut visit;
        // A visitor that writes JSON does not change the value.
        const_cast<T&>(value).Fields(visit);
        return visit.object;
    }
    static nlohmann::json Describe() {
        FieldsListed visit;
        T value{};
        value.Fields(visit);
        return Alternative("object", visit.fields);
    }
};

template <>
struct FieldValue<float> {
    static bool Accepts(const nlohmann::json& json) { return json.is_number(); }
    static void Read(const FieldReader& from, float& value) { value = from.Number(); }
    static nlohmann::json Write(float value) { return static_cast<double>(value); }
    static nlohmann::json Describe() { return Alternative("number"); }
};

template <typename T>
struct FieldValue<T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool>>> {
    static bool Accepts(const nlohmann::json& json) { return json.is_number_integer(); }
    static void Read(const FieldReader& from, T& value) {
        if constexpr (sizeof(T) > sizeof(int))
            value = from.Json().get<T>();
        else
            value = static_cast<T>(from.Integer());
    }
    static nlohmann::json Write(T value) { return value; }
    static nlohmann::json Describe() { return Alternative("integer"); }
};

template <>
struct FieldValue<bool> {
    static bool Accepts(const nlohmann::json& json) { return json.is_boolean(); }
    static void Read(const FieldReader& from, bool& value) { value = from.Flag(); }
    static nlohmann::json Write(bool value) { return value; }
    static nlohmann::json Describe() { return Alternative("boolean"); }
};

template <>
struct FieldValue<std::string> {
    static bool Accepts(const nlohmann::json& json) { return json.is_string(); }
    static void Read(const FieldReader& from, std::string& value) { value = from.Text(); }
    static nlohmann::json Write(const std::string& value) { return value; }
    static nlohmann::json Describe() { return Alternative("string"); }
};

template <>
struct FieldValue<std::nullptr_t> {
    static bool Accepts(const nlohmann::json& json) { return json.is_null(); }
    static void Read(const FieldReader&, std::nullptr_t&) {}
    static nlohmann::json Write(std::nullptr_t) { return nullptr; }
    static nlohmann::json Describe() { return Alternative("null"); }
};

template <>
struct FieldValue<Yes> {
    static bool Accepts(const nlohmann::json& json) { return json.is_boolean(); }
    static void Read(const FieldReader&, Yes&) {}
    static nlohmann::json Write(Yes) { return true; }
    static nlohmann::json Describe() { return Alternative("enum", nlohmann::json::array({true})); }
};

template <>
struct FieldValue<Vector> {
    static bool Accepts(const nlohmann::json& json) { return json.is_array(); }
    static void Read(const FieldReader& from, Vector& value) { value = from.ThreeNumbers(); }
    static nlohmann::json Write(const Vector& value) {
        return nlohmann::json::array({static_cast<double>(value.x),
                                      static_cast<double>(value.y),
                                      static_cast<double>(value.z)});
    }
    static nlohmann::json Describe() { return Alternative("array", Alternative("number")); }
};

template <typename T>
struct FieldValue<T, std::enable_if_t<std::is_enum_v<T>>> {
    static bool Accepts(const nlohmann::json& json) { return json.is_string(); }
    static void Read(const FieldReader& from, T& value) {
        for (const auto& [name, one] : EnumNames<T>::names)
            if (from.Json() == name) value = one;
    }
    static nlohmann::json Write(T value) {
        for (const auto& [name, one] : EnumNames<T>::names)
            if (one == value) return name;
        return nullptr;
    }
    static nlohmann::json Describe() {
        nlohmann::json list = nlohmann::json::array();
        for (const auto& [name, ignored] : EnumNames<T>::names) list.push_back(name);
        return Alternative("enum", std::move(list));
    }
};

template <typename T>
struct FieldValue<std::vector<T>> {
    static bool Accepts(const nlohmann::json& json) { return json.is_array(); }
    static void Read(const FieldReader& from, std::vector<T>& value) {
        value.resize(from.Size());
        for (std::size_t i = 0; i < value.size(); ++i) FieldValue<T>::Read(from.At(i), value[i]);
    }
    static nlohmann::json Write(const std::vector<T>& value) {
        nlohmann::json list = nlohmann::json::array();
        for (const T& one : value) list.push_back(FieldValue<T>::Write(one));
        return list;
    }
    static nlohmann::json Describe() { return Alternative("array", FieldValue<T>::Describe()); }
};

/// The schema ensures that the list has exactly `size` items.
template <typename T, std::size_t size>
struct FieldValue<std::array<T, size>> {
    static bool Accepts(const nlohmann::json& json) { return json.is_array(); }
    static void Read(const FieldReader& from, std::array<T, size>& value) {
        for (std::size_t i = 0; i < size; ++i) FieldValue<T>::Read(from.At(i), value[i]);
    }
    static nlohmann::json Write(const std::array<T, size>& value) {
        nlohmann::json list = nlohmann::json::array();
        for (const T& one : value) list.push_back(FieldValue<T>::Write(one));
        return list;
    }
    static nlohmann::json Describe() { return Alternative("array", FieldValue<T>::Describe()); }
};

/// Reads the value as the first alternative that accepts its JSON type.
template <typename... T>
struct FieldValue<std::variant<T...>> {
    static bool Accepts(const nlohmann::json& json) {
        return (FieldValue<T>::Accepts(json) || ...);
    }
    static void Read(const FieldReader& from, std::variant<T...>& value) {
        (ReadAs<T>(from, value) || ...);
    }
    static nlohmann::json Write(const std::variant<T...>& value) {
        return std::visit(
            [](const auto& one) { return FieldValue<std::decay_t<decltype(one)>>::Write(one); },
            value);
    }
    static nlohmann::json Describe() {
        nlohmann::json all = nlohmann::json::array();
        (Append(all, FieldValue<T>::Describe()), ...);
        return all;
    }

private:
    template <typename One>
    static bool ReadAs(const FieldReader& from, std::variant<T...>& value) {
        if (!FieldValue<One>::Accepts(from.Json())) return false;
        FieldValue<One>::Read(from, value.template emplace<One>());
        return true;
    }
    static void Append(nlohmann::json& all, const nlohmann::json& more) {
        all.insert(all.end(), more.begin(), more.end());
    }
};

}  // namespace trovik
