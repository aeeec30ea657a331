#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "ycontacts/Contacts/Data/Network/HttpHeaderDate.h"

namespace ycontacts {
namespace {

using namespace std::chrono;

system_clock::time_point at(std::int64_t secondsSince1970) {
    return system_clock::time_point{seconds{secondsSince1970}};
}

TEST(HttpHeaderDateTest, FormatsInGmtWithEnglishNamesAndParsesWhatItFormats) {
    const std::pair<std::int64_t, const char*> rows[] = {{1795373100, "Sun, 22 Nov 2026 18:45:00 GMT"},
                                                         {0, "Thu, 01 Jan 1970 00:00:00 GMT"},
                                                         {-1, "Wed, 31 Dec 1969 23:59:59 GMT"},
                                                         {1709251199, "Thu, 29 Feb 2024 23:59:59 GMT"}};
    for (const auto& [t, text] : rows) {
        EXPECT_EQ(httpHeaderDate.format(at(t)), text);
        EXPECT_EQ(httpHeaderDate.parse(text), at(t)) << text;
    }
    EXPECT_EQ(httpHeaderDate.format(at(1709251199) + milliseconds{999}), "Thu, 29 Feb 2024 23:59:59 GMT")
        << "fractions are dropped, not rounded";
    // Every month name and a spread of days, hours and weekdays, 1900 to 2200.
    for (std::int64_t t = -2208988800; t < 7258118400; t += 86400 * 17 + 3671) {
        const std::string text = httpHeaderDate.format(at(t));
        EXPECT_EQ(httpHeaderDate.parse(text), at(t)) << text;
    }
}

TEST(HttpHeaderDateTest, RejectsEverythingElse) {
    // clang-format off
    const char* rejected[] = {
        "", "Sun, 22 Nov 2026 18:45:00 UTC", "Sun, 22 Nov 2026 18:45:00 GMT ", "Sunday, 22-Nov-26 18:45:00 GMT",
        "Sun Nov 22 18:45:00 2026", "sun, 22 nov 2026 18:45:00 GMT", "Sun,  2 Nov 2026 18:45:00 GMT",
        "Mon, 22 Nov 2026 18:45:00 GMT", "Mon, 31 Nov 2026 18:45:00 GMT", "Sun, 29 Feb 2026 18:45:00 GMT",
        "Sun, 22 Nov 2026 24:00:00 GMT", "Sun, 22 Nov 2026 18:45:60 GMT", "Sun, 22 Nov 2026 18:4x:00 GMT",
        "Fri, 01 Jan 9999 00:00:00 GMT"};
    // clang-format on
    for (const char* text : rejected) {
        EXPECT_FALSE(httpHeaderDate.parse(text)) << '"' << text << '"';
    }
}

}  // namespace
}  // namespace ycontacts
