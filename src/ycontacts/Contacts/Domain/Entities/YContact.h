#pragma once
// YContact: the contact record every layer passes around; its identity is the contact id alone.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContactType.h"
#include "ycontacts/Contacts/Domain/Entities/YJsonCoding.h"
#include "ycontacts/Platform/MarloComponents/YRawValue.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YContact {
    enum class PhoneType { mobile, home, work, fax, others };
    enum class IMType { google, yahoo, skype, aol, icq, msn, jabber, others };
    enum class URLType { personal, company, blog, linkedIn, facebook, twitter, amazon, flikr, delicious, other };
    enum class Gender { male, female };

    struct Email {
        std::string emailId;
        // Set by the constructors rather than by a default member initializer: clang cannot use one of a
        // nested class before the enclosing class is complete, and would then find Email not default
        // constructible, which the JSON decoding needs.
        bool isPrimary;

        Email();
        explicit Email(std::string emailId);

        // The same address, exactly as written; the primary flag does not count.
        bool operator==(const Email& other) const { return emailId == other.emailId; }
    };

    struct Phone {
        std::string phoneNumber;
        PhoneType phoneType = PhoneType::mobile;

        Phone() = default;
        Phone(std::string phoneNumber, PhoneType phoneType);
        bool operator==(const Phone&) const = default;
    };

    struct IM {
        std::string imLink;
        IMType imType = IMType::others;

        IM() = default;
        IM(std::string imLink, IMType imType);
        bool operator==(const IM&) const = default;
    };

    struct URL {
        std::string url;
        URLType type = URLType::other;

        URL() = default;
        URL(std::string url, URLType type);
        bool operator==(const URL&) const = default;
    };

    struct Address {
        std::optional<std::string> streetAddress1;
        std::optional<std::string> streetAddress2;
        std::optional<std::string> city;
        std::optional<std::string> state;
        std::optional<std::string> country;
        std::optional<std::string> postalCode;

        bool operator==(const Address&) const = default;
    };

    struct WorkInfo {
        std::optional<std::string> company;
        std::optional<std::string> jobTitle;
        std::optional<std::string> designation;
        std::optional<Address> address;

        bool operator==(const WorkInfo&) const = default;
    };

    struct Category {
        std::string categoryId;

        Category() = default;
        explicit Category(std::string categoryId);

        bool operator==(const Category& other) const { return categoryId == other.categoryId; }
    };

    std::string contactId;
    std::string firstName;
    std::optional<std::string> middleName;
    std::optional<std::string> lastName;
    std::optional<std::string> nickName;
    std::optional<Email> primaryEmail;
    std::vector<Email> emails;
    std::optional<std::string> contactYuid;
    int weightage = 0;
    std::int64_t createdTime = 0;
    bool isOrg = false;
    std::optional<Gender> gender;
    std::vector<Phone> phones;
    std::vector<URL> urls;
    std::vector<IM> IMs;
    std::optional<std::string> photoURL;
    // Deliberately true: a contact is assumed to have a photo until the server says otherwise.
    bool hasPhoto = true;
    std::optional<Address> address;
    std::optional<WorkInfo> workInfo;
    std::optional<std::vector<Category>> categories;
    std::optional<int> birthDate;
    std::optional<int> birthMonth;
    std::optional<int> birthYear;
    std::optional<std::string> notes;
    bool isEditable = false;
    YContactType type = YContactType::user;
    std::optional<std::string> displayName;

    // An empty record (no id, created at 0) for decoding into; every field has its default.
    YContact() = default;
    YContact(std::string contactId, std::string firstName, std::int64_t createdTime);
    // A contact made on this device: a temporary id, created now (whole seconds, fraction cut off).
    explicit YContact(std::string firstName);

    // "TempContactId-" followed by the time-and-random number of YTemporaryId.
    static std::string generateRandomContactId();

    // The present displayName unchanged (even empty); else the first name, then " " + middle name when
    // present, then " " + last name when present. Presence alone counts, so an empty middle name still
    // adds its space. The nick name is never used.
    std::string getDisplayName() const;

    // Contacts are the same contact when their ids match; no other field counts.
    bool operator==(const YContact& other) const { return contactId == other.contactId; }
};

template <>
struct YRawValues<YContact::PhoneType> {
    using E = YContact::PhoneType;
    static constexpr YRawValueEntry<E> entries[] = {
        {E::mobile, "mobile"}, {E::home, "home"}, {E::work, "work"}, {E::fax, "fax"}, {E::others, "others"},
    };
};

template <>
struct YRawValues<YContact::IMType> {
    using E = YContact::IMType;
    static constexpr YRawValueEntry<E> entries[] = {
        {E::google, "google"}, {E::yahoo, "yahoo"}, {E::skype, "skype"},   {E::aol, "aol"},
        {E::icq, "icq"},       {E::msn, "msn"},     {E::jabber, "jabber"}, {E::others, "others"},
    };
};

template <>
struct YRawValues<YContact::URLType> {
    using E = YContact::URLType;
    static constexpr YRawValueEntry<E> entries[] = {
        {E::personal, "personal"}, {E::company, "company"},   {E::blog, "blog"},
        {E::linkedIn, "linkedIn"}, {E::facebook, "facebook"}, {E::twitter, "twitter"},
        {E::amazon, "amazon"},     {E::flikr, "flikr"},       {E::delicious, "delicious"},
        {E::other, "other"},
    };
};

template <>
struct YRawValues<YContact::Gender> {
    using E = YContact::Gender;
    static constexpr YRawValueEntry<E> entries[] = {{E::male, "male"}, {E::female, "female"}};
};

// Enumerations code as their raw strings. These overloads are more specialised than the JSON library's
// own enum coding (which writes numbers), so they always win.
template <JsonDocument J>
void to_json(J& json, YContact::PhoneType value) { jsoncoding::encodeRawValue(json, value); }
template <JsonDocument J>
void from_json(const J& json, YContact::PhoneType& value) { jsoncoding::decodeRawValue(json, value); }
template <JsonDocument J>
void to_json(J& json, YContact::IMType value) { jsoncoding::encodeRawValue(json, value); }
template <JsonDocument J>
void from_json(const J& json, YContact::IMType& value) { jsoncoding::decodeRawValue(json, value); }
template <JsonDocument J>
void to_json(J& json, YContact::URLType value) { jsoncoding::encodeRawValue(json, value); }
template <JsonDocument J>
void from_json(const J& json, YContact::URLType& value) { jsoncoding::decodeRawValue(json, value); }
template <JsonDocument J>
void to_json(J& json, YContact::Gender value) { jsoncoding::encodeRawValue(json, value); }
template <JsonDocument J>
void from_json(const J& json, YContact::Gender& value) { jsoncoding::decodeRawValue(json, value); }

// Records code with keys equal to their field names. Encoding into nlohmann::ordered_json keeps the field
// order; a failed decode throws the JSON library's exception and leaves the target unchanged.
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YContact::Email& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YContact::Email& value);
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YContact::Phone& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YContact::Phone& value);
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YContact::IM& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YContact::IM& value);
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YContact::URL& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YContact::URL& value);
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YContact::Address& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YContact::Address& value);
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YContact::WorkInfo& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YContact::WorkInfo& value);
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YContact::Category& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YContact::Category& value);
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YContact& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YContact& value);

}  // namespace ycontacts

template <>
struct std::hash<ycontacts::YContact> {
    std::size_t operator()(const ycontacts::YContact& contact) const noexcept {
        return std::hash<std::string>{}(contact.contactId);
    }
};
