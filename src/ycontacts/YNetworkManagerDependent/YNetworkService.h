#pragma once
// YNetworkService: base of the services that talk to the contacts server; holds the per-user task registry.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YContactsParserContract.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructorContract.h"
#include "ycontacts/Contacts/YContactsAuthenticationContract.h"
#include "ycontacts/Platform/MarloComponents/SafeReadWrite.h"
#include "ycontacts/Platform/YNetworkManager/YNetworkManager.h"

namespace ycontacts {

class YNetworkService {
public:
    using TasksList = std::map<std::string, std::vector<std::int64_t>>;

    // Uses the process-wide HTTP client.
    YNetworkService(std::shared_ptr<YContactsAuthenticationContract> authorization,
                    std::shared_ptr<YContactsParserContract> parser);
    // Uses the given client, held weakly: once it is gone, requests and cancellations are skipped.
    YNetworkService(std::shared_ptr<YContactsAuthenticationContract> authorization,
                    std::shared_ptr<YContactsParserContract> parser, std::weak_ptr<YNetworkManager> networkManager);
    virtual ~YNetworkService() = default;
    YNetworkService(const YNetworkService&) = delete;
    YNetworkService& operator=(const YNetworkService&) = delete;

    // Appends the id to the user's list (duplicates kept); no id changes nothing.
    void addTaskId(const std::string& yuid, std::optional<std::int64_t> taskId);
    // Removes the first occurrence of the id; an emptied list stays as an empty list. Unknowns are ignored.
    void removeTaskId(const std::string& yuid, std::optional<std::int64_t> taskId);
    // Cancels the user's tasks in list order (while the client exists), then drops the user's entry.
    void cancelTasks(const std::string& yuid);

    // The user's registered ids; absent when the user has no entry.
    std::optional<std::vector<std::int64_t>> taskIds(const std::string& yuid) const;
    const std::string& tasksListLabel() const { return tasksList.label(); }

protected:
    using BodyCompletion = std::function<void(std::optional<std::vector<std::uint8_t>> data,
                                              std::optional<YHTTPURLResponse> response,
                                              std::optional<YNetworkError> error)>;

    // Sends a GET for `yuid`, keeping its task id registered until the completion runs. `service` is this
    // object, held weakly so that an outstanding request never keeps it alive. A request whose id
    // cancelTasks dropped completes with a `cancelled` error and no body, even when the transfer itself
    // had already finished. Returns false when the client is gone (nothing is sent and `completion` never
    // runs).
    // `headers` are sent besides "Authorization" (e.g. "If-Modified-Since"); `metaData` labels the task.
    bool sendGet(std::weak_ptr<YNetworkService> service, const std::string& yuid, const YContactsURLParameters& request,
                 const std::string& authorizationValue, YRequestPriority priority, BodyCompletion completion,
                 const std::map<std::string, std::string>& headers = {},
                 const std::optional<YActivityMetaData>& metaData = std::nullopt);
    // Removes the first occurrence of the id; false when it was not registered (cancelTasks took it).
    bool takeTaskId(const std::string& yuid, std::int64_t taskId);
    // Asks the client to cancel one task; a seam so the cancel order can be observed.
    virtual void cancelTask(std::int64_t taskId);

    const std::shared_ptr<YContactsAuthenticationContract> authorization;
    const std::shared_ptr<YContactsParserContract> parser;
    const std::weak_ptr<YNetworkManager> networkManager;
    SafeReadWrite<TasksList> tasksList;
};

}  // namespace ycontacts
