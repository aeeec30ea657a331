#pragma once
// DataDirectory: the folder in which the tool keeps one set of contacts: the database (with the sync progress) and photos.

#include <filesystem>
#include <optional>
#include <string>

namespace ycontacts_cli {

struct DataDirectory {
    std::filesystem::path root;

    std::filesystem::path database() const { return root / "contacts.sqlite"; }
    std::filesystem::path photos() const { return root / "photos"; }

    // For commands that download: creates the folder and its photo folder when missing. Gives the problem
    // when that is not possible.
    std::optional<std::string> prepareForWriting() const;
    // For commands that only read: the folder and its database must already exist (a sync made them).
    std::optional<std::string> checkReadable() const;
};

}  // namespace ycontacts_cli
