#include "ycontacts_cli/DataDirectory.h"

#include <system_error>

namespace ycontacts_cli {

std::optional<std::string> DataDirectory::prepareForWriting() const {
    std::error_code error;
    if (std::filesystem::exists(root, error) && !std::filesystem::is_directory(root, error))
        return "the data directory " + root.string() + " is a file, not a directory";
    std::filesystem::create_directories(photos(), error);
    if (error) return "cannot create the data directory " + root.string() + ": " + error.message();
    return std::nullopt;
}

std::optional<std::string> DataDirectory::checkReadable() const {
    std::error_code error;
    if (!std::filesystem::is_directory(root, error))
        return "the data directory " + root.string() + " does not exist: run `ycontacts sync` with it first";
    if (!std::filesystem::is_regular_file(database(), error))
        return "the data directory " + root.string() +
               " holds no contacts database: run `ycontacts sync` with it first";
    return std::nullopt;
}

}  // namespace ycontacts_cli
