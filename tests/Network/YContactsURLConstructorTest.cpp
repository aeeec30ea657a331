#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"

#include <gtest/gtest.h>

#include <vector>

#include "Support/LogCapture.h"

namespace ycontacts {
namespace {

using Params = std::map<std::string, std::string>;
const std::string base = "https://cs.example.com";
const std::string fiveSections = "emails,phones,urls,usage_count,categories";

TEST(YContactsURLConstructorTest, DirectHostPicksPathFromTimeAndPopulation) {
    const YContactsURLConstructor urls;
    const auto host = YContactsHost::idc(base);
    auto full = urls.getContactsURL(host, "1", std::nullopt, false, 1, 200, std::nullopt, std::nullopt, std::nullopt);
    ASSERT_TRUE(full);
    EXPECT_EQ(full->url, base + "/api/v1/accounts/self/contacts");
    EXPECT_EQ(full->parameters, (Params{{"include", fiveSections}, {"page", "1"}, {"per_page", "200"}}));

    auto sync = urls.getContactsURL(host, "1", std::nullopt, true, 3, 200, 1234.9, true, std::nullopt);
    ASSERT_TRUE(sync);
    EXPECT_EQ(sync->url, base + "/api/v1/sync/org/contacts");
    EXPECT_EQ(sync->parameters, (Params{{"include", fiveSections + ",show_deleted"},
                                        {"page", "3"},
                                        {"per_page", "200"},
                                        {"filter_updated_time", "1234"}}));
}

TEST(YContactsURLConstructorTest, DirectParametersOnlyAddShowDeletedForTrueAndCarrySearchAsQ) {
    EXPECT_EQ(YContactsURLConstructor::getIDCContactParam(1, std::nullopt, std::nullopt, false, "o'b"),
              (Params{{"include", fiveSections}, {"page", "1"}, {"q", "o'b"}}));
    EXPECT_EQ(YContactsURLConstructor::getIDCContactParam(7, 5, -2.5, std::nullopt, std::nullopt),
              (Params{{"include", fiveSections}, {"page", "7"}, {"per_page", "5"}, {"filter_updated_time", "-2"}}));
}

TEST(YContactsURLConstructorTest, ProxyParametersUseCamelCaseAndExplicitShowDeleted) {
    const YContactsURLConstructor urls;
    const auto host = YContactsHost::proxy(base);
    auto own = urls.getContactsURL(host, "u1", std::string("o1"), false, 2, 50, 99.99, false, "ann");
    ASSERT_TRUE(own);
    EXPECT_EQ(own->url, base + "/yct/getContactsList");
    EXPECT_EQ(own->parameters, (Params{{"yid", "u1"},
                                       {"page", "2"},
                                       {"perPage", "50"},
                                       {"filterUpdatedTime", "99"},
                                       {"searchText", "ann"},
                                       {"showDeleted", "false"}}));

    auto org = urls.getContactsURL(host, "u1", std::string("o1"), true, 1, std::nullopt, std::nullopt,
                                   std::nullopt, std::nullopt);
    ASSERT_TRUE(org);
    EXPECT_EQ(org->parameters, (Params{{"yid", "o1"}, {"page", "1"}}));
}

TEST(YContactsURLConstructorTest, ProxyOrgRequestWithoutYoidLogsAndGivesNothing) {
    testsupport::LogCapture log;
    const YContactsURLConstructor urls;
    EXPECT_FALSE(urls.getContactsURL(YContactsHost::proxy(base), "u1", std::nullopt, true, 1, 10, std::nullopt,
                                     std::nullopt, std::nullopt));
    EXPECT_EQ(log.messages(), std::vector<std::string>{"For mproxy yoid is required to get org contacts"});
}

TEST(YContactsURLConstructorTest, OtherHostHasNoReadURLsAndProxyNoUsageCounts) {
    const YContactsURLConstructor urls;
    const auto other = YContactsHost::other("x");
    EXPECT_FALSE(urls.getContactsURL(other, "u", std::nullopt, false, 1, 1, std::nullopt, std::nullopt, std::nullopt));
    EXPECT_FALSE(urls.getContactImageURL(other, "u", "c", true, YContactType::user));
    EXPECT_FALSE(urls.getContactImageURL(other, "u", "c", false, true));
    EXPECT_FALSE(urls.getContactsUsageCountURL("u", other));
    EXPECT_FALSE(urls.getContactsUsageCountURL("u", YContactsHost::proxy(base)));

    auto usage = urls.getContactsUsageCountURL("u7", YContactsHost::idc(base));
    ASSERT_TRUE(usage);
    EXPECT_EQ(usage->url, base + "/api/v2/accounts/u7/contacts/ids");
    EXPECT_EQ(usage->parameters, (Params{{"sort", "usage_count"}}));
}

TEST(YContactsURLConstructorTest, PhotoParametersByYuidAndById) {
    const YContactsURLConstructor urls;
    for (const auto& host : {YContactsHost::idc(base), YContactsHost::proxy(base)}) {
        auto byYuid = urls.getContactImageURL(host, "u", "g9", true, YContactType::group);
        ASSERT_TRUE(byYuid);
        EXPECT_EQ(byYuid->url, base + "/file/download");
        EXPECT_EQ(byYuid->parameters, (Params{{"ID", "g9"}, {"t", "group"}, {"API", "true"}, {"fs", "thumb"}}));
        auto byId = urls.getContactImageURL(host, "u", "42", true, false);
        ASSERT_TRUE(byId);
        EXPECT_EQ(byId->url, base + "/syncapi/contact/photo");
        EXPECT_EQ(byId->parameters, (Params{{"contactId", "42"}, {"isOrg", "true"}, {"photosize", "normal"}}));
    }
    EXPECT_EQ(urls.getContactImageURL(YContactsHost::idc(base), "u", "u2", false, YContactType::user)->parameters,
              (Params{{"ID", "u2"}, {"t", "user"}, {"API", "true"}, {"fs", "medium"}}));
}

TEST(YContactsURLConstructorTest, AddAndDeleteCarryOrderedQueryOnEveryHost) {
    const YContactsURLConstructor urls;
    const std::string fixed(YContactsURLConstructor::contactsServerAddress);
    EXPECT_EQ(urls.getDeleteContactsURL(YContactsHost::other(), "42", false),
              fixed + "/syncapi/contact/delete?contactIds=42&isOrg=false");
    EXPECT_EQ(urls.getDeleteContactsURL(YContactsHost::idc(base), "1,2", true),
              base + "/syncapi/contact/delete?contactIds=1%2C2&isOrg=true");
    EXPECT_EQ(urls.getDeleteContactsURL(YContactsHost::proxy(base), "9", true),
              base + "/api/v1/org/contacts?contactIds=9&isOrg=true");
    EXPECT_EQ(urls.getUpdateContactsURL(YContactsHost::idc(base), false, "desk top", "json"),
              base + "/syncapi/contact/add?format=json&source=desk%20top");
    EXPECT_EQ(urls.getUpdateContactsURL(YContactsHost::proxy(base), false, "s", "f"),
              base + "/api/v1/self/contacts?format=f&source=s");
    EXPECT_EQ(urls.getUpdateContactsURL(YContactsHost::other(), true, "s", "f"),
              fixed + "/syncapi/contact/add?format=f&source=s");
}

}  // namespace
}  // namespace ycontacts
