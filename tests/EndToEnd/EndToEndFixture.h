#pragma once
// EndToEndTest: a fixture with a sample server on loopback and a harness that syncs from it into a temporary folder.

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "EndToEnd/EndToEndHarness.h"
#include "EndToEnd/ServerExpectations.h"
#include "Support/SampleServerFixture.h"

namespace ycontacts::endtoend {

// Users u1 and u2 share organisation o1; u3 and u4 have no organisation. 120 personal contacts per user and
// 80 organisation contacts make 4 and 3 pages of 50.
inline const sample_server::SampleServerOptions endToEndServerOptions{
    .seed = 11, .users = 4, .personalContactsPerUser = 120, .orgContactsPerOrg = 80, .usersWithoutOrg = 2};

class EndToEndTest : public testsupport::SampleServerTest {
protected:
    EndToEndTest() : SampleServerTest(endToEndServerOptions) {}

    void SetUp() override {
        SampleServerTest::SetUp();
        if (HasFatalFailure()) return;
        harness = std::make_unique<SyncHarness>(folder.path(), server.baseURL(), harnessSettings());
    }

    void TearDown() override {
        harness.reset();
        SampleServerTest::TearDown();
    }

    virtual HarnessSettings harnessSettings() { return {}; }

    // Lines of the user that start with `prefix`.
    std::size_t count(const std::string& yuid, const std::string& prefix) {
        return harness->observer().log.count(yuid, prefix);
    }

    // Starts the user through the facade and waits for the download to complete or fail; true when it
    // completed.
    bool startAndWait(const std::string& yuid, const std::optional<std::string>& yoid) {
        const auto finished = count(yuid, "downloadComplete") + count(yuid, "downloadFailed");
        const auto completed = count(yuid, "downloadComplete");
        harness->sync()->start(yuid, yoid);
        EXPECT_TRUE(waitForFinish(yuid, finished + 1)) << "no download of " << yuid << " finished";
        return count(yuid, "downloadComplete") > completed;
    }

    // Waits until the user's downloads have completed or failed `times` times in all.
    bool waitForFinish(const std::string& yuid, std::size_t times) {
        return harness->observer().log.waitUntil([&](const EventLog::Lines& lines) {
            std::size_t finished = 0;
            for (const auto& line : lines) {
                if (line.yuid != yuid) continue;
                finished += line.text.starts_with("downloadComplete") || line.text.starts_with("downloadFailed");
            }
            return finished >= times;
        });
    }

    // The page requests of the user from line `from` of the network log on, as "personal page 3".
    std::vector<std::string> requestsSince(const std::string& yuid, std::size_t from) {
        std::vector<std::string> requests;
        const auto texts = harness->network().log.texts(yuid);
        for (std::size_t index = from; index < texts.size(); ++index) {
            if (texts[index].starts_with("request ")) requests.push_back(texts[index].substr(8));
        }
        return requests;
    }

    std::unique_ptr<SyncHarness> harness;
};

}  // namespace ycontacts::endtoend
