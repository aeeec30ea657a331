// `ycontacts search`, `list`, `suggest` and `show`: queries of the stored contacts, or of the server.

#include <cstdio>
#include <functional>
#include <memory>

#include "ycontacts_cli/Answers.h"
#include "ycontacts_cli/CommandSupport.h"
#include "ycontacts_cli/Commands.h"
#include "ycontacts_cli/Format.h"
#include "ycontacts_cli/Interrupt.h"
#include "ycontacts_cli/Output.h"
#include "ycontacts_cli/ServerCheck.h"
#include "ycontacts_cli/Session.h"

namespace ycontacts_cli {

namespace {

using ycontacts::RequestType;

std::chrono::milliseconds timeoutOf(const ServerOptions& options) {
    return std::chrono::milliseconds(static_cast<long long>(options.timeoutSeconds * 1000));
}

std::optional<bool> isOrgFor(const std::string& scope) {
    if (scope == "personal") return false;
    if (scope == "org") return true;
    return std::nullopt;
}

// What a query needs before its first call: the data directory, and for server sources a server that answers.
struct Prepared {
    std::optional<int> exitStatus;
    RequestType requestType = RequestType::preferLocal;
    bool serverConfigured = false;
};

Prepared prepare(const QueryOptions& options) {
    Prepared prepared;
    const auto requestType = requestTypeNamed(options.source);
    if (!requestType) {
        prepared.exitStatus = problem("unknown source '" + options.source + "'", exitBadInput);
        return prepared;
    }
    prepared.requestType = *requestType;
    const DataDirectory data{options.local.dataDir};
    if (auto trouble = data.checkReadable()) {
        prepared.exitStatus = problem(*trouble, exitBadInput);
        return prepared;
    }
    const bool needsServer = *requestType == RequestType::server || *requestType == RequestType::both;
    const bool serverGiven = !options.server.server.empty() || !options.server.token.empty();
    std::optional<ServerAddress> server;
    if (needsServer || serverGiven) {
        const auto setting = serverSetting(options.server);
        if (!setting.address) {
            prepared.exitStatus = problem(setting.problem, exitBadInput);
            return prepared;
        }
        server = setting.address;
    }
    if (needsServer) {
        // The library drops a failed server search without an answer, so the server is asked first whether
        // it will answer this user at all: a person then learns why instead of waiting for a time-out.
        const std::optional<std::string> yoid =
            isOrgFor(options.scope).value_or(false) ? options.server.org : std::nullopt;
        const auto check = ServerCheck::run(*server, options.server.proxy, options.local.user, yoid,
                                            options.server.token, std::chrono::seconds(10));
        if (check.outcome != ServerCheck::Outcome::ok) {
            prepared.exitStatus = problem(check.message, exitFailed);
            return prepared;
        }
    }
    SessionSettings settings{data, server, options.server.proxy, {}, options.local.verbose};
    if (server) settings.tokens[options.local.user] = options.server.token;
    if (auto trouble = Session::open(settings)) {
        prepared.exitStatus = problem(*trouble, exitFailed);
        return prepared;
    }
    prepared.serverConfigured = server.has_value();
    return prepared;
}

// How a list query's answers are shown: the text lines of the records and their JSON form.
template <class Record>
struct Presentation {
    std::string noun;      // "contacts", "suggestions"
    std::string subject;   // ` matching "ann"`, or empty
    std::function<std::string(const std::vector<Record>&)> lines;
    std::function<nlohmann::ordered_json(const std::optional<std::vector<Record>>&)> json;
};

// Waits for the answers the request type promises, prints them and gives the exit status. `both` answers
// twice (store, then server); `prefer-local` once, or twice when the store could not answer at all.
template <class Record>
int present(const QueryOptions& options, const Prepared& prepared,
            const std::shared_ptr<Answers<std::optional<std::vector<Record>>>>& answers,
            const Presentation<Record>& presentation) {
    const auto timeout = timeoutOf(options.server);
    const RequestType type = prepared.requestType;
    std::size_t expected = type == RequestType::both ? 2 : 1;
    bool complete = answers->waitFor(expected, timeout);
    if (complete && type == RequestType::preferLocal && !answers->taken().front().answer && prepared.serverConfigured) {
        expected = 2;
        complete = answers->waitFor(expected, timeout);
    }
    const auto taken = answers->taken();
    const auto sourceOf = [&](std::size_t index) {
        if (type == RequestType::server) return std::string("the server");
        return std::string(index == 0 ? "the local store" : "the server");
    };

    if (options.local.json) {
        if (type == RequestType::both) {
            nlohmann::ordered_json both{{"local", nullptr}, {"server", nullptr}};
            if (taken.size() > 0) both["local"] = presentation.json(taken[0].answer);
            if (taken.size() > 1) both["server"] = presentation.json(taken[1].answer);
            std::printf("%s\n", both.dump(2).c_str());
        } else if (complete) {
            std::printf("%s\n", presentation.json(taken.back().answer).dump(2).c_str());
        }
    } else {
        for (std::size_t i = 0; i < taken.size(); ++i) {
            const auto& answer = taken[i];
            if (!answer.answer) {
                std::printf("No answer from %s (%s).\n", sourceOf(i).c_str(),
                            format::milliseconds(answer.milliseconds).c_str());
                continue;
            }
            std::printf("%s %s%s from %s (%s):\n", format::count(static_cast<std::int64_t>(answer.answer->size())).c_str(),
                        presentation.noun.c_str(), presentation.subject.c_str(), sourceOf(i).c_str(),
                        format::milliseconds(answer.milliseconds).c_str());
            std::printf("%s", presentation.lines(*answer.answer).c_str());
        }
    }
    std::fflush(stdout);

    if (!complete) {
        if (Interrupt::requested()) {
            problem("interrupted", exitFailed);
            return Interrupt::exitStatus();
        }
        const std::string waitedFor = taken.empty() && type != RequestType::server ? "the local store" : "the server";
        return problem("no answer from " + waitedFor + " within " + format::duration(options.server.timeoutSeconds),
                       exitFailed);
    }
    if (!taken.back().answer) {
        return problem(sourceOf(taken.size() - 1) == "the server" ? "the server gave no usable answer"
                                                                  : "the local store could not be read",
                       exitFailed);
    }
    return exitOk;
}

std::string quoted(const std::optional<std::string>& text) { return text ? " \"" + *text + "\"" : std::string(); }

int runContacts(const QueryOptions& options, const std::string& subject) {
    const Prepared prepared = prepare(options);
    if (prepared.exitStatus) return *prepared.exitStatus;
    auto answers = std::make_shared<Answers<std::optional<std::vector<ycontacts::YContact>>>>();
    Session::service().getContacts(options.local.user, options.server.org, options.query, options.limit,
                                   isOrgFor(options.scope), prepared.requestType,
                                   [answers](std::optional<std::vector<ycontacts::YContact>> contacts) {
                                       answers->add(std::move(contacts));
                                   });
    return present<ycontacts::YContact>(options, prepared, answers,
                                        {"contacts", subject, output::contactLines, output::contactsJson});
}

}  // namespace

int runSearch(const QueryOptions& options) { return runContacts(options, " matching" + quoted(options.query)); }

int runList(const QueryOptions& options) { return runContacts(options, ""); }

int runSuggest(const QueryOptions& options) {
    const Prepared prepared = prepare(options);
    if (prepared.exitStatus) return *prepared.exitStatus;
    auto answers = std::make_shared<Answers<std::optional<std::vector<ycontacts::YSuggestionContact>>>>();
    Session::service().getSuggestionContacts(
        options.local.user, options.query.value_or(""), options.server.org, options.limit, isOrgFor(options.scope),
        prepared.requestType,
        [answers](std::string, std::optional<std::vector<ycontacts::YSuggestionContact>> suggestions) {
            answers->add(std::move(suggestions));
        });
    return present<ycontacts::YSuggestionContact>(
        options, prepared, answers,
        {"suggestions", " for" + quoted(options.query), output::suggestionLines, output::suggestionsJson});
}

int runShow(const ShowOptions& options) {
    const DataDirectory data{options.local.dataDir};
    if (auto trouble = data.checkReadable()) return problem(*trouble, exitBadInput);
    if (auto trouble = Session::open(SessionSettings{data, std::nullopt, false, {}, options.local.verbose}))
        return problem(*trouble, exitFailed);

    auto answers = std::make_shared<Answers<std::optional<ycontacts::YContact>>>();
    Session::service().getContact(options.local.user, options.email, options.id, options.contactYuid,
                                  [answers](std::optional<ycontacts::YContact> contact) {
                                      answers->add(std::move(contact));
                                  });
    if (!answers->waitFor(1, std::chrono::seconds(30))) {
        if (Interrupt::requested()) {
            problem("interrupted", exitFailed);
            return Interrupt::exitStatus();
        }
        return problem("no answer from the local store within 30 s", exitFailed);
    }
    const auto contact = answers->taken().front().answer;
    if (!contact) {
        const std::string key = options.id            ? "id " + *options.id
                                : options.contactYuid ? "yuid " + *options.contactYuid
                                                      : "e-mail address " + options.email.value_or("");
        return problem("no contact with " + key + " for user " + options.local.user + " in " + data.root.string(),
                       exitFailed);
    }
    if (options.local.json) {
        std::printf("%s\n", nlohmann::ordered_json(*contact).dump(2).c_str());
    } else {
        std::printf("%s", output::contactDetails(*contact).c_str());
    }
    return exitOk;
}

}  // namespace ycontacts_cli
