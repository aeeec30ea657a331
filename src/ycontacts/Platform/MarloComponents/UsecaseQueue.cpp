#include "ycontacts/Platform/MarloComponents/UsecaseQueue.h"

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

YWorkQueue& UsecaseQueue::queue() {
    // Statics are destroyed in reverse order of creation: making the logger first lets tasks that are
    // still running while the pool is joined at exit log safely.
    Logger::shared();
    static YWorkQueue pool("UsecaseQueue", threadCount, YWorkQueue::AtShutdown::drop);
    return pool;
}

}  // namespace ycontacts
