#pragma once
// YContactError: what went wrong in a server call; the case is all a failed call carries.

#include "ycontacts/Contacts/Domain/Entities/YRawValue.h"

namespace ycontacts {

enum class YContactError { networkFailure, unknownError, authorizationError, parserError, urlError };

// Case names, for log lines.
template <>
struct YRawValues<YContactError> {
    using E = YContactError;
    static constexpr YRawValueEntry<E> entries[] = {
        {E::networkFailure, "networkFailure"}, {E::unknownError, "unknownError"},
        {E::authorizationError, "authorizationError"}, {E::parserError, "parserError"},
        {E::urlError, "urlError"},
    };
};

}  // namespace ycontacts
