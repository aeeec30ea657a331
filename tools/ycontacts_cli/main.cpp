// ycontacts: the command line host of the YContacts library: demo, sample server, sync, queries, photos and status.

#include <csignal>
#include <cstdio>
#include <exception>

#include <CLI/CLI.hpp>

#include "ycontacts_cli/Commands.h"
#include "ycontacts_cli/Interrupt.h"

namespace {

using namespace ycontacts_cli;

// --user, --data-dir, --json and --verbose: every command that works on a data directory has them.
void addLocalOptions(CLI::App* command, LocalOptions& options) {
    command->add_option("--user", options.user, "the user's id (yuid)")->required()->envname("YCONTACTS_USER");
    command->add_option("--data-dir", options.dataDir, "the folder with contacts.sqlite and photos/")
        ->required()
        ->envname("YCONTACTS_DATA_DIR");
    command->add_flag("--json", options.json, "machine-readable output");
    command->add_flag("--verbose", options.verbose, "show the library's log on stderr");
}

void addServerOptions(CLI::App* command, ServerOptions& options, const std::string& timeoutMeaning) {
    command->add_option("--server", options.server, "the contacts server's base URL, e.g. http://127.0.0.1:8080")
        ->envname("YCONTACTS_SERVER");
    command->add_option("--token", options.token, "the user's authorization value, sent as given")
        ->envname("YCONTACTS_TOKEN");
    command->add_flag("--proxy", options.proxy, "the URL is a proxy in front of the contacts server");
    command->add_option("--org", options.org, "the user's organisation id (yoid)");
    command->add_option("--timeout", options.timeoutSeconds, timeoutMeaning)
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
}

void addQueryOptions(CLI::App* command, QueryOptions& options, bool queryRequired) {
    auto* query = command->add_option("QUERY", options.query, "the text typed so far");
    if (queryRequired) query->required();
    command->add_option("--source", options.source, "where the answer comes from")
        ->check(CLI::IsMember({"local", "server", "both", "prefer-local"}))
        ->capture_default_str();
    command->add_option("--limit", options.limit, "at most this many results")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    command->add_option("--scope", options.scope, "which contacts: all, personal or org (organisation)")
        ->check(CLI::IsMember({"all", "personal", "org"}))
        ->capture_default_str();
    addLocalOptions(command, options.local);
    addServerOptions(command, options.server, "seconds to wait for each answer");
}

}  // namespace

int main(int argc, char** argv) {
    // Before any thread exists, so that every later thread leaves SIGINT and SIGTERM to the tool.
    Interrupt interrupt;
    std::signal(SIGPIPE, SIG_IGN);

    CLI::App app{"ycontacts: sync, search and inspect contacts with the YContacts library"};
    app.require_subcommand(1);

    DemoOptions demo;
    auto* demoCommand =
        app.add_subcommand("demo", "sync a generated data set from a built-in sample server, search it, change it");
    demoCommand->add_option("--data-dir", demo.dataDir, "keep the contacts here (default: a temporary folder)");
    demoCommand->add_option("--contacts", demo.contacts, "personal contacts of the demo user")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    demoCommand->add_option("--org-contacts", demo.orgContacts, "contacts of the demo user's organisation")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    demoCommand->add_option("--seed", demo.seed, "seed of the generated data")->capture_default_str();
    demoCommand->add_flag("--json", demo.json, "print one JSON report instead of the narration");
    demoCommand->add_flag("--verbose", demo.verbose, "show the library's log on stderr");

    ServeOptions serve;
    auto* serveCommand = app.add_subcommand("serve", "run the sample contacts server until SIGINT or SIGTERM");
    serveCommand->add_option("--port", serve.port, "port on 127.0.0.1; 0 picks a free one")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    serveCommand->add_option("--contacts", serve.contacts, "personal contacts per user")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    serveCommand->add_option("--org-contacts", serve.orgContacts, "contacts per organisation")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    serveCommand->add_option("--seed", serve.seed, "seed of the generated data")->capture_default_str();
    serveCommand->add_option("--users", serve.users, "number of users (u1, u2, ...)")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    serveCommand->add_option("--users-per-org", serve.usersPerOrg, "users per organisation")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    serveCommand->add_option("--token", serve.tokens,
                             "authorization value: T for u1, or YUID=T (repeatable); default token-<yuid>");

    SyncOptions sync;
    auto* syncCommand = app.add_subcommand("sync", "download a user's contacts and wait for the outcome");
    addLocalOptions(syncCommand, sync.local);
    addServerOptions(syncCommand, sync.server, "give up after this many seconds without progress");
    syncCommand->add_flag("--reset", sync.reset, "drop the user's stored contacts and download them afresh");

    QueryOptions search;
    addQueryOptions(app.add_subcommand("search", "contacts whose name or address starts with QUERY"), search, true);
    QueryOptions list;
    addQueryOptions(app.add_subcommand("list", "the first contacts, in display order"), list, false);
    QueryOptions suggest;
    addQueryOptions(app.add_subcommand("suggest", "e-mail addresses to offer while QUERY is typed"), suggest, true);

    ShowOptions show;
    auto* showCommand = app.add_subcommand("show", "one contact with every stored field");
    auto* key = showCommand->add_option_group("key", "which contact");
    key->add_option("--id", show.id, "the contact id");
    key->add_option("--email", show.email, "one of the contact's e-mail addresses");
    key->add_option("--contact-yuid", show.contactYuid, "the contact's own user id");
    key->require_option(1);
    addLocalOptions(showCommand, show.local);

    PhotoOptions photo;
    auto* photoCommand = app.add_subcommand("photo", "one contact's photo, from the photo cache or the server");
    auto* photoKey = photoCommand->add_option_group("key", "which contact");
    photoKey->add_option("--id", photo.id, "the contact id");
    photoKey->add_option("--email", photo.email, "one of the contact's e-mail addresses");
    photoKey->add_option("--contact-yuid", photo.contactYuid, "the contact's own user id");
    photoKey->require_option(1);
    photoCommand->add_flag("--normal", photo.normal, "the normal size instead of the thumbnail");
    photoCommand->add_flag("--refresh", photo.refresh, "ask the server even when the cached copy is fresh");
    photoCommand->add_option("--out", photo.out, "write the photo's bytes to this file")->required();
    addLocalOptions(photoCommand, photo.local);
    addServerOptions(photoCommand, photo.server, "seconds to wait for the answer");

    LocalOptions status;
    addLocalOptions(app.add_subcommand("status", "what is stored for a user"), status);
    LocalOptions remove;
    addLocalOptions(app.add_subcommand("remove", "delete a user's contacts, photos and sync state"), remove);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        const int status = app.exit(error);
        return status == 0 ? 0 : exitBadInput;
    }

    try {
        if (demoCommand->parsed()) return runDemo(demo);
        if (serveCommand->parsed()) return runServe(serve);
        if (syncCommand->parsed()) return runSync(sync);
        if (app.got_subcommand("search")) return runSearch(search);
        if (app.got_subcommand("list")) return runList(list);
        if (app.got_subcommand("suggest")) return runSuggest(suggest);
        if (showCommand->parsed()) return runShow(show);
        if (photoCommand->parsed()) return runPhoto(photo);
        if (app.got_subcommand("status")) return runStatus(status);
        if (app.got_subcommand("remove")) return runRemove(remove);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "ycontacts: %s\n", error.what());
        return exitFailed;
    }
    return exitBadInput;
}
