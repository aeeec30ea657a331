#pragma once
// YRawValue: the two-way mapping between an enumeration's cases and the raw strings used on the wire and in logs.

#include <optional>
#include <string_view>
#include <type_traits>

namespace ycontacts {

template <class E>
struct YRawValueEntry {
    E value;
    std::string_view raw;
};

// Specialised once per enumeration with `static constexpr YRawValueEntry<E> entries[] = {...};`.
template <class E>
struct YRawValues;

template <class E>
concept RawValueEnum = std::is_enum_v<E> && requires { YRawValues<E>::entries; };

// The raw string of a case; empty only for a value that is not one of the enumeration's cases.
template <RawValueEnum E>
constexpr std::string_view toRawValue(E value) {
    for (const auto& entry : YRawValues<E>::entries) {
        if (entry.value == value) return entry.raw;
    }
    return {};
}

// The case whose raw string is exactly `raw` (case-sensitive); no value for any other string.
template <RawValueEnum E>
constexpr std::optional<E> fromRawValue(std::string_view raw) {
    for (const auto& entry : YRawValues<E>::entries) {
        if (entry.raw == raw) return entry.value;
    }
    return std::nullopt;
}

}  // namespace ycontacts
