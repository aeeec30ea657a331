#include "ycontacts/YSqliteDependent/YContactsDataMaper.h"

#include <charconv>
#include <cmath>
#include <set>
#include <unordered_map>
#include <utility>

#include "ycontacts/Contacts/Data/Database/YCategoryDetailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactCategoryTable.h"
#include "ycontacts/Contacts/Data/Database/YContactDetailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactEmailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactIMTable.h"
#include "ycontacts/Contacts/Data/Database/YContactPhoneTable.h"
#include "ycontacts/Contacts/Data/Database/YContactSearchTable.h"
#include "ycontacts/Contacts/Data/Database/YContactUrlTable.h"

namespace ycontacts {

namespace {

using Detail = YContactDetailTable;

void put(YSqliteRow& row, const std::string& column, const std::optional<std::string>& value) {
    if (value) row.emplace(column, *value);
}

void put(YSqliteRow& row, const std::string& column, const std::optional<int>& value) {
    if (value) row.emplace(column, std::to_string(*value));
}

void putAddress(YSqliteRow& row, const std::optional<YContact::Address>& address,
                const std::string (&columns)[6]) {
    if (!address) return;
    put(row, columns[0], address->streetAddress1);
    put(row, columns[1], address->streetAddress2);
    put(row, columns[2], address->city);
    put(row, columns[3], address->state);
    put(row, columns[4], address->country);
    put(row, columns[5], address->postalCode);
}

// Absent when none of the six columns holds a value.
std::optional<YContact::Address> readAddress(const YSqliteRow& row, const std::string (&columns)[6]) {
    YContact::Address address;
    address.streetAddress1 = YContactsDataMaper::text(row, columns[0]);
    address.streetAddress2 = YContactsDataMaper::text(row, columns[1]);
    address.city = YContactsDataMaper::text(row, columns[2]);
    address.state = YContactsDataMaper::text(row, columns[3]);
    address.country = YContactsDataMaper::text(row, columns[4]);
    address.postalCode = YContactsDataMaper::text(row, columns[5]);
    if (address == YContact::Address{}) return std::nullopt;
    return address;
}

const std::string (&homeColumns())[6] {
    static const std::string columns[6] = {Detail::homeStreet1, Detail::homeStreet2, Detail::homeCity,
                                           Detail::homeState,   Detail::homeCountry, Detail::homePostalCode};
    return columns;
}

const std::string (&workColumns())[6] {
    static const std::string columns[6] = {Detail::workStreet1, Detail::workStreet2, Detail::workCity,
                                           Detail::workState,   Detail::workCountry, Detail::workPostalCode};
    return columns;
}

std::optional<int> smallInteger(const YSqliteRow& row, const std::string& column) {
    const auto value = YContactsDataMaper::integer(row, column);
    if (!value || *value < INT32_MIN || *value > INT32_MAX) return std::nullopt;
    return static_cast<int>(*value);
}

template <class E>
std::string raw(E value) {
    return std::string(toRawValue(value));
}

template <class E>
E enumeration(const std::optional<std::string>& text, E fallback) {
    if (!text) return fallback;
    return fromRawValue<E>(*text).value_or(fallback);
}

// The name a contact has without a display name of its own.
std::string fullName(const YContact& contact) {
    std::string name = contact.firstName;
    if (contact.middleName) name += " " + *contact.middleName;
    if (contact.lastName) name += " " + *contact.lastName;
    return name;
}

const std::vector<std::string>& prefixColumns() {
    static const std::vector<std::string> columns = [] {
        std::vector<std::string> names;
        for (std::size_t length = 1; length <= YContactSearchTable::prefixLengths; ++length) {
            names.push_back("prefix" + std::to_string(length));
        }
        return names;
    }();
    return columns;
}

template <class Make>
std::vector<YSqliteRow> childRows(const std::vector<YContact>& contacts, Make&& make) {
    std::vector<YSqliteRow> rows;
    for (const auto& contact : contacts) make(contact, rows);
    return rows;
}

}  // namespace

std::string YContactsDataMaper::foldedCase(const std::string& text) {
    std::string folded = text;
    for (auto& character : folded) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    return folded;
}

std::string YContactsDataMaper::sortName(const YContact& contact) { return foldedCase(contact.getDisplayName()); }

std::optional<std::string> YContactsDataMaper::text(const YSqliteRow& row, const std::string& column) {
    const auto found = row.find(column);
    if (found == row.end()) return std::nullopt;
    const YSqliteValue& value = found->second;
    if (const auto* string = std::get_if<std::string>(&value)) return *string;
    if (const auto* number = std::get_if<std::int64_t>(&value)) return std::to_string(*number);
    if (const auto* boolean = std::get_if<bool>(&value)) return std::string(*boolean ? "1" : "0");
    return std::to_string(std::get<double>(value));
}

std::optional<std::int64_t> YContactsDataMaper::integer(const YSqliteRow& row, const std::string& column) {
    const auto found = row.find(column);
    if (found == row.end()) return std::nullopt;
    const YSqliteValue& value = found->second;
    if (const auto* number = std::get_if<std::int64_t>(&value)) return *number;
    if (const auto* boolean = std::get_if<bool>(&value)) return *boolean ? 1 : 0;
    if (const auto* real = std::get_if<double>(&value)) {
        if (!std::isfinite(*real) || std::fabs(*real) > 9.2e18) return std::nullopt;
        return static_cast<std::int64_t>(*real);
    }
    const auto& string = std::get<std::string>(value);
    std::int64_t parsed = 0;
    const auto [end, error] = std::from_chars(string.data(), string.data() + string.size(), parsed);
    if (error != std::errc() || end != string.data() + string.size()) return std::nullopt;
    return parsed;
}

bool YContactsDataMaper::flag(const YSqliteRow& row, const std::string& column, bool fallback) {
    const auto value = integer(row, column);
    return value ? *value != 0 : fallback;
}

std::vector<YSqliteRow> YContactsDataMaper::contactDetailRows(const std::vector<YContact>& contacts,
                                                              const std::string& yuid) const {
    std::vector<YSqliteRow> rows;
    rows.reserve(contacts.size());
    for (const auto& contact : contacts) {
        YSqliteRow row;
        row.emplace(Detail::yuid, yuid);
        row.emplace(Detail::contactId, contact.contactId);
        row.emplace(Detail::firstName, contact.firstName);
        put(row, Detail::middleName, contact.middleName);
        put(row, Detail::lastName, contact.lastName);
        put(row, Detail::nickName, contact.nickName);
        if (contact.gender) row.emplace(Detail::gender, raw(*contact.gender));
        put(row, Detail::photoURL, contact.photoURL);
        putAddress(row, contact.address, homeColumns());
        if (contact.workInfo) {
            put(row, Detail::company, contact.workInfo->company);
            put(row, Detail::jobTitle, contact.workInfo->jobTitle);
            put(row, Detail::designation, contact.workInfo->designation);
            putAddress(row, contact.workInfo->address, workColumns());
        }
        put(row, Detail::birthDate, contact.birthDate);
        put(row, Detail::birthMonth, contact.birthMonth);
        put(row, Detail::birthYear, contact.birthYear);
        put(row, Detail::notes, contact.notes);
        row.emplace(Detail::type, raw(contact.type));
        if (contact.primaryEmail) row.emplace(Detail::primaryEmail, contact.primaryEmail->emailId);
        put(row, Detail::contactYuid, contact.contactYuid);
        row.emplace(Detail::weightage, static_cast<std::int64_t>(contact.weightage));
        row.emplace(Detail::createdTime, contact.createdTime);
        row.emplace(Detail::isOrg, contact.isOrg);
        row.emplace(Detail::isEditable, contact.isEditable);
        row.emplace(Detail::hasPhoto, contact.hasPhoto);
        put(row, Detail::displayName, contact.displayName);
        row.emplace(Detail::sortName, sortName(contact));
        rows.push_back(std::move(row));
    }
    return rows;
}

std::vector<YSqliteRow> YContactsDataMaper::phoneRows(const std::vector<YContact>& contacts,
                                                      const std::string& yuid) const {
    return childRows(contacts, [&](const YContact& contact, std::vector<YSqliteRow>& rows) {
        for (const auto& phone : contact.phones) {
            rows.push_back({{YContactPhoneTable::yuid, yuid},
                            {YContactPhoneTable::contactId, contact.contactId},
                            {YContactPhoneTable::phoneNumber, phone.phoneNumber},
                            {YContactPhoneTable::phoneType, raw(phone.phoneType)}});
        }
    });
}

std::vector<YSqliteRow> YContactsDataMaper::emailRows(const std::vector<YContact>& contacts,
                                                      const std::string& yuid) const {
    return childRows(contacts, [&](const YContact& contact, std::vector<YSqliteRow>& rows) {
        for (const auto& email : contact.emails) {
            rows.push_back({{YContactEmailTable::yuid, yuid},
                            {YContactEmailTable::email, email.emailId},
                            {YContactEmailTable::contactId, contact.contactId},
                            {YContactEmailTable::isPrimary, email.isPrimary},
                            {YContactEmailTable::isOrg, contact.isOrg}});
        }
    });
}

std::vector<YSqliteRow> YContactsDataMaper::imRows(const std::vector<YContact>& contacts,
                                                   const std::string& yuid) const {
    return childRows(contacts, [&](const YContact& contact, std::vector<YSqliteRow>& rows) {
        for (const auto& im : contact.IMs) {
            rows.push_back({{YContactIMTable::yuid, yuid},
                            {YContactIMTable::contactId, contact.contactId},
                            {YContactIMTable::imAddress, im.imLink},
                            {YContactIMTable::imType, raw(im.imType)}});
        }
    });
}

std::vector<YSqliteRow> YContactsDataMaper::urlRows(const std::vector<YContact>& contacts,
                                                    const std::string& yuid) const {
    return childRows(contacts, [&](const YContact& contact, std::vector<YSqliteRow>& rows) {
        for (const auto& url : contact.urls) {
            rows.push_back({{YContactUrlTable::yuid, yuid},
                            {YContactUrlTable::contactId, contact.contactId},
                            {YContactUrlTable::urlAddress, url.url},
                            {YContactUrlTable::urlType, raw(url.type)}});
        }
    });
}

std::vector<YSqliteRow> YContactsDataMaper::categoryRows(const std::vector<YContact>& contacts,
                                                         const std::string& yuid) const {
    return childRows(contacts, [&](const YContact& contact, std::vector<YSqliteRow>& rows) {
        if (!contact.categories) return;
        for (const auto& category : *contact.categories) {
            rows.push_back({{YContactCategoryTable::yuid, yuid},
                            {YContactCategoryTable::contactId, contact.contactId},
                            {YContactCategoryTable::categoryId, category.categoryId}});
        }
    });
}

std::vector<YSqliteRow> YContactsDataMaper::categoryDetailRows(const std::vector<YContactCategory>& categories,
                                                               const std::string& yuid) const {
    std::vector<YSqliteRow> rows;
    rows.reserve(categories.size());
    for (const auto& category : categories) {
        YSqliteRow row{{YCategoryDetailTable::yuid, yuid}, {YCategoryDetailTable::categoryId, category.categoryId}};
        put(row, YCategoryDetailTable::categoryName, category.categoryName);
        rows.push_back(std::move(row));
    }
    return rows;
}

std::vector<YSqliteRow> YContactsDataMaper::searchRows(const std::vector<YContact>& contacts,
                                                       const std::string& yuid) const {
    using Search = YContactSearchTable;
    std::unordered_map<std::string, std::size_t> lastOccurrence;
    for (std::size_t index = 0; index < contacts.size(); ++index) lastOccurrence[contacts[index].contactId] = index;

    std::vector<YSqliteRow> rows;
    for (std::size_t index = 0; index < contacts.size(); ++index) {
        const YContact& contact = contacts[index];
        if (lastOccurrence.at(contact.contactId) != index) continue;
        std::vector<std::pair<int, std::string>> sources{{Search::nameKind, fullName(contact)}};
        if (contact.displayName) sources.emplace_back(Search::nameKind, *contact.displayName);
        if (contact.lastName) sources.emplace_back(Search::nameKind, *contact.lastName);
        if (contact.nickName) sources.emplace_back(Search::nickNameKind, *contact.nickName);
        if (contact.primaryEmail) sources.emplace_back(Search::addressKind, contact.primaryEmail->emailId);
        for (const auto& email : contact.emails) sources.emplace_back(Search::addressKind, email.emailId);

        const std::string listedAs = sortName(contact);
        std::set<std::pair<int, std::string>> seen;
        for (const auto& [kind, source] : sources) {
            std::string term = foldedCase(source);
            if (term.empty() || !seen.emplace(kind, term).second) continue;
            YSqliteRow row{{Search::yuid, yuid},
                           {Search::contactId, contact.contactId},
                           {Search::kind, static_cast<std::int64_t>(kind)},
                           {Search::isOrg, contact.isOrg},
                           {Search::weightage, static_cast<std::int64_t>(contact.weightage)},
                           {Search::sortName, listedAs}};
            for (std::size_t length = 1; length <= Search::prefixLengths; ++length) {
                row.emplace(prefixColumns()[length - 1], term.substr(0, length));
            }
            row.emplace(Search::term, std::move(term));
            rows.push_back(std::move(row));
        }
    }
    return rows;
}

YContact YContactsDataMaper::contact(const YSqliteRow& row) const {
    YContact contact(text(row, Detail::contactId).value_or(""), text(row, Detail::firstName).value_or(""),
                     integer(row, Detail::createdTime).value_or(0));
    contact.middleName = text(row, Detail::middleName);
    contact.lastName = text(row, Detail::lastName);
    contact.nickName = text(row, Detail::nickName);
    if (const auto primary = text(row, Detail::primaryEmail)) contact.primaryEmail = YContact::Email(*primary);
    contact.contactYuid = text(row, Detail::contactYuid);
    contact.weightage = smallInteger(row, Detail::weightage).value_or(0);
    contact.isOrg = flag(row, Detail::isOrg, false);
    if (const auto gender = text(row, Detail::gender)) contact.gender = fromRawValue<YContact::Gender>(*gender);
    contact.photoURL = text(row, Detail::photoURL);
    contact.hasPhoto = flag(row, Detail::hasPhoto, true);
    contact.address = readAddress(row, homeColumns());
    YContact::WorkInfo work;
    work.company = text(row, Detail::company);
    work.jobTitle = text(row, Detail::jobTitle);
    work.designation = text(row, Detail::designation);
    work.address = readAddress(row, workColumns());
    if (!(work == YContact::WorkInfo{})) contact.workInfo = work;
    contact.birthDate = smallInteger(row, Detail::birthDate);
    contact.birthMonth = smallInteger(row, Detail::birthMonth);
    contact.birthYear = smallInteger(row, Detail::birthYear);
    contact.notes = text(row, Detail::notes);
    contact.isEditable = flag(row, Detail::isEditable, false);
    contact.type = enumeration(text(row, Detail::type), YContactType::user);
    contact.displayName = text(row, Detail::displayName);
    return contact;
}

YContact::Email YContactsDataMaper::email(const YSqliteRow& row) const {
    YContact::Email email(text(row, YContactEmailTable::email).value_or(""));
    email.isPrimary = flag(row, YContactEmailTable::isPrimary, false);
    return email;
}

YContact::Phone YContactsDataMaper::phone(const YSqliteRow& row) const {
    return {text(row, YContactPhoneTable::phoneNumber).value_or(""),
            enumeration(text(row, YContactPhoneTable::phoneType), YContact::PhoneType::others)};
}

YContact::IM YContactsDataMaper::im(const YSqliteRow& row) const {
    return {text(row, YContactIMTable::imAddress).value_or(""),
            enumeration(text(row, YContactIMTable::imType), YContact::IMType::others)};
}

YContact::URL YContactsDataMaper::url(const YSqliteRow& row) const {
    return {text(row, YContactUrlTable::urlAddress).value_or(""),
            enumeration(text(row, YContactUrlTable::urlType), YContact::URLType::other)};
}

YContact::Category YContactsDataMaper::category(const YSqliteRow& row) const {
    return YContact::Category(text(row, YContactCategoryTable::categoryId).value_or(""));
}

YSuggestionContact YContactsDataMaper::suggestion(const YSqliteRow& row, const std::string& emailAddress) const {
    YSuggestionContact suggestion(text(row, Detail::contactId).value_or(""), emailAddress,
                                  text(row, Detail::firstName).value_or(""), flag(row, Detail::isOrg, false));
    suggestion.yuid = text(row, Detail::contactYuid);
    suggestion.middleName = text(row, Detail::middleName);
    suggestion.lastName = text(row, Detail::lastName);
    suggestion.nickName = text(row, Detail::nickName);
    suggestion.type = enumeration(text(row, Detail::type), YContactType::user);
    suggestion.hasPhoto = flag(row, Detail::hasPhoto, true);
    return suggestion;
}

YContactCategory YContactsDataMaper::contactCategory(const YSqliteRow& row) const {
    YContactCategory category(text(row, YCategoryDetailTable::categoryId).value_or(""));
    category.categoryName = text(row, YCategoryDetailTable::categoryName);
    return category;
}

void YContactsDataMaper::attachChildRows(YContact& contact, const std::vector<const YSqliteRow*>& emailRows,
                                         const std::vector<const YSqliteRow*>& phoneRows,
                                         const std::vector<const YSqliteRow*>& imRows,
                                         const std::vector<const YSqliteRow*>& urlRows,
                                         const std::vector<const YSqliteRow*>& categoryRows) const {
    for (const auto* row : emailRows) {
        contact.emails.push_back(email(*row));
        if (contact.primaryEmail && contact.primaryEmail->emailId == contact.emails.back().emailId) {
            contact.primaryEmail->isPrimary = contact.emails.back().isPrimary;
        }
    }
    for (const auto* row : phoneRows) contact.phones.push_back(phone(*row));
    for (const auto* row : imRows) contact.IMs.push_back(im(*row));
    for (const auto* row : urlRows) contact.urls.push_back(url(*row));
    if (!categoryRows.empty()) {
        contact.categories.emplace();
        for (const auto* row : categoryRows) contact.categories->push_back(category(*row));
    }
}

}  // namespace ycontacts
