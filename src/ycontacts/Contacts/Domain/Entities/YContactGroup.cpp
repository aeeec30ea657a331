#include "ycontacts/Contacts/Domain/Entities/YContactGroup.h"

#include <utility>

namespace ycontacts {

YContactGroup::YContactGroup(std::string accId, std::string name) : accId(std::move(accId)), name(std::move(name)) {}

}  // namespace ycontacts
