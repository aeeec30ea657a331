#pragma once
// YContactsParserContract: turns the contacts server's reply bodies into contact records and responses.

#include <cstdint>
#include <optional>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YCategoryNetworkResponse.h"
#include "ycontacts/Contacts/Data/Network/YContactNetworkResponse.h"
#include "ycontacts/Contacts/Data/Network/YContactUsageCountNetworkResponse.h"
#include "ycontacts/Contacts/Data/Network/YContactsHost.h"
#include "ycontacts/Contacts/Data/Network/YUpdateContactNetworkResponse.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"

namespace ycontacts {

class YContactsParserContract {
public:
    using Body = std::optional<std::vector<std::uint8_t>>;

    virtual ~YContactsParserContract() = default;

    // One page of a contact list. Absent when the body cannot be read; `syncTime` (ms since 1970) present
    // splits the page into new, updated and deleted contacts.
    virtual std::optional<YContactNetworkResponse> parseSyncContacts(const YContactsHost& host, const Body& data,
                                                                     bool isOrg,
                                                                     std::optional<double> syncTime) const = 0;
    // A search reply: the readable contacts in order, absent when the body cannot be read.
    virtual std::optional<std::vector<YContact>> parseContacts(const YContactsHost& host, const Body& data,
                                                               bool isOrg) const = 0;
    // Usage counts by contact id, written in decimal; absent when the body cannot be read.
    virtual std::optional<YContactUsageCountNetworkResponse> parseContactUsageCount(const Body& data) const = 0;
    // The user's categories. An unreadable body gives a response whose error is parserError.
    virtual YCategoryNetworkResponse parseFetchCategories(const Body& data) const = 0;
    // The reply to adding contacts: the status and the new ids. An unreadable body gives parserError, an
    // error reply authorizationError (401, 403) or unknownError.
    virtual YUpdateContactNetworkResponse parseUpdateContacts(const Body& data) const = 0;
    // The reply to deleting contacts, read as parseUpdateContacts reads an add reply, without ids.
    virtual YUpdateContactNetworkResponse parseDeleteContacts(const Body& data) const = 0;
};

}  // namespace ycontacts
