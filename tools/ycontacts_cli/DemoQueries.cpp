#include "ycontacts_cli/DemoQueries.h"

#include <chrono>
#include <memory>

#include "ycontacts_cli/Answers.h"
#include "ycontacts_cli/Session.h"

namespace ycontacts_cli {

namespace {

constexpr auto queryTimeout = std::chrono::seconds(30);

template <class Record>
TimedAnswer<Record> firstAnswer(Answers<std::optional<std::vector<Record>>>& answers) {
    if (!answers.waitFor(1, queryTimeout)) return {};
    auto first = answers.taken().front();
    return {true, std::move(first.answer), first.milliseconds};
}

}  // namespace

TimedAnswer<ycontacts::YContact> searchContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                                                const std::optional<std::string>& text, int limit,
                                                ycontacts::RequestType type) {
    auto answers = std::make_shared<Answers<std::optional<std::vector<ycontacts::YContact>>>>();
    Session::service().getContacts(yuid, yoid, text, limit, std::nullopt, type,
                                   [answers](std::optional<std::vector<ycontacts::YContact>> contacts) {
                                       answers->add(std::move(contacts));
                                   });
    return firstAnswer(*answers);
}

TimedAnswer<ycontacts::YSuggestionContact> suggestAddresses(const std::string& yuid,
                                                            const std::optional<std::string>& yoid,
                                                            const std::string& text, int limit) {
    auto answers = std::make_shared<Answers<std::optional<std::vector<ycontacts::YSuggestionContact>>>>();
    Session::service().getSuggestionContacts(
        yuid, text, yoid, limit, std::nullopt, ycontacts::RequestType::local,
        [answers](std::string, std::optional<std::vector<ycontacts::YSuggestionContact>> suggestions) {
            answers->add(std::move(suggestions));
        });
    return firstAnswer(*answers);
}

std::optional<ycontacts::YContact> lookUpContact(const std::string& yuid, const std::string& contactId) {
    auto answers = std::make_shared<Answers<std::optional<ycontacts::YContact>>>();
    Session::service().getContact(yuid, std::nullopt, contactId, std::nullopt,
                                  [answers](std::optional<ycontacts::YContact> contact) {
                                      answers->add(std::move(contact));
                                  });
    if (!answers->waitFor(1, queryTimeout)) return std::nullopt;
    return answers->taken().front().answer;
}

}  // namespace ycontacts_cli
