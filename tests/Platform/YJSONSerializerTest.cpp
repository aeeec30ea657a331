#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ycontacts/Platform/MarloComponents/YJSONSerializer.h"

namespace ycontacts {
namespace {

TEST(YJSONSerializerTest, ObjectStaysReadableAfterTheInputIsGoneAndTheDictionaryMoves) {
    auto body = std::make_unique<std::string>(R"({"contact_id":"42","emails":[{"email_id":"a@b.c"}]})");
    auto parsed = YJSONSerializer::dictionary(*body);
    body.reset();
    ASSERT_TRUE(parsed.has_value());
    std::vector<YJSONDictionary> kept;
    kept.push_back(std::move(*parsed));
    parsed.reset();

    const auto root = kept.front().root();
    std::string_view id, email;
    ASSERT_FALSE(root["contact_id"].get_string().get(id));
    ASSERT_FALSE(root["emails"].at(0)["email_id"].get_string().get(email));
    EXPECT_EQ(id, "42");
    EXPECT_EQ(email, "a@b.c");
}

TEST(YJSONSerializerTest, OnlyAWellFormedTopLevelObjectIsADictionary) {
    std::string tooDeep;
    for (int level = 0; level < 5000; ++level) tooDeep += "{\"k\":";
    tooDeep += "1" + std::string(5000, '}');
    for (const std::string& body :
         {std::string("[{\"a\":1}]"), std::string("\"text\""), std::string("null"), std::string(), std::string("   \n"),
          std::string(R"({"a":[1,2)"), std::string(R"({"a":1} x)"), tooDeep}) {
        EXPECT_FALSE(YJSONSerializer::dictionary(body).has_value()) << body.substr(0, 20);
    }
    EXPECT_TRUE(YJSONSerializer::dictionary(" {\"a\":null} \n").has_value());
}

}  // namespace
}  // namespace ycontacts
