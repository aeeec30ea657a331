#pragma once
// Configuration: the host's logger slot; the library itself writes nothing through it.

#include <memory>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

class Configuration {
public:
    Configuration() = delete;

    // Starts as a Logger built without arguments. A host replaces it before its first call, from one thread.
    static std::shared_ptr<Logger> logger;
};

}  // namespace ycontacts
