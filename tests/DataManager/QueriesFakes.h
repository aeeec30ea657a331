#pragma once
// QueriesFakes: gmock stand-ins for the store and the server, and answer recorders for the query tests.

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Contracts/YContactsDatabaseContract.h"
#include "ycontacts/Contacts/Data/Contracts/YContactsNetworkContract.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsQueries.h"

namespace ycontacts::querytest {

class MockDatabase : public YContactsDatabaseContract {
public:
    MOCK_METHOD(void, save, (const std::string&, const std::vector<YContact>&), (override));
    MOCK_METHOD(std::optional<ContactCount>, getContactCount, (const std::string&), (override));
    MOCK_METHOD(void, updateContacts, (const std::string&, const std::vector<YContact>&), (override));
    MOCK_METHOD(void, deleteContacts, (const std::string&, const std::vector<std::string>&), (override));
    MOCK_METHOD(void, updateContactId, (const std::string&, const std::string&, const std::string&), (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContacts,
                (const std::string&, std::optional<bool>, const std::optional<std::string>&, std::optional<int>,
                 std::optional<int>),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContactsList,
                (const std::string&, std::optional<bool>, const std::optional<std::string>&, std::optional<int>,
                 std::optional<int>),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContactsFromEmailIds,
                (const std::string&, const std::vector<std::string>&, std::optional<bool>), (override));
    MOCK_METHOD(std::optional<YContact>, getContactByEmailId, (const std::string&, const std::string&, bool),
                (override));
    MOCK_METHOD(std::optional<YContact>, getContactByContactYuid, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(std::optional<YContact>, getContactByContactId, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(void, deleteAllDetails, (const std::string&), (override));
    MOCK_METHOD(std::optional<std::vector<YSuggestionContact>>, getSuggestionContacts,
                (const std::string&, std::optional<bool>, const std::string&, int), (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getOrgContactSuggestions,
                (const std::string&, const std::optional<std::string>&, std::optional<int>, int, bool, bool),
                (override));
    MOCK_METHOD(void, fixPersonalContacts, (const std::string&), (override));
    MOCK_METHOD(void, updateContactsUsageCount, (const std::string&, (const std::map<std::string, std::string>&)),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContacts, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(void, addCategories, (const std::string&, const std::vector<YContactCategory>&), (override));
    MOCK_METHOD(std::optional<std::vector<YContactCategory>>, getCategories, (const std::string&), (override));
    MOCK_METHOD(void, deleteCategories, (const std::string&, const std::vector<std::string>&), (override));
};

// A server search the test answers later, in any order.
struct HeldSearch {
    std::string yuid;
    std::optional<std::string> yoid;
    bool isOrg = false;
    std::optional<int> limit;
    std::optional<std::string> searchText;
    YContactsNetworkContract::SearchCallback callback;
};

class MockNetwork : public YContactsNetworkContract {
public:
    MockNetwork() {
        ON_CALL(*this, searchContacts)
            .WillByDefault([this](const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                                  std::optional<int> limit, const std::optional<std::string>& searchText,
                                  SearchCallback callback) {
                if (onSearch) onSearch();
                held.push_back({yuid, yoid, isOrg, limit, searchText, std::move(callback)});
            });
    }

    MOCK_METHOD(void, getContacts,
                (const std::string&, const std::optional<std::string>&, bool, int, int, std::optional<double>,
                 ContactsPageCallback),
                (override));
    MOCK_METHOD(void, searchContacts,
                (const std::string&, const std::optional<std::string>&, bool, std::optional<int>,
                 const std::optional<std::string>&, SearchCallback),
                (override));
    MOCK_METHOD(void, getContactUsageCount, (const std::string&, UsageCountCallback), (override));
    MOCK_METHOD(void, cancelTasks, (const std::string&), (override));

    // Answers the held search at `index` (in the order they were made).
    void answer(std::size_t index, std::optional<std::vector<YContact>> contacts) {
        held.at(index).callback(std::move(contacts));
    }

    std::vector<HeldSearch> held;
    // Runs as each search is made, before it is held; lets a test log the moment the server is asked.
    std::function<void()> onSearch;
};

inline YContact contact(const std::string& id, const std::string& firstName,
                        const std::optional<std::string>& lastName = std::nullopt, int weightage = 0,
                        bool isOrg = false) {
    YContact result(id, firstName, 0);
    result.lastName = lastName;
    result.weightage = weightage;
    result.isOrg = isOrg;
    return result;
}

inline std::vector<std::string> idsOf(const std::vector<YContact>& contacts) {
    std::vector<std::string> ids;
    for (const YContact& c : contacts) ids.push_back(c.contactId);
    return ids;
}

// Every answer a contacts callback received, in order; absent answers are recorded as absent.
struct ContactsAnswers {
    std::vector<std::optional<std::vector<std::string>>> answers;

    YContactsQueries::ContactsCallback callback(std::vector<std::string>* log = nullptr,
                                                const std::string& label = "answer") {
        return [this, log, label](std::optional<std::vector<YContact>> contacts) {
            if (log) log->push_back(label);
            answers.push_back(contacts ? std::optional(idsOf(*contacts)) : std::nullopt);
        };
    }
};

using Ids = std::vector<std::string>;

// The ids of one recorded answer, or absent.
inline std::optional<Ids> some(Ids ids) { return std::optional<Ids>(std::move(ids)); }

}  // namespace ycontacts::querytest
