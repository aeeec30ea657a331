#include <gtest/gtest.h>

#include "ycontacts/Contacts/Data/Network/YContactError.h"
#include "ycontacts/Contacts/Data/Network/YContactImageNetworkResponse.h"
#include "ycontacts/Contacts/Data/Network/YContactImageStatus.h"
#include "ycontacts/Contacts/Data/Network/YContactNetworkResponse.h"
#include "ycontacts/Contacts/Data/Network/YContactUsageCountNetworkResponse.h"
#include "ycontacts/Contacts/Data/Network/YContactsHost.h"
#include "ycontacts/Contacts/Data/Network/YContactsNetworkCall.h"
#include "ycontacts/Contacts/Data/Network/YNetworkResponse.h"
#include "ycontacts/Contacts/Data/Network/YUpdateContactNetworkResponse.h"

namespace ycontacts {
namespace {

TEST(YNetworkResponseTest, FactorySetsTheErrorAndLeavesDataEmptyOnEverySubclass) {
    EXPECT_EQ(YNetworkResponse::getResponse(YContactError::networkFailure).error, YContactError::networkFailure);

    const auto contacts = YContactNetworkResponse::getResponse(YContactError::urlError);
    EXPECT_EQ(contacts.error, YContactError::urlError);
    EXPECT_FALSE(contacts.hasMore);
    EXPECT_EQ(contacts.count, 0);
    EXPECT_FALSE(contacts.newContacts || contacts.updatedContacts || contacts.deletedContacts);
    const YNetworkResponse& asBase = contacts;
    EXPECT_EQ(asBase.error, YContactError::urlError);

    const auto update = YUpdateContactNetworkResponse::getResponse(YContactError::authorizationError);
    EXPECT_EQ(update.error, YContactError::authorizationError);
    EXPECT_FALSE(update.successResponse);

    const auto usage = YContactUsageCountNetworkResponse::getResponse(YContactError::parserError);
    EXPECT_EQ(usage.error, YContactError::parserError);
    EXPECT_FALSE(usage.usageCountDetails);

    const auto image = YContactImageNetworkResponse::getResponse(YContactError::unknownError);
    EXPECT_EQ(image.error, YContactError::unknownError);
    EXPECT_FALSE(image.imageData || image.serverDate);
    EXPECT_EQ(image.imageStatus, YContactImageStatus::noContent);
}

TEST(YContactsHostTest, FactoriesCarryKindAndPayload) {
    const auto direct = YContactsHost::idc("https://contacts.example");
    EXPECT_EQ(direct.kind(), YContactsHost::Kind::idc);
    EXPECT_EQ(direct.base(), "https://contacts.example");

    const auto viaProxy = YContactsHost::proxy("https://contacts.example");
    EXPECT_EQ(viaProxy.kind(), YContactsHost::Kind::proxy);
    EXPECT_EQ(viaProxy.base(), "https://contacts.example");

    EXPECT_EQ(YContactsHost::other().kind(), YContactsHost::Kind::other);
    EXPECT_EQ(YContactsHost::other().base(), "");
    EXPECT_EQ(YContactsHost::other("opaque").base(), "opaque");

    EXPECT_NE(direct, viaProxy) << "the same base through a proxy is a different host";
    EXPECT_EQ(direct, YContactsHost::idc("https://contacts.example"));
    EXPECT_NE(direct, YContactsHost::idc("https://other.example"));
}

TEST(YNetworkVocabularyTest, CasesHaveTheirNamesForLogLines) {
    EXPECT_EQ(toRawValue(YContactError::authorizationError), "authorizationError");
    EXPECT_EQ(fromRawValue<YContactError>("urlError"), YContactError::urlError);
    EXPECT_EQ(toRawValue(YContactImageStatus::notModified), "notModified");
    EXPECT_EQ(toRawValue(YContactsNetworkCall::getContactsUsageCount), "getContactsUsageCount");
    EXPECT_FALSE(fromRawValue<YContactsNetworkCall>("getcontacts"));
}

}  // namespace
}  // namespace ycontacts
