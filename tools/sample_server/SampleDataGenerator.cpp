#include "sample_server/SampleDataGenerator.h"

#include <algorithm>
#include <string>

#include "sample_server/SampleRandom.h"

namespace sample_server {
namespace {

struct FirstName {
    std::string text;
    std::string ascii;
    std::string gender;
};

struct LastName {
    std::string text;
    std::string ascii;
};

struct Place {
    std::string city;
    std::string state;
    std::string country;
    std::string postalCode;
};

const std::vector<FirstName> kFirstNames = {
    {"Zoë", "zoe", "female"},        {"José", "jose", "male"},       {"Anaïs", "anais", "female"},
    {"Björn", "bjorn", "male"},      {"Chloé", "chloe", "female"},   {"Søren", "soren", "male"},
    {"Renée", "renee", "female"},    {"François", "francois", "male"}, {"Siobhán", "siobhan", "female"},
    {"Łukasz", "lukasz", "male"},    {"Mónica", "monica", "female"}, {"Liam", "liam", "male"},
    {"Olivia", "olivia", "female"},  {"Arjun", "arjun", "male"},     {"Mei", "mei", "female"},
    {"Kofi", "kofi", "male"},        {"Yuki", "yuki", "female"},     {"Seán", "sean", "male"},
    {"Émilie", "emilie", "female"},  {"Noah", "noah", "male"},       {"Ingrid", "ingrid", "female"},
    {"Mateo", "mateo", "male"},      {"Fatima", "fatima", "female"},
};

const std::vector<LastName> kLastNames = {
    {"O'Brien", "obrien"},   {"D'Angelo", "dangelo"},       {"Ångström", "angstrom"}, {"Müller", "muller"},
    {"García", "garcia"},    {"Nguyen", "nguyen"},          {"Smith", "smith"},       {"Kowalski", "kowalski"},
    {"Østergaard", "ostergaard"}, {"Dubois", "dubois"},     {"Fernández", "fernandez"}, {"Okafor", "okafor"},
    {"Tanaka", "tanaka"},    {"Patel", "patel"},            {"Rossi", "rossi"},       {"van der Berg", "vanderberg"},
    {"MacDonald", "macdonald"}, {"Brontë", "bronte"},       {"O'Neill", "oneill"},    {"Jones", "jones"},
};

const std::vector<std::string> kMiddleNames = {"Marie", "Luis", "Ann", "Jean-Paul", "Lou", "Þóra"};
const std::vector<std::string> kNickNames = {"Zo", "Pepe", "Bear", "Ace", "Sunny", "Mac", "Bee", "J.J."};
const std::vector<std::string> kGroupNames = {"Book Club", "Family", "Climbing Crew", "Café Regulars",
                                              "Project Ångström", "O'Connor Reunion"};
const std::vector<std::string> kPhoneTypes = {"mobile", "home", "work", "fax", "others"};
const std::vector<std::string> kLinkTypes = {"home",   "work",   "blog",   "linkedin",  "facebook",
                                             "twitter", "amazon", "flickr", "delicious", "others"};
const std::vector<std::string> kImTypes = {"google", "yahoo", "skype", "aol", "icq", "msn", "jabber", "others"};
const std::vector<std::string> kCompanies = {"Ångström Labs", "O'Neil & Sons", "Acme Corp", "Café Façade GmbH",
                                             "Northwind Traders"};
const std::vector<std::string> kJobTitles = {"Engineer", "Designer", "Product Manager", "Accountant", "Nurse"};
const std::vector<std::string> kDesignations = {"Senior", "Lead", "Principal", "Junior", "Head"};
const std::vector<std::string> kStreets = {"12 Rue de l'Église", "221B Baker Street", "Hauptstraße 5",
                                           "742 Evergreen Terrace", "Calle Mayor 3"};
const std::vector<std::string> kSecondStreets = {"", "Apt 4", "Floor 2", "c/o O'Hara"};
const std::vector<Place> kPlaces = {
    {"Zürich", "ZH", "Switzerland", "8001"},  {"São Paulo", "SP", "Brazil", "01000-000"},
    {"Kraków", "Małopolska", "Poland", "30-001"}, {"Montréal", "QC", "Canada", "H2X 1Y4"},
    {"Dublin", "Leinster", "Ireland", "D02 X285"}, {"Austin", "TX", "USA", "73301"},
    {"Tokyo", "Tokyo", "Japan", "100-0001"},
};
const std::vector<std::string> kNotes = {
    "Met at the \"Zürich\" meet-up.\nPrefers e-mail.",
    "Café au lait, never espresso",
    "Call after 6 pm — not before",
    "Owes me a book: «Les Misérables»",
    "Tab\tseparated\tnote with a backslash \\ inside",
};
const std::vector<std::string> kCategoryNames = {"Family", "Friends", "Work", "Café Club", "Book Club", "Neighbours"};

// 1 January 2019; contacts are created one minute apart after it, so every time lies in the past.
constexpr std::int64_t kEpochMs = 1546300800000LL;
constexpr std::int64_t kMinuteMs = 60'000LL;
constexpr std::int64_t kDayMs = 86'400'000LL;

std::string phoneNumber(SampleRandom& random) {
    std::string digits = std::to_string(1000000 + random.below(9000000));
    return "+1 555 " + digits.substr(0, 3) + " " + digits.substr(3);
}

SampleAddress randomAddress(SampleRandom& random) {
    const Place& place = random.pick(kPlaces);
    return SampleAddress{random.pick(kStreets), random.pick(kSecondStreets), place.city, place.state, place.country,
                         place.postalCode};
}

void addWorkInfo(SampleContact& contact, SampleRandom& random, const std::string& company) {
    contact.company = company;
    contact.jobTitle = random.pick(kJobTitles);
    contact.designation = random.pick(kDesignations);
}

// Fields shared by personal and organisation members: names, times, photo, phones and the rest.
SampleContact makePerson(std::uint64_t seed, std::uint64_t sequence, std::size_t indexInPopulation) {
    SampleRandom random(seed * 0x100000001B3ULL ^ (sequence * 0x9E3779B97F4A7C15ULL));
    const std::size_t offset = static_cast<std::size_t>(seed % 1000);
    const FirstName& first = kFirstNames[(indexInPopulation + offset) % kFirstNames.size()];
    const LastName& last = kLastNames[(indexInPopulation * 7 + offset) % kLastNames.size()];

    SampleContact contact;
    contact.sequence = sequence;
    contact.contactId = contactIdForSequence(sequence);
    contact.firstName = first.text;
    contact.lastName = last.text;
    if (random.chance(25)) contact.middleName = random.pick(kMiddleNames);
    if (random.chance(30)) contact.nickName = random.pick(kNickNames);
    if (random.chance(80)) contact.displayName = first.text + " " + last.text;
    if (random.chance(85)) contact.gender = first.gender;

    contact.createdTimeMs = kEpochMs + static_cast<std::int64_t>(sequence) * kMinuteMs + random.below(60'000);
    contact.updatedTimeMs = contact.createdTimeMs + static_cast<std::int64_t>(random.below(30)) * kDayMs;
    contact.usageCount = random.below(61);
    contact.hasPhoto = random.chance(60);
    if (contact.hasPhoto) contact.photoModifiedMs = contact.updatedTimeMs / 1000 * 1000;

    const std::string handle = first.ascii + "." + last.ascii + std::to_string(sequence);
    for (int i = 0, n = random.below(4); i < n; ++i) contact.phones.push_back({phoneNumber(random), random.pick(kPhoneTypes)});
    for (int i = 0, n = random.below(3); i < n; ++i)
        contact.urls.push_back({"https://example.com/~" + handle + "/" + std::to_string(i), random.pick(kLinkTypes)});
    for (int i = 0, n = random.below(3); i < n; ++i)
        contact.ims.push_back({handle + (i == 0 ? "" : std::to_string(i)) + "@im.example.com", random.pick(kImTypes)});
    if (random.chance(30)) contact.notes = random.pick(kNotes);
    if (random.chance(50)) contact.address = randomAddress(random);
    if (random.chance(40)) contact.workAddress = randomAddress(random);
    if (random.chance(50)) {
        SampleBirthday birthday{1 + random.below(28), 1 + random.below(12), std::nullopt};
        if (random.chance(70)) birthday.year = 1950 + random.below(56);
        contact.birthday = birthday;
    }
    if (random.chance(60)) addWorkInfo(contact, random, random.pick(kCompanies));
    contact.yuid = "y" + std::to_string(sequence);
    return contact;
}

SampleContact makePersonalContact(std::uint64_t seed, std::uint64_t sequence, std::size_t index,
                                  const SampleUser& owner) {
    SampleContact contact = makePerson(seed, sequence, index);
    SampleRandom random(seed ^ (sequence * 0xD6E8FEB86659FD93ULL));
    contact.owner = owner.yuid;
    contact.isOrg = false;
    contact.isEditable = true;
    // About half of a user's contacts are people with an account of their own.
    if (random.chance(50)) contact.yuid.reset();

    const std::string asciiFirst = kFirstNames[(index + seed % 1000) % kFirstNames.size()].ascii;
    const std::string asciiLast = kLastNames[(index * 7 + seed % 1000) % kLastNames.size()].ascii;
    const std::vector<std::string> addresses = {
        asciiFirst + "." + asciiLast + std::to_string(sequence) + "@example.com",
        asciiFirst + std::to_string(sequence) + "@mail.example.org",
        asciiLast + "." + asciiFirst.substr(0, 1) + std::to_string(sequence) + "@work.example.net",
    };
    const int emailCount = 1 + random.below(3);
    const int primary = random.below(emailCount);
    for (int i = 0; i < emailCount; ++i) contact.emails.push_back({addresses[static_cast<std::size_t>(i)], i == primary});

    std::vector<std::string> live;
    for (const SampleCategory& category : owner.categories)
        if (!category.deleted) live.push_back(category.categoryId);
    if (!live.empty() && random.chance(40)) {
        contact.categories.push_back(random.pick(live));
        const std::string& second = random.pick(live);
        if (second != contact.categories.front()) contact.categories.push_back(second);
    }
    return contact;
}

SampleContact makeGroupContact(std::uint64_t seed, std::uint64_t sequence, const SampleUser& owner) {
    SampleRandom random(seed ^ (sequence * 0xA0761D6478BD642FULL));
    SampleContact contact;
    contact.sequence = sequence;
    contact.contactId = contactIdForSequence(sequence);
    contact.contactType = "group";
    contact.firstName = random.pick(kGroupNames);
    contact.displayName = contact.firstName;
    contact.yuid = "g" + std::to_string(sequence);
    contact.createdTimeMs = kEpochMs + static_cast<std::int64_t>(sequence) * kMinuteMs + random.below(60'000);
    contact.updatedTimeMs = contact.createdTimeMs;
    contact.usageCount = random.below(61);
    contact.hasPhoto = random.chance(50);
    if (contact.hasPhoto) contact.photoModifiedMs = contact.updatedTimeMs / 1000 * 1000;
    contact.emails.push_back({"group" + std::to_string(sequence) + "@lists.example.com", true});
    contact.owner = owner.yuid;
    contact.isEditable = true;
    return contact;
}

SampleContact makeOrgContact(std::uint64_t seed, std::uint64_t sequence, std::size_t index,
                             const SampleOrganisation& organisation, std::size_t organisationIndex) {
    SampleContact contact = makePerson(seed, sequence, index);
    contact.owner = organisation.yoid;
    contact.isOrg = true;
    contact.isEditable = false;
    // The organisation's signed-in users are its first members.
    if (index < organisation.memberYuids.size()) contact.yuid = organisation.memberYuids[index];
    const std::string asciiFirst = kFirstNames[(index + seed % 1000) % kFirstNames.size()].ascii;
    const std::string asciiLast = kLastNames[(index * 7 + seed % 1000) % kLastNames.size()].ascii;
    contact.emails.push_back(
        {asciiFirst + "." + asciiLast + std::to_string(sequence) + "@" + organisation.yoid + ".example.com", true});
    SampleRandom random(seed ^ (sequence * 0xE7037ED1A0B428DBULL));
    addWorkInfo(contact, random, kCompanies[organisationIndex % kCompanies.size()]);
    return contact;
}

}  // namespace

std::string contactIdForSequence(std::uint64_t sequence) { return std::to_string(100000 + sequence); }

SampleDataSet generateSampleData(const SampleServerOptions& options) {
    SampleDataSet data;
    const int userCount = std::max(0, options.users);
    const int withOrg = std::max(0, userCount - std::max(0, options.usersWithoutOrg));

    for (int i = 1; i <= userCount; ++i) {
        SampleUser user;
        user.yuid = "u" + std::to_string(i);
        const auto token = options.tokens.find(user.yuid);
        user.token = token != options.tokens.end() ? token->second : "token-" + user.yuid;
        for (std::size_t c = 0; c < 4; ++c)
            user.categories.push_back({std::to_string(i * 100 + static_cast<int>(c) + 1),
                                       kCategoryNames[(static_cast<std::size_t>(i) + c) % kCategoryNames.size()],
                                       false});
        data.users.push_back(std::move(user));
    }
    if (options.usersPerOrg > 0) {
        for (int i = 0; i < withOrg; ++i) {
            if (i % options.usersPerOrg == 0)
                data.organisations.push_back({"o" + std::to_string(data.organisations.size() + 1), {}});
            data.organisations.back().memberYuids.push_back(data.users[static_cast<std::size_t>(i)].yuid);
            data.users[static_cast<std::size_t>(i)].yoid = data.organisations.back().yoid;
        }
    }

    std::uint64_t sequence = 1;
    for (const SampleUser& user : data.users) {
        for (int i = 0; i < options.personalContactsPerUser; ++i, ++sequence) {
            const bool group = i % 17 == 5;
            data.contacts.push_back(group ? makeGroupContact(options.seed, sequence, user)
                                          : makePersonalContact(options.seed, sequence, static_cast<std::size_t>(i), user));
        }
    }
    for (std::size_t o = 0; o < data.organisations.size(); ++o) {
        for (int i = 0; i < options.orgContactsPerOrg; ++i, ++sequence)
            data.contacts.push_back(
                makeOrgContact(options.seed, sequence, static_cast<std::size_t>(i), data.organisations[o], o));
    }
    data.nextSequence = sequence;
    return data;
}

}  // namespace sample_server
