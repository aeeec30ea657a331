#include "EndToEnd/ServerExpectations.h"

#include <sqlite3.h>

#include <algorithm>
#include <map>

#include <nlohmann/json.hpp>

#include "Domain/ContactComparison.h"

namespace ycontacts::endtoend {

namespace {

using sample_server::SampleAddress;
using sample_server::SampleContact;

const char* const contactTables[] = {"YContactDetail",     "YContactPhoneTable", "YContactEmailTable",
                                     "YContactIMTable",    "YContactUrlTable",   "YContactCategoryTable"};

// The type a wire word names, or `fallback` for a word the table does not know.
template <class Type>
Type typeOf(const std::map<std::string, Type>& words, const std::string& word, Type fallback) {
    const auto found = words.find(word);
    return found == words.end() ? fallback : found->second;
}

YContact::PhoneType phoneType(const std::string& word) {
    using T = YContact::PhoneType;
    return typeOf<T>({{"mobile", T::mobile}, {"home", T::home}, {"work", T::work}, {"fax", T::fax}}, word, T::others);
}

YContact::URLType urlType(const std::string& word) {
    using T = YContact::URLType;
    return typeOf<T>({{"home", T::personal}, {"work", T::company}, {"blog", T::blog}, {"linkedin", T::linkedIn},
                      {"facebook", T::facebook}, {"twitter", T::twitter}, {"amazon", T::amazon}, {"flickr", T::flikr},
                      {"delicious", T::delicious}},
                     word, T::other);
}

YContact::IMType imType(const std::string& word) {
    using T = YContact::IMType;
    return typeOf<T>({{"google", T::google}, {"yahoo", T::yahoo}, {"skype", T::skype}, {"aol", T::aol},
                      {"icq", T::icq}, {"msn", T::msn}, {"jabber", T::jabber}},
                     word, T::others);
}

std::optional<std::string> unlessEmpty(const std::string& text) {
    if (text.empty()) return std::nullopt;
    return text;
}

// The server leaves empty parts out; an address with no part at all is no address for the store.
std::optional<YContact::Address> address(const std::optional<SampleAddress>& sample) {
    if (!sample) return std::nullopt;
    YContact::Address result;
    result.streetAddress1 = unlessEmpty(sample->street1);
    result.streetAddress2 = unlessEmpty(sample->street2);
    result.city = unlessEmpty(sample->city);
    result.state = unlessEmpty(sample->state);
    result.country = unlessEmpty(sample->country);
    result.postalCode = unlessEmpty(sample->postalCode);
    if (result == YContact::Address{}) return std::nullopt;
    return result;
}

sqlite3* openDatabase(const std::filesystem::path& database) {
    sqlite3* handle = nullptr;
    if (sqlite3_open_v2(database.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        sqlite3_close(handle);
        return nullptr;
    }
    sqlite3_busy_timeout(handle, 5000);
    return handle;
}

}  // namespace

YContact expectedContact(const sample_server::SampleContactsServer& server, const SampleContact& sample,
                         bool isOrg) {
    YContact contact(sample.contactId, sample.firstName, sample.createdTimeMs);
    contact.middleName = sample.middleName;
    contact.lastName = sample.lastName;
    contact.nickName = sample.nickName;
    contact.displayName = sample.displayName;
    for (const auto& email : sample.emails) {
        YContact::Email entry(email.address);
        entry.isPrimary = email.isPrimary;
        if (entry.isPrimary && !contact.primaryEmail) contact.primaryEmail = entry;
        contact.emails.push_back(entry);
    }
    contact.contactYuid = sample.yuid;
    contact.weightage = sample.usageCount;
    contact.isOrg = isOrg;
    if (sample.gender == "male") contact.gender = YContact::Gender::male;
    if (sample.gender == "female") contact.gender = YContact::Gender::female;
    for (const auto& phone : sample.phones) contact.phones.emplace_back(phone.value, phoneType(phone.type));
    for (const auto& url : sample.urls) contact.urls.emplace_back(url.value, urlType(url.type));
    for (const auto& im : sample.ims) contact.IMs.emplace_back(im.value, imType(im.type));
    // The photo address is the server's to choose; take it from the server's own reply.
    const auto wire = nlohmann::json::parse(server.toWireJson(sample));
    if (wire.contains("photo_url")) contact.photoURL = wire["photo_url"].get<std::string>();
    contact.hasPhoto = sample.hasPhoto;
    contact.address = address(sample.address);
    YContact::WorkInfo work;
    work.company = sample.company;
    work.jobTitle = sample.jobTitle;
    work.designation = sample.designation;
    work.address = address(sample.workAddress);
    if (!(work == YContact::WorkInfo{})) contact.workInfo = work;
    if (!sample.categories.empty()) {
        contact.categories.emplace();
        for (const auto& id : sample.categories) contact.categories->emplace_back(id);
    }
    if (sample.birthday) {
        contact.birthDate = sample.birthday->date;
        contact.birthMonth = sample.birthday->month;
        contact.birthYear = sample.birthday->year;
    }
    contact.notes = sample.notes;
    contact.isEditable = sample.isEditable;
    contact.type = sample.contactType == "group" ? YContactType::group : YContactType::user;
    return contact;
}

std::vector<SampleContact> serverContacts(const sample_server::SampleContactsServer& server, const std::string& yuid,
                                          bool isOrg) {
    if (!isOrg) return server.contacts(yuid, false);
    const auto yoid = server.yoidOf(yuid);
    if (!yoid) return {};
    return server.contacts(*yoid, true);
}

std::vector<std::string> idsOf(const std::vector<SampleContact>& contacts) {
    std::vector<std::string> ids;
    for (const auto& contact : contacts) ids.push_back(contact.contactId);
    return ids;
}

::testing::AssertionResult storeHolds(SyncHarness& harness, const sample_server::SampleContactsServer& server,
                                      const std::string& yuid, bool isOrg, const std::vector<SampleContact>& expected) {
    const char* population = isOrg ? "org" : "personal";
    const auto stored = harness.storedContacts(yuid, isOrg);
    if (!stored) return ::testing::AssertionFailure() << "no answer from the store for " << yuid << " " << population;
    std::map<std::string, const YContact*> byId;
    for (const auto& contact : *stored) {
        if (!byId.emplace(contact.contactId, &contact).second) {
            return ::testing::AssertionFailure() << population << " contact " << contact.contactId << " of " << yuid
                                                 << " is stored twice";
        }
    }
    for (const auto& sample : expected) {
        const auto found = byId.find(sample.contactId);
        if (found == byId.end()) {
            return ::testing::AssertionFailure() << population << " contact " << sample.contactId << " of " << yuid
                                                 << " is missing from the store (" << stored->size() << " stored, "
                                                 << expected.size() << " expected)";
        }
        const auto same = testing::sameContactFields(expectedContact(server, sample, isOrg), *found->second);
        if (!same) {
            return ::testing::AssertionFailure() << population << " contact " << sample.contactId << " of " << yuid
                                                 << ": " << same.message();
        }
        byId.erase(found);
    }
    if (!byId.empty()) {
        return ::testing::AssertionFailure() << byId.size() << " " << population << " contacts of " << yuid
                                             << " are stored but not expected, such as " << byId.begin()->first;
    }
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult storeMatchesServer(SyncHarness& harness, const sample_server::SampleContactsServer& server,
                                              const std::string& yuid) {
    for (const bool isOrg : {false, true}) {
        auto result = storeHolds(harness, server, yuid, isOrg, serverContacts(server, yuid, isOrg));
        if (!result) return result;
    }
    return ::testing::AssertionSuccess();
}

std::vector<std::vector<std::string>> expectedPages(const std::vector<std::string>& ids, int limit) {
    std::vector<std::vector<std::string>> pages;
    for (std::size_t begin = 0; begin < ids.size(); begin += static_cast<std::size_t>(limit)) {
        const auto end = std::min(ids.size(), begin + static_cast<std::size_t>(limit));
        pages.emplace_back(ids.begin() + static_cast<std::ptrdiff_t>(begin), ids.begin() + static_cast<std::ptrdiff_t>(end));
    }
    const std::size_t last = pages.empty() ? 0 : pages.back().size();
    const auto shortfall = static_cast<std::size_t>(limit) - last;
    if (pages.empty() || (shortfall >= 1 && shortfall <= 49)) pages.emplace_back();
    return pages;
}

std::vector<std::string> expectedInitialDownloadLines(const std::vector<std::string>& personalIds,
                                                      const std::optional<std::vector<std::string>>& orgIds,
                                                      int limit) {
    std::vector<std::string> lines{"downloadStarted initial"};
    const auto counts = [](std::size_t org, std::size_t personal) {
        return "countUpdate org=" + std::to_string(org) + " personal=" + std::to_string(personal);
    };
    std::size_t personal = 0;
    std::size_t org = 0;
    // Each page adds its contacts and updates the counts; each population ends with one more count line.
    const auto population = [&](const std::vector<std::string>& ids, const char* name, std::size_t& count) {
        for (const auto& page : expectedPages(ids, limit)) {
            std::string added = std::string("contactsAdded ") + name;
            for (const auto& id : page) added += " " + id;
            lines.push_back(added);
            count += page.size();
            lines.push_back(counts(org, personal));
        }
    };
    population(personalIds, "personal", personal);
    lines.push_back(counts(org, personal));
    if (orgIds) population(*orgIds, "org", org);
    lines.push_back(counts(org, personal));
    lines.push_back("downloadComplete initial");
    return lines;
}

long long rowsOfUser(const std::filesystem::path& database, const std::string& yuid) {
    sqlite3* handle = openDatabase(database);
    if (!handle) return -1;
    long long rows = 0;
    for (const char* table : contactTables) {
        sqlite3_stmt* statement = nullptr;
        const std::string sql = std::string("SELECT COUNT(*) FROM ") + table + " WHERE yuid = ?";
        if (sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK) {
            sqlite3_bind_text(statement, 1, yuid.c_str(), -1, SQLITE_TRANSIENT);
            if (sqlite3_step(statement) == SQLITE_ROW) rows += sqlite3_column_int64(statement, 0);
        } else {
            rows = -1;
        }
        sqlite3_finalize(statement);
        if (rows < 0) break;
    }
    sqlite3_close(handle);
    return rows;
}

void forgetContact(const std::filesystem::path& database, const std::string& yuid, const std::string& contactId) {
    sqlite3* handle = openDatabase(database);
    ASSERT_NE(handle, nullptr);
    for (const char* table : contactTables) {
        sqlite3_stmt* statement = nullptr;
        const std::string sql = std::string("DELETE FROM ") + table + " WHERE yuid = ? AND contactId = ?";
        ASSERT_EQ(sqlite3_prepare_v2(handle, sql.c_str(), -1, &statement, nullptr), SQLITE_OK);
        sqlite3_bind_text(statement, 1, yuid.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(statement, 2, contactId.c_str(), -1, SQLITE_TRANSIENT);
        EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE);
        sqlite3_finalize(statement);
    }
    sqlite3_close(handle);
}

std::string integrityCheck(const std::filesystem::path& database) {
    sqlite3* handle = openDatabase(database);
    if (!handle) return "cannot open " + database.string();
    std::string answer;
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(handle, "PRAGMA integrity_check", -1, &statement, nullptr) != SQLITE_OK) {
        answer = sqlite3_errmsg(handle);
    } else {
        while (sqlite3_step(statement) == SQLITE_ROW) {
            if (!answer.empty()) answer += "; ";
            answer += reinterpret_cast<const char*>(sqlite3_column_text(statement, 0));
        }
    }
    sqlite3_finalize(statement);
    sqlite3_close(handle);
    return answer;
}

}  // namespace ycontacts::endtoend
