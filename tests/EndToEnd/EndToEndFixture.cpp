#include "EndToEnd/EndToEndFixture.h"

#include <sqlite3.h>

#include <future>
#include <map>
#include <nlohmann/json.hpp>

#include "Domain/ContactComparison.h"
#include "Support/StoreRefusal.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Contacts/Data/Network/YContactsParser.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"
#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"
#include "ycontacts/Platform/MarloComponents/YUserDefaults.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"

namespace ycontacts::endtoend {

namespace fs = std::filesystem;
using sample_server::SampleContact;

namespace {

const char* population(bool isOrg) { return isOrg ? "org" : "personal"; }

const char* const contactTables[] = {"YContactDetail",  "YContactPhoneTable", "YContactEmailTable",
                                     "YContactIMTable", "YContactUrlTable",   "YContactCategoryTable"};

// The type a wire word names, or `fallback` for a word the table does not know.
template <class Type>
Type typeOf(const std::map<std::string, Type>& words, const std::string& word, Type fallback) {
    const auto found = words.find(word);
    return found == words.end() ? fallback : found->second;
}

// The server leaves empty parts out; an address with no part at all is no address for the store.
std::optional<YContact::Address> address(const std::optional<sample_server::SampleAddress>& sample) {
    if (!sample) return std::nullopt;
    const auto unlessEmpty = [](const std::string& text) { return text.empty() ? std::nullopt : std::optional(text); };
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

}  // namespace

void ObservedNetwork::getContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                                  int startIndex, int limit, std::optional<double> updatedTime,
                                  ContactsPageCallback callback) {
    const std::string page = std::string(population(isOrg)) + " page " + std::to_string(startIndex);
    log.append(yuid, "request " + page);
    YContactsNetworkService::getContacts(
        yuid, yoid, isOrg, startIndex, limit, updatedTime,
        [this, yuid, page, callback = std::move(callback)](std::optional<YContactNetworkResponse> response) {
            const std::string outcome = !response ? "none" : response->error ? "error" : "ok";
            callback(std::move(response));
            log.append(yuid, "reply " + page + " " + outcome);
        });
    // The authorization value is given at once, so by now the request is with the HTTP client and
    // cancelling the user's tasks reaches it.
    log.append(yuid, "sent " + page);
}

SyncHarness::SyncHarness(const fs::path& folder, const std::string& baseURL, std::chrono::milliseconds transferTimeout)
    : databasePath_(folder / "contacts.sqlite"),
      networkManager_(std::make_shared<YNetworkManager>(
          YNetworkManager::Options{std::chrono::milliseconds(5000), transferTimeout, 2})) {
    YNotificationCenter::shared().addObserver<YContactsNotification>(observer_);
    // The host's part: the library itself never creates tables.
    YContactsDatabaseSchema::createTablesInFile(databasePath_);

    auto builders = YContactService::Builders::defaults();
    builders.network = [this](const std::shared_ptr<YContactsAuthenticationContract>& authorization)
        -> std::shared_ptr<YContactsNetworkContract> {
        network_ = std::make_shared<ObservedNetwork>(authorization, std::make_shared<YContactsURLConstructor>(),
                                                     std::make_shared<YContactsParser>(), networkManager_);
        return network_;
    };
    // As the library's own builder does: the progress is kept in the database file.
    builders.preference =
        [this](const std::optional<fs::path>& databaseURL) -> std::shared_ptr<YContactsPreferenceContract> {
        preference_ = std::make_shared<ObservedPreference>(std::make_shared<YUserDefaults>(databaseURL));
        return preference_;
    };
    builders.dataManager = [](auto database, auto network, auto preference,
                              auto file) -> std::shared_ptr<YContactsDataManagerContract> {
        return std::make_shared<YContactsDataManager>(std::move(database), std::move(network), std::move(preference),
                                                      std::move(file), YContactsDataManager::Intervals{}, 50);
    };
    service_ = std::make_unique<YContactService>(std::move(builders));
    service_->config =
        YContactService::Config(std::make_shared<SampleAuthenticator>(baseURL), databasePath_, folder / "photos");
    // Builds every component now, so that the store and its tables exist before a test looks at them.
    service_->syncHandler();
}

SyncHarness::~SyncHarness() {
    YNotificationCenter::shared().removeObserver<YContactsNotification>(observer_.get());
    service_.reset();
    networkManager_.reset();
    YSqliteHelper::getShared().unregisterDB(YContactService::databaseIdentifier);
}

std::optional<std::vector<YContact>> SyncHarness::storedContacts(const std::string& yuid, bool isOrg) {
    auto answer = std::make_shared<std::promise<std::optional<std::vector<YContact>>>>();
    auto future = answer->get_future();
    service_->getContacts(
        yuid, std::nullopt, std::nullopt, std::nullopt, isOrg, RequestType::local,
        [answer](std::optional<std::vector<YContact>> contacts) { answer->set_value(std::move(contacts)); });
    if (future.wait_for(defaultWait) != std::future_status::ready) return std::nullopt;
    return future.get();
}

YContact expectedContact(const sample_server::SampleContactsServer& server, const SampleContact& sample, bool isOrg) {
    using Phone = YContact::PhoneType;
    using Link = YContact::URLType;
    using IM = YContact::IMType;
    static const std::map<std::string, Phone> phoneWords{
        {"mobile", Phone::mobile}, {"home", Phone::home}, {"work", Phone::work}, {"fax", Phone::fax}};
    static const std::map<std::string, Link> linkWords{
        {"home", Link::personal},     {"work", Link::company},      {"blog", Link::blog},
        {"linkedin", Link::linkedIn}, {"facebook", Link::facebook}, {"twitter", Link::twitter},
        {"amazon", Link::amazon},     {"flickr", Link::flikr},      {"delicious", Link::delicious}};
    static const std::map<std::string, IM> imWords{{"google", IM::google}, {"yahoo", IM::yahoo}, {"skype", IM::skype},
                                                   {"aol", IM::aol},       {"icq", IM::icq},     {"msn", IM::msn},
                                                   {"jabber", IM::jabber}};

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
    for (const auto& phone : sample.phones)
        contact.phones.emplace_back(phone.value, typeOf(phoneWords, phone.type, Phone::others));
    for (const auto& url : sample.urls) contact.urls.emplace_back(url.value, typeOf(linkWords, url.type, Link::other));
    for (const auto& im : sample.ims) contact.IMs.emplace_back(im.value, typeOf(imWords, im.type, IM::others));
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
    return yoid ? server.contacts(*yoid, true) : std::vector<SampleContact>{};
}

std::vector<std::string> idsOf(const std::vector<SampleContact>& contacts) {
    std::vector<std::string> ids;
    for (const auto& contact : contacts) ids.push_back(contact.contactId);
    return ids;
}

::testing::AssertionResult storeHolds(SyncHarness& harness, const sample_server::SampleContactsServer& server,
                                      const std::string& yuid, bool isOrg, const std::vector<SampleContact>& expected) {
    const std::string what = std::string(population(isOrg)) + " contacts of " + yuid;
    const auto stored = harness.storedContacts(yuid, isOrg);
    if (!stored) return ::testing::AssertionFailure() << "no answer from the store for the " << what;
    // With as many stored as expected, a contact stored twice or one not expected leaves an expected one missing.
    std::map<std::string, const YContact*> byId;
    for (const auto& contact : *stored) byId.emplace(contact.contactId, &contact);
    if (stored->size() != expected.size())
        return ::testing::AssertionFailure()
               << stored->size() << " " << what << " stored, " << expected.size() << " expected";
    for (const auto& sample : expected) {
        const auto found = byId.find(sample.contactId);
        if (found == byId.end()) return ::testing::AssertionFailure() << sample.contactId << " is missing: " << what;
        const auto same = testing::sameContactFields(expectedContact(server, sample, isOrg), *found->second);
        if (!same)
            return ::testing::AssertionFailure() << sample.contactId << " of the " << what << ": " << same.message();
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

std::vector<std::string> expectedInitialDownloadLines(const std::vector<std::string>& personalIds,
                                                      const std::optional<std::vector<std::string>>& orgIds) {
    std::vector<std::string> lines{"downloadStarted initial"};
    std::size_t counted[2] = {0, 0};  // org, personal
    const auto counts = [&] {
        lines.push_back("countUpdate org=" + std::to_string(counted[0]) + " personal=" + std::to_string(counted[1]));
    };
    const auto pages = [&](const std::vector<std::string>& ids, bool isOrg) {
        for (std::size_t begin = 0;; begin += 50) {
            const auto end = std::min(ids.size(), begin + 50);
            std::string added = std::string("contactsAdded ") + population(isOrg);
            for (auto index = begin; index < end; ++index) added += " " + ids[index];
            lines.push_back(added);
            counted[isOrg ? 0 : 1] = end;
            counts();
            // After the last contact the loop stops at a full or an empty page; a short one calls for one more.
            if (end == ids.size() && (end - std::min(begin, end)) % 50 == 0) break;
        }
        counts();
    };
    pages(personalIds, false);
    if (orgIds) pages(*orgIds, true);
    if (!orgIds) counts();
    lines.push_back("downloadComplete initial");
    return lines;
}

std::string sqlAnswer(const fs::path& database, const std::string& sql) {
    sqlite3* handle = nullptr;
    std::string answer;
    if (sqlite3_open_v2(database.c_str(), &handle, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK) {
        answer = "cannot open " + database.string();
    } else {
        sqlite3_busy_timeout(handle, 5000);
        char* error = nullptr;
        const auto collect = [](void* into, int, char** values, char**) {
            auto& text = *static_cast<std::string*>(into);
            text += (text.empty() ? "" : "; ") + std::string(values[0] ? values[0] : "NULL");
            return 0;
        };
        if (sqlite3_exec(handle, sql.c_str(), collect, &answer, &error) != SQLITE_OK) answer = error ? error : "error";
        sqlite3_free(error);
    }
    sqlite3_close(handle);
    return answer;
}

long long rowsOfUser(const fs::path& database, const std::string& yuid) {
    std::string sql = "SELECT 0";
    for (const char* table : contactTables)
        sql += std::string(" + (SELECT COUNT(*) FROM ") + table + " WHERE yuid = '" + yuid + "')";
    const auto answer = sqlAnswer(database, sql);
    return answer.find_first_not_of("0123456789") == std::string::npos ? std::stoll(answer) : -1;
}

bool forgetContact(const fs::path& database, const std::string& yuid, const std::string& contactId) {
    std::string sql;
    for (const char* table : contactTables) {
        sql +=
            std::string("DELETE FROM ") + table + " WHERE yuid = '" + yuid + "' AND contactId = '" + contactId + "';";
    }
    return testsupport::runOn(database, sql);
}

}  // namespace ycontacts::endtoend
