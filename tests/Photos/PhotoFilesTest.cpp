// The photo file cache on a real folder: names from the server cannot escape it, sizes fall back one way,
// and removing a user's data removes that user's photo folders only.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Support/LogCapture.h"
#include "Support/TemporaryDirectory.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Contacts/Data/FileManager/YContactsFileService.h"

namespace ycontacts {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

bool inside(const fs::path& folder, const fs::path& path) {
    const auto relative = fs::weakly_canonical(path).lexically_relative(fs::weakly_canonical(folder));
    return !relative.empty() && *relative.begin() != "..";
}

class PhotoFiles : public ::testing::Test {
protected:
    testsupport::TemporaryDirectory folder;
    fs::path root = folder.file("photos");
    std::shared_ptr<YContactsFileService> files = std::make_shared<YContactsFileService>(root);
};

TEST_F(PhotoFiles, HostileIdsStayInsideTheirFolderAndEachKeepsItsOwnPhoto) {
    std::vector<std::string> ids{"../../x", "a/b", "a%2Fb", "..", ".", "", "%", "a\\b", std::string(300, 'x')};
    ids.insert(ids.end(), {std::string("a\0b", 3), std::string("a\0c", 3), std::string(299, 'x') + "y"});
    ids.push_back(std::string(150, '/') + std::string(150, 'z'));
    for (const std::string yuid : {"u1", "../u1"}) {
        for (std::size_t i = 0; i < ids.size(); ++i) {
            const fs::path path = files->saveContactImage(yuid, ids[i], bytesOf(yuid + "#" + std::to_string(i)), false);
            EXPECT_TRUE(inside(root, path)) << path;
            EXPECT_LE(path.filename().string().size(), 255u);
        }
    }
    // Read back only after every write: two ids sharing a file would show here.
    for (const std::string yuid : {"u1", "../u1"}) {
        for (std::size_t i = 0; i < ids.size(); ++i) {
            const auto [data, path] = files->getContactImage(yuid, ids[i], false);
            EXPECT_EQ(data, bytesOf(yuid + "#" + std::to_string(i))) << "id #" << i;
            EXPECT_TRUE(files->getModifiedDate(yuid, ids[i], false)) << "id #" << i;
        }
    }
    for (const auto& entry : fs::recursive_directory_iterator(folder.path()))
        EXPECT_TRUE(inside(root, entry.path())) << entry.path();
}

TEST_F(PhotoFiles, OnlyANormalSizeFallsBackToTheThumbnail) {
    const std::string thumbnailPath = files->saveContactImage("u1", "c1", bytesOf("small"), true);
    const auto normal = files->getContactImage("u1", "c1", false);
    EXPECT_EQ(normal.first, bytesOf("small"));
    EXPECT_EQ(normal.second, thumbnailPath);

    files->saveContactImage("u1", "c2", bytesOf("big"), false);
    EXPECT_EQ(files->getContactImage("u1", "c2", true).first, std::nullopt);
    EXPECT_EQ(files->getContactImage("u1", "c2", false).first, bytesOf("big"));
}

// A photo that cannot be written (its folder is a file, or a folder stands where the file goes) is logged and
// never answered; nothing half-written is left behind.
TEST_F(PhotoFiles, AFailedWriteIsLoggedAndLeavesNoPhoto) {
    testsupport::LogCapture log;
    fs::create_directories(files->getFilePathForContactImage("u1", "c1", false));
    files->saveContactImage("u1", "c1", bytesOf("photo"), false);
    EXPECT_TRUE(log.contains("File creation error!"));
    EXPECT_EQ(files->getContactImage("u1", "c1", false).first, std::nullopt);
    EXPECT_EQ(std::distance(fs::directory_iterator(files->folderFor("u1", false)), fs::directory_iterator()), 1);

    log.clear();
    files->setContactImageDirURL(folder.file("not-a-folder"));
    { std::ofstream{folder.file("not-a-folder")} << "x"; }
    files->saveContactImage("u1", "c2", bytesOf("photo"), true);
    EXPECT_TRUE(log.contains("Exception while creating file!"));
    EXPECT_TRUE(log.contains("File creation error!"));
    EXPECT_EQ(files->getContactImage("u1", "c2", true).first, std::nullopt);
    files->updateModifiedDate("u1", "c2", true, std::chrono::system_clock::now());
    EXPECT_TRUE(log.contains("Error in updating modified date!"));
}

TEST_F(PhotoFiles, RemovingAUsersDataRemovesItsPhotoFoldersAndNoOneElses) {
    auto manager = std::make_shared<YContactsDataManager>(nullptr, nullptr, nullptr, files);
    // Normal sizes only: the removal must not stop at a thumbnail folder never written to. "u1_normal" as a
    // yuid has folders that begin like u1's; "u10" shares its prefix.
    for (const std::string yuid : {"u1", "u10", "u1_normal"}) files->saveContactImage(yuid, "c1", bytesOf(yuid), false);
    manager->removeAllData("u1");
    EXPECT_FALSE(fs::exists(files->folderFor("u1", true)));
    EXPECT_FALSE(fs::exists(files->folderFor("u1", false)));
    for (const std::string yuid : {"u10", "u1_normal"})
        EXPECT_EQ(files->getContactImage(yuid, "c1", false).first, bytesOf(yuid));
}

}  // namespace
}  // namespace ycontacts
