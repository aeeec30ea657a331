#pragma once
// Configuration: where a host installs the logger that the library writes its log through.

#include <memory>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT Configuration {
public:
    Configuration() = delete;

    // The library's logger, Logger::hostSlot() itself: a Logger built without arguments (spdlog on stderr)
    // until a host puts its own here, before its first call and from one thread.
    static std::shared_ptr<Logger>& logger;
};

}  // namespace ycontacts
