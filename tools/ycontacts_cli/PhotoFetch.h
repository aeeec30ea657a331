#pragma once
// PhotoFetch: asks the facade for one contact photo and tells where the answer came from.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ycontacts_cli {

struct PhotoKey {
    std::optional<std::string> id;
    std::optional<std::string> email;
    std::optional<std::string> contactYuid;
    bool isThumbnail = true;
};

struct PhotoFetch {
    enum class Source { none, cache, server, revalidated };

    // False when no answer came within the wait (or a stop signal arrived).
    bool answered = false;
    std::optional<std::vector<std::uint8_t>> data;
    std::optional<std::string> path;
    double milliseconds = 0;
    Source source = Source::none;

    // Looks at the cached copy first (the store only), then asks as a host would: the cache while the copy
    // is fresh, else the server; `refresh` asks the server even for a fresh copy. The answer came from the
    // cache when the copy was neither replaced nor re-dated, from the server when there was no copy or the
    // bytes changed, and was revalidated when the same bytes were re-dated (the file's status-change time
    // moves even when the date written equals the old one).
    static PhotoFetch run(const std::string& yuid, const PhotoKey& key, bool refresh,
                          std::chrono::milliseconds timeout);
};

// "cache", "server", "revalidated" or "none".
const char* sourceName(PhotoFetch::Source source);

}  // namespace ycontacts_cli
