#pragma once
// YContactImageNetworkResponse: the outcome of one photo request; stands alone, not a YNetworkResponse.

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YContactError.h"
#include "ycontacts/Contacts/Data/Network/YContactImageStatus.h"
#include "ycontacts/Contacts/Data/Network/YNetworkResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YContactImageNetworkResponse : YNetworkResponseFactory<YContactImageNetworkResponse> {
    std::optional<std::vector<std::uint8_t>> imageData;
    YContactImageStatus imageStatus = YContactImageStatus::noContent;
    // From the response's "Date" header, else its "Last-Modified" header.
    std::optional<std::chrono::system_clock::time_point> serverDate;
    std::optional<YContactError> error;
};

}  // namespace ycontacts
