#include "ycontacts/Platform/MarloComponents/YRequest.h"

#include <utility>

namespace ycontacts {

YRequest::YRequest(std::string yuid) : yuid(std::move(yuid)) {}

// Defined here so that the type's vtable and type information live in the library.
YRequest::~YRequest() = default;

}  // namespace ycontacts
