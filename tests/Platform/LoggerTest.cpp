#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Configuration.h"
#include "ycontacts/Contacts/Data/Network/YContactsParser.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {
namespace {

TEST(LoggerTest, TheLibraryLogsThroughTheHostsLoggerWithLevelTextAndCallSite) {
    auto host = std::make_shared<Logger>("host");
    host->setConsoleOutput(false);
    std::vector<Logger::Record> records;
    host->setSink([&](const Logger::Record& record) { records.push_back(record); });
    const auto libraryDefault = std::exchange(Configuration::logger, host);

    EXPECT_FALSE(YContactsParser().parseContactUsageCount(std::nullopt));  // warns of the empty body
    Logger::shared().debug("hidden below the default level");
    host->setLevel(Logger::Level::debug);
    Logger::shared().debug("now shown");
    const unsigned shownAt = __LINE__ - 1;
    host->setSink({});
    Logger::shared().error("not captured");
    Configuration::logger = libraryDefault;

    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].level, Logger::Level::warning);
    EXPECT_EQ(records[0].message, "JSON body not read: it is empty");
    EXPECT_EQ(records[0].file, "YContactsParser.cpp");
    EXPECT_EQ(records[1].level, Logger::Level::debug);
    EXPECT_EQ(records[1].message, "now shown");
    EXPECT_EQ(records[1].file, "LoggerTest.cpp");
    EXPECT_EQ(records[1].line, shownAt);
    EXPECT_NE(records[1].function.find("TestBody"), std::string::npos);
}

}  // namespace
}  // namespace ycontacts
