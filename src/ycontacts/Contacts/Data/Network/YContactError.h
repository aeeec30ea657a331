#pragma once
// YContactError: what went wrong in a server call or a download; the case is all a failure carries.

#include "ycontacts/Platform/MarloComponents/YRawValue.h"

namespace ycontacts {

// The first five are the server call's. storageError is a download's alone: a page arrived but the store
// could not keep it, so the download stopped there and the next one asks for that page again.
enum class YContactError { networkFailure, unknownError, authorizationError, parserError, urlError, storageError };

// Case names, for log lines.
template <>
struct YRawValues<YContactError> {
    using E = YContactError;
    static constexpr YRawValueEntry<E> entries[] = {
        {E::networkFailure, "networkFailure"}, {E::unknownError, "unknownError"},
        {E::authorizationError, "authorizationError"}, {E::parserError, "parserError"},
        {E::urlError, "urlError"}, {E::storageError, "storageError"},
    };
};

}  // namespace ycontacts
