#pragma once
// ContactComparison: compares two contacts field by field, since YContact's own == looks at the id alone.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"

namespace ycontacts::testing {

// Succeeds when every field matches; otherwise names the first field that differs. The fields are compared in
// their JSON form, which holds every field (RecordJsonTest checks that) and e-mails with their primary flag,
// which their own == leaves out.
inline ::testing::AssertionResult sameContactFields(const YContact& expected, const YContact& actual) {
    const nlohmann::json want = expected, got = actual;
    if (want == got) return ::testing::AssertionSuccess();
    for (const auto& [key, value] : want.items()) {
        if (!got.contains(key) || got.at(key) != value)
            return ::testing::AssertionFailure() << "field " << key << " differs";
    }
    return ::testing::AssertionFailure() << "fields only the second contact has: " << got.dump();
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
