// A host of the installed library: uses public names only, through the one umbrella header, and exits
// non-zero when an answer is wrong. Its one argument is a writable folder.
#include <ycontacts/YContacts.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <future>
#include <memory>
#include <string>
#include <utility>

namespace {

int failures = 0;

void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "wrong: %s\n", what);
        ++failures;
    }
}

class HostAuthenticator : public ycontacts::YContactsAuthenticationContract {
public:
    void getAuthorizationHeader(const std::string&, AuthorizationCallback callback) override {
        callback("Bearer host-token", std::nullopt);
    }
    std::optional<ycontacts::YContactsHost> getContactsHost(const std::string&) override {
        return ycontacts::YContactsHost::idc("http://127.0.0.1:1");
    }
};

class HostCategories : public ycontacts::YCategoriesDataManagerContract {
public:
    void fetchCategories(const std::string& yuid, ycontacts::RequestType, CategoriesCallback callback) override {
        ycontacts::YCategoryResponse response;
        response.categories.emplace_back(std::optional<std::string>("family-of-" + yuid));
        callback(response);
    }
    void fetchContactsInCategory(const std::string&, const std::string&, ycontacts::RequestType,
                                 ContactsCallback callback) override {
        callback(std::nullopt);
    }
};

void recordsCodeToJsonAndBack() {
    ycontacts::YContact contact("42", "Ann", 1700000000000);
    contact.lastName = "Lee";
    const nlohmann::json json = contact;
    const auto decoded = json.get<ycontacts::YContact>();
    check(decoded.contactId == "42", "decoded contact id");
    check(decoded.lastName == std::optional<std::string>("Lee"), "decoded last name");
    check(decoded.createdTime == 1700000000000, "decoded created time");
    check(decoded.getDisplayName() == "Ann Lee", "display name");
}

void requestsHaveTheirDefaults() {
    const ycontacts::YGetSuggestionContactsRequest suggestions("u1", "an");
    check(suggestions.limit == 20, "suggestion limit");
    check(suggestions.requestType == ycontacts::RequestType::preferLocal, "suggestion request type");
    const ycontacts::YGetContactImageRequest image("u1");
    check(image.isThumbnail, "image thumbnail");
    check(image.contactType == ycontacts::YContactType::user, "image contact type");
}

void aUseCaseAnswersThroughItsCallback() {
    auto usecase = std::make_shared<ycontacts::YFetchCategoriesUseCase>(std::make_shared<HostCategories>());
    std::promise<ycontacts::YFetchCategoriesResponse> answered;
    auto answer = answered.get_future();
    usecase->execute(ycontacts::YFetchCategoriesRequest("u7"),
                     [&answered](const ycontacts::YFetchCategoriesResponse& response) { answered.set_value(response); });
    if (answer.wait_for(std::chrono::seconds(20)) != std::future_status::ready) {
        check(false, "use case answer");
        return;
    }
    const auto response = answer.get();
    check(response.categories.size() == 1 && response.categories[0].categoryId == "family-of-u7", "categories");
}

void theSharedServiceTakesAConfig(const std::filesystem::path& folder) {
    auto& service = ycontacts::YContactService::sharedInstance();
    check(&service == &ycontacts::YContactService::sharedInstance(), "one shared instance");
    check(!service.config.has_value(), "no config at first");
    const auto database = folder / "contacts.sqlite";
    // The documented start-up, from the umbrella header alone: tables, config, first call.
    check(ycontacts::YContactsDatabaseSchema::createTablesInFile(database), "tables created");
    service.config = ycontacts::YContactService::Config(std::make_shared<HostAuthenticator>(), database,
                                                        folder / "photos");
    const auto handler = service.syncHandler();
    check(handler != nullptr, "sync handler");
    check(handler != nullptr && !handler->isSyncInProgress("never-started"), "no sync for an unknown user");
    check(handler != nullptr && handler->getContactCount("u1") == std::make_pair(std::int64_t{0}, std::int64_t{0}),
          "an empty store at the configured path");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: ycontacts_host <writable folder>\n");
        return 2;
    }
    ycontacts::Logger::shared().setConsoleOutput(false);
    recordsCodeToJsonAndBack();
    requestsHaveTheirDefaults();
    aUseCaseAnswersThroughItsCallback();
    theSharedServiceTakesAConfig(argv[1]);
    if (failures == 0) std::printf("host checks passed\n");
    return failures == 0 ? 0 : 1;
}
