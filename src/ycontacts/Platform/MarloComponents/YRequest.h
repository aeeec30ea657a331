#pragma once
// YRequest: base of every use-case request; names the signed-in user the request is for.

#include <string>

#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YRequest {
public:
    explicit YRequest(std::string yuid);
    virtual ~YRequest();
    YRequest(const YRequest&) = default;
    YRequest(YRequest&&) = default;
    YRequest& operator=(const YRequest&) = default;
    YRequest& operator=(YRequest&&) = default;

    std::string yuid;
};

}  // namespace ycontacts
