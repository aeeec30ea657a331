#pragma once
// FakeDataManagers: gmock stand-ins for the three data-manager contracts the use cases and the facade call.

#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Domain/DataManagerContract/YCategoriesDataManagerContract.h"
#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsUpdateDataManagerContract.h"

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

class FakeCategoriesDataManager : public YCategoriesDataManagerContract {
public:
    MOCK_METHOD(void, fetchCategories, (const std::string&, RequestType, CategoriesCallback), (override));
    MOCK_METHOD(void, fetchContactsInCategory, (const std::string&, const std::string&, RequestType, ContactsCallback),
                (override));
};

class FakeUpdateDataManager : public YContactsUpdateDataManagerContract {
public:
    MOCK_METHOD(void, updateContact,
                (const std::string&, const std::vector<YContact>&, bool, const std::string&, const std::string&,
                 UpdateCallback),
                (override));
    MOCK_METHOD(void, deleteContact, (const std::string&, const std::string&, bool, UpdateCallback), (override));
};

}  // namespace ycontacts::testsupport
