#include "ycontacts_cli/PhotoFetch.h"

#include <sys/stat.h>

#include <memory>
#include <utility>

#include "ycontacts_cli/Answers.h"
#include "ycontacts_cli/Session.h"

namespace ycontacts_cli {

namespace {

using Photo = std::pair<std::optional<std::vector<std::uint8_t>>, std::optional<std::string>>;

std::optional<typename Answers<Photo>::Timed> ask(const std::string& yuid, const PhotoKey& key,
                                                  ycontacts::RequestType type, std::chrono::milliseconds timeout) {
    auto answers = std::make_shared<Answers<Photo>>();
    Session::service().getContactImage(
        yuid, key.email, key.id, key.contactYuid, key.isThumbnail, std::nullopt, type,
        [answers](std::optional<std::vector<std::uint8_t>> data, std::optional<std::string> path) {
            answers->add(Photo{std::move(data), std::move(path)});
        });
    if (!answers->waitFor(1, timeout)) return std::nullopt;
    return answers->taken().front();
}

// Seconds and nanoseconds of the last change to the file's data or attributes; absent without a file.
std::optional<std::pair<long long, long long>> statusChangeTime(const std::optional<std::string>& path) {
    struct stat status {};
    if (!path || ::stat(path->c_str(), &status) != 0) return std::nullopt;
    return std::pair<long long, long long>(status.st_ctim.tv_sec, status.st_ctim.tv_nsec);
}

}  // namespace

PhotoFetch PhotoFetch::run(const std::string& yuid, const PhotoKey& key, bool refresh,
                           std::chrono::milliseconds timeout) {
    PhotoFetch fetch;
    const auto cached = ask(yuid, key, ycontacts::RequestType::local, timeout);
    if (!cached) return fetch;
    const auto changedBefore = statusChangeTime(cached->answer.second);
    const auto answer =
        ask(yuid, key, refresh ? ycontacts::RequestType::server : ycontacts::RequestType::preferLocal, timeout);
    if (!answer) return fetch;
    fetch.answered = true;
    fetch.data = answer->answer.first;
    fetch.path = answer->answer.second;
    fetch.milliseconds = answer->milliseconds;
    if (!fetch.data) {
        fetch.source = Source::none;
    } else if (!cached->answer.first || *cached->answer.first != *fetch.data) {
        fetch.source = Source::server;
    } else if (statusChangeTime(fetch.path) != changedBefore) {
        fetch.source = Source::revalidated;
    } else {
        fetch.source = Source::cache;
    }
    return fetch;
}

const char* sourceName(PhotoFetch::Source source) {
    switch (source) {
        case PhotoFetch::Source::cache:
            return "cache";
        case PhotoFetch::Source::server:
            return "server";
        case PhotoFetch::Source::revalidated:
            return "revalidated";
        case PhotoFetch::Source::none:
            break;
    }
    return "none";
}

}  // namespace ycontacts_cli
