#pragma once
// YContactType: whether a contact entry is a single user or a group.

#include "ycontacts/Contacts/Domain/Entities/YJsonCoding.h"
#include "ycontacts/Platform/MarloComponents/YRawValue.h"

namespace ycontacts {

enum class YContactType { group, user };

template <>
struct YRawValues<YContactType> {
    static constexpr YRawValueEntry<YContactType> entries[] = {
        {YContactType::group, "group"},
        {YContactType::user, "user"},
    };
};

template <JsonDocument J>
void to_json(J& json, YContactType value) {
    jsoncoding::encodeRawValue(json, value);
}

template <JsonDocument J>
void from_json(const J& json, YContactType& value) {
    jsoncoding::decodeRawValue(json, value);
}

}  // namespace ycontacts
