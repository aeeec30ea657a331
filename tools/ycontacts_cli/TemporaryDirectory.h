#pragma once
// TemporaryDirectory: a fresh folder under the system's temporary directory, removed with everything in it.

#include <filesystem>
#include <optional>
#include <string>

namespace ycontacts_cli {

class TemporaryDirectory {
public:
    // Absent when the folder cannot be made.
    static std::optional<TemporaryDirectory> create(const std::string& prefix);
    ~TemporaryDirectory();
    TemporaryDirectory(TemporaryDirectory&& other) noexcept;
    TemporaryDirectory& operator=(TemporaryDirectory&&) = delete;
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    explicit TemporaryDirectory(std::filesystem::path path) : path_(std::move(path)) {}
    std::filesystem::path path_;
};

}  // namespace ycontacts_cli
