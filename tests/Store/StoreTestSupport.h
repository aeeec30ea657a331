#pragma once
// StoreTestSupport: a fresh contacts database per test, registered under its own identifier with tables made.

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Support/TemporaryDirectory.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseService.h"

namespace ycontacts::storetest {

class StoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        static std::atomic<int> counter{0};
        identifier_ = "StoreTest-" + std::to_string(counter++);
        store = std::make_shared<YContactsDatabaseService>(identifier_, directory_.file("contacts.sqlite"));
        ASSERT_TRUE(YContactsDatabaseSchema::createTables(identifier_));
    }

    void TearDown() override {
        store.reset();
        YSqliteHelper::getShared().unregisterDB(identifier_);
    }

    // Rows of `table` matching `where`, across all users.
    std::int64_t countRows(const std::string& table, const std::string& where = "1") {
        const auto rows = YSqliteHelper::getShared().select("SELECT COUNT(*) AS n FROM " + table + " WHERE " + where,
                                                            true, identifier_);
        EXPECT_TRUE(rows.ok());
        if (!rows.ok() || rows.value().empty()) return -1;
        return std::get<std::int64_t>(rows.value().front().at("n"));
    }

    const std::string& identifier() const { return identifier_; }

    std::shared_ptr<YContactsDatabaseService> store;

private:
    testsupport::TemporaryDirectory directory_;
    std::string identifier_;
};

inline YContact contact(const std::string& id, const std::string& firstName, int weightage = 0,
                        bool isOrg = false) {
    YContact made(id, firstName, 1700000000);
    made.weightage = weightage;
    made.isOrg = isOrg;
    return made;
}

inline YContact withEmail(YContact made, const std::string& address) {
    YContact::Email email(address);
    email.isPrimary = made.emails.empty();
    if (!made.primaryEmail) made.primaryEmail = email;
    made.emails.push_back(email);
    return made;
}

inline std::vector<std::string> idsOf(const std::optional<std::vector<YContact>>& contacts) {
    std::vector<std::string> ids;
    if (contacts) {
        for (const auto& each : *contacts) ids.push_back(each.contactId);
    }
    return ids;
}

}  // namespace ycontacts::storetest
