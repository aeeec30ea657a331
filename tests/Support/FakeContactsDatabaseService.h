#pragma once
// FakeContactsDatabaseService: a gmock store; every read answers absent and every write succeeds unless a test says otherwise.

#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Contracts/YContactsDatabaseContract.h"

namespace ycontacts::testsupport {

class FakeContactsDatabaseService : public YContactsDatabaseContract {
public:
    FakeContactsDatabaseService() {
        using ::testing::Return;
        ON_CALL(*this, save).WillByDefault(Return(true));
        ON_CALL(*this, updateContacts).WillByDefault(Return(true));
        ON_CALL(*this, deleteContacts).WillByDefault(Return(true));
        ON_CALL(*this, updateContactId).WillByDefault(Return(true));
        ON_CALL(*this, deleteAllDetails).WillByDefault(Return(true));
        ON_CALL(*this, fixPersonalContacts).WillByDefault(Return(true));
        ON_CALL(*this, updateContactsUsageCount).WillByDefault(Return(true));
        ON_CALL(*this, addCategories).WillByDefault(Return(true));
        ON_CALL(*this, deleteCategories).WillByDefault(Return(true));
    }

    MOCK_METHOD(bool, save, (const std::string&, const std::vector<YContact>&), (override));
    MOCK_METHOD(std::optional<ContactCount>, getContactCount, (const std::string&), (override));
    MOCK_METHOD(bool, updateContacts, (const std::string&, const std::vector<YContact>&), (override));
    MOCK_METHOD(bool, deleteContacts, (const std::string&, const std::vector<std::string>&), (override));
    MOCK_METHOD(bool, updateContactId, (const std::string&, const std::string&, const std::string&), (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContacts, (const YContactsQuery&), (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContactsList, (const YContactsQuery&), (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContactsFromEmailIds,
                (const std::string&, const std::vector<std::string>&, std::optional<bool>), (override));
    MOCK_METHOD(std::optional<YContact>, getContactByEmailId, (const std::string&, const std::string&, bool),
                (override));
    MOCK_METHOD(std::optional<YContact>, getContactByContactYuid, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(std::optional<YContact>, getContactByContactId, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(bool, deleteAllDetails, (const std::string&), (override));
    MOCK_METHOD(std::optional<std::vector<YSuggestionContact>>, getSuggestionContacts, (const YContactsQuery&),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getOrgContactSuggestions, (const YContactsQuery&), (override));
    MOCK_METHOD(bool, fixPersonalContacts, (const std::string&), (override));
    MOCK_METHOD(bool, updateContactsUsageCount, (const std::string&, (const std::map<std::string, std::string>&)),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContacts, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(bool, addCategories, (const std::string&, const std::vector<YContactCategory>&), (override));
    MOCK_METHOD(std::optional<std::vector<YContactCategory>>, getCategories, (const std::string&), (override));
    MOCK_METHOD(bool, deleteCategories, (const std::string&, const std::vector<std::string>&), (override));
};

}  // namespace ycontacts::testsupport
