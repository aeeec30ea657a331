// Measures an initial sync of 100k contacts (50k personal, 50k organisation) from the sample server on loopback
// through YContactService, against a baseline run in the same process: the same pages fetched with libcurl
// alone, read with simdjson and written with raw sqlite3 (one prepared statement per table, one transaction
// per page). The server runs in a child process forked before any thread starts, so its memory is not
// counted; peak RSS is reset before each phase (/proc/self/clear_refs) and read from VmHWM after it.
//
// Usage: bench_sync [rounds]   (default 1; with more, each phase's best time is reported)
#include <curl/curl.h>
#include <simdjson.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "sample_server/SampleContactsServer.h"
#include "ycontacts/Contacts/YContactService.h"
#include "ycontacts/Contacts/YContactsNotification.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseService.h"

using namespace ycontacts;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

namespace {

constexpr int contactsPerPopulation = 50000;
constexpr int pageSize = 1000;
const std::string yuid = "u1";

double seconds(Clock::duration duration) { return std::chrono::duration<double>(duration).count(); }

// Peak resident set size of this process since the last reset, in MB.
double peakRssMB() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmHWM:", 0) == 0) return std::strtod(line.c_str() + 6, nullptr) / 1024.0;
    }
    return -1;
}

void resetPeakRss() { std::ofstream("/proc/self/clear_refs") << "5"; }

// User and system CPU time of every thread of this process so far.
double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto time = [](const timeval& value) { return value.tv_sec + value.tv_usec / 1e6; };
    return time(usage.ru_utime) + time(usage.ru_stime);
}

struct Phase {
    double seconds = 0;
    double peakMB = 0;
    long long contacts = 0;
    double cpuSeconds = 0;
    // Baseline only: time spent waiting for the server and time spent reading and writing pages.
    double fetchSeconds = 0;
    double storeSeconds = 0;
};

// ---- Baseline: libcurl, simdjson and raw sqlite3 ----

std::size_t appendBody(char* data, std::size_t size, std::size_t count, void* target) {
    static_cast<std::string*>(target)->append(data, size * count);
    return size * count;
}

class RawStore {
public:
    explicit RawStore(const fs::path& path) {
        sqlite3_open(path.c_str(), &database_);
        sqlite3_exec(database_, "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;", nullptr, nullptr, nullptr);
        sqlite3_exec(database_, YContactsDatabaseSchema::createStatements().c_str(), nullptr, nullptr, nullptr);
        detail_ = prepare(
            "INSERT OR REPLACE INTO YContactDetail (yuid, contactId, firstName, middleName, lastName, nickName, "
            "gender, photoURL, homeStreet1, homeStreet2, homeCity, homeState, homeCountry, homePostalCode, "
            "workStreet1, workStreet2, workCity, workState, workCountry, workPostalCode, company, jobTitle, "
            "designation, birthDate, birthMonth, birthYear, notes, type, primaryEmail, contactYuid, weightage, "
            "createdTime, isOrg, isEditable, hasPhoto) VALUES "
            "(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
        email_ = prepare(
            "INSERT OR REPLACE INTO YContactEmailTable (yuid, email, contactId, isPrimary, isOrg) VALUES (?,?,?,?,?)");
        phone_ = prepare(
            "INSERT OR REPLACE INTO YContactPhoneTable (yuid, contactId, phoneNumber, phoneType) VALUES (?,?,?,?)");
        im_ = prepare("INSERT OR REPLACE INTO YContactIMTable (yuid, contactId, imAddress, imType) VALUES (?,?,?,?)");
        url_ = prepare("INSERT OR REPLACE INTO YContactUrlTable (yuid, contactId, urlAddress, urlType) VALUES (?,?,?,?)");
        category_ = prepare("INSERT OR REPLACE INTO YContactCategoryTable (yuid, contactId, categoryId) VALUES (?,?,?)");
    }

    ~RawStore() {
        for (auto* statement : {detail_, email_, phone_, im_, url_, category_}) sqlite3_finalize(statement);
        sqlite3_close(database_);
    }

    // Writes every contact of the page in one transaction; returns how many there were.
    long long writePage(simdjson::dom::array contacts, bool isOrg) {
        sqlite3_exec(database_, "BEGIN", nullptr, nullptr, nullptr);
        long long written = 0;
        for (simdjson::dom::element entry : contacts) {
            simdjson::dom::object contact;
            if (entry.get_object().get(contact)) continue;
            std::string_view id;
            if (contact["contact_id"].get_string().get(id)) continue;
            writeContact(contact, id, isOrg);
            ++written;
        }
        sqlite3_exec(database_, "COMMIT", nullptr, nullptr, nullptr);
        return written;
    }

private:
    sqlite3_stmt* prepare(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(database_, sql, -1, &statement, nullptr);
        return statement;
    }

    static void text(sqlite3_stmt* statement, int index, std::string_view value) {
        sqlite3_bind_text(statement, index, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT);
    }

    static void optionalText(sqlite3_stmt* statement, int index, simdjson::dom::object object, const char* key) {
        std::string_view value;
        if (object[key].get_string().get(value)) {
            sqlite3_bind_null(statement, index);
        } else {
            text(statement, index, value);
        }
    }

    static void optionalInteger(sqlite3_stmt* statement, int index, simdjson::dom::object object, const char* key) {
        std::int64_t value = 0;
        if (object[key].get_int64().get(value)) {
            sqlite3_bind_null(statement, index);
        } else {
            text(statement, index, std::to_string(value));
        }
    }

    static void address(sqlite3_stmt* statement, int first, simdjson::dom::object contact, const char* key) {
        simdjson::dom::object parts;
        const bool absent = contact[key].get_object().get(parts) != simdjson::SUCCESS;
        const char* names[] = {"street1", "street2", "city", "state", "country", "postal_code"};
        for (int index = 0; index < 6; ++index) {
            if (absent) {
                sqlite3_bind_null(statement, first + index);
            } else {
                optionalText(statement, first + index, parts, names[index]);
            }
        }
    }

    static void step(sqlite3_stmt* statement) {
        sqlite3_step(statement);
        sqlite3_reset(statement);
    }

    void writeContact(simdjson::dom::object contact, std::string_view id, bool isOrg) {
        sqlite3_stmt* d = detail_;
        text(d, 1, yuid);
        text(d, 2, id);
        std::string_view first;
        text(d, 3, contact["first_name"].get_string().get(first) ? std::string_view() : first);
        optionalText(d, 4, contact, "middle_name");
        optionalText(d, 5, contact, "last_name");
        optionalText(d, 6, contact, "nick_name");
        optionalText(d, 7, contact, "gender");
        optionalText(d, 8, contact, "photo_url");
        address(d, 9, contact, "address");
        address(d, 15, contact, "work_address");
        optionalText(d, 21, contact, "company");
        optionalText(d, 22, contact, "job_title");
        optionalText(d, 23, contact, "designation");
        simdjson::dom::object birthday;
        if (contact["birthday"].get_object().get(birthday)) {
            for (int index = 24; index <= 26; ++index) sqlite3_bind_null(d, index);
        } else {
            optionalInteger(d, 24, birthday, "date");
            optionalInteger(d, 25, birthday, "month");
            optionalInteger(d, 26, birthday, "year");
        }
        optionalText(d, 27, contact, "notes");
        std::string_view type;
        text(d, 28, contact["contact_type"].get_string().get(type) ? std::string_view("user") : type);
        sqlite3_bind_null(d, 29);
        optionalText(d, 30, contact, "yuid");
        std::int64_t number = 0;
        sqlite3_bind_int64(d, 31, contact["usage_count"].get_int64().get(number) ? 0 : number);
        sqlite3_bind_int64(d, 32, contact["created_time"].get_int64().get(number) ? 0 : number);
        sqlite3_bind_int(d, 33, isOrg);
        bool flag = false;
        sqlite3_bind_int(d, 34, contact["is_editable"].get_bool().get(flag) ? 0 : flag);
        sqlite3_bind_int(d, 35, contact["has_photo"].get_bool().get(flag) ? 1 : flag);

        simdjson::dom::array list;
        if (!contact["emails"].get_array().get(list)) {
            for (simdjson::dom::element item : list) {
                std::string_view address;
                if (item["email_id"].get_string().get(address)) continue;
                bool primary = false;
                if (item["is_primary"].get_bool().get(primary)) primary = false;
                if (primary) text(d, 29, address);
                text(email_, 1, yuid);
                text(email_, 2, address);
                text(email_, 3, id);
                sqlite3_bind_int(email_, 4, primary);
                sqlite3_bind_int(email_, 5, isOrg);
                step(email_);
            }
        }
        step(d);
        const auto typed = [&](sqlite3_stmt* statement, const char* key, const char* valueKey) {
            simdjson::dom::array values;
            if (contact[key].get_array().get(values)) return;
            for (simdjson::dom::element item : values) {
                std::string_view value;
                std::string_view word;
                if (item[valueKey].get_string().get(value)) continue;
                if (item["type"].get_string().get(word)) word = "others";
                text(statement, 1, yuid);
                text(statement, 2, id);
                text(statement, 3, value);
                text(statement, 4, word);
                step(statement);
            }
        };
        typed(phone_, "phones", "number");
        typed(im_, "ims", "im");
        typed(url_, "urls", "url");
        if (!contact["categories"].get_array().get(list)) {
            for (simdjson::dom::element item : list) {
                std::string_view category;
                if (item.get_string().get(category)) continue;
                text(category_, 1, yuid);
                text(category_, 2, id);
                text(category_, 3, category);
                step(category_);
            }
        }
    }

    sqlite3* database_ = nullptr;
    sqlite3_stmt* detail_ = nullptr;
    sqlite3_stmt* email_ = nullptr;
    sqlite3_stmt* phone_ = nullptr;
    sqlite3_stmt* im_ = nullptr;
    sqlite3_stmt* url_ = nullptr;
    sqlite3_stmt* category_ = nullptr;
};

Phase runBaseline(const std::string& baseURL, const fs::path& folder) {
    resetPeakRss();
    const auto started = Clock::now();
    const double cpuAtStart = cpuSeconds();
    Phase phase;
    {
        RawStore store(folder / "raw.sqlite");
        CURL* curl = curl_easy_init();
        curl_slist* headers = curl_slist_append(nullptr, ("Authorization: token-" + yuid).c_str());
        curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
        curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, appendBody);
        curl_easy_setopt(curl, CURLOPT_ACCEPT_ENCODING, "");
        std::string body;
        curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
        simdjson::dom::parser parser;
        for (const bool isOrg : {false, true}) {
            for (int page = 1;; ++page) {
                const std::string url = baseURL + "/api/v1/accounts/" + (isOrg ? "org" : "self") +
                                        "/contacts?include=emails,phones,urls,usage_count,categories&page=" +
                                        std::to_string(page) + "&per_page=" + std::to_string(pageSize);
                curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
                body.clear();
                const auto asked = Clock::now();
                if (curl_easy_perform(curl) != CURLE_OK) {
                    std::fprintf(stderr, "baseline request failed: %s\n", url.c_str());
                    break;
                }
                const auto received = Clock::now();
                phase.fetchSeconds += seconds(received - asked);
                simdjson::dom::element root;
                simdjson::dom::array contacts;
                if (parser.parse(body).get(root) || root["contacts"].get_array().get(contacts)) break;
                const long long written = store.writePage(contacts, isOrg);
                phase.storeSeconds += seconds(Clock::now() - received);
                phase.contacts += written;
                bool hasMore = false;
                if (root["has_more"].get_bool().get(hasMore)) hasMore = false;
                // The same end rule as the library's page loop, so both ask for the same pages.
                const long long shortfall = pageSize - written;
                if (!hasMore && !(shortfall >= 1 && shortfall <= 49)) break;
            }
        }
        curl_slist_free_all(headers);
        curl_easy_cleanup(curl);
    }
    phase.seconds = seconds(Clock::now() - started);
    phase.cpuSeconds = cpuSeconds() - cpuAtStart;
    phase.peakMB = peakRssMB();
    return phase;
}

// ---- The library, through its facade ----

class Authenticator : public YContactsAuthenticationContract {
public:
    explicit Authenticator(std::string baseURL) : baseURL_(std::move(baseURL)) {}
    void getAuthorizationHeader(const std::string& user, AuthorizationCallback callback) override {
        callback("token-" + user, std::nullopt);
    }
    std::optional<YContactsHost> getContactsHost(const std::string&) override { return YContactsHost::idc(baseURL_); }

private:
    std::string baseURL_;
};

class CompletionObserver : public YContactsNotification {
public:
    void downloadComplete(const std::string&, const std::optional<std::string>&, double, bool) override {
        finished_.set_value(true);
    }
    void downloadFailed(const std::string&, const std::optional<std::string>&, YContactError) override {
        finished_.set_value(false);
    }
    std::future<bool> finished() { return finished_.get_future(); }

private:
    std::promise<bool> finished_;
};

Phase runLibrary(const std::string& baseURL, const fs::path& folder) {
    resetPeakRss();
    const auto started = Clock::now();
    const double cpuAtStart = cpuSeconds();
    Phase phase;
    auto observer = std::make_shared<CompletionObserver>();
    auto finished = observer->finished();
    YNotificationCenter::shared().addObserver<YContactsNotification>(observer);
    {
        YContactsDatabaseSchema::createTablesInFile(folder / "contacts.sqlite");
        YContactService service(YContactService::Builders::defaults());
        service.config =
            YContactService::Config(std::make_shared<Authenticator>(baseURL), folder / "contacts.sqlite", std::nullopt);
        auto sync = service.syncHandler();
        sync->start(yuid, "o1");
        if (finished.wait_for(std::chrono::minutes(10)) != std::future_status::ready || !finished.get()) {
            std::fprintf(stderr, "the library's download did not complete\n");
        }
        phase.seconds = seconds(Clock::now() - started);
        phase.cpuSeconds = cpuSeconds() - cpuAtStart;
        phase.peakMB = peakRssMB();
        if (const auto counts = sync->getContactCount(yuid)) phase.contacts = counts->first + counts->second;
    }
    YNotificationCenter::shared().removeObserver<YContactsNotification>(observer.get());
    YSqliteHelper::getShared().unregisterDB(YContactService::databaseIdentifier);
    return phase;
}

// ---- The server process ----

struct ServerProcess {
    pid_t pid = -1;
    int keepAlive = -1;
    int port = -1;
};

// Forks the server before this process starts any thread. The child serves until the parent closes the
// keep-alive pipe (or exits).
ServerProcess forkServer() {
    int portPipe[2];
    int alivePipe[2];
    if (pipe(portPipe) != 0 || pipe(alivePipe) != 0) return {};
    const pid_t pid = fork();
    if (pid == 0) {
        close(portPipe[0]);
        close(alivePipe[1]);
        sample_server::SampleServerOptions options;
        options.users = 1;
        options.usersPerOrg = 1;
        options.personalContactsPerUser = contactsPerPopulation;
        options.orgContactsPerOrg = contactsPerPopulation;
        sample_server::SampleContactsServer server(options);
        const int port = server.start();
        [[maybe_unused]] const auto written = write(portPipe[1], &port, sizeof port);
        char byte;
        while (read(alivePipe[0], &byte, 1) > 0) {
        }
        server.stop();
        _exit(0);
    }
    close(portPipe[1]);
    close(alivePipe[0]);
    ServerProcess server{pid, alivePipe[1], -1};
    if (read(portPipe[0], &server.port, sizeof server.port) != sizeof server.port) server.port = -1;
    close(portPipe[0]);
    return server;
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 1;
    ServerProcess server = forkServer();
    if (server.port <= 0) {
        std::fprintf(stderr, "the sample server did not start\n");
        return 1;
    }
    Logger::shared().setConsoleOutput(false);
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const std::string baseURL = "http://127.0.0.1:" + std::to_string(server.port);
    const fs::path root = fs::temp_directory_path() / ("ycontacts-bench-sync-" + std::to_string(getpid()));

    Phase baseline;
    Phase library;
    baseline.seconds = library.seconds = 1e300;
    for (int round = 0; round < rounds; ++round) {
        const fs::path folder = root / std::to_string(round);
        fs::create_directories(folder);
        const Phase raw = runBaseline(baseURL, folder);
        const Phase ours = runLibrary(baseURL, folder);
        std::printf("round %d: baseline %.2f s (waiting for the server %.2f s, parse and write %.2f s; CPU %.2f s; "
                    "%lld contacts; peak RSS %.1f MB), library %.2f s (CPU %.2f s; %lld contacts; peak RSS %.1f MB)\n",
                    round + 1, raw.seconds, raw.fetchSeconds, raw.storeSeconds, raw.cpuSeconds, raw.contacts,
                    raw.peakMB, ours.seconds, ours.cpuSeconds, ours.contacts, ours.peakMB);
        if (raw.seconds < baseline.seconds) baseline = raw;
        if (ours.seconds < library.seconds) library = ours;
        fs::remove_all(folder);
    }
    fs::remove_all(root);

    std::printf("initial sync of %d contacts (%d personal, %d organisation), pages of %d, %d round(s), best of each:\n",
                2 * contactsPerPopulation, contactsPerPopulation, contactsPerPopulation, pageSize, rounds);
    std::printf("  library (YContactService): %.2f s, %.0f contacts/s, CPU %.2f s, peak RSS %.1f MB\n",
                library.seconds, library.contacts / library.seconds, library.cpuSeconds, library.peakMB);
    std::printf("  baseline (libcurl + simdjson + raw sqlite3): %.2f s, %.0f contacts/s, CPU %.2f s, peak RSS %.1f MB\n",
                baseline.seconds, baseline.contacts / baseline.seconds, baseline.cpuSeconds, baseline.peakMB);
    std::printf("  ratio library / baseline: time %.2f (target 1.5 or less), CPU %.2f; peak RSS target under 100 MB\n",
                library.seconds / baseline.seconds, library.cpuSeconds / baseline.cpuSeconds);

    close(server.keepAlive);
    waitpid(server.pid, nullptr, 0);
    curl_global_cleanup();
    return library.contacts == 2 * contactsPerPopulation && baseline.contacts == 2 * contactsPerPopulation ? 0 : 1;
}
