// Measures the contact store on 100k contacts: a 1000-contact page save against the same rows written with
// raw sqlite3 prepared statements in one transaction, typeahead searches in the full and the list form,
// suggestions, look-ups by id, counts and the size of the database file.
#include <sqlite3.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseService.h"

using namespace ycontacts;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int totalContacts = 100000;
constexpr int pageSize = 1000;
const std::string yuid = "bench-user";

double microseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::micro>(duration).count();
}

std::string syllableName(std::mt19937& random) {
    static const char* syllables[] = {"an", "be", "ca", "do", "el", "fi", "ga", "ho", "is", "ju", "ka", "lo",
                                      "ma", "ne", "or", "pa", "qu", "ri", "sa", "to", "ul", "vi", "wa", "ze"};
    std::string name;
    const int count = 2 + static_cast<int>(random() % 2);
    for (int index = 0; index < count; ++index) name += syllables[random() % 24];
    name[0] = static_cast<char>(name[0] - 'a' + 'A');
    return name;
}

std::vector<YContact> makePage(int page, std::mt19937& random) {
    std::vector<YContact> contacts;
    for (int index = 0; index < pageSize; ++index) {
        const int number = page * pageSize + index;
        std::string id = "c";
        id += std::to_string(number);
        YContact contact(id, syllableName(random), 1700000000000 + number);
        contact.lastName = syllableName(random);
        contact.weightage = static_cast<int>(random() % 50);
        contact.isOrg = number % 3 == 0;
        YContact::Email email(contact.firstName + "." + *contact.lastName + std::to_string(number) + "@example.com");
        email.isPrimary = true;
        contact.primaryEmail = email;
        contact.emails = {email};
        contact.phones = {{"+1 555 " + std::to_string(number), YContact::PhoneType::mobile}};
        contacts.push_back(contact);
    }
    return contacts;
}

// The physical baseline: the same detail, e-mail and phone rows, deleted by id and inserted with prepared
// statements in one transaction.
struct RawWriter {
    sqlite3* database = nullptr;
    sqlite3_stmt* deletes[3] = {};
    sqlite3_stmt* insertDetail = nullptr;
    sqlite3_stmt* insertEmail = nullptr;
    sqlite3_stmt* insertPhone = nullptr;

    explicit RawWriter(const std::filesystem::path& path) {
        sqlite3_open(path.c_str(), &database);
        sqlite3_exec(database, "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;", nullptr, nullptr, nullptr);
        sqlite3_exec(database, YContactsDatabaseSchema::createStatements().c_str(), nullptr, nullptr, nullptr);
        const char* tables[] = {"YContactDetail", "YContactEmailTable", "YContactPhoneTable"};
        for (int index = 0; index < 3; ++index) {
            sqlite3_prepare_v2(database,
                               ("DELETE FROM " + std::string(tables[index]) + " WHERE yuid = ? AND contactId = ?").c_str(),
                               -1, &deletes[index], nullptr);
        }
        sqlite3_prepare_v2(database,
                           "INSERT OR REPLACE INTO YContactDetail (yuid, contactId, firstName, lastName, type, "
                           "primaryEmail, weightage, createdTime, isOrg, isEditable, hasPhoto) VALUES "
                           "(?,?,?,?,?,?,?,?,?,?,?)",
                           -1, &insertDetail, nullptr);
        sqlite3_prepare_v2(database,
                           "INSERT OR REPLACE INTO YContactEmailTable (yuid, email, contactId, isPrimary, isOrg) "
                           "VALUES (?,?,?,?,?)",
                           -1, &insertEmail, nullptr);
        sqlite3_prepare_v2(database,
                           "INSERT OR REPLACE INTO YContactPhoneTable (yuid, contactId, phoneNumber, phoneType) "
                           "VALUES (?,?,?,?)",
                           -1, &insertPhone, nullptr);
    }
    ~RawWriter() {
        for (auto* statement : deletes) sqlite3_finalize(statement);
        sqlite3_finalize(insertDetail);
        sqlite3_finalize(insertEmail);
        sqlite3_finalize(insertPhone);
        sqlite3_close(database);
    }

    static void text(sqlite3_stmt* statement, int index, const std::string& value) {
        sqlite3_bind_text(statement, index, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
    }
    static void step(sqlite3_stmt* statement) {
        sqlite3_step(statement);
        sqlite3_reset(statement);
    }

    void save(const std::vector<YContact>& contacts) {
        sqlite3_exec(database, "BEGIN", nullptr, nullptr, nullptr);
        for (const auto& contact : contacts) {
            for (auto* statement : deletes) {
                text(statement, 1, yuid);
                text(statement, 2, contact.contactId);
                step(statement);
            }
        }
        for (const auto& contact : contacts) {
            text(insertDetail, 1, yuid);
            text(insertDetail, 2, contact.contactId);
            text(insertDetail, 3, contact.firstName);
            text(insertDetail, 4, *contact.lastName);
            text(insertDetail, 5, "user");
            text(insertDetail, 6, contact.primaryEmail->emailId);
            sqlite3_bind_int64(insertDetail, 7, contact.weightage);
            sqlite3_bind_int64(insertDetail, 8, contact.createdTime);
            sqlite3_bind_int(insertDetail, 9, contact.isOrg);
            sqlite3_bind_int(insertDetail, 10, contact.isEditable);
            sqlite3_bind_int(insertDetail, 11, contact.hasPhoto);
            step(insertDetail);
            text(insertEmail, 1, yuid);
            text(insertEmail, 2, contact.emails.front().emailId);
            text(insertEmail, 3, contact.contactId);
            sqlite3_bind_int(insertEmail, 4, 1);
            sqlite3_bind_int(insertEmail, 5, contact.isOrg);
            step(insertEmail);
            text(insertPhone, 1, yuid);
            text(insertPhone, 2, contact.contactId);
            text(insertPhone, 3, contact.phones.front().phoneNumber);
            text(insertPhone, 4, "mobile");
            step(insertPhone);
        }
        sqlite3_exec(database, "COMMIT", nullptr, nullptr, nullptr);
    }
};

// CPU time of the calling thread: unlike the wall clock it leaves out the time the thread waited while
// other processes ran, which on a shared machine dominates the slowest samples.
double threadMicroseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

struct Percentiles {
    double p50;
    double p99;
};

Percentiles percentiles(std::vector<double> samples) {
    std::sort(samples.begin(), samples.end());
    const auto at = [&](double fraction) {
        return samples[std::min(samples.size() - 1, static_cast<std::size_t>(fraction * samples.size()))];
    };
    return {at(0.50), at(0.99)};
}

}  // namespace

int main() {
    Logger::shared().setConsoleOutput(false);
    const auto directory = std::filesystem::temp_directory_path() / "ycontacts-bench-store";
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);

    YContactsDatabaseService store("BenchStore", directory / "store.sqlite");
    if (!YContactsDatabaseSchema::createTables("BenchStore")) {
        std::fprintf(stderr, "could not create the tables\n");
        return 1;
    }
    RawWriter raw(directory / "raw.sqlite");

    std::mt19937 random(7);
    std::vector<double> storePages;
    std::vector<double> rawPages;
    std::vector<std::string> firstNames;
    for (int page = 0; page < totalContacts / pageSize; ++page) {
        const auto contacts = makePage(page, random);
        for (int index = 0; index < pageSize; index += 97) firstNames.push_back(contacts[index].firstName);
        auto start = Clock::now();
        store.save(yuid, contacts);
        storePages.push_back(microseconds(Clock::now() - start));
        start = Clock::now();
        raw.save(contacts);
        rawPages.push_back(microseconds(Clock::now() - start));
    }
    const auto storePage = percentiles(storePages);
    const auto rawPage = percentiles(rawPages);
    std::printf("1000-contact page save (100 pages up to %d contacts): store p50 %.0f us, raw sqlite3 p50 %.0f us, "
                "ratio %.2f\n",
                totalContacts, storePage.p50, rawPage.p50, storePage.p50 / rawPage.p50);

    // Re-saving a page already stored (the incremental-sync case) deletes and rewrites its rows.
    std::mt19937 again(11);
    const auto resaved = makePage(42, again);
    auto start = Clock::now();
    store.save(yuid, resaved);
    const double storeResave = microseconds(Clock::now() - start);
    start = Clock::now();
    raw.save(resaved);
    const double rawResave = microseconds(Clock::now() - start);
    std::printf("1000-contact page re-save over existing rows: store %.0f us, raw sqlite3 %.0f us, ratio %.2f\n",
                storeResave, rawResave, storeResave / rawResave);

    // The baseline for typeahead: the first listing page of 50 without a search, which builds the same
    // number of contacts and walks an index that needs no search.
    std::vector<double> listing;
    for (int query = 0; query < 200; ++query) {
        start = Clock::now();
        store.getContacts(yuid, std::nullopt, std::nullopt, 0, 50);
        listing.push_back(microseconds(Clock::now() - start));
    }
    const auto listingPage = percentiles(listing);
    std::printf("listing page of 50, no search: p50 %.0f us, p99 %.0f us\n", listingPage.p50, listingPage.p99);

    // Typeahead pages of 50 in both forms: the full contact and the lighter list form. Each text picks
    // contacts spread over the whole store, so the first time most of their pages are touched for the first
    // time; the same texts asked again show the cost once the pages are mapped, as in a session of typing.
    for (std::size_t letters = 1; letters <= 5; ++letters) {
        std::vector<std::string> prefixes;
        for (int query = 0; query < 200; ++query) {
            const std::string& name = firstNames[random() % firstNames.size()];
            prefixes.push_back(name.substr(0, std::min(letters, name.size())));
        }
        std::vector<double> full;
        std::vector<double> fullCpu;
        std::vector<double> list;
        std::vector<double> again;
        std::size_t results = 0;
        for (const auto& prefix : prefixes) {
            const double cpuStart = threadMicroseconds();
            start = Clock::now();
            const auto found = store.getContacts(yuid, std::nullopt, prefix, 0, 50);
            full.push_back(microseconds(Clock::now() - start));
            fullCpu.push_back(threadMicroseconds() - cpuStart);
            results += found ? found->size() : 0;
            start = Clock::now();
            store.getContactsList(yuid, std::nullopt, prefix, 0, 50);
            list.push_back(microseconds(Clock::now() - start));
        }
        for (const auto& prefix : prefixes) {
            start = Clock::now();
            store.getContacts(yuid, std::nullopt, prefix, 0, 50);
            again.push_back(microseconds(Clock::now() - start));
        }
        const auto timing = percentiles(full);
        const auto cpu = percentiles(fullCpu);
        const auto listTiming = percentiles(list);
        const auto againTiming = percentiles(again);
        std::printf("typeahead %zu letter(s), page of 50 (avg %.1f results): p50 %.0f us, p99 %.0f us (thread CPU p99 "
                    "%.0f us), p50 ratio to listing %.2f; asked again p50 %.0f us, p99 %.0f us; list form p50 %.0f us, "
                    "p99 %.0f us\n",
                    letters, static_cast<double>(results) / 200.0, timing.p50, timing.p99, cpu.p99,
                    timing.p50 / listingPage.p50, againTiming.p50, againTiming.p99, listTiming.p50, listTiming.p99);
    }
    for (std::size_t letters = 1; letters <= 4; letters += 3) {
        std::vector<double> samples;
        for (int query = 0; query < 200; ++query) {
            const std::string& name = firstNames[random() % firstNames.size()];
            const std::string prefix = name.substr(0, std::min(letters, name.size()));
            start = Clock::now();
            store.getSuggestionContacts(yuid, std::nullopt, prefix, 10);
            samples.push_back(microseconds(Clock::now() - start));
        }
        const auto timing = percentiles(samples);
        std::printf("suggestions %zu letter(s), 10 entries: p50 %.0f us, p99 %.0f us\n", letters, timing.p50,
                    timing.p99);
    }

    std::vector<double> lookups;
    for (int query = 0; query < 2000; ++query) {
        std::string id = "c";
        id += std::to_string(random() % totalContacts);
        start = Clock::now();
        store.getContactByContactId(yuid, id);
        lookups.push_back(microseconds(Clock::now() - start));
    }
    const auto lookup = percentiles(lookups);
    std::printf("getContactByContactId: p50 %.1f us, p99 %.1f us\n", lookup.p50, lookup.p99);

    std::vector<double> counts;
    for (int query = 0; query < 50; ++query) {
        start = Clock::now();
        store.getContactCount(yuid);
        counts.push_back(microseconds(Clock::now() - start));
    }
    const auto count = percentiles(counts);
    const auto totals = store.getContactCount(yuid);
    std::printf("getContactCount (%lld org, %lld personal): p50 %.0f us, p99 %.0f us\n",
                totals ? static_cast<long long>(totals->first) : -1LL,
                totals ? static_cast<long long>(totals->second) : -1LL, count.p50, count.p99);

    // The typeahead rows and their indexes are the price of the fast searches; raw holds no such rows.
    const auto megabytes = [](const std::filesystem::path& path) {
        std::error_code ignored;
        return static_cast<double>(std::filesystem::file_size(path, ignored)) / (1024.0 * 1024.0);
    };
    YSqliteHelper::getShared().execute("PRAGMA wal_checkpoint(TRUNCATE)", true, "BenchStore");
    sqlite3_exec(raw.database, "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr);
    std::printf("database file: store %.0f MiB, raw sqlite3 (same rows, no typeahead rows) %.0f MiB\n",
                megabytes(directory / "store.sqlite"), megabytes(directory / "raw.sqlite"));

    YSqliteHelper::getShared().unregisterDB("BenchStore");
    std::filesystem::remove_all(directory);
    return 0;
}
