#include "ycontacts/Contacts/Configuration.h"

namespace ycontacts {

std::shared_ptr<Logger> Configuration::logger = std::make_shared<Logger>();

}  // namespace ycontacts
