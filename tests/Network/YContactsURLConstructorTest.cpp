#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "Support/LogCapture.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"

namespace ycontacts {
namespace {

// An address as one line: the URL, then its parameters in key order, or "none" when there is none.
std::string line(const std::optional<YContactsURLParameters>& made) {
    if (!made) return "none";
    std::string text = made->url;
    for (const auto& [key, value] : made->parameters) text += " " + key + "=" + value;
    return text;
}

TEST(YContactsURLConstructorTest, EachCallOnEachHostGivesItsAddressAndParameters) {
    const YContactsURLConstructor urls;
    const std::string b = "https://cs.example.com";
    const std::string fixed(YContactsURLConstructor::contactsServerAddress);
    const std::string five = " include=emails,phones,urls,usage_count,categories";
    const auto idc = YContactsHost::idc(b), proxy = YContactsHost::proxy(b), other = YContactsHost::other();
    const auto none = std::nullopt;
    const auto infinity = std::numeric_limits<double>::infinity();
    // The add and delete addresses carry their query in the URL itself.
    const auto inURL = [](std::string url) { return std::optional(YContactsURLParameters{std::move(url), {}}); };
    const std::pair<std::function<std::optional<YContactsURLParameters>()>, std::string> rows[] = {
        {[&] { return urls.getContactsURL(idc, "1", none, false, 1, 200, none, none, none); },
         b + "/api/v1/accounts/self/contacts" + five + " page=1 per_page=200"},
        {[&] { return urls.getContactsURL(idc, "1", none, true, 3, 200, 1234.9, true, none); },
         b + "/api/v1/sync/org/contacts filter_updated_time=1234" + five + ",show_deleted page=3 per_page=200"},
        {[&] { return urls.getContactsURL(idc, "u", none, false, 1, none, none, false, "o'b"); },
         b + "/api/v1/accounts/self/contacts" + five + " page=1 q=o'b"},
        {[&] { return urls.getContactsURL(idc, "u", none, false, 7, 5, -2.5, none, none); },
         b + "/api/v1/sync/self/contacts filter_updated_time=-2" + five + " page=7 per_page=5"},
        {[&] { return urls.getContactsURL(idc, "u", none, false, 1, none, infinity, none, none); },
         b + "/api/v1/sync/self/contacts" + five + " page=1"},
        {[&] { return urls.getContactsURL(proxy, "u1", "o1", false, 2, 50, 99.99, false, "ann"); },
         b + "/yct/getContactsList filterUpdatedTime=99 page=2 perPage=50 searchText=ann showDeleted=false yid=u1"},
        {[&] { return urls.getContactsURL(proxy, "u1", "o1", true, 1, none, none, none, none); },
         b + "/yct/getContactsList page=1 yid=o1"},
        {[&] { return urls.getContactsURL(proxy, "u1", none, true, 1, 10, none, none, none); }, "none"},
        {[&] { return urls.getContactsURL(other, "u", none, false, 1, 1, none, none, none); }, "none"},
        {[&] { return urls.getContactImageURL(proxy, "u", "g9", true, YContactType::group); },
         b + "/file/download API=true ID=g9 fs=thumb t=group"},
        {[&] { return urls.getContactImageURL(idc, "u", "u2", false, YContactType::user); },
         b + "/file/download API=true ID=u2 fs=medium t=user"},
        {[&] { return urls.getContactImageURL(idc, "u", "42", true, false); },
         b + "/syncapi/contact/photo contactId=42 isOrg=true photosize=normal"},
        {[&] { return urls.getContactImageURL(proxy, "u", "42", false, true); },
         b + "/syncapi/contact/photo contactId=42 isOrg=false photosize=thumbnail"},
        {[&] { return urls.getContactImageURL(other, "u", "c", true, YContactType::user); }, "none"},
        {[&] { return urls.getContactImageURL(other, "u", "c", false, true); }, "none"},
        {[&] { return urls.getContactsUsageCountURL("u7", idc); },
         b + "/api/v2/accounts/u7/contacts/ids sort=usage_count"},
        {[&] { return urls.getContactsUsageCountURL("u", proxy); }, "none"},
        {[&] { return urls.getContactsUsageCountURL("u", other); }, "none"},
        {[&] { return inURL(urls.getDeleteContactsURL(idc, "1,2&3", true)); },
         b + "/syncapi/contact/delete?contactIds=1%2C2%263&isOrg=true"},
        {[&] { return inURL(urls.getDeleteContactsURL(proxy, "9", true)); },
         b + "/api/v1/org/contacts?contactIds=9&isOrg=true"},
        {[&] { return inURL(urls.getDeleteContactsURL(other, "42", false)); },
         fixed + "/syncapi/contact/delete?contactIds=42&isOrg=false"},
        {[&] { return inURL(urls.getUpdateContactsURL(idc, false, "desk top", "json")); },
         b + "/syncapi/contact/add?format=json&source=desk%20top"},
        {[&] { return inURL(urls.getUpdateContactsURL(proxy, false, "s", "f")); },
         b + "/api/v1/self/contacts?format=f&source=s"},
        {[&] { return inURL(urls.getUpdateContactsURL(other, true, "s", "f")); },
         fixed + "/syncapi/contact/add?format=f&source=s"},
    };
    testsupport::LogCapture log;
    for (const auto& [call, expected] : rows) EXPECT_EQ(line(call()), expected);
    // The two refusals that are a caller's mistake are logged.
    EXPECT_TRUE(log.contains("Sync time cannot be sent to the server: inf"));
    EXPECT_TRUE(log.contains("For mproxy yoid is required to get org contacts"));
}

}  // namespace
}  // namespace ycontacts
