// A host that only sets the config and starts: its download progress lives with its contacts, so a new
// facade over the same files (as after a restart) resumes an interrupted download at the failed page.

#include <gtest/gtest.h>

#include <memory>

#include "EndToEnd/EndToEndFixture.h"
#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"

namespace ycontacts::endtoend {
namespace {

// 2,100 personal contacts make three pages of the library's own 1,000.
class FacadeRestartTest : public testsupport::SampleServerTest {
protected:
    FacadeRestartTest()
        : SampleServerTest({.seed = 5, .users = 1, .personalContactsPerUser = 2100, .usersWithoutOrg = 1}) {}

    // One lifetime of a host: the documented start-up, then start, until the download ends.
    std::string runHost() {
        const auto observer = std::make_shared<RecordingObserver>();
        YNotificationCenter::shared().addObserver<YContactsNotification>(observer);
        {
            const auto database = folder.path() / "contacts.sqlite";
            EXPECT_TRUE(YContactsDatabaseSchema::createTablesInFile(database));
            YContactService service(YContactService::Builders::defaults());
            service.config = YContactService::Config(std::make_shared<SampleAuthenticator>(server.baseURL()),
                                                     database, folder.path() / "photos");
            service.syncHandler()->start("u1", std::nullopt);
            EXPECT_TRUE(observer->log.waitForCount("u1", {"downloadComplete", "downloadFailed"}, 1));
        }
        YNotificationCenter::shared().removeObserver<YContactsNotification>(observer.get());
        YSqliteHelper::getShared().unregisterDB(YContactService::databaseIdentifier);
        const auto lines = observer->log.texts("u1");
        return lines.empty() ? "" : lines.back();
    }

    // The requests since the log was last cleared, as "<path> page <n>".
    std::vector<std::string> requests() {
        std::vector<std::string> made;
        for (const auto& request : server.requestLog()) made.push_back(request.path + " page " + request.param("page"));
        server.clearRequestLog();
        return made;
    }
};

TEST_F(FacadeRestartTest, ASecondLifetimeResumesAtTheFailedPageAndTheThirdOnlySyncs) {
    server.injectFault({.pathContains = "/self/contacts", .page = 2, .status = 500});
    const std::string full = "/api/v1/accounts/self/contacts page ";
    EXPECT_EQ(runHost(), "downloadFailed unknownError");
    EXPECT_EQ(requests(), (std::vector<std::string>{full + "1", full + "2"}));

    server.clearFaults();
    EXPECT_EQ(runHost(), "downloadComplete initial");
    EXPECT_EQ(requests(), (std::vector<std::string>{full + "2", full + "3"}));

    // The last sync time was kept too: the next lifetime asks only for what changed since.
    EXPECT_EQ(runHost(), "downloadComplete sync");
    EXPECT_EQ(requests(), std::vector<std::string>{"/api/v1/sync/self/contacts page 1"});
}

}  // namespace
}  // namespace ycontacts::endtoend
