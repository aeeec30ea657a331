#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
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

TEST_F(YUserDefaultsTest, ValuesSurviveClosingAndReopeningTheFile) {
    {
        YUserDefaults store(file());
        store.setInteger("index", 41, "user-1");
        store.setInteger("index", 42, "user-1");
        store.setBool("done", true, "user-1");
        store.setDouble("time", 1700000000123.5, "user-1");
        store.setInteger("negative", -7, "user-1");
    }
    ASSERT_TRUE(fs::exists(file()));

    YUserDefaults reopened(file());
    EXPECT_EQ(reopened.integer("index", "user-1"), 42);
    EXPECT_TRUE(reopened.boolean("done", "user-1"));
    EXPECT_DOUBLE_EQ(reopened.doubleValue("time", "user-1"), 1700000000123.5);
    EXPECT_EQ(reopened.integer("negative", "user-1"), -7);
    // Absent values read as the defaults.
    EXPECT_EQ(reopened.integer("missing", "user-1"), 0);
    EXPECT_FALSE(reopened.boolean("missing", "user-1"));
    EXPECT_EQ(reopened.doubleValue("missing", "user-1"), 0.0);
}

TEST_F(YUserDefaultsTest, GroupsKeepTheSameKeyApartAndRemoveTouchesOnlyOneEntry) {
    YUserDefaults store(std::nullopt);
    store.setInteger("index", 5, "user-1");
    store.setInteger("index", 9, "user-2");
    store.setBool("done", true, "user-1");
    EXPECT_EQ(store.integer("index", "user-1"), 5);
    EXPECT_EQ(store.integer("index", "user-2"), 9);
    EXPECT_FALSE(store.boolean("done", "user-2"));
    // The pair is the identity: no mixing of a group and a key that concatenate alike.
    store.setInteger("x", 1, "ab");
    EXPECT_EQ(store.integer("bx", "a"), 0);

    store.remove("index", "user-1");
    store.remove("never-written", "user-1");
    EXPECT_EQ(store.integer("index", "user-1"), 0);
    EXPECT_EQ(store.integer("index", "user-2"), 9);
    EXPECT_TRUE(store.boolean("done", "user-1"));
}

TEST_F(YUserDefaultsTest, ReadingAsAnotherKindConvertsTheStoredNumber) {
    YUserDefaults store(std::nullopt);
    store.setInteger("int", 42, "g");
    EXPECT_EQ(store.doubleValue("int", "g"), 42.0);
    EXPECT_TRUE(store.boolean("int", "g"));

    store.setDouble("positive", 2.9, "g");
    store.setDouble("negative", -2.9, "g");
    store.setDouble("fraction", 0.25, "g");
    store.setDouble("zero", 0.0, "g");
    EXPECT_EQ(store.integer("positive", "g"), 2);
    EXPECT_EQ(store.integer("negative", "g"), -2);
    EXPECT_EQ(store.integer("fraction", "g"), 0);
    EXPECT_TRUE(store.boolean("fraction", "g"));
    EXPECT_FALSE(store.boolean("zero", "g"));

    store.setBool("flag", true, "g");
    EXPECT_EQ(store.integer("flag", "g"), 1);
    EXPECT_EQ(store.doubleValue("flag", "g"), 1.0);
    store.setBool("flag", false, "g");
    EXPECT_EQ(store.integer("flag", "g"), 0);

    // A double written over an integer replaces its kind too.
    store.setDouble("int", 0.5, "g");
    EXPECT_EQ(store.doubleValue("int", "g"), 0.5);

    store.setInteger("big", std::numeric_limits<std::int64_t>::max(), "g");
    EXPECT_EQ(store.integer("big", "g"), std::numeric_limits<std::int64_t>::max());
    store.setDouble("huge", 1e300, "g");
    EXPECT_EQ(store.integer("huge", "g"), std::numeric_limits<std::int64_t>::max());
    store.setDouble("nan", std::nan(""), "g");
    EXPECT_EQ(store.doubleValue("nan", "g"), 0.0);
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
    constexpr int threads = 4;
    constexpr int rounds = 150;
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
