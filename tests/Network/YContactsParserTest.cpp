#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "Domain/ContactComparison.h"
#include "Support/LogCapture.h"
#include "ycontacts/Contacts/Data/Network/YContactsParser.h"

namespace ycontacts {
namespace {

const YContactsHost host = YContactsHost::idc("http://h");
const YContactsParser parser;

YContactsParserContract::Body bytes(const std::string& text) {
    return std::vector<std::uint8_t>(text.begin(), text.end());
}

std::vector<std::string> ids(const std::optional<std::vector<YContact>>& contacts) {
    std::vector<std::string> result;
    for (const auto& contact : contacts.value_or(std::vector<YContact>{})) result.push_back(contact.contactId);
    return result;
}

std::string listed(const std::optional<std::vector<std::string>>& list) {
    if (!list) return "-";
    std::string text;
    for (const auto& each : *list) text += (text.empty() ? "" : ",") + each;
    return "[" + text + "]";
}

// A page as one line: "more", the count and the three lists, "-" for an absent list.
std::string describe(const std::optional<YContactNetworkResponse>& page) {
    if (!page) return "unreadable";
    const auto contactIds = [](const auto& contacts) { return contacts ? std::optional(ids(contacts)) : std::nullopt; };
    return std::string(page->error ? "error " : "") + (page->hasMore ? "more " : "") + std::to_string(page->count) +
           " new " + listed(contactIds(page->newContacts)) + " updated " + listed(contactIds(page->updatedContacts)) +
           " deleted " + listed(page->deletedContacts);
}

const std::string fullContact = R"({"contact_id":"100042","first_name":"Zoë","middle_name":"Q","last_name":"O'Brien",
 "nick_name":"zo","display_name":"Zoë O'Brien","created_time":1700000000123,"updated_time":1,"usage_count":58,
 "contact_type":"group","yuid":"u9","emails":[{"email_id":"a@x","is_primary":false},{"email_id":"b@x","is_primary":true}],
 "phones":[{"number":"+1","type":"fax"},{"number":"+2","type":"pager"},{"type":"home"}],
 "urls":[{"url":"f","type":"flickr"},{"url":"h","type":"home"},{"url":"w","type":"work"},{"url":"l","type":"linkedin"},{"url":"q","type":"Blog"}],
 "ims":[{"im":"s","type":"skype"},{"im":"z","type":"zephyr"}],"has_photo":false,"photo_url":"http://p",
 "gender":"female","notes":"line\n\"quoted\"\ttab","is_editable":true,"company":"Acme","job_title":"Dev",
 "designation":"Lead","address":{"street1":"1 Main","city":"Oslo","postal_code":"0150"},
 "work_address":{"country":"NO"},"categories":["101",7,"102"],"birthday":{"date":3,"month":12}})";

TEST(YContactsParserTest, ContactObjectsReadEveryKeyTreatWrongTypesAsAbsentAndNeedATextId) {
    // Each wire object and the record it reads as, in the record's own JSON form, or null for none.
    const std::pair<std::string, std::string> rows[] = {
        {fullContact, R"({"contactId":"100042","firstName":"Zoë","middleName":"Q","lastName":"O'Brien",
          "nickName":"zo","displayName":"Zoë O'Brien","createdTime":1700000000123,"weightage":58,"type":"group",
          "contactYuid":"u9","emails":[{"emailId":"a@x","isPrimary":false},{"emailId":"b@x","isPrimary":true}],
          "primaryEmail":{"emailId":"b@x","isPrimary":true},
          "phones":[{"phoneNumber":"+1","phoneType":"fax"},{"phoneNumber":"+2","phoneType":"others"}],
          "urls":[{"url":"f","type":"flikr"},{"url":"h","type":"personal"},{"url":"w","type":"company"},
                  {"url":"l","type":"linkedIn"},{"url":"q","type":"other"}],
          "IMs":[{"imLink":"s","imType":"skype"},{"imLink":"z","imType":"others"}],"hasPhoto":false,
          "photoURL":"http://p","gender":"female","notes":"line\n\"quoted\"\ttab","isEditable":true,"isOrg":false,
          "workInfo":{"company":"Acme","jobTitle":"Dev","designation":"Lead","address":{"country":"NO"}},
          "address":{"streetAddress1":"1 Main","city":"Oslo","postalCode":"0150"},
          "categories":[{"categoryId":"101"},{"categoryId":"102"}],"birthDate":3,"birthMonth":12})"},
        // Every wrongly typed key reads as absent or default; the category list is there, empty.
        {R"({"contact_id":"7","first_name":3,"created_time":"12","usage_count":1.5,"contact_type":"robot",
          "emails":{"email_id":"a"},"phones":[1,{"type":"mobile"}],"has_photo":"no","notes":null,"is_editable":1,
          "address":"Main St","gender":"other","birthday":[1,2],"categories":"101"})",
         R"({"contactId":"7","firstName":"","createdTime":0,"weightage":0,"type":"user","emails":[],"phones":[],
          "urls":[],"IMs":[],"hasPhoto":true,"isEditable":false,"isOrg":false,"categories":[]})"},
        {R"({"first_name":"x"})", "null"},
        {R"({"contact_id":42})", "null"},
        {R"("100")", "null"},
    };
    for (const auto& [object, record] : rows) {
        SCOPED_TRACE(object);
        const auto expected = nlohmann::json::parse(record);
        const auto page =
            parser.parseSyncContacts(host, bytes(R"({"contacts":[)" + object + "]}"), false, std::nullopt);
        ASSERT_TRUE(page && page->newContacts);
        ASSERT_EQ(page->newContacts->size(), expected.is_null() ? 0u : 1u);
        if (!expected.is_null()) {
            EXPECT_TRUE(testing::sameContactFields(expected.get<YContact>(), page->newContacts->front()));
        }
    }
}

TEST(YContactsParserTest, PagesSplitByCreationTimeAndEnvelopesEndOrRefuseTheDownload) {
    const std::string incremental = R"({"has_more":true,"contacts":[
        {"contact_id":"a","created_time":1000},{"contact_id":"b","created_time":999},
        {"contact_id":"c","created_time":1001},{"contact_id":"d","is_deleted":true},
        {"contact_id":5,"is_deleted":true},{"contact_id":"e","is_deleted":false,"created_time":2000},
        {"first_name":"no id"},"junk"]})";
    const struct {
        std::optional<std::string> body;
        bool isOrg;
        std::optional<double> syncTime;
        std::string expected;
    } rows[] = {
        // Contacts created after the whole millisecond of the sync time are new; tombstones give their id.
        {incremental, true, 1000.7, "more 5 new [c,e] updated [a,b] deleted [d]"},
        // Without a sync time every readable contact is new, tombstone-shaped ones included.
        {incremental, false, std::nullopt, "more 5 new [a,b,c,d,e] updated - deleted -"},
        {incremental, true, std::nan(""), "unreadable"},
        {incremental, true, 1e19, "unreadable"},
        // The not-found reply is an empty, final page, whatever else it carries.
        {R"({"errors":[{"message":"no org"}],"status_code":404,"has_more":true})", true, 5.0,
         "0 new - updated - deleted -"},
        // Other error replies are read like any page: without a list they are unreadable.
        {R"({"errors":[{}],"status_code":401})", false, std::nullopt, "unreadable"},
        {R"({"errors":[],"status_code":500,"contacts":[{"contact_id":"1"}],"has_more":true})", false, std::nullopt,
         "more 1 new [1] updated - deleted -"},
        // Missing or non-boolean has_more ends the download.
        {R"({"contacts":[]})", false, std::nullopt, "0 new [] updated - deleted -"},
        {R"({"contacts":[],"has_more":"true"})", false, std::nullopt, "0 new [] updated - deleted -"},
        {R"({"contacts":{}})", false, std::nullopt, "unreadable"},
        {R"([{"contact_id":"1"}])", false, std::nullopt, "unreadable"},
        {"", false, std::nullopt, "unreadable"},
        {std::nullopt, false, std::nullopt, "unreadable"},
    };
    testsupport::LogCapture log;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.body.value_or("no body"));
        const auto page =
            parser.parseSyncContacts(host, row.body ? bytes(*row.body) : std::nullopt, row.isOrg, row.syncTime);
        EXPECT_EQ(describe(page), row.expected);
        if (!page) continue;
        for (const auto* list : {&page->newContacts, &page->updatedContacts}) {
            for (const auto& contact : list->value_or(std::vector<YContact>{})) EXPECT_EQ(contact.isOrg, row.isOrg);
        }
    }
    EXPECT_TRUE(log.contains("sync time out of range"));
    // A search reads the list alone: the not-found reply has none.
    EXPECT_FALSE(parser.parseContacts(host, bytes(R"({"errors":[],"status_code":404})"), false));
    EXPECT_EQ(ids(parser.parseContacts(host, bytes(R"({"contacts":[{"contact_id":"s"},{}]})"), true)),
              std::vector<std::string>{"s"});
}

// The usage-count, category, add and delete replies, each read as one line: what it carries, or its error.
std::string readReply(const std::string& kind, const std::optional<std::string>& text) {
    const auto body = text ? bytes(*text) : std::nullopt;
    const auto error = [](const auto& reply) { return reply.error ? std::string(toRawValue(*reply.error)) : ""; };
    std::string line;
    if (kind == "counts") {
        const auto counts = parser.parseContactUsageCount(body);
        if (!counts) return "unreadable";
        for (const auto& [id, count] : counts->usageCountDetails.value_or(std::map<std::string, std::string>{})) {
            line += id + "=" + count + " ";
        }
        return error(*counts) + line;
    }
    if (kind == "categories") {
        const auto reply = parser.parseFetchCategories(body);
        for (const auto& each : reply.categories.value_or(std::vector<YContactCategory>{})) {
            line += each.categoryId + ":" + each.categoryName.value_or("-") + ":" + each.isDeleted.value_or("-") + " ";
        }
        return error(reply) + line;
    }
    const auto reply = kind == "add" ? parser.parseUpdateContacts(body) : parser.parseDeleteContacts(body);
    line = reply.successResponse.value_or("") + (reply.contactIds ? " ids" : "");
    for (const auto& id : reply.contactIds.value_or(std::vector<std::string>{})) line += " " + id;
    return error(reply) + line;
}

TEST(YContactsParserTest, OtherRepliesKeepOnlyWellTypedEntriesOrGiveTheirRefusal) {
    const std::string refused = R"({"errors":[{"message":"invalid authorization"}],"status_code":401})";
    const struct {
        const char* kind;
        std::optional<std::string> body;
        std::string expected;
    } rows[] = {
        {"counts", R"({"contacts":[{"contact_id":"100017","usage_count":58},{"contact_id":"3","usage_count":"41"},
          {"contact_id":4,"usage_count":1},{"contact_id":"5"},7,{"contact_id":"6","usage_count":-2}]})",
         "100017=58 6=-2 "},
        {"counts", R"({"ids":[]})", "unreadable"},
        // A boolean deleted flag is not the server's text flag.
        {"categories", R"({"categories":[{"category_id":"101","category_name":"Friends","deleted":"false"},
          {"category_id":102,"category_name":"X"},{"category_id":"103","deleted":true},"104",
          {"category_id":"105","category_name":null}]})",
         "101:Friends:false 103:-:- 105:-:- "},
        {"categories", refused, "parserError"},
        {"categories", std::nullopt, "parserError"},
        {"add", R"({"status":"success","contact_ids":["100301",7,"100302"]})", "success ids 100301 100302"},
        {"delete", R"({"status":"success"})", "success"},
        {"add", refused, "authorizationError"},
        {"delete", R"({"errors":[{"message":"forbidden"}],"status_code":403})", "authorizationError"},
        {"add", R"({"errors":[{"message":"bad"}],"status_code":400})", "unknownError"},
        {"delete", R"({"status":"failure"})", "unknownError"},
        {"add", R"({"status":"succ)", "parserError"},
    };
    testsupport::LogCapture log;
    for (const auto& row : rows)
        EXPECT_EQ(readReply(row.kind, row.body), row.expected) << row.kind << " " << row.body.value_or("none");
}

TEST(YContactsParserTest, ThreadsReadingAtOnceEachGetTheirOwnPage) {
    // Pages of different sizes and ids, so that buffers shared between threads would mix them up.
    std::vector<int> mismatches(4, 0);
    std::vector<std::thread> workers;
    for (int thread = 0; thread < 4; ++thread) {
        workers.emplace_back([&, thread] {
            std::string body = R"({"contacts":[)";
            std::vector<std::string> expected;
            for (int index = 0; index <= thread * 20; ++index) {
                expected.push_back(std::to_string(thread * 1000 + index));
                body += std::string(index > 0 ? "," : "") + R"({"contact_id":")" + expected.back() + R"(","notes":")" +
                        std::string(static_cast<std::size_t>(index % 7) * 30, 'x') + R"("})";
            }
            for (int round = 0; round < 200; ++round) {
                if (ids(parser.parseContacts(host, bytes(body + "]}"), false)) != expected)
                    ++mismatches[static_cast<std::size_t>(thread)];
            }
        });
    }
    for (auto& worker : workers) worker.join();
    EXPECT_EQ(mismatches, std::vector<int>(4, 0));
}

TEST(YContactsParserTest, EveryTruncationOfAPageGivesNothing) {
    testsupport::LogCapture log;
    const std::string page = R"({"has_more":true,"contacts":[)" + fullContact + "]}";
    ASSERT_TRUE(parser.parseSyncContacts(host, bytes(page), false, 10.0));
    for (std::size_t length = 0; length < page.size(); ++length) {
        const auto cut = bytes(page.substr(0, length));
        ASSERT_FALSE(parser.parseSyncContacts(host, cut, false, 10.0)) << length;
        ASSERT_FALSE(parser.parseContacts(host, cut, false)) << length;
        ASSERT_FALSE(parser.parseContactUsageCount(cut)) << length;
    }
}

}  // namespace
}  // namespace ycontacts
