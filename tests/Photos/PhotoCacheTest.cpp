// The data manager's photos end to end: a real file cache, the real network service and the sample server.

#include <gtest/gtest.h>

#include <memory>

#include "Support/FakeAuthentication.h"
#include "Support/SampleServerFixture.h"
#include "Support/Waiting.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Contacts/Data/FileManager/YContactsFileService.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"
#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"

namespace ycontacts {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Clock = std::chrono::system_clock;

class PhotoCache : public testsupport::SampleServerTest {
protected:
    PhotoCache() : SampleServerTest({.seed = 5, .users = 2, .personalContactsPerUser = 40, .orgContactsPerOrg = 5}) {}

    void SetUp() override {
        SampleServerTest::SetUp();
        authorization->set("u1", server.userToken("u1"), YContactsHost::idc(server.baseURL()));
    }

    // The photo's bytes (absent for none) as the data manager answers them.
    std::optional<Bytes> ask(const std::string& contactYuid, RequestType type = RequestType::preferLocal) {
        YGetContactImageRequest request("u1");
        request.contactYuid = contactYuid;
        request.requestType = type;
        auto answers = std::make_shared<testsupport::Received<std::optional<Bytes>>>();
        manager->getContactImage(request, [answers](std::optional<Bytes> data, std::optional<std::string>,
                                                    std::optional<std::string>) { answers->add(std::move(data)); });
        EXPECT_TRUE(answers->waitFor(1));
        return answers->values().empty() ? std::nullopt : answers->values().front();
    }

    std::vector<sample_server::LoggedRequest> photoRequests() const {
        std::vector<sample_server::LoggedRequest> photos;
        for (auto& request : server.requestLog())
            if (request.path == "/file/download") photos.push_back(std::move(request));
        return photos;
    }

    // A user contact of `owner` with a yuid of its own, with or without a photo.
    sample_server::SampleContact contactOf(const std::string& owner, bool withPhoto) const {
        for (const auto& contact : server.contacts(owner, false))
            if (contact.yuid && contact.contactType == "user" && contact.hasPhoto == withPhoto) return contact;
        ADD_FAILURE() << "no such contact of " << owner;
        return {};
    }

    void age(const std::string& id) { files->updateModifiedDate("u1", id, true, Clock::now() - std::chrono::hours(1)); }

    std::shared_ptr<testsupport::FakeAuthentication> authorization =
        std::make_shared<testsupport::FakeAuthentication>();
    std::shared_ptr<YContactsFileService> files = std::make_shared<YContactsFileService>(folder.file("photos"));
    std::shared_ptr<YContactsDataManager> manager = std::make_shared<YContactsDataManager>(
        nullptr,
        std::make_shared<YContactsNetworkService>(authorization, std::make_shared<YContactsURLConstructor>(), nullptr),
        nullptr, files);
};

TEST_F(PhotoCache, AFreshCopyAnswersAloneAndAStaleOneIsRevalidatedWith304) {
    const std::string yuid = *contactOf("u1", true).yuid;
    const auto photo = ask(yuid);
    ASSERT_TRUE(photo);
    EXPECT_EQ(ask(yuid), photo);
    EXPECT_EQ(photoRequests().size(), 1u) << "a fresh copy is answered without the server";

    age(yuid);
    EXPECT_EQ(ask(yuid), photo);
    ASSERT_EQ(photoRequests().size(), 2u);
    EXPECT_FALSE(photoRequests().back().ifModifiedSince.empty());
    EXPECT_GT(files->getModifiedDate("u1", yuid, true).value_or(Clock::time_point()),
              Clock::now() - std::chrono::minutes(1))
        << "a 304 makes the copy fresh again";
    EXPECT_EQ(ask(yuid), photo);
    EXPECT_EQ(photoRequests().size(), 2u);
    EXPECT_EQ(ask(yuid, RequestType::server), photo);
    EXPECT_EQ(photoRequests().size(), 3u) << "asking the server revalidates even a fresh copy";
}

TEST_F(PhotoCache, AChangedPhotoArrivesWhenTheCopyIsRevalidated) {
    const auto contact = contactOf("u1", true);
    const auto before = ask(*contact.yuid);
    ASSERT_TRUE(server.changePhoto("u1", false, contact.contactId));
    const auto after = ask(*contact.yuid, RequestType::server);
    ASSERT_TRUE(before && after);
    EXPECT_NE(*after, *before);
    EXPECT_EQ(files->getContactImage("u1", *contact.yuid, true).first, after);
}

TEST_F(PhotoCache, NoPhotoRemovesTheCopyAndIsRememberedWithoutAskingAgain) {
    // 204: a contact without a photo. 403: another user's contact, which u1 may not see.
    for (const std::string& yuid : {*contactOf("u1", false).yuid, *contactOf("u2", true).yuid}) {
        files->saveContactImage("u1", yuid, {1, 2, 3}, true);
        age(yuid);
        const std::size_t before = photoRequests().size();
        EXPECT_EQ(ask(yuid), std::nullopt) << yuid;
        EXPECT_EQ(files->getModifiedDate("u1", yuid, true), std::nullopt) << "the old copy is gone";
        EXPECT_EQ(ask(yuid), std::nullopt);
        EXPECT_EQ(photoRequests().size(), before + 1) << yuid;
    }
}

TEST_F(PhotoCache, AFailedRevalidationAnswersTheStaleCopy) {
    const std::string yuid = *contactOf("u1", true).yuid;
    const auto photo = ask(yuid);
    ASSERT_TRUE(photo);
    const std::vector<std::function<void()>> failures = {
        [&] { server.injectFault({.pathContains = "/file/download", .status = 500}); },
        [&] { server.stop(); },  // nothing listens: no connection
    };
    for (const auto& fail : failures) {
        age(yuid);
        fail();
        EXPECT_EQ(ask(yuid), photo);
    }
    EXPECT_EQ(photoRequests().size(), 2u) << "the 500 was asked for; the stopped server could not be";
}

}  // namespace
}  // namespace ycontacts
