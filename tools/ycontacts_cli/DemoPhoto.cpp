#include "ycontacts_cli/DemoPhoto.h"

#include <chrono>

namespace ycontacts_cli {

namespace {

std::vector<sample_server::LoggedRequest> photoRequests(const sample_server::SampleContactsServer& server) {
    std::vector<sample_server::LoggedRequest> photos;
    for (auto& request : server.requestLog())
        if (request.path == "/file/download" || request.path == "/syncapi/contact/photo")
            photos.push_back(std::move(request));
    return photos;
}

}  // namespace

DemoPhoto DemoPhoto::run(sample_server::SampleContactsServer& server, const std::string& yuid) {
    DemoPhoto demo;
    for (const auto& contact : server.contacts(yuid, false)) {
        if (contact.hasPhoto && contact.yuid && contact.contactType == "user") {
            demo.contactYuid = contact.yuid;
            break;
        }
    }
    if (!demo.contactYuid) return demo;
    const PhotoKey key{std::nullopt, std::nullopt, demo.contactYuid, false};
    using Source = PhotoFetch::Source;
    struct Plan {
        const char* label;
        bool refresh;
        Source expected;
    };
    for (const Plan plan : {Plan{"first ask", false, Source::server}, Plan{"asked again", false, Source::cache},
                            Plan{"refresh", true, Source::revalidated}}) {
        const std::size_t before = photoRequests(server).size();
        DemoPhotoAsk ask{plan.label, PhotoFetch::run(yuid, key, plan.refresh, std::chrono::seconds(30)), plan.expected};
        const auto requests = photoRequests(server);
        ask.requests = requests.size() - before;
        ask.revalidating = ask.requests > 0 && !requests.back().ifModifiedSince.empty();
        const std::size_t expectedRequests = plan.expected == Source::cache ? 0 : 1;
        ask.asExpected = ask.fetch.answered && ask.fetch.source == plan.expected && ask.requests == expectedRequests &&
                         ask.revalidating == (plan.expected == Source::revalidated);
        demo.asks.push_back(std::move(ask));
    }
    return demo;
}

}  // namespace ycontacts_cli
