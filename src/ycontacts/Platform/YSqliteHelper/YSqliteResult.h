#pragma once
// YSqliteResult: the success-or-error outcome of a YSqliteHelper operation (a value, or an SQLite error).

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace ycontacts {

struct YSqliteError {
    // An SQLite primary result code (SQLITE_CONSTRAINT, SQLITE_MISUSE, ...).
    int code;
    std::string message;
};

// Warn-if-unused: a result dropped without a look is a failure nobody hears of.
template <typename T>
class [[nodiscard]] YSqliteResult {
public:
    YSqliteResult(T value) : storage_(std::in_place_index<0>, std::move(value)) {}
    YSqliteResult(YSqliteError error) : storage_(std::in_place_index<1>, std::move(error)) {}

    bool ok() const { return storage_.index() == 0; }

    // The value of a successful result; a failed one gives an empty value rather than throwing.
    const T& value() const {
        if (const T* value = std::get_if<0>(&storage_)) return *value;
        static const T empty{};
        return empty;
    }

    // The value of a successful result moved out, for callers that keep it; a failed one gives an empty value.
    T takeValue() {
        if (T* value = std::get_if<0>(&storage_)) return std::move(*value);
        return T{};
    }

    // The error of a failed result; a successful one gives code 0 and no message.
    const YSqliteError& error() const {
        if (const YSqliteError* error = std::get_if<1>(&storage_)) return *error;
        static const YSqliteError none{0, {}};
        return none;
    }

private:
    std::variant<T, YSqliteError> storage_;
};

template <>
class [[nodiscard]] YSqliteResult<void> {
public:
    YSqliteResult() = default;
    YSqliteResult(YSqliteError error) : error_(std::move(error)) {}

    bool ok() const { return !error_.has_value(); }

    void value() const {}

    const YSqliteError& error() const {
        static const YSqliteError none{0, {}};
        return error_ ? *error_ : none;
    }

private:
    std::optional<YSqliteError> error_;
};

}  // namespace ycontacts
