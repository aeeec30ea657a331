#include "ycontacts/Contacts/Data/Network/YContactsHost.h"

#include <utility>

namespace ycontacts {

YContactsHost::YContactsHost(Kind kind, std::string base) : kind_(kind), base_(std::move(base)) {}

YContactsHost YContactsHost::idc(std::string base) {
    return YContactsHost(Kind::idc, std::move(base));
}

YContactsHost YContactsHost::proxy(std::string base) {
    return YContactsHost(Kind::proxy, std::move(base));
}

YContactsHost YContactsHost::other(std::string value) {
    return YContactsHost(Kind::other, std::move(value));
}

}  // namespace ycontacts
