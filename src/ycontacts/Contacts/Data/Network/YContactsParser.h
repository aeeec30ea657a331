#pragma once
// YContactsParser: reads the contacts server's JSON replies (envelope, contact objects, usage counts).

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include <simdjson.h>

#include "ycontacts/Contacts/Data/Network/YContactsParserContract.h"

namespace ycontacts {

// Stateless as far as callers can tell. Each thread that reads a body keeps one JSON parser and its buffers
// (a few times the size of the largest body that thread has read) for the next body, because getting them
// from the system afresh for every page costs more than the parse.
class YContactsParser : public YContactsParserContract {
public:
    // What the envelope of a list reply gives. Both absent: the body is unreadable. `hasMore` false and no
    // list: the not-found reply, an empty final page.
    struct ContactsDict {
        std::optional<bool> hasMore;
        std::optional<std::vector<simdjson::dom::element>> contacts;
    };

    // New, updated and deleted parts of one incremental page.
    struct SplitContacts {
        std::optional<std::vector<YContact>> newContacts;
        std::optional<std::vector<YContact>> updatedContacts;
        std::optional<std::vector<std::string>> deletedContacts;
    };

    YContactsParser() = default;

    std::optional<YContactNetworkResponse> parseSyncContacts(const YContactsHost& host, const Body& data, bool isOrg,
                                                             std::optional<double> syncTime) const override;
    std::optional<std::vector<YContact>> parseContacts(const YContactsHost& host, const Body& data,
                                                       bool isOrg) const override;
    std::optional<YContactUsageCountNetworkResponse> parseContactUsageCount(const Body& data) const override;
    YCategoryNetworkResponse parseFetchCategories(const Body& data) const override;
    YUpdateContactNetworkResponse parseUpdateContacts(const Body& data) const override;
    YUpdateContactNetworkResponse parseDeleteContacts(const Body& data) const override;

    // Reads the envelope of a parsed body; the elements stay valid as long as `root`'s document does.
    static ContactsDict getContactsDict(simdjson::dom::object root);
    // Every readable contact of the list, each marked with `isOrg`.
    static std::optional<std::vector<YContact>> getContacts(const std::vector<simdjson::dom::element>& contactsDict,
                                                            bool isOrg);
    // Tombstones become deleted ids; other contacts are new when created after `syncTime`, else updated.
    static SplitContacts getSplitedContacts(const std::vector<simdjson::dom::element>& contactsDict, bool isOrg,
                                            double syncTime);
    // One contact object; absent when it is not an object or has no text "contact_id".
    static std::optional<YContact> getContact(simdjson::dom::element dict);

    static YContact::URLType getUrlType(std::string_view value);
    static YContact::IMType getImType(std::string_view value);
};

}  // namespace ycontacts
