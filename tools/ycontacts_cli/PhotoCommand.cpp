// `ycontacts photo`: one contact's photo, from the photo cache or the server, written to a file.

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "ycontacts_cli/CommandSupport.h"
#include "ycontacts_cli/Commands.h"
#include "ycontacts_cli/Format.h"
#include "ycontacts_cli/Interrupt.h"
#include "ycontacts_cli/PhotoFetch.h"
#include "ycontacts_cli/Session.h"

namespace ycontacts_cli {

namespace {

std::string keyText(const PhotoOptions& options) {
    if (options.id) return "id " + *options.id;
    if (options.contactYuid) return "yuid " + *options.contactYuid;
    return "e-mail address " + options.email.value_or("");
}

const char* sourceText(PhotoFetch::Source source) {
    switch (source) {
        case PhotoFetch::Source::cache:
            return "from the cache";
        case PhotoFetch::Source::server:
            return "from the server";
        case PhotoFetch::Source::revalidated:
            return "from the cache, revalidated with the server (not modified)";
        case PhotoFetch::Source::none:
            break;
    }
    return "";
}

}  // namespace

int runPhoto(const PhotoOptions& options) {
    const DataDirectory data{options.local.dataDir};
    if (auto trouble = data.checkReadable()) return problem(*trouble, exitBadInput);
    std::optional<ServerAddress> server;
    if (!options.server.server.empty() || !options.server.token.empty()) {
        const auto setting = serverSetting(options.server);
        if (!setting.address) return problem(setting.problem, exitBadInput);
        server = setting.address;
    }
    SessionSettings settings{data, server, options.server.proxy, {}, options.local.verbose};
    if (server) settings.tokens[options.local.user] = options.server.token;
    if (auto trouble = Session::open(settings)) return problem(*trouble, exitFailed);

    const PhotoKey key{options.id, options.email, options.contactYuid, !options.normal};
    const auto timeout = std::chrono::milliseconds(static_cast<long long>(options.server.timeoutSeconds * 1000));
    const PhotoFetch fetch = PhotoFetch::run(options.local.user, key, options.refresh, timeout);
    if (!fetch.answered) {
        if (Interrupt::requested()) {
            problem("interrupted", exitFailed);
            return Interrupt::exitStatus();
        }
        return problem("no answer within " + format::duration(options.server.timeoutSeconds), exitFailed);
    }
    if (!fetch.data) {
        return problem("no photo of the contact with " + keyText(options) +
                           (server ? "" : " in the cache (give --server and --token to ask the server)"),
                       exitFailed);
    }
    std::ofstream out(options.out, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(fetch.data->data()), static_cast<std::streamsize>(fetch.data->size()));
    out.close();
    if (!out) return problem("cannot write " + options.out, exitFailed);

    if (options.local.json) {
        const nlohmann::ordered_json report{{"bytes", fetch.data->size()},
                                            {"source", sourceName(fetch.source)},
                                            {"file", options.out},
                                            {"cachedAt", fetch.path ? nlohmann::ordered_json(*fetch.path) : nullptr},
                                            {"milliseconds", fetch.milliseconds}};
        std::printf("%s\n", report.dump(2).c_str());
    } else {
        std::printf("Wrote %s bytes to %s, %s (%s).\n",
                    format::count(static_cast<std::int64_t>(fetch.data->size())).c_str(), options.out.c_str(),
                    sourceText(fetch.source), format::milliseconds(fetch.milliseconds).c_str());
    }
    return exitOk;
}

}  // namespace ycontacts_cli
