#pragma once
// YContactDetailTable: names, column lists and key of the table holding one row per contact of a user.

#include <string>
#include <vector>

namespace ycontacts {

struct YContactDetailTable {
    inline static const std::string tableName = "YContactDetail";

    inline static const std::string yuid = "yuid";
    inline static const std::string contactId = "contactId";
    inline static const std::string firstName = "firstName";
    inline static const std::string middleName = "middleName";
    inline static const std::string lastName = "lastName";
    inline static const std::string nickName = "nickName";
    inline static const std::string gender = "gender";
    inline static const std::string photoURL = "photoURL";
    inline static const std::string homeStreet1 = "homeStreet1";
    inline static const std::string homeStreet2 = "homeStreet2";
    inline static const std::string homeCity = "homeCity";
    inline static const std::string homeState = "homeState";
    inline static const std::string homeCountry = "homeCountry";
    inline static const std::string homePostalCode = "homePostalCode";
    inline static const std::string workStreet1 = "workStreet1";
    inline static const std::string workStreet2 = "workStreet2";
    inline static const std::string workCity = "workCity";
    inline static const std::string workState = "workState";
    inline static const std::string workCountry = "workCountry";
    inline static const std::string workPostalCode = "workPostalCode";
    inline static const std::string company = "company";
    inline static const std::string jobTitle = "jobTitle";
    inline static const std::string designation = "designation";
    inline static const std::string birthDate = "birthDate";
    inline static const std::string birthMonth = "birthMonth";
    inline static const std::string birthYear = "birthYear";
    inline static const std::string notes = "notes";
    inline static const std::string type = "type";
    inline static const std::string primaryEmail = "primaryEmail";
    inline static const std::string contactYuid = "contactYuid";
    inline static const std::string weightage = "weightage";
    inline static const std::string createdTime = "createdTime";
    inline static const std::string isOrg = "isOrg";
    inline static const std::string isEditable = "isEditable";
    inline static const std::string hasPhoto = "hasPhoto";
    inline static const std::string displayName = "displayName";
    inline static const std::string sortName = "sortName";

    inline static const std::vector<std::string> textColumns{"yuid", "contactId", "firstName", "middleName", "lastName", "nickName", "gender", "photoURL", "homeStreet1", "homeStreet2", "homeCity", "homeState", "homeCountry", "homePostalCode", "workStreet1", "workStreet2", "workCity", "workState", "workCountry", "workPostalCode", "company", "jobTitle", "designation", "birthDate", "birthMonth", "birthYear", "notes", "type", "primaryEmail", "contactYuid"};
    inline static const std::vector<std::string> integerColumns{"weightage", "createdTime"};
    inline static const std::vector<std::string> boolColumns{"isOrg", "isEditable", "hasPhoto"};
    inline static const std::vector<std::string> primaryKeys{"yuid", "contactId"};

    // Text columns the store adds to the 35 above, which stay as they are: the contact's own display name,
    // and the name it is listed by (its display name folded to lower case, ASCII letters only), which the
    // list-order indexes cover.
    inline static const std::vector<std::string> addedTextColumns{"displayName", "sortName"};
};

}  // namespace ycontacts
