#pragma once
// YResponse: base of every use-case response.
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YResponse {
public:
    YResponse() = default;
    virtual ~YResponse();
    YResponse(const YResponse&) = default;
    YResponse(YResponse&&) = default;
    YResponse& operator=(const YResponse&) = default;
    YResponse& operator=(YResponse&&) = default;
};

}  // namespace ycontacts
