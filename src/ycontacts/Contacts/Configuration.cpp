#include "ycontacts/Contacts/Configuration.h"

namespace ycontacts {

std::shared_ptr<Logger>& Configuration::logger = Logger::hostSlot();

}  // namespace ycontacts
