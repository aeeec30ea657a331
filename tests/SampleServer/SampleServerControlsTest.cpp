// What the end-to-end suites do not already exercise of the sample server: its fault controls.

#include <gtest/gtest.h>
#include <httplib.h>

#include <nlohmann/json.hpp>

#include "Support/SampleServerFixture.h"

namespace {

struct Reply {
    int status = 0;
    nlohmann::json body;
};

class SampleServerControls : public ycontacts::testsupport::SampleServerTest {
protected:
    SampleServerControls()
        : SampleServerTest({.seed = 7, .users = 1, .personalContactsPerUser = 45, .orgContactsPerOrg = 30}) {}

    // The body is parsed when it is JSON.
    Reply get(const std::string& target) {
        httplib::Client client(server.baseURL());
        const auto result = client.Get(target, httplib::Headers{{"Authorization", server.userToken("u1")}});
        if (!result) return {};
        return {result->status, nlohmann::json::parse(result->body, nullptr, false)};
    }
    Reply page(int number) { return get("/api/v1/accounts/self/contacts?per_page=10&page=" + std::to_string(number)); }
};

// What the end-to-end faults do not show: a fault's reach and count, and the envelope under another status.
TEST_F(SampleServerControls, AFaultServesOnlyItsPathAndPageForItsCount) {
    server.injectFault({.pathContains = "/self/contacts", .page = 2, .times = 2, .status = 503});
    server.injectFault({.pathContains = "/org/contacts", .status = 404, .error404Envelope = true});
    EXPECT_EQ(get("/api/v1/accounts/self/categories").status, 200);
    EXPECT_EQ(page(1).status, 200);
    EXPECT_EQ(page(3).status, 200);
    EXPECT_EQ(server.pendingFaults(), 2u);
    EXPECT_EQ(page(2).body["status_code"], 503);
    EXPECT_EQ(page(2).status, 503);
    EXPECT_EQ(page(2).status, 200);
    const auto envelope = get("/api/v1/accounts/org/contacts");
    EXPECT_EQ(envelope.status, 404);
    EXPECT_EQ(envelope.body, nlohmann::json::parse(R"({"errors":[{"message":"not found"}],"status_code":404})"));
    EXPECT_EQ(server.pendingFaults(), 0u);
}

}  // namespace
