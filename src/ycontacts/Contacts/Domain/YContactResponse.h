#pragma once
// YContactResponse: base of every contacts response.

#include "ycontacts/Platform/MarloComponents/YResponse.h"

namespace ycontacts {

class YContactResponse : public YResponse {
public:
    YContactResponse() = default;
};

}  // namespace ycontacts
