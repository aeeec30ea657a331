#pragma once
// YContactSearchTable: names, column lists and key of the store's typeahead table (one row per search term).

#include <cstddef>
#include <string>
#include <vector>

namespace ycontacts {

// Each contact's names and addresses, folded to lower case (ASCII letters only, as SQLite's NOCASE does), one
// row per distinct term, carrying the contact's list-order keys. Indexes on (yuid, isOrg, prefixN, weightage
// DESC, sortName, contactId) give the contacts whose terms start with a typed text already in list order,
// so a page of matches is read without sorting every match. The store writes these rows with the contact;
// nothing else needs them.
struct YContactSearchTable {
    inline static const std::string tableName = "YContactSearchTable";

    inline static const std::string yuid = "yuid";
    inline static const std::string contactId = "contactId";
    inline static const std::string kind = "kind";
    inline static const std::string term = "term";
    inline static const std::string isOrg = "isOrg";
    inline static const std::string weightage = "weightage";
    inline static const std::string sortName = "sortName";
    inline static const std::string prefix1 = "prefix1";
    inline static const std::string prefix2 = "prefix2";
    inline static const std::string prefix3 = "prefix3";

    // What a term was made from. A nick name is a name that some searches leave out.
    static constexpr int nameKind = 0;
    static constexpr int nickNameKind = 1;
    static constexpr int addressKind = 2;

    // prefixN holds the first N bytes of the term (fewer when the term is shorter). Bytes, not characters:
    // a text that starts with the typed bytes then always shares their first N bytes, whatever the encoding.
    static constexpr std::size_t prefixLengths = 3;

    inline static const std::vector<std::string> textColumns{"yuid", "contactId", "term", "sortName",
                                                             "prefix1", "prefix2", "prefix3"};
    inline static const std::vector<std::string> integerColumns{"kind", "weightage"};
    inline static const std::vector<std::string> boolColumns{"isOrg"};
    inline static const std::vector<std::string> primaryKeys{"yuid", "contactId", "kind", "term"};
};

}  // namespace ycontacts
