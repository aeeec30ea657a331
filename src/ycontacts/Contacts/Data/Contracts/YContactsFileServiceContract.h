#pragma once
// YContactsFileServiceContract: the on-disk photo cache, two sizes per contact, one folder pair per user.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YContactsFileServiceContract {
public:
    // The photo's bytes (absent when there is no readable file) and the path consulted.
    using ImageFile = std::pair<std::optional<std::vector<std::uint8_t>>, std::string>;

    virtual ~YContactsFileServiceContract() = default;

    virtual ImageFile getContactImage(const std::string& yuid, const std::string& identifier, bool isThumbnail) = 0;
    virtual std::string saveContactImage(const std::string& yuid, const std::string& identifier,
                                         const std::vector<std::uint8_t>& data, bool isThumbnail) = 0;
    virtual void deleteContactImage(const std::string& yuid, const std::string& identifier) = 0;
    virtual void deleteAllImages(const std::string& yuid) = 0;
    virtual std::optional<std::chrono::system_clock::time_point> getModifiedDate(const std::string& yuid,
                                                                                 const std::string& identifier,
                                                                                 bool isThumbnail) = 0;
    virtual void updateModifiedDate(const std::string& yuid, const std::string& identifier, bool isThumbnail,
                                    std::chrono::system_clock::time_point modifiedDate) = 0;
};

}  // namespace ycontacts
