#pragma once
// YContactsHost: where the contacts server is, as the host application configures it per user.

#include <string>

#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YContactsHost {
public:
    // idc: the server is addressed directly; proxy: reached through a proxy; other: neither, with an opaque value.
    enum class Kind { idc, proxy, other };

    // `base` is the scheme and host without a trailing slash; endpoints are appended to it.
    static YContactsHost idc(std::string base);
    static YContactsHost proxy(std::string base);
    static YContactsHost other(std::string value = {});

    Kind kind() const noexcept { return kind_; }
    // The base URL for idc and proxy; the opaque value for other.
    const std::string& base() const noexcept { return base_; }

    bool operator==(const YContactsHost&) const = default;

private:
    YContactsHost(Kind kind, std::string base);

    Kind kind_;
    std::string base_;
};

}  // namespace ycontacts
