// Measures the contact store on 100k contacts: a 1000-contact page save against the same rows written with
// raw sqlite3 prepared statements in one transaction (and against those rows less the typeahead rows),
// typeahead searches in the full and the list form (alone and while another thread saves pages), suggestions,
// look-ups by id, counts and file sizes.
#include <sqlite3.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"
#include "ycontacts/YSqliteDependent/YContactsDataMaper.h"
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

// One page's rows as the store's mapper builds them, table by table in the store's order.
struct PageRows {
    std::vector<std::pair<std::string, std::vector<YSqliteRow>>> tables;
    std::vector<std::string> contactIds;
};

PageRows pageRows(const std::vector<YContact>& contacts, bool withSearchRows) {
    const YContactsDataMaper mapper;
    PageRows rows;
    rows.tables = {{"YContactDetail", mapper.contactDetailRows(contacts, yuid)},
                   {"YContactPhoneTable", mapper.phoneRows(contacts, yuid)},
                   {"YContactEmailTable", mapper.emailRows(contacts, yuid)}};
    if (withSearchRows) rows.tables.emplace_back("YContactSearchTable", mapper.searchRows(contacts, yuid));
    for (const auto& contact : contacts) rows.contactIds.push_back(contact.contactId);
    return rows;
}

// The baseline: raw sqlite3 writing rows built beforehand into the same schema, in one transaction, with one
// prepared delete by id and one prepared insert per table. What the store spends beyond it is its own work:
// building the rows, statement texts, value maps and the id-list deletes.
class RawWriter {
public:
    explicit RawWriter(const std::filesystem::path& path) {
        sqlite3_open(path.c_str(), &database_);
        sqlite3_exec(database_, "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;", nullptr, nullptr, nullptr);
        sqlite3_exec(database_, YContactsDatabaseSchema::createStatements().c_str(), nullptr, nullptr, nullptr);
    }
    ~RawWriter() {
        for (auto& entry : statements_) sqlite3_finalize(entry.second);
        sqlite3_close(database_);
    }
    RawWriter(const RawWriter&) = delete;
    RawWriter& operator=(const RawWriter&) = delete;

    void save(const PageRows& rows) {
        sqlite3_exec(database_, "BEGIN", nullptr, nullptr, nullptr);
        for (const auto& [table, tableRows] : rows.tables) {
            sqlite3_stmt* remove = statement("DELETE FROM " + table + " WHERE yuid = ? AND contactId = ?");
            for (const auto& contactId : rows.contactIds) {
                bind(remove, 1, yuid);
                bind(remove, 2, contactId);
                step(remove);
            }
        }
        for (const auto& [table, tableRows] : rows.tables) {
            // Every row of a table has the same columns: those of its first row.
            std::vector<std::string> columns;
            for (const auto& entry : tableRows.front()) columns.push_back(entry.first);
            std::string sql = "INSERT OR REPLACE INTO " + table + " (";
            std::string placeholders;
            for (const auto& column : columns) {
                sql += (placeholders.empty() ? "" : ", ") + column;
                placeholders += placeholders.empty() ? "?" : ", ?";
            }
            sqlite3_stmt* insert = statement(sql + ") VALUES (" + placeholders + ")");
            for (const auto& row : tableRows) {
                for (std::size_t index = 0; index < columns.size(); ++index) {
                    const auto found = row.find(columns[index]);
                    if (found == row.end()) {
                        sqlite3_bind_null(insert, static_cast<int>(index) + 1);
                    } else {
                        bind(insert, static_cast<int>(index) + 1, found->second);
                    }
                }
                step(insert);
            }
        }
        sqlite3_exec(database_, "COMMIT", nullptr, nullptr, nullptr);
    }

    sqlite3* database() const { return database_; }

private:
    sqlite3_stmt* statement(const std::string& sql) {
        auto& prepared = statements_[sql];
        if (!prepared) sqlite3_prepare_v2(database_, sql.c_str(), -1, &prepared, nullptr);
        return prepared;
    }
    static void bind(sqlite3_stmt* statement, int index, const YSqliteValue& value) {
        if (const auto* text = std::get_if<std::string>(&value)) {
            sqlite3_bind_text(statement, index, text->data(), static_cast<int>(text->size()), SQLITE_TRANSIENT);
        } else if (const auto* integer = std::get_if<std::int64_t>(&value)) {
            sqlite3_bind_int64(statement, index, *integer);
        } else if (const auto* flag = std::get_if<bool>(&value)) {
            sqlite3_bind_int(statement, index, *flag ? 1 : 0);
        } else {
            sqlite3_bind_double(statement, index, std::get<double>(value));
        }
    }
    static void step(sqlite3_stmt* statement) {
        sqlite3_step(statement);
        sqlite3_reset(statement);
    }

    sqlite3* database_ = nullptr;
    std::map<std::string, sqlite3_stmt*> statements_;
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
    // The same rows without the typeahead rows: what the search rows cost the page save.
    RawWriter plain(directory / "plain.sqlite");

    std::mt19937 random(7);
    std::vector<double> storePages;
    std::vector<double> rawPages;
    std::vector<double> plainPages;
    std::vector<std::string> firstNames;
    for (int page = 0; page < totalContacts / pageSize; ++page) {
        const auto contacts = makePage(page, random);
        for (int index = 0; index < pageSize; index += 97) firstNames.push_back(contacts[index].firstName);
        const auto rows = pageRows(contacts, true);
        const auto plainRows = pageRows(contacts, false);
        auto start = Clock::now();
        if (!store.save(yuid, contacts)) {
            std::fprintf(stderr, "the store did not keep page %d\n", page);
            return 1;
        }
        storePages.push_back(microseconds(Clock::now() - start));
        start = Clock::now();
        raw.save(rows);
        rawPages.push_back(microseconds(Clock::now() - start));
        start = Clock::now();
        plain.save(plainRows);
        plainPages.push_back(microseconds(Clock::now() - start));
    }
    const auto storePage = percentiles(storePages);
    const auto rawPage = percentiles(rawPages);
    const auto plainPage = percentiles(plainPages);
    std::printf("1000-contact page save (100 pages up to %d contacts): store p50 %.0f us, raw sqlite3 of the same "
                "rows p50 %.0f us, ratio %.2f\n",
                totalContacts, storePage.p50, rawPage.p50, storePage.p50 / rawPage.p50);
    std::printf("  raw sqlite3 without the typeahead rows p50 %.0f us: the typeahead rows make the raw save %.2fx "
                "slower; the store's save is %.2fx of it\n",
                plainPage.p50, rawPage.p50 / plainPage.p50, storePage.p50 / plainPage.p50);

    // Re-saving a page already stored (the incremental-sync case) deletes and rewrites its rows.
    std::mt19937 again(11);
    const auto resaved = makePage(42, again);
    const auto resavedRows = pageRows(resaved, true);
    auto start = Clock::now();
    if (!store.save(yuid, resaved)) {
        std::fprintf(stderr, "the store did not keep the re-saved page\n");
        return 1;
    }
    const double storeResave = microseconds(Clock::now() - start);
    start = Clock::now();
    raw.save(resavedRows);
    const double rawResave = microseconds(Clock::now() - start);
    std::printf("1000-contact page re-save over existing rows: store %.0f us, raw sqlite3 of the same rows %.0f us, "
                "ratio %.2f\n",
                storeResave, rawResave, storeResave / rawResave);

    // The baseline for typeahead: the first listing page of 50 without a search, which builds the same
    // number of contacts and walks an index that needs no search.
    std::vector<double> listing;
    for (int query = 0; query < 200; ++query) {
        start = Clock::now();
        store.getContacts({.yuid = yuid, .from = 0, .limit = 50});
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
            const auto found = store.getContacts({.yuid = yuid, .searchStr = prefix, .from = 0, .limit = 50});
            full.push_back(microseconds(Clock::now() - start));
            fullCpu.push_back(threadMicroseconds() - cpuStart);
            results += found ? found->size() : 0;
            start = Clock::now();
            store.getContactsList({.yuid = yuid, .searchStr = prefix, .from = 0, .limit = 50});
            list.push_back(microseconds(Clock::now() - start));
        }
        for (const auto& prefix : prefixes) {
            start = Clock::now();
            store.getContacts({.yuid = yuid, .searchStr = prefix, .from = 0, .limit = 50});
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
            store.getSuggestionContacts({.yuid = yuid, .searchStr = prefix, .limit = 10});
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

    // Typeahead while pages are being stored, as during a download: another thread re-saves ten pages, one
    // transaction each, while this one asks list-form pages of 50 for two letters. Last, as it renames contacts.
    std::atomic<bool> saving{true};
    std::thread saver([&] {
        std::mt19937 renames(13);
        for (int page = 0; page < 10; ++page) {
            if (!store.save(yuid, makePage(page * 9, renames))) std::fprintf(stderr, "a re-saved page was not kept\n");
        }
        saving = false;
    });
    std::vector<double> during;
    do {
        const std::string& name = firstNames[random() % firstNames.size()];
        start = Clock::now();
        store.getContactsList({.yuid = yuid, .searchStr = name.substr(0, 2), .from = 0, .limit = 50});
        during.push_back(microseconds(Clock::now() - start));
    } while (saving);
    saver.join();
    // A read that waited for a page's transaction takes hundreds of milliseconds; few such reads make no p99.
    std::sort(during.begin(), during.end());
    const auto waited = during.end() - std::upper_bound(during.begin(), during.end(), 100000.0);
    std::printf("typeahead 2 letters, list form, while another thread re-saves 10 pages: %zu queries, p50 %.0f us, "
                "p90 %.0f us, max %.0f us, %td over 100 ms\n",
                during.size(), during[during.size() / 2], during[during.size() * 9 / 10], during.back(), waited);

    // The typeahead rows and their indexes are the price of the fast searches.
    const auto megabytes = [](const std::filesystem::path& path) {
        std::error_code ignored;
        return static_cast<double>(std::filesystem::file_size(path, ignored)) / (1024.0 * 1024.0);
    };
    static_cast<void>(YSqliteHelper::getShared().execute("PRAGMA wal_checkpoint(TRUNCATE)", true, "BenchStore"));
    sqlite3_exec(plain.database(), "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr);
    std::printf("database file: store %.0f MiB, without the typeahead rows %.0f MiB\n",
                megabytes(directory / "store.sqlite"), megabytes(directory / "plain.sqlite"));

    YSqliteHelper::getShared().unregisterDB("BenchStore");
    std::filesystem::remove_all(directory);
    return 0;
}
