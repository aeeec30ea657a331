#pragma once
// SampleContact and friends: the sample server's own small data model of users, organisations and contacts.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace sample_server {

struct SampleEmail {
    std::string address;
    bool isPrimary = false;
};

// A phone number, link or messaging id together with the server's type word for it.
struct SampleTypedValue {
    std::string value;
    std::string type;
};

struct SampleAddress {
    std::string street1;
    std::string street2;
    std::string city;
    std::string state;
    std::string country;
    std::string postalCode;
};

struct SampleBirthday {
    int date = 1;
    int month = 1;
    std::optional<int> year;
};

struct SampleContact {
    std::string contactId;
    std::string firstName;
    std::optional<std::string> middleName;
    std::optional<std::string> lastName;
    std::optional<std::string> nickName;
    std::optional<std::string> displayName;
    std::int64_t createdTimeMs = 0;
    // Server clock (ms) of the last change; incremental replies select on it.
    std::int64_t updatedTimeMs = 0;
    int usageCount = 0;
    std::string contactType = "user";
    std::optional<std::string> yuid;
    std::vector<SampleEmail> emails;
    std::vector<SampleTypedValue> phones;
    std::vector<SampleTypedValue> urls;
    std::vector<SampleTypedValue> ims;
    bool hasPhoto = false;
    // Whole seconds matter: HTTP dates carry no milliseconds.
    std::int64_t photoModifiedMs = 0;
    std::optional<std::string> gender;
    std::optional<std::string> notes;
    bool isEditable = true;
    std::optional<std::string> company;
    std::optional<std::string> jobTitle;
    std::optional<std::string> designation;
    std::optional<SampleAddress> address;
    std::optional<SampleAddress> workAddress;
    std::vector<std::string> categories;
    std::optional<SampleBirthday> birthday;

    // Where the contact lives: a yuid for personal contacts, a yoid for organisation contacts.
    std::string owner;
    bool isOrg = false;
    // Creation order inside the whole server; replies list contacts in this order.
    std::uint64_t sequence = 0;
};

// What remains of a deleted contact, so that incremental replies can report the deletion.
struct SampleTombstone {
    std::string contactId;
    std::uint64_t sequence = 0;
    std::int64_t deletedTimeMs = 0;
};

struct SampleCategory {
    std::string categoryId;
    std::string categoryName;
    bool deleted = false;
};

struct SampleUser {
    std::string yuid;
    std::string token;
    std::optional<std::string> yoid;
    std::vector<SampleCategory> categories;
};

struct SampleOrganisation {
    std::string yoid;
    std::vector<std::string> memberYuids;
};

}  // namespace sample_server
