#pragma once
// YUsecase: base of a use case that takes one typed request and answers through a callback with typed responses.

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/UsecaseQueue.h"

namespace ycontacts {

// A use case lives in a std::shared_ptr. A subclass implements run(), usually with askAndDeliver():
//
//     askAndDeliver("YGetThing", dataManager, request, std::move(callback),
//                   [&](auto& manager, auto reply) { manager.getThing(request, std::move(reply)); },
//                   [](std::optional<Thing> thing) { return YGetThingResponse(std::move(thing)); });
template <class Request, class Response>
class YUsecase : public std::enable_shared_from_this<YUsecase<Request, Response>> {
public:
    using Callback = std::function<void(const Response&)>;

    virtual ~YUsecase() = default;

    // Runs the use case on UsecaseQueue::queue(). The queued task holds the use case weakly: a use case
    // released before the task starts does nothing and never calls back.
    void execute(Request request, Callback callback) {
        std::weak_ptr<YUsecase> weak = this->weak_from_this();
        if (weak.expired()) {
            Logger::shared().warning("Use case executed without a shared owner; the request is dropped");
            return;
        }
        UsecaseQueue::queue().async(
            [weak = std::move(weak), request = std::move(request), callback = std::move(callback)]() mutable {
                if (const auto self = weak.lock()) self->run(request, std::move(callback));
            });
    }

protected:
    YUsecase() = default;

    virtual void run(const Request& request, Callback callback) = 0;

    // Delivers on the calling thread, not through a queue, so several answers to one request keep their order.
    void invoke(const Callback& callback, const Response& response) {
        if (callback) callback(response);
    }

    // The body of a use case that asks one source. Without the source the request is dropped with a warning
    // naming the use case. Otherwise `ask(*source, reply)` runs; each answer the source gives `reply` is
    // turned into a response by `respond` and delivered, as long as the use case lives (a released use case
    // never calls back).
    template <class Source, class Ask, class Respond>
    void askAndDeliver(const char* name, const std::shared_ptr<Source>& source, const Request& request,
                       Callback callback, Ask&& ask, Respond respond) {
        if (!source) {
            Logger::shared().warning(std::string(name) + " has no data manager; dropped the request of " +
                                     request.yuid);
            return;
        }
        std::forward<Ask>(ask)(*source, [this, weak = weakSelf(), callback = std::move(callback),
                                         respond = std::move(respond)](auto&&... answer) {
            if (const auto alive = weak.lock()) invoke(callback, respond(std::forward<decltype(answer)>(answer)...));
        });
    }

    std::weak_ptr<YUsecase> weakSelf() { return this->weak_from_this(); }
};

}  // namespace ycontacts
