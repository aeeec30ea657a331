#pragma once
// YContactResponse: base of every contacts response.

#include "ycontacts/Platform/MarloComponents/YResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YContactResponse : public YResponse {
public:
    YContactResponse() = default;
};

}  // namespace ycontacts
