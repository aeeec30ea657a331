#pragma once
// Shared by the use-case and facade tests: gmock data managers, response collectors, and ways to hold and
// drain the shared use-case queue.

#include <gmock/gmock.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ycontacts/Contacts/Domain/DataManagerContract/YCategoriesDataManagerContract.h"
#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsUpdateDataManagerContract.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/UsecaseQueue.h"

namespace ycontacts::usecasetest {

inline constexpr std::chrono::seconds waitLimit{20};

class MockContactsDataManager : public YContactsDataManagerContract {
public:
    MOCK_METHOD(void, start, (const std::string&, const std::optional<std::string>&), (override));
    MOCK_METHOD(void, runInitialFetch, (const std::string&, const std::optional<std::string>&), (override));
    MOCK_METHOD(void, syncContacts, (const std::string&, const std::optional<std::string>&), (override));
    MOCK_METHOD(std::optional<ContactCount>, getContactCount, (const std::string&), (override));
    MOCK_METHOD(void, resetAndStart, (const std::string&, const std::optional<std::string>&), (override));
    MOCK_METHOD(std::optional<double>, lastUpdatedTime, (const std::string&), (override));
    MOCK_METHOD(bool, isSyncInProgress, (const std::string&), (override));
    MOCK_METHOD(void, getContacts,
                (const std::string&, const std::optional<std::string>&, const std::optional<std::string>&,
                 std::optional<int>, std::optional<int>, std::optional<bool>, RequestType, ContactsCallback),
                (override));
    MOCK_METHOD(void, getContactsList,
                (const std::string&, const std::optional<std::string>&, const std::optional<std::string>&,
                 std::optional<int>, std::optional<int>, std::optional<bool>, RequestType, ContactsCallback),
                (override));
    MOCK_METHOD(void, getContactsFromIds,
                (const std::string&, const std::optional<std::vector<std::string>>&,
                 const std::optional<std::vector<std::string>>&, const std::optional<std::vector<std::string>>&,
                 std::optional<bool>, RequestType, ContactsCallback),
                (override));
    MOCK_METHOD(void, getContact,
                (const std::string&, const std::optional<std::string>&, const std::optional<std::string>&,
                 const std::optional<std::string>&, bool, ContactCallback),
                (override));
    MOCK_METHOD(void, getContactImage,
                (const std::string&, const std::optional<std::string>&, const std::optional<std::string>&,
                 const std::optional<std::string>&, bool, const std::optional<YActivityMetaData>&, YContactType,
                 ImageHandler),
                (override));
    MOCK_METHOD(void, getSuggestionContacts,
                (const std::string&, const std::optional<std::string>&, const std::string&, int, std::optional<bool>,
                 RequestType, SuggestionsCallback),
                (override));
    MOCK_METHOD(void, getOrgContactSuggestions,
                (const std::string&, const std::optional<std::string>&, std::optional<int>, int, bool, bool,
                 OrgSuggestionsCallback),
                (override));
    MOCK_METHOD(void, getUsageCount, (const std::string&, UsageCountCallback), (override));
    MOCK_METHOD(void, removeAllData, (const std::string&), (override));
    MOCK_METHOD(bool, wasInitialDownloadCompleted, (const std::string&, const std::optional<std::string>&),
                (override));
};

class MockCategoriesDataManager : public YCategoriesDataManagerContract {
public:
    MOCK_METHOD(void, fetchCategories, (const std::string&, RequestType, CategoriesCallback), (override));
    MOCK_METHOD(void, fetchContactsInCategory, (const std::string&, const std::string&, RequestType, ContactsCallback),
                (override));
};

class MockUpdateDataManager : public YContactsUpdateDataManagerContract {
public:
    MOCK_METHOD(void, updateContact,
                (const std::string&, const std::vector<YContact>&, bool, const std::string&, const std::string&,
                 UpdateCallback),
                (override));
    MOCK_METHOD(void, deleteContact, (const std::string&, const std::string&, bool, UpdateCallback), (override));
};

// Collects what a callback receives, from any thread.
template <class Value>
class Received {
public:
    void add(Value value) {
        std::lock_guard lock(mutex_);
        values_.push_back(std::move(value));
        changed_.notify_all();
    }

    bool waitFor(std::size_t count) {
        return waitUntil([count](const std::vector<Value>& values) { return values.size() >= count; });
    }

    template <class Predicate>
    bool waitUntil(Predicate predicate) {
        std::unique_lock lock(mutex_);
        const std::vector<Value>& values = values_;
        return changed_.wait_for(lock, waitLimit, [&] { return predicate(values); });
    }

    std::vector<Value> values() {
        std::lock_guard lock(mutex_);
        return values_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Value> values_;
};

// Returns once every task queued on the use-case pool before the call has finished: the pool starts tasks in
// order, so when all its workers are inside these rendezvous tasks at once, nothing earlier is still running.
inline bool drainUsecaseQueue() {
    auto& queue = UsecaseQueue::queue();
    const auto workers = queue.threadCount();
    struct Rendezvous {
        std::mutex mutex;
        std::condition_variable changed;
        std::size_t arrived = 0;
        std::size_t met = 0;
    };
    auto rendezvous = std::make_shared<Rendezvous>();
    for (std::size_t worker = 0; worker < workers; ++worker) {
        queue.async([rendezvous, workers] {
            std::unique_lock lock(rendezvous->mutex);
            ++rendezvous->arrived;
            rendezvous->changed.notify_all();
            if (rendezvous->changed.wait_for(lock, waitLimit, [&] { return rendezvous->arrived >= workers; })) {
                ++rendezvous->met;
                rendezvous->changed.notify_all();
            }
        });
    }
    std::unique_lock lock(rendezvous->mutex);
    return rendezvous->changed.wait_for(lock, waitLimit, [&] { return rendezvous->met == workers; });
}

// Keeps every worker of the use-case pool busy until open() (or destruction), so tasks queued meanwhile wait.
class QueueHold {
public:
    QueueHold() {
        auto& queue = UsecaseQueue::queue();
        for (std::size_t worker = 0; worker < queue.threadCount(); ++worker) {
            queue.async([state = state_, opened = state_->opened] {
                {
                    std::lock_guard lock(state->mutex);
                    ++state->busy;
                    state->changed.notify_all();
                }
                opened.wait_for(waitLimit);
            });
        }
    }
    ~QueueHold() { open(); }
    QueueHold(const QueueHold&) = delete;
    QueueHold& operator=(const QueueHold&) = delete;

    bool allWorkersHeld() {
        std::unique_lock lock(state_->mutex);
        return state_->changed.wait_for(lock, waitLimit,
                                        [&] { return state_->busy == UsecaseQueue::queue().threadCount(); });
    }

    void open() {
        if (!isOpen_) state_->gate.set_value();
        isOpen_ = true;
    }

private:
    struct State {
        std::promise<void> gate;
        std::shared_future<void> opened = gate.get_future().share();
        std::mutex mutex;
        std::condition_variable changed;
        std::size_t busy = 0;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
    bool isOpen_ = false;
};

// Captures the shared logger's warning lines while alive.
class LoggedWarnings {
public:
    LoggedWarnings() {
        Logger::shared().setSink([lines = lines_](const Logger::Record& record) {
            if (record.level == Logger::Level::warning) lines->add(record.message);
        });
    }
    ~LoggedWarnings() { Logger::shared().setSink({}); }
    LoggedWarnings(const LoggedWarnings&) = delete;
    LoggedWarnings& operator=(const LoggedWarnings&) = delete;

    // True once `count` captured lines contain `text`.
    bool waitForLinesContaining(const std::string& text, std::size_t count) {
        return lines_->waitUntil([&](const std::vector<std::string>& lines) {
            std::size_t matching = 0;
            for (const auto& line : lines) matching += line.find(text) != std::string::npos ? 1 : 0;
            return matching >= count;
        });
    }

private:
    std::shared_ptr<Received<std::string>> lines_ = std::make_shared<Received<std::string>>();
};

}  // namespace ycontacts::usecasetest
