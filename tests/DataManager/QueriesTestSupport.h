#pragma once
// QueriesTestSupport: contact makers and answer recorders for the query tests, and the fakes they use.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Support/FakeContactsDatabaseService.h"
#include "Support/FakeContactsNetworkService.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsQueries.h"

namespace ycontacts::querytest {

using ::testing::NiceMock;
using testsupport::FakeContactsDatabaseService;
using testsupport::FakeContactsNetworkService;

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

// A look-up of user "u" by e-mail addresses (the only ids it reads), as the use case passes it on.
inline YGetContactsFromIdsRequest byAddresses(std::optional<Ids> emailIds, std::optional<bool> isOrg,
                                              std::optional<Ids> contactIds = std::nullopt) {
    YGetContactsFromIdsRequest request("u");
    request.emailIds = std::move(emailIds);
    request.contactIds = std::move(contactIds);
    request.isOrg = isOrg;
    return request;
}

// A look-up of one contact of user "u" with whichever of the three ids are given.
inline YGetContactRequest lookUp(std::optional<std::string> contactId, std::optional<std::string> contactYuid,
                                 std::optional<std::string> emailId, bool preferPersonalInfo = false) {
    YGetContactRequest request("u");
    request.contactId = std::move(contactId);
    request.contactYuid = std::move(contactYuid);
    request.emailId = std::move(emailId);
    request.preferPersonalInfo = preferPersonalInfo;
    return request;
}

// Matches the query a store read is asked with, by the fields a read looks at (`_` for any of them).
template <class Yuid, class IsOrg, class SearchStr, class From, class Limit>
auto storeQuery(Yuid yuid, IsOrg isOrg, SearchStr searchStr, From from, Limit limit) {
    using ::testing::Field;
    return ::testing::AllOf(Field(&YContactsQuery::yuid, yuid), Field(&YContactsQuery::isOrg, isOrg),
                            Field(&YContactsQuery::searchStr, searchStr), Field(&YContactsQuery::from, from),
                            Field(&YContactsQuery::limit, limit));
}

// The ids of one recorded answer, or absent.
inline std::optional<Ids> some(Ids ids) { return std::optional<Ids>(std::move(ids)); }

// Builds queries over fresh fakes and counts how often they restart the in-memory timer.
class QueriesTest : public ::testing::Test {
protected:
    std::shared_ptr<YContactsQueries> makeQueries(int batchLimit = 1000, bool withDatabase = true,
                                                  bool withNetwork = true) {
        return std::make_shared<YContactsQueries>(withDatabase ? database : nullptr, withNetwork ? network : nullptr,
                                                  [this] { ++timerRestarts; }, batchLimit);
    }

    std::shared_ptr<NiceMock<FakeContactsDatabaseService>> database =
        std::make_shared<NiceMock<FakeContactsDatabaseService>>();
    std::shared_ptr<NiceMock<FakeContactsNetworkService>> network =
        std::make_shared<NiceMock<FakeContactsNetworkService>>();
    int timerRestarts = 0;
};

}  // namespace ycontacts::querytest
