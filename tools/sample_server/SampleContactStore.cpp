#include "sample_server/SampleContactStore.h"

#include <algorithm>
#include <chrono>

#include "sample_server/SampleSearch.h"

namespace sample_server {
namespace {

std::int64_t systemNowMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

bool selected(const SampleContact& contact, const ContactQuery& query) {
    if (query.changedSince && contact.updatedTimeMs < *query.changedSince) return false;
    return !query.search || query.search->empty() || matchesSearch(contact, *query.search);
}

bool selected(const SampleTombstone& tombstone, const ContactQuery& query) {
    // A search names contacts by their fields, which a tombstone no longer has.
    if (!query.showDeleted || (query.search && !query.search->empty())) return false;
    return !query.changedSince || tombstone.deletedTimeMs >= *query.changedSince;
}

}  // namespace

SampleContactStore::SampleContactStore(SampleDataSet data)
    : users_(std::move(data.users)), organisations_(std::move(data.organisations)), nextSequence_(data.nextSequence) {
    for (const SampleUser& user : users_) populations_[key(user.yuid, false)];
    for (const SampleOrganisation& organisation : organisations_) populations_[key(organisation.yoid, true)];
    for (SampleContact& contact : data.contacts) {
        lastTick_ = std::max(lastTick_, contact.updatedTimeMs);
        populations_[key(contact.owner, contact.isOrg)].contacts.push_back(std::move(contact));
    }
}

std::string SampleContactStore::key(const std::string& owner, bool isOrg) {
    return (isOrg ? "org:" : "self:") + owner;
}

std::optional<SampleUser> SampleContactStore::userForToken(const std::string& token) const {
    std::lock_guard lock(mutex_);
    for (const SampleUser& user : users_)
        if (user.token == token) return user;
    return std::nullopt;
}

std::optional<SampleUser> SampleContactStore::user(const std::string& yuid) const {
    std::lock_guard lock(mutex_);
    for (const SampleUser& user : users_)
        if (user.yuid == yuid) return user;
    return std::nullopt;
}

bool SampleContactStore::organisationExists(const std::string& yoid) const {
    std::lock_guard lock(mutex_);
    return std::any_of(organisations_.begin(), organisations_.end(),
                       [&](const SampleOrganisation& organisation) { return organisation.yoid == yoid; });
}

std::vector<std::string> SampleContactStore::userIds() const {
    std::lock_guard lock(mutex_);
    std::vector<std::string> ids;
    for (const SampleUser& user : users_) ids.push_back(user.yuid);
    return ids;
}

std::optional<std::string> SampleContactStore::resolveOwner(const std::string& yuidOrYoid, bool isOrg) const {
    std::lock_guard lock(mutex_);
    return resolveOwnerLocked(yuidOrYoid, isOrg);
}

std::optional<std::string> SampleContactStore::resolveOwnerLocked(const std::string& yuidOrYoid, bool isOrg) const {
    if (populations_.count(key(yuidOrYoid, isOrg)) != 0) return yuidOrYoid;
    if (!isOrg) return std::nullopt;
    for (const SampleUser& user : users_)
        if (user.yuid == yuidOrYoid) return user.yoid;
    return std::nullopt;
}

SampleContactStore::Population* SampleContactStore::populationLocked(const std::string& owner, bool isOrg) {
    const auto resolved = resolveOwnerLocked(owner, isOrg);
    if (!resolved) return nullptr;
    const auto found = populations_.find(key(*resolved, isOrg));
    return found == populations_.end() ? nullptr : &found->second;
}

const SampleContactStore::Population* SampleContactStore::populationLocked(const std::string& owner,
                                                                          bool isOrg) const {
    return const_cast<SampleContactStore*>(this)->populationLocked(owner, isOrg);
}

ContactPage SampleContactStore::page(const std::string& owner, bool isOrg, const ContactQuery& query) const {
    std::lock_guard lock(mutex_);
    ContactPage result;
    const Population* population = populationLocked(owner, isOrg);
    if (population == nullptr) return result;

    const std::size_t first = static_cast<std::size_t>(std::max(query.page - 1, 0)) *
                              static_cast<std::size_t>(std::max(query.perPage, 1));
    const std::size_t last = first + static_cast<std::size_t>(std::max(query.perPage, 1));
    std::size_t position = 0;
    auto take = [&](const auto& item) {
        if (!selected(item, query)) return;
        if (position >= first && position < last) result.items.emplace_back(item);
        ++position;
    };
    // Contacts and tombstones are each kept in creation order; merging them keeps one stable order.
    auto contact = population->contacts.begin();
    auto tombstone = population->tombstones.begin();
    while (contact != population->contacts.end() || tombstone != population->tombstones.end()) {
        if (tombstone == population->tombstones.end() ||
            (contact != population->contacts.end() && contact->sequence < tombstone->sequence))
            take(*contact++);
        else
            take(*tombstone++);
    }
    result.total = static_cast<int>(position);
    result.hasMore = position > last;
    return result;
}

std::vector<SampleContact> SampleContactStore::contacts(const std::string& owner, bool isOrg) const {
    std::lock_guard lock(mutex_);
    const Population* population = populationLocked(owner, isOrg);
    return population ? population->contacts : std::vector<SampleContact>{};
}

std::vector<SampleTombstone> SampleContactStore::tombstones(const std::string& owner, bool isOrg) const {
    std::lock_guard lock(mutex_);
    const Population* population = populationLocked(owner, isOrg);
    return population ? population->tombstones : std::vector<SampleTombstone>{};
}

std::optional<SampleContact> SampleContactStore::contact(const std::string& owner, bool isOrg,
                                                         const std::string& contactId) const {
    std::lock_guard lock(mutex_);
    const Population* population = populationLocked(owner, isOrg);
    if (population == nullptr) return std::nullopt;
    for (const SampleContact& contact : population->contacts)
        if (contact.contactId == contactId) return contact;
    return std::nullopt;
}

std::optional<SampleContact> SampleContactStore::visibleContactByYuid(const SampleUser& viewer,
                                                                      const std::string& contactYuid,
                                                                      const std::string& contactType) const {
    std::lock_guard lock(mutex_);
    for (const bool isOrg : {false, true}) {
        const Population* population = populationLocked(viewer.yuid, isOrg);
        if (population == nullptr) continue;
        for (const SampleContact& contact : population->contacts)
            if (contact.yuid == contactYuid && contact.contactType == contactType) return contact;
    }
    return std::nullopt;
}

std::vector<std::pair<std::string, int>> SampleContactStore::usageCounts(const std::string& yuid) const {
    std::vector<SampleContact> personal = contacts(yuid, false);
    std::stable_sort(personal.begin(), personal.end(),
                     [](const SampleContact& a, const SampleContact& b) { return a.usageCount > b.usageCount; });
    std::vector<std::pair<std::string, int>> counts;
    for (const SampleContact& contact : personal) counts.emplace_back(contact.contactId, contact.usageCount);
    return counts;
}

std::optional<std::string> SampleContactStore::add(const std::string& owner, bool isOrg, SampleContact contact) {
    std::lock_guard lock(mutex_);
    const auto resolved = resolveOwnerLocked(owner, isOrg);
    Population* population = populationLocked(owner, isOrg);
    if (population == nullptr || !resolved) return std::nullopt;
    const std::uint64_t sequence = nextSequence_;
    if (contact.contactId.empty()) contact.contactId = contactIdForSequence(sequence);
    const auto sameId = [&](const auto& other) { return other.contactId == contact.contactId; };
    if (std::any_of(population->contacts.begin(), population->contacts.end(), sameId)) return std::nullopt;
    std::erase_if(population->tombstones, sameId);

    ++nextSequence_;
    contact.sequence = sequence;
    contact.owner = *resolved;
    contact.isOrg = isOrg;
    contact.updatedTimeMs = tickLocked();
    if (contact.createdTimeMs == 0) contact.createdTimeMs = contact.updatedTimeMs;
    if (contact.hasPhoto && contact.photoModifiedMs == 0) contact.photoModifiedMs = contact.updatedTimeMs / 1000 * 1000;
    population->contacts.push_back(contact);
    return contact.contactId;
}

bool SampleContactStore::update(const std::string& owner, bool isOrg, SampleContact contact) {
    std::lock_guard lock(mutex_);
    Population* population = populationLocked(owner, isOrg);
    if (population == nullptr) return false;
    for (SampleContact& stored : population->contacts) {
        if (stored.contactId != contact.contactId) continue;
        contact.sequence = stored.sequence;
        contact.owner = stored.owner;
        contact.isOrg = stored.isOrg;
        contact.updatedTimeMs = tickLocked();
        if (contact.hasPhoto && contact.photoModifiedMs == 0)
            contact.photoModifiedMs = contact.updatedTimeMs / 1000 * 1000;
        stored = std::move(contact);
        return true;
    }
    return false;
}

bool SampleContactStore::remove(const std::string& owner, bool isOrg, const std::string& contactId) {
    std::lock_guard lock(mutex_);
    Population* population = populationLocked(owner, isOrg);
    if (population == nullptr) return false;
    const auto found = std::find_if(population->contacts.begin(), population->contacts.end(),
                                    [&](const SampleContact& contact) { return contact.contactId == contactId; });
    if (found == population->contacts.end()) return false;
    SampleTombstone tombstone{found->contactId, found->sequence, tickLocked()};
    population->contacts.erase(found);
    const auto position = std::upper_bound(
        population->tombstones.begin(), population->tombstones.end(), tombstone.sequence,
        [](std::uint64_t sequence, const SampleTombstone& other) { return sequence < other.sequence; });
    population->tombstones.insert(position, tombstone);
    return true;
}

bool SampleContactStore::changePhoto(const std::string& owner, bool isOrg, const std::string& contactId,
                                     bool hasPhoto) {
    std::lock_guard lock(mutex_);
    Population* population = populationLocked(owner, isOrg);
    if (population == nullptr) return false;
    for (SampleContact& contact : population->contacts) {
        if (contact.contactId != contactId) continue;
        lastTick_ = (tickLocked() / 1000 + 1) * 1000;
        contact.updatedTimeMs = lastTick_;
        contact.hasPhoto = hasPhoto;
        contact.photoModifiedMs = hasPhoto ? lastTick_ : 0;
        return true;
    }
    return false;
}

std::int64_t SampleContactStore::tick() {
    std::lock_guard lock(mutex_);
    return tickLocked();
}

std::int64_t SampleContactStore::tickLocked() {
    lastTick_ = std::max(systemNowMs(), lastTick_ + 1);
    return lastTick_;
}

}  // namespace sample_server
