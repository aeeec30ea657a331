#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Support/FakeDataManagers.h"
#include "Support/UsecaseSupport.h"
#include "ycontacts/Contacts/Domain/Usecases/YDeleteContactsUseCase.h"
#include "ycontacts/Contacts/Domain/Usecases/YFetchCategoriesUseCase.h"
#include "ycontacts/Contacts/Domain/Usecases/YFetchCategoryContactsUseCase.h"
#include "ycontacts/Contacts/Domain/Usecases/YUpdateContactsUseCase.h"

namespace ycontacts {
namespace {

using namespace testsupport;
using ::testing::_;
using ::testing::DoAll;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::InvokeArgument;
using ::testing::StrictMock;

YContactCategory category(const std::string& id, const std::string& name) {
    YContactCategory value(id);
    value.categoryName = name;
    return value;
}

YUpdateContactNetworkResponse serverAnswer(std::optional<std::string> successResponse) {
    YUpdateContactNetworkResponse response;
    response.successResponse = std::move(successResponse);
    return response;
}

TEST(CategoryUsecasesTest, CategoriesComeFromTheAnswersListAndAMissingAnswerGivesAnEmptyList) {
    auto dataManager = std::make_shared<StrictMock<FakeCategoriesDataManager>>();
    auto usecase = std::make_shared<YFetchCategoriesUseCase>(dataManager);
    YFetchCategoriesRequest request("u1");
    request.requestType = RequestType::server;
    EXPECT_CALL(*dataManager, fetchCategories("u1", RequestType::server, _))
        .WillOnce(DoAll(InvokeArgument<2>(YCategoryResponse{{category("k1", "Family"), category("k2", "Work")}}),
                        InvokeArgument<2>(std::nullopt), InvokeArgument<2>(YCategoryResponse{})));

    const auto got = responsesOf<YFetchCategoriesResponse>(*usecase, request, 3);

    ASSERT_EQ(got.size(), 3u);
    EXPECT_THAT(got[0].categories, ElementsAre(Field(&YContactCategory::categoryId, "k1"),
                                               Field(&YContactCategory::categoryId, "k2")));
    EXPECT_TRUE(got[1].categories.empty());
    EXPECT_TRUE(got[2].categories.empty());
    for (const auto& response : got) EXPECT_FALSE(response.title.has_value());
}

TEST(CategoryUsecasesTest, CategoryContactsKeepTheRequestedCategoryIdWithTheAnsweredContacts) {
    auto dataManager = std::make_shared<StrictMock<FakeCategoriesDataManager>>();
    auto usecase = std::make_shared<YFetchCategoryContactsUseCase>(dataManager);
    EXPECT_CALL(*dataManager, fetchContactsInCategory("u1", "k7", RequestType::preferLocal, _))
        .WillOnce(DoAll(InvokeArgument<3>(std::vector<YContact>{YContact("c1", "Ann", 0)}),
                        InvokeArgument<3>(std::nullopt)));

    const auto got = responsesOf<YFetchCategoryContactsResponse>(*usecase, YFetchCategoryContactsRequest("u1", "k7"), 2);

    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0].categoryId, "k7");
    ASSERT_TRUE(got[0].contacts.has_value());
    EXPECT_EQ(got[0].contacts->front().contactId, "c1");
    EXPECT_EQ(got[1].categoryId, "k7");
    EXPECT_FALSE(got[1].contacts.has_value());
}

TEST(UpdateUsecasesTest, UpdateCarriesATitleOnlyWhenTheServerAnsweredWithASuccessText) {
    auto dataManager = std::make_shared<StrictMock<FakeUpdateDataManager>>();
    auto usecase = std::make_shared<YUpdateContactsUseCase>(dataManager);
    YUpdateContactsRequest request("u1", {YContact("TempContactId-1", "Ann", 0)}, true, "desktop", "vcard");
    EXPECT_CALL(*dataManager, updateContact("u1", ElementsAre(Field(&YContact::contactId, "TempContactId-1")), true,
                                            "desktop", "vcard", _))
        .WillOnce(DoAll(InvokeArgument<5>(std::string("c42"), serverAnswer("Contact added")),
                        InvokeArgument<5>(std::string("c43"), serverAnswer(std::nullopt)),
                        InvokeArgument<5>(std::nullopt, std::nullopt)));

    const auto got = responsesOf<YUpdateContactsResponse>(*usecase, request, 3);

    ASSERT_EQ(got.size(), 3u);
    EXPECT_EQ(got[0].contactId, "c42");
    EXPECT_EQ(got[0].title, "Contact added");
    EXPECT_EQ(got[1].contactId, "c43");
    EXPECT_FALSE(got[1].title.has_value());
    EXPECT_FALSE(got[2].contactId.has_value());
    EXPECT_FALSE(got[2].title.has_value());
}

TEST(UpdateUsecasesTest, DeleteCarriesTheAnsweredIdAndATitleOnlyFromASuccessText) {
    auto dataManager = std::make_shared<StrictMock<FakeUpdateDataManager>>();
    auto usecase = std::make_shared<YDeleteContactsUseCase>(dataManager);
    EXPECT_CALL(*dataManager, deleteContact("u1", "c42", false, _))
        .WillOnce(DoAll(InvokeArgument<3>(std::string("c42"), serverAnswer("Contact deleted")),
                        InvokeArgument<3>(std::nullopt, serverAnswer(std::nullopt))));

    const auto got = responsesOf<YDeleteContactsResponse>(*usecase, YDeleteContactsRequest("u1", "c42", false), 2);

    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0].contactId, "c42");
    EXPECT_EQ(got[0].title, "Contact deleted");
    EXPECT_EQ(got[1].contactId, "");
    EXPECT_FALSE(got[1].title.has_value());
}

}  // namespace
}  // namespace ycontacts
