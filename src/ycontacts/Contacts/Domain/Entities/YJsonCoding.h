#pragma once
// YJsonCoding: the keyed JSON rules every codable record follows: strict required fields, optional fields only when present.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

// The JSON library's types cross the shared library's boundary (hosts call the records' coding with them), so
// they keep default visibility although the library is built with hidden visibility.
#if defined(__GNUC__) || defined(__clang__)
#pragma GCC visibility push(default)
#endif
#include <nlohmann/json.hpp>
#if defined(__GNUC__) || defined(__clang__)
#pragma GCC visibility pop
#endif

#include "ycontacts/Platform/MarloComponents/YRawValue.h"

namespace ycontacts {

// The JSON documents records code to and from: plain (keys sorted) and ordered (keys in field order).
template <class J>
concept JsonDocument = std::same_as<J, nlohmann::json> || std::same_as<J, nlohmann::ordered_json>;

namespace jsoncoding {

template <JsonDocument J>
void requireObject(const J& value, std::string_view record) {
    if (!value.is_object()) {
        throw J::type_error::create(
            302, std::string(record) + " must be an object, but is " + value.type_name(), &value);
    }
}

// Decodes one value as T without conversions: integers must be JSON integers that fit T
// (a float or a numeric string fails), booleans and strings must be exactly that.
template <class T, JsonDocument J>
T decodeValue(const J& value) {
    if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
        if (!value.is_number_integer()) {
            throw J::type_error::create(
                302, std::string("type must be an integer number, but is ") + value.type_name(), &value);
        }
        const bool fits = value.is_number_unsigned()
                              ? std::in_range<T>(value.template get<std::uint64_t>())
                              : std::in_range<T>(value.template get<std::int64_t>());
        if (!fits) throw J::out_of_range::create(406, "integer " + value.dump() + " is out of range", &value);
        return value.template get<T>();
    } else {
        return value.template get<T>();
    }
}

// A required field: a missing key, a null or a mistyped value fails the decode.
template <class T, JsonDocument J>
T decodeRequired(const J& object, const char* key) {
    return decodeValue<T>(object.at(key));
}

// An optional field: read only when the key is present and not null; then it must have the right type.
template <class T, JsonDocument J>
std::optional<T> decodeIfPresent(const J& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return std::nullopt;
    return decodeValue<T>(*found);
}

// Writes an optional field only when it has a value.
template <JsonDocument J, class T>
void encodeIfPresent(J& object, const char* key, const std::optional<T>& value) {
    if (value) object[key] = *value;
}

template <JsonDocument J, RawValueEnum E>
void encodeRawValue(J& json, E value) {
    json = std::string(toRawValue(value));
}

// An enumeration decodes only from one of its raw strings; any other string or type fails.
template <JsonDocument J, RawValueEnum E>
void decodeRawValue(const J& json, E& value) {
    if (!json.is_string()) {
        throw J::type_error::create(302, std::string("type must be string, but is ") + json.type_name(), &json);
    }
    const auto& raw = json.template get_ref<const typename J::string_t&>();
    const auto decoded = fromRawValue<E>(raw);
    if (!decoded) throw J::type_error::create(302, "unknown raw value \"" + raw + "\"", &json);
    value = *decoded;
}

}  // namespace jsoncoding
}  // namespace ycontacts
