#pragma once
// UsecaseQueue: the process-wide pool on which use cases run and deliver, also used by the facade.

#include <cstddef>

#include "ycontacts/Platform/MarloComponents/YWorkQueue.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT UsecaseQueue {
public:
    static constexpr std::size_t threadCount = 4;

    // Created on first use; its workers are joined when the process's statics are destroyed.
    static YWorkQueue& queue();
};

}  // namespace ycontacts
