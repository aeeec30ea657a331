#include "sample_server/SampleRequestLog.h"

namespace sample_server {

std::string LoggedRequest::param(const std::string& key) const {
    const auto found = params.find(key);
    return found == params.end() ? std::string() : found->second;
}

void SampleRequestLog::append(LoggedRequest request) {
    std::lock_guard lock(mutex_);
    entries_.push_back(std::move(request));
}

std::vector<LoggedRequest> SampleRequestLog::entries() const {
    std::lock_guard lock(mutex_);
    return entries_;
}

void SampleRequestLog::clear() {
    std::lock_guard lock(mutex_);
    entries_.clear();
}

}  // namespace sample_server
