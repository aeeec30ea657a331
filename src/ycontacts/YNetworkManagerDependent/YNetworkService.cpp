#include "ycontacts/YNetworkManagerDependent/YNetworkService.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <random>

namespace ycontacts {

namespace {

// A random (version 4) UUID text, so that every service's box has a label of its own.
std::string uuidString() {
    thread_local std::mt19937_64 generator{std::random_device{}()};
    std::uint64_t high = generator();
    std::uint64_t low = generator();
    high = (high & 0xFFFFFFFFFFFF0FFFull) | 0x0000000000004000ull;
    low = (low & 0x3FFFFFFFFFFFFFFFull) | 0x8000000000000000ull;
    char text[37];
    std::snprintf(text, sizeof(text), "%08X-%04X-%04X-%04X-%012llX", static_cast<unsigned>(high >> 32),
                  static_cast<unsigned>((high >> 16) & 0xFFFF), static_cast<unsigned>(high & 0xFFFF),
                  static_cast<unsigned>(low >> 48), static_cast<unsigned long long>(low & 0xFFFFFFFFFFFFull));
    return text;
}

}  // namespace

YNetworkService::YNetworkService(std::shared_ptr<YContactsAuthenticationContract> authorization,
                                 std::shared_ptr<YContactsParserContract> parser)
    : YNetworkService(std::move(authorization), std::move(parser), YNetworkManager::sharedInstance()) {}

YNetworkService::YNetworkService(std::shared_ptr<YContactsAuthenticationContract> authorization,
                                 std::shared_ptr<YContactsParserContract> parser,
                                 std::weak_ptr<YNetworkManager> networkManager)
    : authorization(std::move(authorization)),
      parser(std::move(parser)),
      networkManager(std::move(networkManager)),
      tasksList("com.ycontacts.SafeReadWrite." + uuidString()) {}

void YNetworkService::addTaskId(const std::string& yuid, std::optional<std::int64_t> taskId) {
    if (!taskId) return;
    tasksList.write([&](TasksList& tasks) { tasks[yuid].push_back(*taskId); });
}

void YNetworkService::removeTaskId(const std::string& yuid, std::optional<std::int64_t> taskId) {
    if (taskId) takeTaskId(yuid, *taskId);
}

bool YNetworkService::takeTaskId(const std::string& yuid, std::int64_t taskId) {
    return tasksList.write([&](TasksList& tasks) {
        const auto user = tasks.find(yuid);
        if (user == tasks.end()) return false;
        auto& ids = user->second;
        const auto found = std::find(ids.begin(), ids.end(), taskId);
        if (found == ids.end()) return false;
        ids.erase(found);
        return true;
    });
}

void YNetworkService::cancelTasks(const std::string& yuid) {
    // The entry goes first, so a completion racing this call finds nothing to remove.
    const auto ids = tasksList.write([&](TasksList& tasks) {
        std::vector<std::int64_t> taken;
        if (const auto user = tasks.find(yuid); user != tasks.end()) {
            taken = std::move(user->second);
            tasks.erase(user);
        }
        return taken;
    });
    for (const auto id : ids) cancelTask(id);
}

std::optional<std::vector<std::int64_t>> YNetworkService::taskIds(const std::string& yuid) const {
    return tasksList.read([&](const TasksList& tasks) -> std::optional<std::vector<std::int64_t>> {
        const auto user = tasks.find(yuid);
        if (user == tasks.end()) return std::nullopt;
        return user->second;
    });
}

void YNetworkService::cancelTask(std::int64_t taskId) {
    if (auto manager = networkManager.lock()) manager->cancel(taskId);
}

bool YNetworkService::sendGet(std::weak_ptr<YNetworkService> service, const std::string& yuid,
                              const YContactsURLParameters& request, const std::string& authorizationValue,
                              YRequestPriority priority, BodyCompletion completion,
                              const std::map<std::string, std::string>& headers,
                              const std::optional<YActivityMetaData>& metaData) {
    auto manager = networkManager.lock();
    if (!manager) return false;
    // The id is registered from the start handler, which runs before the completion can; the completion
    // reads it back from here.
    auto startedId = std::make_shared<std::atomic<std::int64_t>>(0);
    manager->sendRequestURL(
        YHTTPMethod::GET, request.url, authorizationValue, headers, request.parameters, false, priority, metaData,
        std::nullopt,
        [this, startedId, yuid](std::int64_t taskId) {
            startedId->store(taskId);
            addTaskId(yuid, taskId);
        },
        [service = std::move(service), startedId, yuid, completion = std::move(completion)](
            std::optional<std::vector<std::uint8_t>> data, std::optional<YHTTPURLResponse> response,
            std::optional<YNetworkError> error) {
            // cancelTasks takes the id out first. A transfer that finished just before the cancel reached
            // the client still arrives here with its body; it is reported as cancelled all the same, so a
            // completion that starts after cancelTasks delivers nothing of the request.
            const auto self = service.lock();
            if (self && !self->takeTaskId(yuid, startedId->load()) && !error) {
                data.reset();
                response.reset();
                error = YNetworkError{YNetworkError::cancelled, "cancelled"};
            }
            completion(std::move(data), std::move(response), std::move(error));
        });
    return true;
}

}  // namespace ycontacts
