#pragma once
// YGetContactImageResponse: a contact's photo bytes and the cache file they came from.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Domain/YContactResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetContactImageResponse : public YContactResponse {
public:
    YGetContactImageResponse() = default;

    std::optional<std::string> contactId;
    std::optional<std::vector<std::uint8_t>> contactImageData;
    std::optional<std::string> filePath;
};

}  // namespace ycontacts
