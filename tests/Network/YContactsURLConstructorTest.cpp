#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "Support/LogCapture.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"

namespace ycontacts {
namespace {

using Params = std::map<std::string, std::string>;
using Request = std::optional<YContactsURLParameters>;

TEST(YContactsURLConstructorTest, EachCallOnEachHostGivesItsAddressAndParameters) {
    const YContactsURLConstructor urls;
    const std::string base = "https://cs.example.com";
    const std::string fixed(YContactsURLConstructor::contactsServerAddress);
    const std::string five = "emails,phones,urls,usage_count,categories";
    const auto idc = YContactsHost::idc(base), proxy = YContactsHost::proxy(base), other = YContactsHost::other();
    const auto none = std::nullopt;
    const auto infinity = std::numeric_limits<double>::infinity();
    // The add and delete addresses carry their query in the URL itself.
    const auto inURL = [](std::string url) { return Request(YContactsURLParameters{std::move(url), {}}); };
    const struct {
        const char* name;
        std::function<Request()> call;
        Request expected;
    } rows[] = {
        {"full page", [&] { return urls.getContactsURL(idc, "1", none, false, 1, 200, none, none, none); },
         YContactsURLParameters{base + "/api/v1/accounts/self/contacts",
                                {{"include", five}, {"page", "1"}, {"per_page", "200"}}}},
        {"incremental org page", [&] { return urls.getContactsURL(idc, "1", none, true, 3, 200, 1234.9, true, none); },
         YContactsURLParameters{base + "/api/v1/sync/org/contacts",
                                {{"include", five + ",show_deleted"},
                                 {"page", "3"},
                                 {"per_page", "200"},
                                 {"filter_updated_time", "1234"}}}},
        {"search without deleted",
         [&] { return urls.getContactsURL(idc, "u", none, false, 1, none, none, false, "o'b"); },
         YContactsURLParameters{base + "/api/v1/accounts/self/contacts",
                                {{"include", five}, {"page", "1"}, {"q", "o'b"}}}},
        {"negative time", [&] { return urls.getContactsURL(idc, "u", none, false, 7, 5, -2.5, none, none); },
         YContactsURLParameters{base + "/api/v1/sync/self/contacts",
                                {{"include", five}, {"page", "7"}, {"per_page", "5"}, {"filter_updated_time", "-2"}}}},
        {"unsendable time", [&] { return urls.getContactsURL(idc, "u", none, false, 1, none, infinity, none, none); },
         YContactsURLParameters{base + "/api/v1/sync/self/contacts", {{"include", five}, {"page", "1"}}}},
        {"proxy own page", [&] { return urls.getContactsURL(proxy, "u1", "o1", false, 2, 50, 99.99, false, "ann"); },
         YContactsURLParameters{base + "/yct/getContactsList",
                                {{"yid", "u1"},
                                 {"page", "2"},
                                 {"perPage", "50"},
                                 {"filterUpdatedTime", "99"},
                                 {"searchText", "ann"},
                                 {"showDeleted", "false"}}}},
        {"proxy org page", [&] { return urls.getContactsURL(proxy, "u1", "o1", true, 1, none, none, none, none); },
         YContactsURLParameters{base + "/yct/getContactsList", {{"yid", "o1"}, {"page", "1"}}}},
        {"proxy org without yoid",
         [&] { return urls.getContactsURL(proxy, "u1", none, true, 1, 10, none, none, none); }, none},
        {"other host page", [&] { return urls.getContactsURL(other, "u", none, false, 1, 1, none, none, none); }, none},
        {"group photo", [&] { return urls.getContactImageURL(proxy, "u", "g9", true, YContactType::group); },
         YContactsURLParameters{base + "/file/download",
                                {{"ID", "g9"}, {"t", "group"}, {"API", "true"}, {"fs", "thumb"}}}},
        {"user photo", [&] { return urls.getContactImageURL(idc, "u", "u2", false, YContactType::user); },
         YContactsURLParameters{base + "/file/download",
                                {{"ID", "u2"}, {"t", "user"}, {"API", "true"}, {"fs", "medium"}}}},
        {"photo by id", [&] { return urls.getContactImageURL(idc, "u", "42", true, false); },
         YContactsURLParameters{base + "/syncapi/contact/photo",
                                {{"contactId", "42"}, {"isOrg", "true"}, {"photosize", "normal"}}}},
        {"thumbnail by id", [&] { return urls.getContactImageURL(proxy, "u", "42", false, true); },
         YContactsURLParameters{base + "/syncapi/contact/photo",
                                {{"contactId", "42"}, {"isOrg", "false"}, {"photosize", "thumbnail"}}}},
        {"other host photo", [&] { return urls.getContactImageURL(other, "u", "c", true, YContactType::user); }, none},
        {"other host photo by id", [&] { return urls.getContactImageURL(other, "u", "c", false, true); }, none},
        {"usage counts", [&] { return urls.getContactsUsageCountURL("u7", idc); },
         YContactsURLParameters{base + "/api/v2/accounts/u7/contacts/ids", {{"sort", "usage_count"}}}},
        {"proxy usage counts", [&] { return urls.getContactsUsageCountURL("u", proxy); }, none},
        {"other host usage counts", [&] { return urls.getContactsUsageCountURL("u", other); }, none},
        {"delete", [&] { return inURL(urls.getDeleteContactsURL(idc, "1,2&3", true)); },
         inURL(base + "/syncapi/contact/delete?contactIds=1%2C2%263&isOrg=true")},
        {"proxy delete", [&] { return inURL(urls.getDeleteContactsURL(proxy, "9", true)); },
         inURL(base + "/api/v1/org/contacts?contactIds=9&isOrg=true")},
        {"other host delete", [&] { return inURL(urls.getDeleteContactsURL(other, "42", false)); },
         inURL(fixed + "/syncapi/contact/delete?contactIds=42&isOrg=false")},
        {"add", [&] { return inURL(urls.getUpdateContactsURL(idc, false, "desk top", "json")); },
         inURL(base + "/syncapi/contact/add?format=json&source=desk%20top")},
        {"proxy add", [&] { return inURL(urls.getUpdateContactsURL(proxy, false, "s", "f")); },
         inURL(base + "/api/v1/self/contacts?format=f&source=s")},
        {"other host add", [&] { return inURL(urls.getUpdateContactsURL(other, true, "s", "f")); },
         inURL(fixed + "/syncapi/contact/add?format=f&source=s")},
    };
    testsupport::LogCapture log;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto made = row.call();
        ASSERT_EQ(made.has_value(), row.expected.has_value());
        if (made) {
            EXPECT_EQ(made->url, row.expected->url);
            EXPECT_EQ(made->parameters, row.expected->parameters);
        }
    }
    // The two refusals that are a caller's mistake are logged.
    EXPECT_TRUE(log.contains("Sync time cannot be sent to the server: inf"));
    EXPECT_TRUE(log.contains("For mproxy yoid is required to get org contacts"));
}

}  // namespace
}  // namespace ycontacts
