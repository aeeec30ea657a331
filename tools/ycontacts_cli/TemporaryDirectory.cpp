#include "ycontacts_cli/TemporaryDirectory.h"

#include <cstdlib>
#include <system_error>
#include <vector>

namespace ycontacts_cli {

std::optional<TemporaryDirectory> TemporaryDirectory::create(const std::string& prefix) {
    std::error_code error;
    const auto base = std::filesystem::temp_directory_path(error);
    if (error) return std::nullopt;
    std::string pattern = (base / (prefix + "XXXXXX")).string();
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (!mkdtemp(buffer.data())) return std::nullopt;
    return TemporaryDirectory(std::filesystem::path(buffer.data()));
}

TemporaryDirectory::TemporaryDirectory(TemporaryDirectory&& other) noexcept : path_(std::move(other.path_)) {
    other.path_.clear();
}

TemporaryDirectory::~TemporaryDirectory() {
    if (path_.empty()) return;
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

}  // namespace ycontacts_cli
