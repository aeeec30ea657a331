#pragma once
// YUsecase: base of a use case that takes one typed request and answers through a callback with typed responses.

#include <functional>
#include <memory>
#include <utility>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/UsecaseQueue.h"

namespace ycontacts {

// A use case lives in a std::shared_ptr. A subclass implements run(); its completions hold the use case
// through weakSelf() and, when it still lives, deliver with invoke():
//
//     source->fetch([this, weak = weakSelf(), callback](Answer answer) {
//         if (const auto alive = weak.lock()) invoke(callback, makeResponse(answer));
//     });
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

    std::weak_ptr<YUsecase> weakSelf() { return this->weak_from_this(); }
};

}  // namespace ycontacts
