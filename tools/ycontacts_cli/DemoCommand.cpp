// `ycontacts demo`: the sample server in-process, a full download with progress, typeahead and suggestions
// with their latency, server-side changes, an incremental sync that reports them, and a summary.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <set>
#include <unistd.h>

#include "sample_server/SampleContactsServer.h"
#include "ycontacts_cli/Answers.h"
#include "ycontacts_cli/CommandSupport.h"
#include "ycontacts_cli/Commands.h"
#include "ycontacts_cli/Format.h"
#include "ycontacts_cli/Interrupt.h"
#include "ycontacts_cli/Session.h"
#include "ycontacts_cli/SyncRun.h"
#include "ycontacts_cli/TemporaryDirectory.h"

namespace ycontacts_cli {

namespace {

using ycontacts::RequestType;
using ycontacts::YContact;
using ycontacts::YSuggestionContact;
using Json = nlohmann::ordered_json;

constexpr auto queryTimeout = std::chrono::seconds(30);
constexpr auto syncIdleTimeout = std::chrono::seconds(90);
constexpr int shownResults = 5;

// Text that a demo run prints for a person; nothing in --json mode, where one JSON document is the output.
class Narration {
public:
    explicit Narration(bool quiet) : quiet_(quiet) {}
    template <class... Args>
    void say(const char* format, Args... args) const {
        if (quiet_) return;
        std::printf(format, args...);
        std::fflush(stdout);
    }
    void say(const std::string& text) const { say("%s", text.c_str()); }

private:
    bool quiet_;
};

// The first `count` characters (code points) of UTF-8 text.
std::string prefix(const std::string& text, std::size_t count) {
    std::size_t at = 0;
    for (std::size_t seen = 0; at < text.size() && seen < count; ++seen) {
        ++at;
        while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) ++at;
    }
    return text.substr(0, at);
}

double median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const auto middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

template <class Record>
struct Timed {
    bool answered = false;
    std::optional<std::vector<Record>> records;
    double milliseconds = 0;
};

Timed<YContact> searchContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                               const std::optional<std::string>& text, int limit, RequestType type) {
    auto answers = std::make_shared<Answers<std::optional<std::vector<YContact>>>>();
    Session::service().getContacts(yuid, yoid, text, limit, std::nullopt, type,
                                   [answers](std::optional<std::vector<YContact>> contacts) {
                                       answers->add(std::move(contacts));
                                   });
    if (!answers->waitFor(1, queryTimeout)) return {};
    auto first = answers->taken().front();
    return {true, std::move(first.answer), first.milliseconds};
}

Timed<YSuggestionContact> suggest(const std::string& yuid, const std::optional<std::string>& yoid,
                                  const std::string& text, int limit) {
    auto answers = std::make_shared<Answers<std::optional<std::vector<YSuggestionContact>>>>();
    Session::service().getSuggestionContacts(
        yuid, text, yoid, limit, std::nullopt, RequestType::local,
        [answers](std::string, std::optional<std::vector<YSuggestionContact>> suggestions) {
            answers->add(std::move(suggestions));
        });
    if (!answers->waitFor(1, queryTimeout)) return {};
    auto first = answers->taken().front();
    return {true, std::move(first.answer), first.milliseconds};
}

std::optional<YContact> lookUp(const std::string& yuid, const std::string& contactId) {
    auto answers = std::make_shared<Answers<std::optional<YContact>>>();
    Session::service().getContact(yuid, std::nullopt, contactId, std::nullopt,
                                  [answers](std::optional<YContact> contact) { answers->add(std::move(contact)); });
    if (!answers->waitFor(1, queryTimeout)) return std::nullopt;
    return answers->taken().front().answer;
}

std::string names(const std::vector<YContact>& contacts) {
    std::string text;
    for (std::size_t i = 0; i < contacts.size() && i < 3; ++i) text += (i ? ", " : "") + contacts[i].getDisplayName();
    if (contacts.size() > 3) text += ", ...";
    return text;
}

std::string addresses(const std::vector<YSuggestionContact>& suggestions) {
    std::string text;
    for (std::size_t i = 0; i < suggestions.size() && i < 2; ++i) text += (i ? ", " : "") + suggestions[i].email;
    if (suggestions.size() > 2) text += ", ...";
    return text;
}

// A personal contact of an ordinary kind (a user with a last name and an address) to type towards.
sample_server::SampleContact pickTarget(const std::vector<sample_server::SampleContact>& contacts) {
    for (std::size_t i = contacts.size() / 3; i < contacts.size(); ++i) {
        const auto& contact = contacts[i];
        if (contact.contactType == "user" && contact.lastName && !contact.emails.empty() &&
            contact.firstName.size() >= 3)
            return contact;
    }
    return contacts.front();
}

std::string primaryAddressOf(const sample_server::SampleContact& contact) {
    for (const auto& email : contact.emails)
        if (email.isPrimary) return email.address;
    return contact.emails.empty() ? std::string() : contact.emails.front().address;
}

// The changes another device of the user makes on the server while the demo watches.
struct ServerChanges {
    SyncTally added;
    SyncTally updated;
    SyncTally deleted;
    std::vector<std::string> addedIds;
    std::vector<std::string> deletedIds;
};

ServerChanges changeOnServer(sample_server::SampleContactsServer& server, const std::string& yuid,
                             const std::optional<std::string>& yoid) {
    ServerChanges changes;
    const auto change = [&](const std::string& owner, bool isOrg, int adds, int updates, int deletes) {
        for (int i = 1; i <= adds; ++i) {
            sample_server::SampleContact contact;
            contact.firstName = "Demo";
            contact.lastName = std::string(isOrg ? "Colleague" : "Friend") + std::to_string(i);
            contact.emails.push_back({"demo." + std::string(isOrg ? "colleague" : "friend") + std::to_string(i) +
                                          "@example.com",
                                      true});
            contact.isEditable = !isOrg;
            if (auto id = server.addContact(owner, isOrg, contact)) {
                changes.addedIds.push_back(*id);
                changes.added.add(isOrg, 1);
            }
        }
        auto existing = server.contacts(owner, isOrg);
        // Skip the first few: an organisation lists its own users first.
        for (int i = 0; i < updates && static_cast<std::size_t>(10 + i) < existing.size(); ++i) {
            auto contact = existing[static_cast<std::size_t>(10 + i)];
            contact.nickName = "Renamed" + std::to_string(i + 1);
            contact.notes = "Changed on another device during the demo.";
            if (server.updateContact(owner, isOrg, contact)) changes.updated.add(isOrg, 1);
        }
        for (int i = 0; i < deletes && static_cast<std::size_t>(20 + i) < existing.size(); ++i) {
            const auto& id = existing[static_cast<std::size_t>(20 + i)].contactId;
            if (server.deleteContact(owner, isOrg, id)) {
                changes.deletedIds.push_back(id);
                changes.deleted.add(isOrg, 1);
            }
        }
    };
    change(yuid, false, 5, 3, 2);
    if (yoid) change(*yoid, true, 2, 1, 1);
    return changes;
}

bool sameTally(const SyncTally& a, const SyncTally& b) { return a.personal == b.personal && a.org == b.org; }

std::string tallyText(const SyncTally& tally) {
    return format::count(tally.total()) + " (" + format::count(tally.personal) + " personal, " +
           format::count(tally.org) + " org)";
}

}  // namespace

int runDemo(const DemoOptions& options) {
    configureLogging(options.verbose);
    const Narration narrate(options.json);
    const auto interrupted = [] {
        problem("interrupted", exitFailed);
        return Interrupt::exitStatus();
    };
    Json report;

    // Where the contacts go.
    const std::optional<TemporaryDirectory> temporary =
        options.dataDir ? std::nullopt : TemporaryDirectory::create("ycontacts-demo-");
    if (!options.dataDir && !temporary) return problem("cannot create a temporary directory for the demo", exitFailed);
    const DataDirectory data{options.dataDir ? std::filesystem::path(*options.dataDir) : temporary->path()};
    if (auto trouble = data.prepareForWriting()) return problem(*trouble, exitBadInput);

    // The server, with its generated data.
    const auto generating = std::chrono::steady_clock::now();
    sample_server::SampleServerOptions serverOptions;
    serverOptions.seed = options.seed;
    serverOptions.personalContactsPerUser = options.contacts;
    serverOptions.orgContactsPerOrg = options.orgContacts;
    sample_server::SampleContactsServer server(serverOptions);
    if (server.start() < 0) return problem("cannot start the sample server on 127.0.0.1", exitFailed);
    const double generatedSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - generating).count();
    const std::string yuid = server.userIds().front();
    const std::optional<std::string> yoid = server.yoidOf(yuid);
    const auto serverPersonal = static_cast<std::int64_t>(server.contacts(yuid, false).size());
    const auto serverOrg = yoid ? static_cast<std::int64_t>(server.contacts(*yoid, true).size()) : 0;

    narrate.say("YContacts demo\n");
    narrate.say("  server  %s, sample data of %s: %s personal contacts, %s in organisation %s (made in %s)\n",
                server.baseURL().c_str(), yuid.c_str(), format::count(serverPersonal).c_str(),
                format::count(serverOrg).c_str(), yoid.value_or("-").c_str(),
                format::duration(generatedSeconds).c_str());
    narrate.say("  data    %s%s\n", data.root.string().c_str(), temporary ? " (removed at the end)" : "");
    report["server"] = Json{{"url", server.baseURL()},
                            {"yuid", yuid},
                            {"yoid", yoid ? Json(*yoid) : Json()},
                            {"personal", serverPersonal},
                            {"org", serverOrg},
                            {"generatedSeconds", generatedSeconds}};
    report["dataDir"] = data.root.string();
    report["dataDirKept"] = !temporary.has_value();

    const auto parsed = ServerAddress::parse(server.baseURL());
    SessionSettings settings{data, parsed.address, false, {{yuid, server.userToken(yuid)}}, options.verbose};
    if (auto trouble = Session::open(settings)) return problem(*trouble, exitFailed);
    bool allChecksPassed = true;

    // 1. The initial download, fed to the progress bar by the library's notifications.
    narrate.say("\nInitial download (personal contacts first, then the organisation's)\n");
    const std::int64_t expected = serverPersonal + serverOrg;
    auto line = options.json ? nullptr : std::make_shared<ProgressLine>(stdout, expected);
    const SyncRun initial = SyncRun::perform(SyncRun::Kind::reset, yuid, yoid, line, syncIdleTimeout);
    if (initial.outcome == SyncWatcher::Outcome::interrupted) return interrupted();
    if (initial.outcome != SyncWatcher::Outcome::completed) {
        return problem(std::string("the initial download ") +
                           (initial.outcome == SyncWatcher::Outcome::stalled ? "stalled" : "failed") + " (" +
                           std::string(ycontacts::toRawValue(
                               initial.progress.error.value_or(ycontacts::YContactError::unknownError))) +
                           ")",
                       exitFailed);
    }
    const auto stored = Session::syncHandler().getContactCount(yuid);
    const SyncTally storedTally{stored ? stored->second : -1, stored ? stored->first : -1};
    const bool storedMatches = storedTally.personal == serverPersonal && storedTally.org == serverOrg;
    allChecksPassed &= storedMatches;
    const double initialRate = initial.progress.elapsedSeconds > 0
                                   ? static_cast<double>(initial.progress.received()) / initial.progress.elapsedSeconds
                                   : 0;
    narrate.say("  stored %s personal and %s organisation contacts: %s\n", format::count(storedTally.personal).c_str(),
                format::count(storedTally.org).c_str(),
                storedMatches ? "the same as on the server" : "NOT the same as on the server");
    report["initialSync"] = Json{{"outcome", outcomeName(initial.outcome)},
                                 {"pages", initial.progress.pages},
                                 {"contacts", initial.progress.received()},
                                 {"seconds", initial.progress.elapsedSeconds},
                                 {"contactsPerSecond", initialRate},
                                 {"stored", tallyJson(storedTally)},
                                 {"matchesServer", storedMatches}};

    // 2. Typeahead: a person types a name, letter by letter; every keystroke asks the store.
    const auto target = pickTarget(server.contacts(yuid, false));
    std::vector<std::string> typed;
    for (std::size_t length = 1; length <= 4; ++length) typed.push_back(prefix(target.firstName, length));
    typed.push_back(target.firstName + " " + prefix(target.lastName.value_or(""), 1));
    narrate.say("\nTypeahead from the local store, towards \"%s %s\" (first %d results)\n", target.firstName.c_str(),
                target.lastName.value_or("").c_str(), shownResults);
    std::vector<double> typeaheadTimes;
    Json typeahead = Json::array();
    for (const auto& text : typed) {
        if (Interrupt::requested()) return interrupted();
        const auto result = searchContacts(yuid, yoid, text, shownResults, RequestType::local);
        if (!result.answered || !result.records) {
            allChecksPassed = false;
            narrate.say("  %s no answer\n", format::column("\"" + text + "\"", 22).c_str());
            typeahead.push_back(Json{{"query", text}, {"results", nullptr}});
            continue;
        }
        typeaheadTimes.push_back(result.milliseconds);
        narrate.say("  %s %s %s  %s\n", format::column("\"" + text + "\"", 22).c_str(),
                    format::column(format::count(static_cast<std::int64_t>(result.records->size())) + " shown", 9).c_str(),
                    format::column(format::milliseconds(result.milliseconds), 9).c_str(), names(*result.records).c_str());
        typeahead.push_back(Json{{"query", text},
                                 {"results", result.records->size()},
                                 {"milliseconds", result.milliseconds}});
    }
    report["typeahead"] = typeahead;

    // 3. Suggestions: addresses offered while an address is typed; longer keywords narrow the cached rows.
    const std::string address = primaryAddressOf(target);
    const std::string local = address.substr(0, address.find('@'));
    std::vector<std::string> suggestionTexts;
    for (std::size_t length : {1, 2, 3, 5}) {
        const auto text = prefix(local, length);
        if (suggestionTexts.empty() || suggestionTexts.back() != text) suggestionTexts.push_back(text);
    }
    narrate.say("\nAddress suggestions from the local store, towards %s\n", address.c_str());
    std::vector<double> suggestionTimes;
    Json suggestions = Json::array();
    for (const auto& text : suggestionTexts) {
        if (Interrupt::requested()) return interrupted();
        const auto result = suggest(yuid, yoid, text, shownResults);
        if (!result.answered || !result.records) {
            allChecksPassed = false;
            narrate.say("  %s no answer\n", format::column("\"" + text + "\"", 22).c_str());
            suggestions.push_back(Json{{"query", text}, {"results", nullptr}});
            continue;
        }
        suggestionTimes.push_back(result.milliseconds);
        narrate.say("  %s %s %s  %s\n", format::column("\"" + text + "\"", 22).c_str(),
                    format::column(format::count(static_cast<std::int64_t>(result.records->size())) + " shown", 9).c_str(),
                    format::column(format::milliseconds(result.milliseconds), 9).c_str(),
                    addresses(*result.records).c_str());
        suggestions.push_back(Json{{"query", text},
                                   {"results", result.records->size()},
                                   {"milliseconds", result.milliseconds}});
    }
    report["suggestions"] = suggestions;

    // 4. The same kind of search answered by the server, for comparison.
    const std::string serverText = prefix(target.firstName, 3);
    const auto serverResult = searchContacts(yuid, yoid, serverText, shownResults, RequestType::server);
    narrate.say("\nServer search\n");
    if (serverResult.answered && serverResult.records) {
        narrate.say("  %s %s %s  %s\n", format::column("\"" + serverText + "\"", 22).c_str(),
                    format::column(format::count(static_cast<std::int64_t>(serverResult.records->size())) + " shown", 9)
                        .c_str(),
                    format::column(format::milliseconds(serverResult.milliseconds), 9).c_str(),
                    names(*serverResult.records).c_str());
        report["serverSearch"] = Json{{"query", serverText},
                                      {"results", serverResult.records->size()},
                                      {"milliseconds", serverResult.milliseconds}};
    } else {
        allChecksPassed = false;
        narrate.say("  \"%s\" no answer from the server\n", serverText.c_str());
        report["serverSearch"] = Json{{"query", serverText}, {"results", nullptr}};
    }
    if (Interrupt::requested()) return interrupted();

    // 5. Another device changes contacts on the server; an incremental sync brings exactly those changes.
    const ServerChanges changes = changeOnServer(server, yuid, yoid);
    narrate.say("\nChanges made on the server: %s added, %s updated, %s deleted\n", tallyText(changes.added).c_str(),
                tallyText(changes.updated).c_str(), tallyText(changes.deleted).c_str());
    narrate.say("Incremental sync\n");
    auto syncLine = options.json ? nullptr : std::make_shared<ProgressLine>(stdout, std::nullopt);
    const SyncRun incremental = SyncRun::perform(SyncRun::Kind::sync, yuid, yoid, syncLine, syncIdleTimeout);
    if (incremental.outcome == SyncWatcher::Outcome::interrupted) return interrupted();
    const auto& seen = incremental.progress;
    const bool changesMatch = incremental.outcome == SyncWatcher::Outcome::completed && !seen.initial &&
                              sameTally(seen.added, changes.added) && sameTally(seen.updated, changes.updated) &&
                              sameTally(seen.deleted, changes.deleted);
    allChecksPassed &= changesMatch;
    narrate.say("  %s: %s added, %s updated, %s deleted: %s\n", outcomeName(incremental.outcome),
                tallyText(seen.added).c_str(), tallyText(seen.updated).c_str(), tallyText(seen.deleted).c_str(),
                changesMatch ? "exactly the changes made on the server" : "NOT the changes made on the server");

    // The store agrees: added contacts are found, deleted ones are gone.
    std::size_t addedFound = 0;
    for (const auto& id : changes.addedIds) addedFound += lookUp(yuid, id).has_value() ? 1 : 0;
    std::size_t deletedGone = 0;
    for (const auto& id : changes.deletedIds) deletedGone += lookUp(yuid, id).has_value() ? 0 : 1;
    const auto demoSearch = searchContacts(yuid, yoid, "Demo", 50, RequestType::local);
    const std::size_t foundBySearch = demoSearch.records ? demoSearch.records->size() : 0;
    const bool storeAgrees = addedFound == changes.addedIds.size() && deletedGone == changes.deletedIds.size() &&
                             foundBySearch == changes.addedIds.size();
    allChecksPassed &= storeAgrees;
    narrate.say("  in the store: %zu of %zu added contacts found by id and %zu by searching \"Demo\"; %zu of %zu "
                "deleted contacts gone\n",
                addedFound, changes.addedIds.size(), foundBySearch, deletedGone, changes.deletedIds.size());
    report["changes"] = Json{{"added", tallyJson(changes.added)},
                             {"updated", tallyJson(changes.updated)},
                             {"deleted", tallyJson(changes.deleted)}};
    report["incrementalSync"] = Json{{"outcome", outcomeName(incremental.outcome)},
                                     {"initial", seen.initial},
                                     {"pages", seen.pages},
                                     {"added", tallyJson(seen.added)},
                                     {"updated", tallyJson(seen.updated)},
                                     {"deleted", tallyJson(seen.deleted)},
                                     {"seconds", seen.elapsedSeconds},
                                     {"matchesServer", changesMatch},
                                     {"storeAgrees", storeAgrees}};

    // 6. Summary.
    std::error_code ignored;
    const auto databaseBytes = std::filesystem::file_size(data.database(), ignored);
    report["databaseBytes"] = ignored ? 0 : databaseBytes;
    report["typeaheadMedianMilliseconds"] = median(typeaheadTimes);
    report["suggestionsMedianMilliseconds"] = median(suggestionTimes);
    report["passed"] = allChecksPassed;

    narrate.say("\nSummary\n");
    narrate.say("  initial download   %s contacts (%s personal + %s organisation) in %s, %s contacts/s, %d pages\n",
                format::count(initial.progress.received()).c_str(), format::count(storedTally.personal).c_str(),
                format::count(storedTally.org).c_str(), format::duration(initial.progress.elapsedSeconds).c_str(),
                format::count(static_cast<std::int64_t>(initialRate)).c_str(), initial.progress.pages);
    narrate.say("  database           %s MiB\n",
                format::count(static_cast<std::int64_t>((ignored ? 0 : databaseBytes) / (1024 * 1024))).c_str());
    narrate.say("  typeahead          median %s over %zu searches (local store)\n",
                format::milliseconds(median(typeaheadTimes)).c_str(), typeaheadTimes.size());
    narrate.say("  suggestions        median %s over %zu searches (local store)\n",
                format::milliseconds(median(suggestionTimes)).c_str(), suggestionTimes.size());
    if (serverResult.records)
        narrate.say("  server search      %s\n", format::milliseconds(serverResult.milliseconds).c_str());
    narrate.say("  incremental sync   %s added, %s updated, %s deleted in %s\n",
                format::count(seen.added.total()).c_str(), format::count(seen.updated.total()).c_str(),
                format::count(seen.deleted.total()).c_str(), format::duration(seen.elapsedSeconds).c_str());
    narrate.say("  checks             %s\n", allChecksPassed ? "all passed" : "SOME FAILED (see above)");

    if (options.json) std::printf("%s\n", report.dump(2).c_str());
    return allChecksPassed ? exitOk : exitFailed;
}

}  // namespace ycontacts_cli
