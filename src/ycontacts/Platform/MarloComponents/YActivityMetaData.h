#pragma once
// YActivityMetaData: labels a piece of work (a request, a use case) so that logs can tie its lines together.

#include <map>
#include <string>

#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YActivityMetaData {
    std::string activityName;
    std::map<std::string, std::string> attributes;

    YActivityMetaData() = default;
    explicit YActivityMetaData(std::string name, std::map<std::string, std::string> attrs = {})
        : activityName(std::move(name)), attributes(std::move(attrs)) {}

    bool operator==(const YActivityMetaData&) const = default;
};

}  // namespace ycontacts
