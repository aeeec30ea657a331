#pragma once
// YContactsNetworkCall: names which kind of server call is meant.

#include "ycontacts/Platform/MarloComponents/YRawValue.h"

namespace ycontacts {

enum class YContactsNetworkCall { getContacts, getContactImage, getContactsUsageCount };

// Case names, for log lines.
template <>
struct YRawValues<YContactsNetworkCall> {
    using E = YContactsNetworkCall;
    static constexpr YRawValueEntry<E> entries[] = {
        {E::getContacts, "getContacts"},
        {E::getContactImage, "getContactImage"},
        {E::getContactsUsageCount, "getContactsUsageCount"},
    };
};

}  // namespace ycontacts
