#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ycontacts/Platform/MarloComponents/YJSONSerializer.h"

namespace ycontacts {
namespace {

TEST(YJSONSerializerTest, ObjectStaysReadableAfterTheInputIsGoneAndTheDictionaryMoves) {
    auto body = std::make_unique<std::string>(
        R"({"contact_id":"42","usage_count":7,"emails":[{"email_id":"a@b.c","is_primary":true}]})");
    auto parsed = YJSONSerializer::dictionary(*body);
    body.reset();
    ASSERT_TRUE(parsed.has_value());

    std::vector<YJSONDictionary> kept;
    kept.push_back(std::move(*parsed));
    parsed.reset();
    const auto root = kept.front().root();

    std::string_view id;
    ASSERT_FALSE(root["contact_id"].get_string().get(id));
    EXPECT_EQ(id, "42");
    int64_t count = 0;
    ASSERT_FALSE(root["usage_count"].get_int64().get(count));
    EXPECT_EQ(count, 7);
    std::string_view email;
    ASSERT_FALSE(root["emails"].at(0)["email_id"].get_string().get(email));
    EXPECT_EQ(email, "a@b.c");
    EXPECT_EQ(root["absent"].error(), simdjson::NO_SUCH_FIELD);
}

TEST(YJSONSerializerTest, OnlyAWellFormedTopLevelObjectIsADictionary) {
    const std::vector<std::pair<std::string, std::string>> rejected = {
        {"array", "[{\"a\":1}]"},
        {"number", "42"},
        {"string", "\"text\""},
        {"null", "null"},
        {"empty", ""},
        {"blank", "   \n"},
        {"garbage", "not json at all"},
        {"truncated", R"({"a":[1,2)"},
        {"trailing garbage", R"({"a":1} x)"},
        {"too deep", std::string(5000, '[') + std::string(5000, ']')},
    };
    for (const auto& [name, body] : rejected) {
        EXPECT_FALSE(YJSONSerializer::dictionary(body).has_value()) << name;
    }
    EXPECT_TRUE(YJSONSerializer::dictionary("{}").has_value());
    EXPECT_TRUE(YJSONSerializer::dictionary(" {\"a\":null} \n").has_value());
}

}  // namespace
}  // namespace ycontacts
