#pragma once
// DemoQueries: the demo's timed questions to the facade: contacts by text, address suggestions, one contact.

#include <optional>
#include <string>
#include <vector>

#include <ycontacts/YContacts.h>

namespace ycontacts_cli {

// The records of one answer and how long it took; not `answered` when none came within the demo's wait.
template <class Record>
struct TimedAnswer {
    bool answered = false;
    std::optional<std::vector<Record>> records;
    double milliseconds = 0;
};

TimedAnswer<ycontacts::YContact> searchContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                                                const std::optional<std::string>& text, int limit,
                                                ycontacts::RequestType type);
// From the local store only.
TimedAnswer<ycontacts::YSuggestionContact> suggestAddresses(const std::string& yuid,
                                                            const std::optional<std::string>& yoid,
                                                            const std::string& text, int limit);
// The stored contact with this id; nothing when it is not stored or no answer came.
std::optional<ycontacts::YContact> lookUpContact(const std::string& yuid, const std::string& contactId);

}  // namespace ycontacts_cli
