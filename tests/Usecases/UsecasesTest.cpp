// Each use case asks its own data-manager operation and turns every answer it gets, in order, into a response.
// The use cases the facade runs (contacts by id or address, one contact) are checked through it, on a real store.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/FakeDataManagers.h"
#include "Support/UsecaseSupport.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContactImage.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContacts.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContactsList.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetSuggestionContacts.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetUsageCountUseCase.h"

namespace ycontacts {
namespace {

using namespace testsupport;
using ::testing::_;
using ::testing::DoAll;
using ::testing::InvokeArgument;
using ::testing::StrictMock;
using Ids = std::vector<std::string>;
using Contacts = std::vector<YContact>;

// The ids a response carried; {"none"} for a response without a list.
Ids idsOf(const std::optional<Contacts>& contacts) {
    if (!contacts) return {"none"};
    Ids ids;
    for (const auto& contact : *contacts) ids.push_back(contact.contactId);
    return ids;
}

template <class Response>
std::vector<Ids> idsOfEach(const std::vector<Response>& responses) {
    std::vector<Ids> result;
    for (const auto& response : responses) result.push_back(idsOf(response.contacts));
    return result;
}

class UsecasesTest : public ::testing::Test {
protected:
    template <class Response, class Usecase, class Source, class Request>
    std::vector<Response> run(std::shared_ptr<Source> source, Request request, std::size_t answers) {
        auto usecase = std::make_shared<Usecase>(source);
        return responsesOf<Response>(*usecase, std::move(request), answers);
    }

    std::shared_ptr<StrictMock<FakeContactsDataManager>> contacts =
        std::make_shared<StrictMock<FakeContactsDataManager>>();
};

TEST_F(UsecasesTest, ContactQueriesDeliverEachAnswerAsItCame) {
    YGetContactsRequest request("u1");
    request.searchStr = "ann";
    request.limit = 20;
    request.requestType = RequestType::both;
    const Contacts ann{YContact("1", "Ann", 0)};
    EXPECT_CALL(*contacts, getContacts(request.query(), _))
        .WillOnce(DoAll(InvokeArgument<1>(ann), InvokeArgument<1>(std::nullopt)));
    EXPECT_CALL(*contacts, getContactsList(request.query(), _)).WillOnce(InvokeArgument<1>(Contacts{}));
    EXPECT_CALL(*contacts, getUsageCount("u1", _))
        .WillOnce(InvokeArgument<1>(std::map<std::string, std::string>{{"c1", "4"}}));

    EXPECT_EQ(idsOfEach(run<YGetContactsResponse, YGetContacts>(contacts, request, 2)),
              (std::vector<Ids>{{"1"}, {"none"}}));
    EXPECT_EQ(idsOfEach(run<YGetContactsResponse, YGetContactsList>(contacts, request, 1)), std::vector<Ids>{{}});
    const auto usage = run<YGetUsageCountResponse, YGetUsageCountUseCase>(contacts, request, 1);
    ASSERT_EQ(usage.size(), 1u);
    EXPECT_EQ(usage[0].usageCountMap, (std::map<std::string, std::string>{{"c1", "4"}}));
}

TEST_F(UsecasesTest, SuggestionsAndImagesKeepWhatTheAnswerSaid) {
    const std::vector<YSuggestionContact> earlier{YSuggestionContact("1", "ann@x", "Ann", true)};
    // The answer names the text it matches: while the user types, an earlier one may come first.
    EXPECT_CALL(*contacts, getSuggestionContacts(_, _))
        .WillOnce(DoAll(InvokeArgument<1>(std::string("ann"), earlier),
                        InvokeArgument<1>(std::string("anna"), std::nullopt)));
    EXPECT_CALL(*contacts, getContactImage(_, _))
        .WillOnce(InvokeArgument<1>(std::vector<std::uint8_t>{1, 2}, std::string("/p/c1.png"), std::string("c1")));
    const auto suggested = run<YGetSuggestionContactsResponse, YGetSuggestionContacts>(
        contacts, YGetSuggestionContactsRequest("u1", "anna"), 2);
    ASSERT_EQ(suggested.size(), 2u);
    EXPECT_EQ(suggested[0].searchStr, "ann");
    EXPECT_EQ(suggested[0].contacts->front().email, "ann@x");
    EXPECT_EQ(suggested[1].searchStr, "anna");
    EXPECT_FALSE(suggested[1].contacts);
    const auto image = run<YGetContactImageResponse, YGetContactImage>(contacts, YGetContactImageRequest("u1"), 1);
    ASSERT_EQ(image.size(), 1u);
    EXPECT_EQ(image[0].contactImageData, (std::vector<std::uint8_t>{1, 2}));
    EXPECT_EQ(image[0].filePath.value_or("") + " " + image[0].contactId.value_or(""), "/p/c1.png c1");
}

}  // namespace
}  // namespace ycontacts
