#pragma once
// DataDirectory: the folder in which the tool keeps one set of contacts: database, photos and preferences.

#include <filesystem>
#include <optional>
#include <string>

namespace ycontacts_cli {

struct DataDirectory {
    std::filesystem::path root;

    std::filesystem::path database() const { return root / "contacts.sqlite"; }
    std::filesystem::path photos() const { return root / "photos"; }
    std::filesystem::path preferences() const { return root / "preferences.sqlite"; }

    // For commands that download: creates the folder and its photo folder when missing. Gives the problem
    // when that is not possible.
    std::optional<std::string> prepareForWriting() const;
    // For commands that only read: the folder and its database must already exist (a sync made them).
    std::optional<std::string> checkReadable() const;
};

}  // namespace ycontacts_cli
