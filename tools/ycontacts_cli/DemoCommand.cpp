// `ycontacts demo`: the sample server in-process, a full download with progress, typeahead and suggestions
// with their latency, a contact photo fetched, cached and revalidated, server-side changes, an incremental
// sync that reports them, and a summary.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>

#include "sample_server/SampleContactsServer.h"
#include "ycontacts_cli/CommandSupport.h"
#include "ycontacts_cli/Commands.h"
#include "ycontacts_cli/DemoPhoto.h"
#include "ycontacts_cli/DemoQueries.h"
#include "ycontacts_cli/DemoServerChanges.h"
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

// What the steps of one run share: where they work, what they found, and the report they fill.
struct DemoRun {
    explicit DemoRun(const DemoOptions& options)
        : options(options),
          narrate(options.json),
          temporary(options.dataDir ? std::nullopt : TemporaryDirectory::create("ycontacts-demo-")),
          data{options.dataDir ? std::filesystem::path(*options.dataDir)
                               : temporary ? temporary->path() : std::filesystem::path()} {}

    const DemoOptions& options;
    const Narration narrate;
    Json report;
    bool allChecksPassed = true;
    // Absent when the options name the data directory (or when it cannot be made).
    std::optional<TemporaryDirectory> temporary;
    DataDirectory data;
    std::unique_ptr<sample_server::SampleContactsServer> server;
    std::string yuid;
    std::optional<std::string> yoid;
    std::int64_t serverPersonal = 0;
    std::int64_t serverOrg = 0;
    // The personal contact that the typeahead and the suggestions type towards.
    sample_server::SampleContact target;
    DemoServerChanges changes;
    // For the summary.
    SyncRun initial;
    SyncTally stored;
    std::vector<double> typeaheadTimes;
    std::vector<double> suggestionTimes;
    std::optional<double> serverSearchMilliseconds;
    SyncRun incremental;
};

// An exit status when the demo ends at this step; nothing when it goes on.
using StepEnd = std::optional<int>;

int interrupted() {
    problem("interrupted", exitFailed);
    return Interrupt::exitStatus();
}

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

double contactsPerSecond(const SyncProgress& progress) {
    return progress.elapsedSeconds > 0 ? static_cast<double>(progress.received()) / progress.elapsedSeconds : 0;
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

bool sameTally(const SyncTally& a, const SyncTally& b) { return a.personal == b.personal && a.org == b.org; }

std::string tallyText(const SyncTally& tally) {
    return format::count(tally.total()) + " (" + format::count(tally.personal) + " personal, " +
           format::count(tally.org) + " org)";
}

// One answered query: a narrated row (the text, how many shown, how long, the first few) and a report row.
template <class Record>
Json answerRow(const DemoRun& run, const std::string& text, const TimedAnswer<Record>& answer,
               const std::string& firstFew) {
    run.narrate.say("  %s %s %s  %s\n", format::column("\"" + text + "\"", 22).c_str(),
                    format::column(format::count(static_cast<std::int64_t>(answer.records->size())) + " shown", 9)
                        .c_str(),
                    format::column(format::milliseconds(answer.milliseconds), 9).c_str(), firstFew.c_str());
    return Json{{"query", text}, {"results", answer.records->size()}, {"milliseconds", answer.milliseconds}};
}

// Asks the store for every text in turn, as a person types them; keeps the times of the answers.
template <class Record, class Ask, class Describe>
StepEnd typeAlong(DemoRun& run, const std::vector<std::string>& texts, Ask ask, Describe describe,
                  std::vector<double>& times, const char* reportKey) {
    Json rows = Json::array();
    for (const auto& text : texts) {
        if (Interrupt::requested()) return interrupted();
        const TimedAnswer<Record> answer = ask(text);
        if (!answer.answered || !answer.records) {
            run.allChecksPassed = false;
            run.narrate.say("  %s no answer\n", format::column("\"" + text + "\"", 22).c_str());
            rows.push_back(Json{{"query", text}, {"results", nullptr}});
            continue;
        }
        times.push_back(answer.milliseconds);
        rows.push_back(answerRow(run, text, answer, describe(*answer.records)));
    }
    run.report[reportKey] = rows;
    return std::nullopt;
}

// The first lines of the narration and of the report: the server, its sample data and the data directory.
void describeServer(DemoRun& run, double generatedSeconds) {
    const auto& server = *run.server;
    run.narrate.say("YContacts demo\n");
    run.narrate.say("  server  %s, sample data of %s: %s personal contacts, %s in organisation %s (made in %s)\n",
                    server.baseURL().c_str(), run.yuid.c_str(), format::count(run.serverPersonal).c_str(),
                    format::count(run.serverOrg).c_str(), run.yoid.value_or("-").c_str(),
                    format::duration(generatedSeconds).c_str());
    run.narrate.say("  data    %s%s\n", run.data.root.string().c_str(), run.temporary ? " (removed at the end)" : "");
    run.report["server"] = Json{{"url", server.baseURL()},
                                {"yuid", run.yuid},
                                {"yoid", run.yoid ? Json(*run.yoid) : Json()},
                                {"personal", run.serverPersonal},
                                {"org", run.serverOrg},
                                {"generatedSeconds", generatedSeconds}};
    run.report["dataDir"] = run.data.root.string();
    run.report["dataDirKept"] = !run.temporary.has_value();
}

// The data directory, the sample server with its generated data, and the library's session over both.
StepEnd startServer(DemoRun& run) {
    if (!run.options.dataDir && !run.temporary)
        return problem("cannot create a temporary directory for the demo", exitFailed);
    if (auto trouble = run.data.prepareForWriting()) return problem(*trouble, exitBadInput);

    const auto generating = std::chrono::steady_clock::now();
    sample_server::SampleServerOptions serverOptions;
    serverOptions.seed = run.options.seed;
    serverOptions.personalContactsPerUser = run.options.contacts;
    serverOptions.orgContactsPerOrg = run.options.orgContacts;
    run.server = std::make_unique<sample_server::SampleContactsServer>(serverOptions);
    auto& server = *run.server;
    if (server.start() < 0) return problem("cannot start the sample server on 127.0.0.1", exitFailed);
    const double generatedSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - generating).count();
    run.yuid = server.userIds().front();
    run.yoid = server.yoidOf(run.yuid);
    run.serverPersonal = static_cast<std::int64_t>(server.contacts(run.yuid, false).size());
    run.serverOrg = run.yoid ? static_cast<std::int64_t>(server.contacts(*run.yoid, true).size()) : 0;
    run.target = pickTarget(server.contacts(run.yuid, false));
    describeServer(run, generatedSeconds);

    const auto parsed = ServerAddress::parse(server.baseURL());
    SessionSettings settings{run.data, parsed.address, false, {{run.yuid, server.userToken(run.yuid)}},
                             run.options.verbose};
    if (auto trouble = Session::open(settings)) return problem(*trouble, exitFailed);
    return std::nullopt;
}

// The initial download, fed to the progress bar by the library's notifications.
StepEnd downloadEverything(DemoRun& run) {
    run.narrate.say("\nInitial download (personal contacts first, then the organisation's)\n");
    auto line = run.options.json ? nullptr : std::make_shared<ProgressLine>(stdout, run.serverPersonal + run.serverOrg);
    run.initial = SyncRun::perform(SyncRun::Kind::reset, run.yuid, run.yoid, line, syncIdleTimeout);
    const SyncRun& initial = run.initial;
    if (initial.outcome == SyncWatcher::Outcome::interrupted) return interrupted();
    if (initial.outcome != SyncWatcher::Outcome::completed) {
        return problem(std::string("the initial download ") +
                           (initial.outcome == SyncWatcher::Outcome::stalled ? "stalled" : "failed") + " (" +
                           std::string(ycontacts::toRawValue(
                               initial.progress.error.value_or(ycontacts::YContactError::unknownError))) +
                           ")",
                       exitFailed);
    }
    const auto stored = Session::syncHandler().getContactCount(run.yuid);
    run.stored = SyncTally{stored ? stored->second : -1, stored ? stored->first : -1};
    const bool storedMatches = run.stored.personal == run.serverPersonal && run.stored.org == run.serverOrg;
    run.allChecksPassed &= storedMatches;
    run.narrate.say("  stored %s personal and %s organisation contacts: %s\n",
                    format::count(run.stored.personal).c_str(), format::count(run.stored.org).c_str(),
                    storedMatches ? "the same as on the server" : "NOT the same as on the server");
    run.report["initialSync"] = Json{{"outcome", outcomeName(initial.outcome)},
                                     {"pages", initial.progress.pages},
                                     {"contacts", initial.progress.received()},
                                     {"seconds", initial.progress.elapsedSeconds},
                                     {"contactsPerSecond", contactsPerSecond(initial.progress)},
                                     {"stored", tallyJson(run.stored)},
                                     {"matchesServer", storedMatches}};
    return std::nullopt;
}

// A person types a name, letter by letter; every keystroke asks the store.
StepEnd typeahead(DemoRun& run) {
    const auto& target = run.target;
    std::vector<std::string> typed;
    for (std::size_t length = 1; length <= 4; ++length) typed.push_back(prefix(target.firstName, length));
    typed.push_back(target.firstName + " " + prefix(target.lastName.value_or(""), 1));
    run.narrate.say("\nTypeahead from the local store, towards \"%s %s\" (first %d results)\n",
                    target.firstName.c_str(), target.lastName.value_or("").c_str(), shownResults);
    const auto ask = [&run](const std::string& text) {
        return searchContacts(run.yuid, run.yoid, text, shownResults, RequestType::local);
    };
    return typeAlong<YContact>(run, typed, ask, names, run.typeaheadTimes, "typeahead");
}

// Addresses offered while an address is typed; longer keywords narrow the cached rows.
StepEnd suggestions(DemoRun& run) {
    const std::string address = primaryAddressOf(run.target);
    const std::string local = address.substr(0, address.find('@'));
    std::vector<std::string> typed;
    for (std::size_t length : {1, 2, 3, 5}) {
        const auto text = prefix(local, length);
        if (typed.empty() || typed.back() != text) typed.push_back(text);
    }
    run.narrate.say("\nAddress suggestions from the local store, towards %s\n", address.c_str());
    const auto ask = [&run](const std::string& text) {
        return suggestAddresses(run.yuid, run.yoid, text, shownResults);
    };
    return typeAlong<YSuggestionContact>(run, typed, ask, addresses, run.suggestionTimes, "suggestions");
}

// The same kind of search answered by the server, for comparison.
StepEnd serverSearch(DemoRun& run) {
    const std::string text = prefix(run.target.firstName, 3);
    const auto answer = searchContacts(run.yuid, run.yoid, text, shownResults, RequestType::server);
    run.narrate.say("\nServer search\n");
    if (answer.answered && answer.records) {
        run.report["serverSearch"] = answerRow(run, text, answer, names(*answer.records));
        run.serverSearchMilliseconds = answer.milliseconds;
    } else {
        run.allChecksPassed = false;
        run.narrate.say("  \"%s\" no answer from the server\n", text.c_str());
        run.report["serverSearch"] = Json{{"query", text}, {"results", nullptr}};
    }
    if (Interrupt::requested()) return interrupted();
    return std::nullopt;
}

// One contact's photo: downloaded, then answered from the photo cache, then revalidated with a 304.
StepEnd photo(DemoRun& run) {
    run.narrate.say("\nContact photo (normal size)\n");
    const DemoPhoto demo = DemoPhoto::run(*run.server, run.yuid);
    if (!demo.contactYuid) {
        run.narrate.say("  no contact of %s has a photo\n", run.yuid.c_str());
        run.report["photo"] = nullptr;
        return std::nullopt;
    }
    Json asks = Json::array();
    for (const auto& ask : demo.asks) {
        const std::size_t bytes = ask.fetch.data ? ask.fetch.data->size() : 0;
        run.allChecksPassed &= ask.asExpected;
        run.narrate.say(
            "  %s %s bytes, %s, %zu request(s) to the server, %s: %s\n", format::column(ask.label, 12).c_str(),
            format::count(static_cast<std::int64_t>(bytes)).c_str(), sourceName(ask.fetch.source), ask.requests,
            format::milliseconds(ask.fetch.milliseconds).c_str(), ask.asExpected ? "as expected" : "NOT as expected");
        asks.push_back(Json{{"ask", ask.label},
                            {"bytes", bytes},
                            {"source", sourceName(ask.fetch.source)},
                            {"requests", ask.requests},
                            {"milliseconds", ask.fetch.milliseconds},
                            {"asExpected", ask.asExpected}});
    }
    run.report["photo"] = Json{{"contactYuid", *demo.contactYuid}, {"asks", asks}};
    if (Interrupt::requested()) return interrupted();
    return std::nullopt;
}

// Another device changes contacts on the server; an incremental sync brings exactly those changes.
StepEnd changeOnServerAndSync(DemoRun& run) {
    run.changes = DemoServerChanges::make(*run.server, run.yuid, run.yoid);
    const auto& changes = run.changes;
    run.narrate.say("\nChanges made on the server: %s added, %s updated, %s deleted\n",
                    tallyText(changes.added).c_str(), tallyText(changes.updated).c_str(),
                    tallyText(changes.deleted).c_str());
    run.narrate.say("Incremental sync\n");
    auto line = run.options.json ? nullptr : std::make_shared<ProgressLine>(stdout, std::nullopt);
    run.incremental = SyncRun::perform(SyncRun::Kind::sync, run.yuid, run.yoid, line, syncIdleTimeout);
    const SyncRun& incremental = run.incremental;
    if (incremental.outcome == SyncWatcher::Outcome::interrupted) return interrupted();
    const auto& seen = incremental.progress;
    const bool changesMatch = incremental.outcome == SyncWatcher::Outcome::completed && !seen.initial &&
                              sameTally(seen.added, changes.added) && sameTally(seen.updated, changes.updated) &&
                              sameTally(seen.deleted, changes.deleted);
    run.allChecksPassed &= changesMatch;
    run.narrate.say("  %s: %s added, %s updated, %s deleted: %s\n", outcomeName(incremental.outcome),
                    tallyText(seen.added).c_str(), tallyText(seen.updated).c_str(), tallyText(seen.deleted).c_str(),
                    changesMatch ? "exactly the changes made on the server" : "NOT the changes made on the server");
    run.report["changes"] = Json{{"added", tallyJson(changes.added)},
                                 {"updated", tallyJson(changes.updated)},
                                 {"deleted", tallyJson(changes.deleted)}};
    run.report["incrementalSync"] = Json{{"outcome", outcomeName(incremental.outcome)},
                                         {"initial", seen.initial},
                                         {"pages", seen.pages},
                                         {"added", tallyJson(seen.added)},
                                         {"updated", tallyJson(seen.updated)},
                                         {"deleted", tallyJson(seen.deleted)},
                                         {"seconds", seen.elapsedSeconds},
                                         {"matchesServer", changesMatch}};
    return std::nullopt;
}

// The store agrees with the server: added contacts are found, deleted ones are gone.
void checkTheStore(DemoRun& run) {
    const auto& changes = run.changes;
    std::size_t addedFound = 0;
    for (const auto& id : changes.addedIds) addedFound += lookUpContact(run.yuid, id).has_value() ? 1 : 0;
    std::size_t deletedGone = 0;
    for (const auto& id : changes.deletedIds) deletedGone += lookUpContact(run.yuid, id).has_value() ? 0 : 1;
    const auto demoSearch = searchContacts(run.yuid, run.yoid, "Demo", 50, RequestType::local);
    const std::size_t foundBySearch = demoSearch.records ? demoSearch.records->size() : 0;
    const bool storeAgrees = addedFound == changes.addedIds.size() && deletedGone == changes.deletedIds.size() &&
                             foundBySearch == changes.addedIds.size();
    run.allChecksPassed &= storeAgrees;
    run.narrate.say("  in the store: %zu of %zu added contacts found by id and %zu by searching \"Demo\"; %zu of %zu "
                    "deleted contacts gone\n",
                    addedFound, changes.addedIds.size(), foundBySearch, deletedGone, changes.deletedIds.size());
    run.report["incrementalSync"]["storeAgrees"] = storeAgrees;
}

void summarise(DemoRun& run) {
    std::error_code ignored;
    const auto databaseBytes = std::filesystem::file_size(run.data.database(), ignored);
    run.report["databaseBytes"] = ignored ? 0 : databaseBytes;
    run.report["typeaheadMedianMilliseconds"] = median(run.typeaheadTimes);
    run.report["suggestionsMedianMilliseconds"] = median(run.suggestionTimes);
    run.report["passed"] = run.allChecksPassed;

    const auto& initial = run.initial.progress;
    const auto& seen = run.incremental.progress;
    run.narrate.say("\nSummary\n");
    run.narrate.say("  initial download   %s contacts (%s personal + %s organisation) in %s, %s contacts/s, %d pages\n",
                    format::count(initial.received()).c_str(), format::count(run.stored.personal).c_str(),
                    format::count(run.stored.org).c_str(), format::duration(initial.elapsedSeconds).c_str(),
                    format::count(static_cast<std::int64_t>(contactsPerSecond(initial))).c_str(), initial.pages);
    run.narrate.say("  database           %s MiB\n",
                    format::count(static_cast<std::int64_t>((ignored ? 0 : databaseBytes) / (1024 * 1024))).c_str());
    run.narrate.say("  typeahead          median %s over %zu searches (local store)\n",
                    format::milliseconds(median(run.typeaheadTimes)).c_str(), run.typeaheadTimes.size());
    run.narrate.say("  suggestions        median %s over %zu searches (local store)\n",
                    format::milliseconds(median(run.suggestionTimes)).c_str(), run.suggestionTimes.size());
    if (run.serverSearchMilliseconds)
        run.narrate.say("  server search      %s\n", format::milliseconds(*run.serverSearchMilliseconds).c_str());
    run.narrate.say("  incremental sync   %s added, %s updated, %s deleted in %s\n",
                    format::count(seen.added.total()).c_str(), format::count(seen.updated.total()).c_str(),
                    format::count(seen.deleted.total()).c_str(), format::duration(seen.elapsedSeconds).c_str());
    run.narrate.say("  checks             %s\n", run.allChecksPassed ? "all passed" : "SOME FAILED (see above)");
}

}  // namespace

int runDemo(const DemoOptions& options) {
    configureLogging(options.verbose);
    DemoRun run(options);
    for (const auto step :
         {startServer, downloadEverything, typeahead, suggestions, serverSearch, photo, changeOnServerAndSync}) {
        if (auto end = step(run)) return *end;
    }
    checkTheStore(run);
    summarise(run);
    if (options.json) std::printf("%s\n", run.report.dump(2).c_str());
    return run.allChecksPassed ? exitOk : exitFailed;
}

}  // namespace ycontacts_cli
