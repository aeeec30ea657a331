#include "sample_server/SampleFault.h"

namespace sample_server {

void SampleFaultRegistry::add(Fault fault) {
    if (fault.times <= 0) return;
    std::lock_guard lock(mutex_);
    faults_.push_back(std::move(fault));
}

void SampleFaultRegistry::clear() {
    std::lock_guard lock(mutex_);
    faults_.clear();
}

std::optional<Fault> SampleFaultRegistry::take(const std::string& path, std::optional<int> page) {
    std::lock_guard lock(mutex_);
    for (auto fault = faults_.begin(); fault != faults_.end(); ++fault) {
        if (path.find(fault->pathContains) == std::string::npos) continue;
        if (fault->page && fault->page != page) continue;
        Fault taken = *fault;
        if (--fault->times == 0) faults_.erase(fault);
        return taken;
    }
    return std::nullopt;
}

std::size_t SampleFaultRegistry::pending() const {
    std::lock_guard lock(mutex_);
    return faults_.size();
}

}  // namespace sample_server
