#include "ycontacts/Contacts/Data/Network/YContactsParser.h"

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "Domain/ContactComparison.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <thread>

namespace ycontacts {
namespace {

const YContactsHost host = YContactsHost::idc("http://h");

YContactsParserContract::Body bytes(const std::string& text) {
    return std::vector<std::uint8_t>(text.begin(), text.end());
}

std::vector<std::string> ids(const std::optional<std::vector<YContact>>& contacts) {
    std::vector<std::string> result;
    if (contacts) {
        for (const auto& contact : *contacts) result.push_back(contact.contactId);
    }
    return result;
}

// The one contact of a full page made of `object`, or absent when the page gives none.
std::optional<YContact> readOne(const std::string& object) {
    auto page = YContactsParser().parseSyncContacts(host, bytes(R"({"contacts":[)" + object + "]}"), false,
                                                    std::nullopt);
    if (!page || !page->newContacts || page->newContacts->size() != 1) return std::nullopt;
    return page->newContacts->front();
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

TEST(YContactsParserTest, ReadsEveryKeyOfAContactObject) {
    YContact expected("100042", "Zoë", 1700000000123);
    expected.middleName = "Q";
    expected.lastName = "O'Brien";
    expected.nickName = "zo";
    expected.displayName = "Zoë O'Brien";
    expected.weightage = 58;
    expected.type = YContactType::group;
    expected.contactYuid = "u9";
    expected.emails = {YContact::Email("a@x"), YContact::Email("b@x")};
    expected.emails[1].isPrimary = true;
    expected.primaryEmail = expected.emails[1];
    expected.phones = {{"+1", YContact::PhoneType::fax}, {"+2", YContact::PhoneType::others}};
    using U = YContact::URLType;
    expected.urls = {{"f", U::flikr}, {"h", U::personal}, {"w", U::company}, {"l", U::linkedIn}, {"q", U::other}};
    expected.IMs = {{"s", YContact::IMType::skype}, {"z", YContact::IMType::others}};
    expected.hasPhoto = false;
    expected.photoURL = "http://p";
    expected.gender = YContact::Gender::female;
    expected.notes = "line\n\"quoted\"\ttab";
    expected.isEditable = true;
    expected.workInfo = YContact::WorkInfo{"Acme", "Dev", "Lead", YContact::Address()};
    expected.workInfo->address->country = "NO";
    expected.address = YContact::Address();
    expected.address->streetAddress1 = "1 Main";
    expected.address->city = "Oslo";
    expected.address->postalCode = "0150";
    expected.categories = std::vector<YContact::Category>{YContact::Category("101"), YContact::Category("102")};
    expected.birthDate = 3;
    expected.birthMonth = 12;
    auto contact = readOne(fullContact);
    ASSERT_TRUE(contact);
    EXPECT_TRUE(testing::sameContactFields(expected, *contact));
}

TEST(YContactsParserTest, DropsObjectsWithoutTextIdAndIgnoresWrongTypedKeys) {
    EXPECT_FALSE(readOne(R"({"first_name":"x"})"));
    EXPECT_FALSE(readOne(R"({"contact_id":42})"));
    EXPECT_FALSE(readOne(R"({"contact_id":null})"));
    EXPECT_FALSE(readOne(R"("100")"));

    auto odd = readOne(R"({"contact_id":"7","first_name":3,"created_time":"12","usage_count":1.5,"contact_type":"robot",
        "emails":{"email_id":"a"},"phones":[1,{"type":"mobile"}],"has_photo":"no","notes":null,"is_editable":1,
        "address":"Main St","gender":"other","birthday":[1,2],"categories":"101"})");
    ASSERT_TRUE(odd);
    // Every wrongly typed key reads as absent or default; the category list is there, empty.
    YContact expected("7", "", 0);
    expected.categories.emplace();
    EXPECT_TRUE(testing::sameContactFields(expected, *odd));
}

TEST(YContactsParserTest, EnvelopeRules) {
    const YContactsParser parser;
    // A not-found error reply is an empty final page, whatever else it carries.
    auto notFound = parser.parseSyncContacts(
        host, bytes(R"({"errors":[{"message":"no org"}],"status_code":404,"has_more":true})"), true, 5.0);
    ASSERT_TRUE(notFound);
    EXPECT_FALSE(notFound->error);
    EXPECT_FALSE(notFound->hasMore);
    EXPECT_EQ(notFound->count, 0);
    EXPECT_FALSE(notFound->newContacts || notFound->updatedContacts || notFound->deletedContacts);
    EXPECT_FALSE(parser.parseContacts(host, bytes(R"({"errors":[],"status_code":404})"), false));

    // Other error replies are read like any page: without a list they are unreadable.
    EXPECT_FALSE(parser.parseSyncContacts(host, bytes(R"({"errors":[{}],"status_code":401})"), false, std::nullopt));
    auto withList = parser.parseSyncContacts(
        host, bytes(R"({"errors":[],"status_code":500,"contacts":[{"contact_id":"1"}],"has_more":true})"), false,
        std::nullopt);
    ASSERT_TRUE(withList);
    EXPECT_TRUE(withList->hasMore);
    EXPECT_EQ(withList->count, 1);

    // Missing or non-boolean has_more ends the download.
    for (const auto* body : {R"({"contacts":[]})", R"({"contacts":[],"has_more":"true"})"}) {
        auto page = parser.parseSyncContacts(host, bytes(body), false, std::nullopt);
        ASSERT_TRUE(page) << body;
        EXPECT_FALSE(page->hasMore) << body;
        EXPECT_EQ(page->newContacts, std::vector<YContact>{}) << body;
    }
    EXPECT_FALSE(parser.parseSyncContacts(host, bytes(R"({"contacts":{}})"), false, std::nullopt));
    EXPECT_FALSE(parser.parseSyncContacts(host, bytes(R"([{"contact_id":"1"}])"), false, std::nullopt));
    EXPECT_FALSE(parser.parseSyncContacts(host, std::nullopt, false, std::nullopt));
    EXPECT_FALSE(parser.parseSyncContacts(host, bytes(""), false, std::nullopt));
}

TEST(YContactsParserTest, IncrementalPageSplitsByCreationTimeAndTombstones) {
    const std::string body = R"({"has_more":true,"contacts":[
        {"contact_id":"a","created_time":1000},{"contact_id":"b","created_time":999},
        {"contact_id":"c","created_time":1001},{"contact_id":"d","is_deleted":true},
        {"contact_id":5,"is_deleted":true},{"contact_id":"e","is_deleted":false,"created_time":2000},
        {"first_name":"no id"},"junk"]})";
    auto page = YContactsParser().parseSyncContacts(host, bytes(body), true, 1000.7);
    ASSERT_TRUE(page);
    EXPECT_TRUE(page->hasMore);
    EXPECT_EQ(ids(page->newContacts), (std::vector<std::string>{"c", "e"}));
    EXPECT_EQ(ids(page->updatedContacts), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(page->deletedContacts, std::vector<std::string>{"d"});
    EXPECT_EQ(page->count, 5);
    EXPECT_TRUE(page->newContacts->front().isOrg);

    // Without a sync time every readable contact is new, tombstone-shaped ones included.
    auto full = YContactsParser().parseSyncContacts(host, bytes(body), false, std::nullopt);
    ASSERT_TRUE(full);
    EXPECT_EQ(ids(full->newContacts), (std::vector<std::string>{"a", "b", "c", "d", "e"}));
    EXPECT_FALSE(full->updatedContacts || full->deletedContacts);
    EXPECT_EQ(full->count, 5);
    EXPECT_FALSE(full->newContacts->front().isOrg);

    EXPECT_FALSE(YContactsParser().parseSyncContacts(host, bytes(body), true, std::nan("")));
}

TEST(YContactsParserTest, WordTablesMatchExactly) {
    using U = YContact::URLType;
    const std::pair<const char*, U> urlWords[] = {{"blog", U::blog},         {"facebook", U::facebook},
                                                  {"twitter", U::twitter},   {"amazon", U::amazon},
                                                  {"delicious", U::delicious}, {"others", U::other},
                                                  {"flikr", U::other},       {"linkedIn", U::other}};
    for (const auto& [word, type] : urlWords) EXPECT_EQ(YContactsParser::getUrlType(word), type) << word;
    using I = YContact::IMType;
    const std::pair<const char*, I> imWords[] = {{"google", I::google}, {"yahoo", I::yahoo}, {"aol", I::aol},
                                                 {"icq", I::icq},       {"msn", I::msn},     {"jabber", I::jabber},
                                                 {"Skype", I::others}};
    for (const auto& [word, type] : imWords) EXPECT_EQ(YContactsParser::getImType(word), type) << word;
}

TEST(YContactsParserTest, UsageCountsKeepOnlyTextIdsWithIntegerCounts) {
    const YContactsParser parser;
    auto counts = parser.parseContactUsageCount(bytes(R"({"contacts":[{"contact_id":"100017","usage_count":58},
        {"contact_id":"3","usage_count":"41"},{"contact_id":4,"usage_count":1},{"contact_id":"5"},7,
        {"contact_id":"6","usage_count":-2}]})"));
    ASSERT_TRUE(counts);
    EXPECT_FALSE(counts->error);
    EXPECT_EQ(counts->usageCountDetails, (std::map<std::string, std::string>{{"100017", "58"}, {"6", "-2"}}));
    EXPECT_FALSE(parser.parseContactUsageCount(bytes(R"({"ids":[]})")));
    EXPECT_FALSE(parser.parseContactUsageCount(std::nullopt));
}

TEST(YContactsParserTest, CategoriesKeepTextIdsAndTheDeletedFlagAsText) {
    const YContactsParser parser;
    auto reply = parser.parseFetchCategories(bytes(R"({"categories":[
        {"category_id":"101","category_name":"Friends","deleted":"false"},{"category_id":102,"category_name":"X"},
        {"category_id":"103","deleted":true},"104",{"category_id":"105","category_name":null}]})"));
    EXPECT_FALSE(reply.error);
    ASSERT_TRUE(reply.categories);
    ASSERT_EQ(reply.categories->size(), 3u);
    EXPECT_EQ(reply.categories->at(0).categoryId, "101");
    EXPECT_EQ(reply.categories->at(0).categoryName, "Friends");
    EXPECT_EQ(reply.categories->at(0).isDeleted, "false");
    EXPECT_EQ(reply.categories->at(1).categoryId, "103");
    EXPECT_FALSE(reply.categories->at(1).isDeleted);  // a boolean is not the server's text flag
    EXPECT_FALSE(reply.categories->at(2).categoryName);

    for (const auto* body : {R"({"errors":[{"message":"x"}],"status_code":401})", R"({"categories":{}})", "[]"}) {
        auto unreadable = parser.parseFetchCategories(bytes(body));
        EXPECT_EQ(unreadable.error, YContactError::parserError) << body;
        EXPECT_FALSE(unreadable.categories) << body;
    }
    EXPECT_EQ(parser.parseFetchCategories(std::nullopt).error, YContactError::parserError);
}

TEST(YContactsParserTest, AddAndDeleteRepliesGiveStatusIdsOrTheRefusal) {
    const YContactsParser parser;
    auto added = parser.parseUpdateContacts(bytes(R"({"status":"success","contact_ids":["100301",7,"100302"]})"));
    EXPECT_FALSE(added.error);
    EXPECT_EQ(added.successResponse, "success");
    EXPECT_EQ(added.contactIds, (std::vector<std::string>{"100301", "100302"}));
    auto deleted = parser.parseDeleteContacts(bytes(R"({"status":"success"})"));
    EXPECT_FALSE(deleted.error);
    EXPECT_EQ(deleted.successResponse, "success");
    EXPECT_FALSE(deleted.contactIds);

    const std::vector<std::pair<std::string, YContactError>> refusals = {
        {R"({"errors":[{"message":"invalid authorization"}],"status_code":401})", YContactError::authorizationError},
        {R"({"errors":[{"message":"forbidden"}],"status_code":403})", YContactError::authorizationError},
        {R"({"errors":[{"message":"bad"}],"status_code":400})", YContactError::unknownError},
        {R"({"status":"failure"})", YContactError::unknownError},
        {R"({"status":"succ)", YContactError::parserError},
        {"", YContactError::parserError},
    };
    for (const auto& [body, error] : refusals) {
        for (const auto& reply : {parser.parseUpdateContacts(bytes(body)), parser.parseDeleteContacts(bytes(body))}) {
            EXPECT_EQ(reply.error, error) << body;
            EXPECT_FALSE(reply.successResponse) << body;
            EXPECT_FALSE(reply.contactIds) << body;
        }
    }
}

TEST(YContactsParserTest, ThreadsReadingAtOnceEachGetTheirOwnPage) {
    const YContactsParser parser;
    constexpr int threads = 4;
    // Built by appending: GCC 12 misreads `"literal" + std::string` here as an overlapping copy.
    auto idOf = [](int thread, int index) {
        std::string id = "t";
        id += std::to_string(thread);
        id += '-';
        id += std::to_string(index);
        return id;
    };
    // Pages of different sizes, so that a parser shared between threads would mix them up.
    auto pageOf = [&](int thread) {
        std::string body = R"({"has_more":false,"contacts":[)";
        for (int index = 0; index <= thread * 20; ++index) {
            if (index > 0) body += ",";
            body += R"({"contact_id":")";
            body += idOf(thread, index);
            body += R"(","first_name":"N","notes":")";
            body += std::string(static_cast<std::size_t>(index % 7) * 30, 'x');
            body += R"("})";
        }
        return body + "]}";
    };
    std::vector<std::thread> workers;
    std::vector<int> mismatches(threads, 0);
    for (int thread = 0; thread < threads; ++thread) {
        workers.emplace_back([&, thread] {
            const auto body = bytes(pageOf(thread));
            for (int round = 0; round < 200; ++round) {
                const auto page = parser.parseSyncContacts(host, body, false, std::nullopt);
                const auto found = page ? ids(page->newContacts) : std::vector<std::string>{};
                if (found.size() != static_cast<std::size_t>(thread * 20 + 1) ||
                    found.back() != idOf(thread, thread * 20)) {
                    ++mismatches[static_cast<std::size_t>(thread)];
                }
            }
        });
    }
    for (auto& worker : workers) worker.join();
    EXPECT_EQ(mismatches, std::vector<int>(threads, 0));
}

// Keeps thousands of expected warnings off the console.
struct QuietLog {
    QuietLog() { Logger::shared().setConsoleOutput(false); }
    ~QuietLog() { Logger::shared().setConsoleOutput(true); }
};

TEST(YContactsParserTest, TruncatedAndGarbageBodiesGiveNothing) {
    const QuietLog quiet;
    const YContactsParser parser;
    const std::string page = R"({"has_more":true,"contacts":[)" + fullContact + "]}";
    ASSERT_TRUE(parser.parseSyncContacts(host, bytes(page), false, 10.0));
    for (std::size_t length = 0; length < page.size(); ++length) {
        const auto cut = bytes(page.substr(0, length));
        ASSERT_FALSE(parser.parseSyncContacts(host, cut, false, 10.0)) << length;
        ASSERT_FALSE(parser.parseContacts(host, cut, false)) << length;
        ASSERT_FALSE(parser.parseContactUsageCount(cut)) << length;
    }
    std::mt19937 random(7);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int round = 0; round < 200; ++round) {
        std::vector<std::uint8_t> garbage(1 + round % 64);
        for (auto& value : garbage) value = static_cast<std::uint8_t>(byte(random));
        garbage[0] = '[';  // never a JSON object, whatever follows
        EXPECT_FALSE(parser.parseSyncContacts(host, garbage, false, std::nullopt));
        EXPECT_FALSE(parser.parseContacts(host, garbage, true));
    }
}

}  // namespace
}  // namespace ycontacts
