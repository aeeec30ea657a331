#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "Support/LogCapture.h"
#include "Support/TemporaryDirectory.h"
#include "ycontacts/Platform/MarloComponents/YUserDefaults.h"

namespace ycontacts {
namespace {

namespace fs = std::filesystem;

class YUserDefaultsTest : public ::testing::Test {
protected:
    // In a folder that does not exist yet: opening the store must make it.
    fs::path file() const { return folder.file("nested") / "defaults.sqlite"; }

    testsupport::TemporaryDirectory folder;
};

TEST_F(YUserDefaultsTest, ValuesSurviveReopeningTheFileAndAreKeptApartByGroup) {
    {
        YUserDefaults store(file());
        store.setInteger("index", 41, "user-1");
        store.setInteger("index", 42, "user-1");
        store.setInteger("index", 9, "user-2");
        store.setBool("done", true, "user-1");
        store.setDouble("time", 1700000000123.5, "user-1");
        // The pair is the identity: no mixing of a group and a key that concatenate alike.
        store.setInteger("x", 1, "ab");
        store.setInteger("gone", 3, "user-1");
        store.remove("gone", "user-1");
        store.remove("never-written", "user-1");
    }
    YUserDefaults reopened(file());
    EXPECT_EQ(reopened.integer("index", "user-1"), 42);
    EXPECT_EQ(reopened.integer("index", "user-2"), 9);
    EXPECT_TRUE(reopened.boolean("done", "user-1"));
    EXPECT_FALSE(reopened.boolean("done", "user-2"));
    EXPECT_DOUBLE_EQ(reopened.doubleValue("time", "user-1"), 1700000000123.5);
    EXPECT_EQ(reopened.integer("bx", "a"), 0);
    EXPECT_EQ(reopened.integer("gone", "user-1"), 0);
    EXPECT_EQ(reopened.doubleValue("missing", "user-1"), 0.0);
}

TEST_F(YUserDefaultsTest, UnopenableFileIsLoggedAndTheStoreKeepsWorkingInMemory) {
    std::ofstream(folder.file("nested")) << "a file where a folder should be";
    testsupport::LogCapture errors(Logger::Level::error);

    YUserDefaults store(file());
    store.setInteger("index", 4, "user-1");

    EXPECT_EQ(store.integer("index", "user-1"), 4);
    EXPECT_FALSE(fs::exists(file()));
    EXPECT_TRUE(errors.contains("in memory"));
}

TEST_F(YUserDefaultsTest, ConcurrentWritersAndReadersEachSeeTheirOwnValues) {
    YUserDefaults store(file());
    constexpr int threads = 4, rounds = 150;
    std::vector<int> mismatches(threads, 0);
    std::vector<std::thread> workers;
    for (int thread = 0; thread < threads; ++thread) {
        workers.emplace_back([&, thread] {
            const std::string group = "user-" + std::to_string(thread);
            for (int round = 0; round < rounds; ++round) {
                store.setInteger("index", round, group);
                store.setDouble("time", round * 0.5, group);
                if (store.integer("index", group) != round || store.doubleValue("time", group) != round * 0.5) {
                    ++mismatches[static_cast<std::size_t>(thread)];
                }
            }
        });
    }
    for (auto& worker : workers) worker.join();
    EXPECT_EQ(mismatches, std::vector<int>(threads, 0));
    EXPECT_EQ(store.integer("index", "user-3"), rounds - 1);
}

}  // namespace
}  // namespace ycontacts
