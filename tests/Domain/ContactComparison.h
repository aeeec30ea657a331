#pragma once
// ContactComparison: compares two contacts field by field, since YContact's own == looks at the id alone.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"

namespace ycontacts::testing {

// Succeeds when every field matches; otherwise names the first field that differs. E-mails are compared with
// their primary flag, which their own == leaves out.
inline ::testing::AssertionResult sameContactFields(const YContact& expected, const YContact& actual) {
    using Emails = std::vector<std::pair<std::string, bool>>;
    const auto emails = [](const std::vector<YContact::Email>& list) {
        Emails pairs;
        for (const auto& email : list) pairs.emplace_back(email.emailId, email.isPrimary);
        return pairs;
    };
    const auto primary = [&](const YContact& contact) {
        return contact.primaryEmail ? std::optional(emails({*contact.primaryEmail})) : std::nullopt;
    };
    const std::pair<const char*, bool> fields[] = {
        {"contactId", expected.contactId == actual.contactId},
        {"firstName", expected.firstName == actual.firstName},
        {"middleName", expected.middleName == actual.middleName},
        {"lastName", expected.lastName == actual.lastName},
        {"nickName", expected.nickName == actual.nickName},
        {"primaryEmail", primary(expected) == primary(actual)},
        {"emails", emails(expected.emails) == emails(actual.emails)},
        {"contactYuid", expected.contactYuid == actual.contactYuid},
        {"weightage", expected.weightage == actual.weightage},
        {"createdTime", expected.createdTime == actual.createdTime},
        {"isOrg", expected.isOrg == actual.isOrg},
        {"gender", expected.gender == actual.gender},
        {"phones", expected.phones == actual.phones},
        {"urls", expected.urls == actual.urls},
        {"IMs", expected.IMs == actual.IMs},
        {"photoURL", expected.photoURL == actual.photoURL},
        {"hasPhoto", expected.hasPhoto == actual.hasPhoto},
        {"address", expected.address == actual.address},
        {"workInfo", expected.workInfo == actual.workInfo},
        {"categories", expected.categories == actual.categories},
        {"birthDate", expected.birthDate == actual.birthDate},
        {"birthMonth", expected.birthMonth == actual.birthMonth},
        {"birthYear", expected.birthYear == actual.birthYear},
        {"notes", expected.notes == actual.notes},
        {"isEditable", expected.isEditable == actual.isEditable},
        {"type", expected.type == actual.type},
        {"displayName", expected.displayName == actual.displayName},
    };
    for (const auto& [name, same] : fields) {
        if (!same) return ::testing::AssertionFailure() << "field " << name << " differs";
    }
    return ::testing::AssertionSuccess();
}

// A contact with every field set to a value other than its default.
inline YContact fullyPopulatedContact() {
    YContact contact("c-17", "Ann", 1700000000123);
    contact.middleName = "Maria";
    contact.lastName = "Lee";
    contact.nickName = "Annie";
    YContact::Email primary("ann@example.com");
    primary.isPrimary = true;
    contact.primaryEmail = primary;
    contact.emails = {primary, YContact::Email("ann.lee@work.example")};
    contact.contactYuid = "yuid-99";
    contact.weightage = 12;
    contact.isOrg = true;
    contact.gender = YContact::Gender::female;
    contact.phones = {{"+1 555 0100", YContact::PhoneType::mobile}, {"+1 555 0199", YContact::PhoneType::fax}};
    contact.urls = {{"https://flickr.example/ann", YContact::URLType::flikr},
                    {"https://in.example/ann", YContact::URLType::linkedIn}};
    contact.IMs = {{"ann.im", YContact::IMType::jabber}, {"ann.other", YContact::IMType::others}};
    contact.photoURL = "https://photos.example/ann.png";
    contact.hasPhoto = false;
    contact.address = YContact::Address{"1 Main St", "Flat 2", "Springfield", "IL", "US", "62701"};
    YContact::Address office;
    office.city = "Chicago";
    contact.workInfo = YContact::WorkInfo{"Acme", "Engineer", "Senior", office};
    contact.categories = std::vector<YContact::Category>{YContact::Category("cat-1"), YContact::Category("cat-2")};
    contact.birthDate = 29;
    contact.birthMonth = 2;
    contact.birthYear = 1988;
    contact.notes = "met at the conference";
    contact.isEditable = true;
    contact.type = YContactType::group;
    contact.displayName = "Ann L.";
    return contact;
}

}  // namespace ycontacts::testing
