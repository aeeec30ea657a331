#pragma once
// DemoPhoto: the demo's photo step: one contact's photo downloaded, answered from the cache, then revalidated.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "sample_server/SampleContactsServer.h"
#include "ycontacts_cli/PhotoFetch.h"

namespace ycontacts_cli {

struct DemoPhotoAsk {
    std::string label;
    PhotoFetch fetch;
    PhotoFetch::Source expected = PhotoFetch::Source::none;
    // Photo requests the server received for this ask, and whether the last one carried If-Modified-Since.
    std::size_t requests = 0;
    bool revalidating = false;
    bool asExpected = false;
};

struct DemoPhoto {
    std::optional<std::string> contactYuid;
    std::vector<DemoPhotoAsk> asks;

    // Picks the user's first personal contact that has a photo and a user id of its own, and asks for its
    // normal-size photo three times: once (the server sends it), again (the fresh copy answers, no request),
    // and with a refresh (a request with If-Modified-Since, answered 304; the cached bytes come back).
    static DemoPhoto run(sample_server::SampleContactsServer& server, const std::string& yuid);
};

}  // namespace ycontacts_cli
