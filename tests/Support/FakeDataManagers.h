#pragma once
// FakeDataManagers: a gmock stand-in for the data-manager contract the use cases and the facade call.

#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"

namespace ycontacts::testsupport {

class FakeContactsDataManager : public YContactsDataManagerContract {
public:
    MOCK_METHOD(void, start, (const std::string&, const std::optional<std::string>&), (override));
    MOCK_METHOD(void, runInitialFetch, (const std::string&, const std::optional<std::string>&), (override));
    MOCK_METHOD(void, syncContacts, (const std::string&, const std::optional<std::string>&), (override));
    MOCK_METHOD(std::optional<ContactCount>, getContactCount, (const std::string&), (override));
    MOCK_METHOD(void, resetAndStart, (const std::string&, const std::optional<std::string>&), (override));
    MOCK_METHOD(std::optional<double>, lastUpdatedTime, (const std::string&), (override));
    MOCK_METHOD(bool, isSyncInProgress, (const std::string&), (override));
    MOCK_METHOD(void, getContacts, (const YContactsQuery&, ContactsCallback), (override));
    MOCK_METHOD(void, getContactsList, (const YContactsQuery&, ContactsCallback), (override));
    MOCK_METHOD(void, getContactsFromIds, (const YGetContactsFromIdsRequest&, ContactsCallback), (override));
    MOCK_METHOD(void, getContact, (const YGetContactRequest&, ContactCallback), (override));
    MOCK_METHOD(void, getContactImage, (const YGetContactImageRequest&, ImageHandler), (override));
    MOCK_METHOD(void, getSuggestionContacts, (const YContactsQuery&, SuggestionsCallback), (override));
    MOCK_METHOD(void, getOrgContactSuggestions, (const YContactsQuery&, OrgSuggestionsCallback), (override));
    MOCK_METHOD(void, getUsageCount, (const std::string&, UsageCountCallback), (override));
    MOCK_METHOD(void, removeAllData, (const std::string&), (override));
    MOCK_METHOD(bool, wasInitialDownloadCompleted, (const std::string&, const std::optional<std::string>&),
                (override));
};

}  // namespace ycontacts::testsupport
