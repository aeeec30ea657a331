#include "ycontacts/Platform/MarloComponents/YResponse.h"

namespace ycontacts {

// Defined here so that the type's vtable and type information live in the library.
YResponse::~YResponse() = default;

}  // namespace ycontacts
