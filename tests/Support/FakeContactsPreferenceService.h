#pragma once
// FakeContactsPreferenceService: a gmock preference service that keeps its values in memory by default.

#include <gmock/gmock.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "ycontacts/Contacts/Data/Contracts/YContactsPreferenceContract.h"

namespace ycontacts::testsupport {

// Reads the way the real service does: start index 1 and "not complete" until something is stored, and no
// last updated time until a non-zero one is stored.
class FakeContactsPreferenceService : public YContactsPreferenceContract {
public:
    FakeContactsPreferenceService() {
        using ::testing::_;
        ON_CALL(*this, setStartIndex(_, _, _))
            .WillByDefault([this](const std::string& yuid, std::int64_t index, bool isOrg) {
                std::lock_guard lock(mutex_);
                startIndices_[{yuid, isOrg}] = index;
            });
        ON_CALL(*this, startIndex(_, _)).WillByDefault([this](const std::string& yuid, bool isOrg) -> std::int64_t {
            std::lock_guard lock(mutex_);
            const auto found = startIndices_.find({yuid, isOrg});
            return found == startIndices_.end() || found->second <= 0 ? 1 : found->second;
        });
        ON_CALL(*this, setCompleteState(_, _, _))
            .WillByDefault([this](const std::string& yuid, bool complete, bool isOrg) {
                std::lock_guard lock(mutex_);
                completed_[{yuid, isOrg}] = complete;
            });
        ON_CALL(*this, completeState(_, _)).WillByDefault([this](const std::string& yuid, bool isOrg) {
            std::lock_guard lock(mutex_);
            const auto found = completed_.find({yuid, isOrg});
            return found != completed_.end() && found->second;
        });
        ON_CALL(*this, lastUpdatedTime(_)).WillByDefault([this](const std::string& yuid) -> std::optional<double> {
            std::lock_guard lock(mutex_);
            const auto found = times_.find(yuid);
            if (found == times_.end() || found->second == 0.0) return std::nullopt;
            return found->second;
        });
        ON_CALL(*this, setLastUpdatedTime(_, _)).WillByDefault([this](const std::string& yuid, double time) {
            std::lock_guard lock(mutex_);
            times_[yuid] = time;
        });
        ON_CALL(*this, removeAllPreferences(_)).WillByDefault([this](const std::string& yuid) {
            std::lock_guard lock(mutex_);
            std::erase_if(startIndices_, [&](const auto& entry) { return entry.first.first == yuid; });
            std::erase_if(completed_, [&](const auto& entry) { return entry.first.first == yuid; });
            times_.erase(yuid);
        });
    }
    MOCK_METHOD(void, setStartIndex, (const std::string&, std::int64_t, bool), (override));
    MOCK_METHOD(std::int64_t, startIndex, (const std::string&, bool), (override));
    MOCK_METHOD(void, setCompleteState, (const std::string&, bool, bool), (override));
    MOCK_METHOD(bool, completeState, (const std::string&, bool), (override));
    MOCK_METHOD(std::optional<double>, lastUpdatedTime, (const std::string&), (override));
    MOCK_METHOD(void, setLastUpdatedTime, (const std::string&, double), (override));
    MOCK_METHOD(void, removeAllPreferences, (const std::string&), (override));

    // Seeds the state a user would have after earlier downloads.
    void seed(const std::string& yuid, bool orgComplete, bool personalComplete,
              std::optional<double> lastUpdated = std::nullopt) {
        std::lock_guard lock(mutex_);
        completed_[{yuid, true}] = orgComplete;
        completed_[{yuid, false}] = personalComplete;
        if (lastUpdated) times_[yuid] = *lastUpdated;
    }

private:
    std::mutex mutex_;
    std::map<std::pair<std::string, bool>, std::int64_t> startIndices_;
    std::map<std::pair<std::string, bool>, bool> completed_;
    std::map<std::string, double> times_;
};

}  // namespace ycontacts::testsupport
