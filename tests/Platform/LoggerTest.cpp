#include <gtest/gtest.h>

#include <vector>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {
namespace {

TEST(LoggerTest, SinkReceivesMessageWithCallSiteAndRespectsLevel) {
    Logger logger("test");
    logger.setConsoleOutput(false);
    std::vector<Logger::Record> records;
    logger.setSink([&](const Logger::Record& record) { records.push_back(record); });

    logger.debug("hidden below the default level");
    logger.info("visible ");
    const unsigned expectedLine = __LINE__ - 1;

    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].message, "visible ");
    EXPECT_EQ(records[0].level, Logger::Level::info);
    EXPECT_EQ(records[0].file, "LoggerTest.cpp");
    EXPECT_EQ(records[0].line, expectedLine);
    EXPECT_NE(records[0].function.find("TestBody"), std::string::npos);

    logger.setLevel(Logger::Level::debug);
    logger.debug("now shown");
    EXPECT_EQ(records.size(), 2u);
    logger.setSink({});
    logger.error("not captured");
    EXPECT_EQ(records.size(), 2u);
}

}  // namespace
}  // namespace ycontacts
