#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <future>
#include <latch>
#include <string>
#include <vector>

#include "Support/LogCapture.h"
#include "Support/TemporaryDirectory.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"

namespace ycontacts {
namespace {

// Writers on two identifiers bound to the same file (two connections, so SQLite's own locking and the
// busy timeout are involved too) and readers checking that every batch is seen whole or not at all.
TEST(YSqliteHelperConcurrencyTest, ManyThreadsSaveAndSelectAtOnceWithoutLosingOrTearingBatches) {
    testsupport::TemporaryDirectory directory;
    testsupport::LogCapture log(Logger::Level::error);
    const std::string path = directory.file("shared.db");
    YSqliteHelper helper;
    const YSqliteConfiguration configuration(YSqliteConnectionMode::readWrite, path);
    ASSERT_TRUE(helper.registerDB("first", configuration).ok());
    ASSERT_TRUE(helper.registerDB("second", configuration).ok());
    ASSERT_TRUE(helper
                    .execute("CREATE TABLE Item (batch TEXT, position INTEGER, payload TEXT, PRIMARY KEY (batch, "
                             "position))",
                             true, "first")
                    .ok());

    constexpr int writers = 6;
    constexpr int batchesPerWriter = 20;
    constexpr int rowsPerBatch = 25;
    constexpr int readers = 2;
    std::latch start(writers + readers);
    std::atomic<bool> writing{true};

    std::vector<std::future<std::string>> tasks;
    for (int writer = 0; writer < writers; ++writer) {
        tasks.push_back(std::async(std::launch::async, [&, writer]() -> std::string {
            const std::string identifier = writer % 2 == 0 ? "first" : "second";
            start.arrive_and_wait();
            for (int batch = 0; batch < batchesPerWriter; ++batch) {
                const std::string batchId = "w" + std::to_string(writer) + "-b" + std::to_string(batch);
                std::vector<YSqliteRow> rows;
                for (int position = 0; position < rowsPerBatch; ++position) {
                    rows.push_back({{"batch", batchId},
                                    {"position", std::int64_t{position}},
                                    {"payload", "row " + std::to_string(position) + " of " + batchId}});
                }
                if (auto saved = helper.save("Item", rows, false, true, identifier); !saved.ok()) {
                    return "save failed: " + saved.error().message;
                }
                const auto mine = helper.select("SELECT count(*) AS n FROM Item WHERE batch = ?", {batchId}, true,
                                                identifier);
                if (!mine.ok()) return "select failed: " + mine.error().message;
                if (mine.value().at(0).at("n") != YSqliteValue(std::int64_t{rowsPerBatch})) {
                    return "own batch " + batchId + " not fully visible after its save";
                }
            }
            return {};
        }));
    }
    for (int reader = 0; reader < readers; ++reader) {
        tasks.push_back(std::async(std::launch::async, [&, reader]() -> std::string {
            const std::string identifier = reader == 0 ? "first" : "second";
            start.arrive_and_wait();
            int passes = 0;
            while (writing.load() || passes == 0) {
                ++passes;
                const auto torn = helper.select(
                    "SELECT batch, count(*) AS n FROM Item GROUP BY batch HAVING n <> " + std::to_string(rowsPerBatch),
                    true, identifier);
                if (!torn.ok()) return "select failed: " + torn.error().message;
                if (!torn.value().empty()) {
                    return "saw part of batch " + std::get<std::string>(torn.value()[0].at("batch"));
                }
            }
            return {};
        }));
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(5);
    for (std::size_t index = 0; index < tasks.size(); ++index) {
        if (index == static_cast<std::size_t>(writers)) writing.store(false);
        ASSERT_EQ(tasks[index].wait_until(deadline), std::future_status::ready) << "task " << index << " hung";
        EXPECT_EQ(tasks[index].get(), "") << "task " << index;
    }

    const auto total = helper.select("SELECT count(*) AS n FROM Item", true, "second");
    ASSERT_TRUE(total.ok());
    EXPECT_EQ(total.value().at(0).at("n"), YSqliteValue(std::int64_t{writers * batchesPerWriter * rowsPerBatch}));
    EXPECT_TRUE(log.messages().empty()) << log.messages().front();
}

}  // namespace
}  // namespace ycontacts
