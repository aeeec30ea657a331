#pragma once
// SampleContactStore: the server's thread-safe data: users, organisations, contacts, tombstones and its clock.

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "sample_server/SampleContact.h"
#include "sample_server/SampleDataGenerator.h"

namespace sample_server {

struct ContactQuery {
    // Only contacts changed (and tombstones made) at or after this server time, in ms.
    std::optional<std::int64_t> changedSince;
    bool showDeleted = false;
    std::optional<std::string> search;
    int page = 1;
    int perPage = 100;
};

struct ContactPage {
    std::vector<std::variant<SampleContact, SampleTombstone>> items;
    bool hasMore = false;
    int total = 0;
};

class SampleContactStore {
public:
    explicit SampleContactStore(SampleDataSet data);

    std::optional<SampleUser> userForToken(const std::string& token) const;
    std::optional<SampleUser> user(const std::string& yuid) const;
    bool organisationExists(const std::string& yoid) const;
    std::vector<std::string> userIds() const;

    // The population's owner: the yuid itself for personal contacts; for organisation contacts a yoid, or
    // the organisation of the given yuid. Absent when there is no such population.
    std::optional<std::string> resolveOwner(const std::string& yuidOrYoid, bool isOrg) const;

    ContactPage page(const std::string& owner, bool isOrg, const ContactQuery& query) const;
    std::vector<SampleContact> contacts(const std::string& owner, bool isOrg) const;
    std::vector<SampleTombstone> tombstones(const std::string& owner, bool isOrg) const;
    std::optional<SampleContact> contact(const std::string& owner, bool isOrg, const std::string& contactId) const;
    // A contact with that yuid and type among the viewer's personal and organisation contacts.
    std::optional<SampleContact> visibleContactByYuid(const SampleUser& viewer, const std::string& contactYuid,
                                                      const std::string& contactType) const;
    // Personal contacts of the user, highest usage count first, creation order among equals.
    std::vector<std::pair<std::string, int>> usageCounts(const std::string& yuid) const;

    // Changes stamp the contact with the server clock. An empty contact id gets a fresh one; an add whose
    // id is already present, or for an unknown owner, gives no id.
    std::optional<std::string> add(const std::string& owner, bool isOrg, SampleContact contact);
    bool update(const std::string& owner, bool isOrg, SampleContact contact);
    bool remove(const std::string& owner, bool isOrg, const std::string& contactId);
    // A new photo for the contact (or none, with `hasPhoto` false), dated on the next whole second of the
    // clock, which moves there: HTTP dates have whole seconds, so the new date is later than every Date
    // header sent before and an If-Modified-Since of one of them cannot hide it. False for no such contact.
    bool changePhoto(const std::string& owner, bool isOrg, const std::string& contactId, bool hasPhoto);

    // The server clock in ms: strictly increasing, never behind the system clock. A change made after a
    // reading always carries a later time than that reading.
    std::int64_t tick();

private:
    struct Population {
        std::vector<SampleContact> contacts;
        std::vector<SampleTombstone> tombstones;
    };

    static std::string key(const std::string& owner, bool isOrg);
    std::optional<std::string> resolveOwnerLocked(const std::string& yuidOrYoid, bool isOrg) const;
    Population* populationLocked(const std::string& owner, bool isOrg);
    const Population* populationLocked(const std::string& owner, bool isOrg) const;
    std::int64_t tickLocked();

    mutable std::mutex mutex_;
    std::vector<SampleUser> users_;
    std::vector<SampleOrganisation> organisations_;
    std::map<std::string, Population> populations_;
    std::uint64_t nextSequence_ = 1;
    std::int64_t lastTick_ = 0;
};

}  // namespace sample_server
