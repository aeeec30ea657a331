#include "ycontacts_cli/Output.h"

#include <sstream>

#include "ycontacts_cli/Format.h"

namespace ycontacts_cli::output {

namespace {

using ycontacts::YContact;

std::string population(bool isOrg) { return isOrg ? "org" : "personal"; }

std::string primaryAddress(const YContact& contact) {
    if (contact.primaryEmail) return contact.primaryEmail->emailId;
    return contact.emails.empty() ? std::string() : contact.emails.front().emailId;
}

std::string joined(const std::vector<std::string>& parts, const std::string& separator) {
    std::string text;
    for (const auto& part : parts) {
        if (part.empty()) continue;
        if (!text.empty()) text += separator;
        text += part;
    }
    return text;
}

std::string addressText(const YContact::Address& address) {
    return joined({address.streetAddress1.value_or(""), address.streetAddress2.value_or(""), address.city.value_or(""),
                   address.state.value_or(""), address.postalCode.value_or(""), address.country.value_or("")},
                  ", ");
}

// Writes a labelled block: the label on the first line, continuation lines indented under the value.
class Details {
public:
    void line(const std::string& label, const std::string& value) {
        if (value.empty()) return;
        // Notes may span lines: later lines line up under the first.
        std::string indented;
        for (char c : value) indented += c == '\n' ? std::string("\n") + std::string(15, ' ') : std::string(1, c);
        out_ << "  " << format::column(label, 13) << indented << '\n';
    }
    void lines(const std::string& label, const std::vector<std::string>& values) {
        bool first = true;
        for (const auto& value : values) {
            line(first ? label : "", value);
            first = false;
        }
    }
    std::ostringstream& stream() { return out_; }

private:
    std::ostringstream out_;
};

}  // namespace

std::string contactLines(const std::vector<YContact>& contacts) {
    std::string text;
    for (const auto& contact : contacts) {
        text += "  " + format::column(contact.contactId, 10) + " " + format::column(contact.getDisplayName(), 30) +
                " " + format::column(primaryAddress(contact), 40) + " " + population(contact.isOrg) + "\n";
    }
    return text;
}

std::string suggestionLines(const std::vector<ycontacts::YSuggestionContact>& suggestions) {
    std::string text;
    for (const auto& suggestion : suggestions) {
        std::string name = suggestion.firstName;
        if (suggestion.lastName) name += " " + *suggestion.lastName;
        text += "  " + format::column(suggestion.email, 44) + " " + format::column(name, 28) + " " +
                format::column(suggestion.contactId, 10) + " " + population(suggestion.isOrg) + "\n";
    }
    return text;
}

std::string contactDetails(const YContact& contact) {
    Details details;
    details.stream() << contact.getDisplayName() << "  (contact " << contact.contactId << ", "
                     << population(contact.isOrg) << ")\n";
    details.line("first name", contact.firstName);
    details.line("middle name", contact.middleName.value_or(""));
    details.line("last name", contact.lastName.value_or(""));
    details.line("nick name", contact.nickName.value_or(""));
    details.line("type", std::string(ycontacts::toRawValue(contact.type)));
    details.line("yuid", contact.contactYuid.value_or(""));
    if (contact.gender) details.line("gender", std::string(ycontacts::toRawValue(*contact.gender)));

    std::vector<std::string> emails;
    for (const auto& email : contact.emails)
        emails.push_back(email.emailId + (email.isPrimary ? " (primary)" : ""));
    if (emails.empty() && contact.primaryEmail) emails.push_back(contact.primaryEmail->emailId + " (primary)");
    details.lines("e-mail", emails);
    std::vector<std::string> phones;
    for (const auto& phone : contact.phones)
        phones.push_back(phone.phoneNumber + " (" + std::string(ycontacts::toRawValue(phone.phoneType)) + ")");
    details.lines("phone", phones);
    std::vector<std::string> links;
    for (const auto& url : contact.urls) links.push_back(url.url + " (" + std::string(ycontacts::toRawValue(url.type)) + ")");
    details.lines("link", links);
    std::vector<std::string> ims;
    for (const auto& im : contact.IMs) ims.push_back(im.imLink + " (" + std::string(ycontacts::toRawValue(im.imType)) + ")");
    details.lines("messaging", ims);

    if (contact.workInfo) {
        details.line("work", joined({contact.workInfo->company.value_or(""), contact.workInfo->jobTitle.value_or(""),
                                     contact.workInfo->designation.value_or("")},
                                    ", "));
        if (contact.workInfo->address) details.line("work address", addressText(*contact.workInfo->address));
    }
    if (contact.address) details.line("address", addressText(*contact.address));
    if (contact.birthDate && contact.birthMonth) {
        char birthday[24];
        if (contact.birthYear)
            std::snprintf(birthday, sizeof(birthday), "%04d-%02d-%02d", *contact.birthYear, *contact.birthMonth,
                          *contact.birthDate);
        else
            std::snprintf(birthday, sizeof(birthday), "--%02d-%02d", *contact.birthMonth, *contact.birthDate);
        details.line("birthday", birthday);
    }
    if (contact.categories) {
        std::vector<std::string> ids;
        for (const auto& category : *contact.categories) ids.push_back(category.categoryId);
        details.line("categories", joined(ids, ", "));
    }
    details.line("notes", contact.notes.value_or(""));
    details.line("usage", format::count(contact.weightage));
    details.line("created", format::utcTime(static_cast<double>(contact.createdTime)));
    details.line("editable", contact.isEditable ? "yes" : "no");
    details.line("photo", contact.hasPhoto ? contact.photoURL.value_or("yes") : "no");
    return details.stream().str();
}

nlohmann::ordered_json contactsJson(const std::optional<std::vector<YContact>>& contacts) {
    if (!contacts) return nullptr;
    auto list = nlohmann::ordered_json::array();
    for (const auto& contact : *contacts) list.push_back(contact);
    return list;
}

nlohmann::ordered_json suggestionsJson(const std::optional<std::vector<ycontacts::YSuggestionContact>>& suggestions) {
    if (!suggestions) return nullptr;
    auto list = nlohmann::ordered_json::array();
    for (const auto& suggestion : *suggestions) list.push_back(suggestion);
    return list;
}

}  // namespace ycontacts_cli::output
