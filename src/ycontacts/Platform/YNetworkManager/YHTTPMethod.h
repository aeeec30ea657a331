#pragma once
// YHTTPMethod: the HTTP method of a request sent through YNetworkManager.

#include "ycontacts/Platform/MarloComponents/YRawValue.h"

namespace ycontacts {

// GET comes first: it is the method the contacts calls use.
enum class YHTTPMethod { GET, POST, PUT, DELETE, PATCH, HEAD };

// The method's token as written on the request line. Each is a string literal, so it ends with a NUL.
template <>
struct YRawValues<YHTTPMethod> {
    using E = YHTTPMethod;
    static constexpr YRawValueEntry<E> entries[] = {
        {E::GET, "GET"},       {E::POST, "POST"},   {E::PUT, "PUT"},
        {E::DELETE, "DELETE"}, {E::PATCH, "PATCH"}, {E::HEAD, "HEAD"},
    };
};

}  // namespace ycontacts
