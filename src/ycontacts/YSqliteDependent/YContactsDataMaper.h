#pragma once
// YContactsDataMaper: turns contacts and categories into the store's rows and rows back into records.

#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"
#include "ycontacts/Contacts/Domain/Entities/YSuggestionContact.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteValue.h"

namespace ycontacts {

// Rows carry exactly the columns of the table descriptors; an absent optional field is left out of the row
// and so stored as NULL. Reading is lenient: a value of another kind than expected is converted where that
// makes sense, and an enumeration text no case knows falls back to the catch-all case.
class YContactsDataMaper {
public:
    std::vector<YSqliteRow> contactDetailRows(const std::vector<YContact>& contacts, const std::string& yuid) const;
    std::vector<YSqliteRow> phoneRows(const std::vector<YContact>& contacts, const std::string& yuid) const;
    std::vector<YSqliteRow> emailRows(const std::vector<YContact>& contacts, const std::string& yuid) const;
    std::vector<YSqliteRow> imRows(const std::vector<YContact>& contacts, const std::string& yuid) const;
    std::vector<YSqliteRow> urlRows(const std::vector<YContact>& contacts, const std::string& yuid) const;
    std::vector<YSqliteRow> categoryRows(const std::vector<YContact>& contacts, const std::string& yuid) const;
    std::vector<YSqliteRow> categoryDetailRows(const std::vector<YContactCategory>& categories,
                                               const std::string& yuid) const;
    // The typeahead rows: one per distinct term of each contact (its full name, display name, last name,
    // nick name, primary e-mail and e-mail addresses, folded), empty terms left out. A contact id that
    // comes more than once gets the rows of its last occurrence only, as its detail row does.
    std::vector<YSqliteRow> searchRows(const std::vector<YContact>& contacts, const std::string& yuid) const;

    // The contact of a detail row, without its child lists; the primary e-mail keeps isPrimary false until
    // the e-mail rows are attached with attachChildRows.
    YContact contact(const YSqliteRow& detailRow) const;
    YContact::Email email(const YSqliteRow& emailRow) const;
    YContact::Phone phone(const YSqliteRow& phoneRow) const;
    YContact::IM im(const YSqliteRow& imRow) const;
    YContact::URL url(const YSqliteRow& urlRow) const;
    YContact::Category category(const YSqliteRow& categoryRow) const;
    // A suggestion for one address of the contact in a detail row.
    YSuggestionContact suggestion(const YSqliteRow& detailRow, const std::string& emailAddress) const;
    YContactCategory contactCategory(const YSqliteRow& categoryDetailRow) const;

    // Child rows of one contact, each list in stored order; sets the primary e-mail's flag from its row.
    void attachChildRows(YContact& contact, const std::vector<const YSqliteRow*>& emailRows,
                         const std::vector<const YSqliteRow*>& phoneRows, const std::vector<const YSqliteRow*>& imRows,
                         const std::vector<const YSqliteRow*>& urlRows,
                         const std::vector<const YSqliteRow*>& categoryRows) const;

    // ASCII letters lowered, every other byte kept: the comparison SQLite's NOCASE makes, as plain text.
    static std::string foldedCase(const std::string& text);
    // The name a contact is listed by: its display name, folded.
    static std::string sortName(const YContact& contact);

    // Column values read leniently; absent for NULL or an unconvertible value.
    static std::optional<std::string> text(const YSqliteRow& row, const std::string& column);
    static std::optional<std::int64_t> integer(const YSqliteRow& row, const std::string& column);
    static bool flag(const YSqliteRow& row, const std::string& column, bool fallback);
};

}  // namespace ycontacts
