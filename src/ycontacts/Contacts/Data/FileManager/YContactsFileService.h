#pragma once
// YContactsFileService: the photo cache on disk: <root>/<yuid>_thumbnail/<id>.png and <root>/<yuid>_normal/<id>.png.

#include <filesystem>
#include <memory>
#include <string>

#include "ycontacts/Contacts/Data/Contracts/YContactsFileServiceContract.h"
#include "ycontacts/Platform/MarloComponents/YMutex.h"

namespace ycontacts {

// No operation reports an error to its caller: each failure is logged and gives an absent value. The yuid
// and the identifier are written through photoFileName, so an id from the server cannot reach outside its
// folder. A photo is written to a temporary file beside its final name and then renamed over it, so a
// reader (or a crash) never sees half an image. The folders are created as a pair: asking for either size
// of a user creates both, so that deleteAllImages, which stops at the first folder it cannot remove, finds
// both and removes both.
class YContactsFileService : public YContactsFileServiceContract {
public:
    explicit YContactsFileService(std::filesystem::path contactImageDirURL);

    // The process-wide instance: the first call builds it; later arguments are ignored.
    static std::shared_ptr<YContactsFileService> getSharedInstance(const std::filesystem::path& contactImageDirURL);

    std::filesystem::path contactImageDirURL() const Y_EXCLUDES(settingsMutex_);
    void setContactImageDirURL(std::filesystem::path url) Y_EXCLUDES(settingsMutex_);
    // "png" unless changed; files saved under another extension are not found afterwards.
    std::string contactImageExtension() const Y_EXCLUDES(settingsMutex_);
    void setContactImageExtension(std::string extension) Y_EXCLUDES(settingsMutex_);

    // A normal-size photo that is missing falls back to the thumbnail (never the other way round).
    ImageFile getContactImage(const std::string& yuid, const std::string& identifier, bool isThumbnail) override;
    // Returns the path written, also when writing failed (then logged).
    std::string saveContactImage(const std::string& yuid, const std::string& identifier,
                                 const std::vector<std::uint8_t>& data, bool isThumbnail) override;
    // The thumbnail, then the normal size; the first failure (a missing file included) ends it.
    void deleteContactImage(const std::string& yuid, const std::string& identifier) override;
    // The thumbnail folder, then the normal folder; the first failure (a missing folder included) ends it.
    void deleteAllImages(const std::string& yuid) override;
    std::optional<std::chrono::system_clock::time_point> getModifiedDate(const std::string& yuid,
                                                                         const std::string& identifier,
                                                                         bool isThumbnail) override;
    void updateModifiedDate(const std::string& yuid, const std::string& identifier, bool isThumbnail,
                            std::chrono::system_clock::time_point modifiedDate) override;

    // The file of one photo; creates the user's two folders unless `createFolders` is false.
    std::filesystem::path getFilePathForContactImage(const std::string& yuid, const std::string& identifier,
                                                     bool isThumbnail, bool createFolders = true) const;
    std::filesystem::path folderFor(const std::string& yuid, bool isThumbnail) const;

private:
    // Guards only the two settings; the files themselves need no lock (last writer wins).
    mutable YMutex settingsMutex_;
    std::filesystem::path contactImageDirURL_ Y_GUARDED_BY(settingsMutex_);
    std::string contactImageExtension_ Y_GUARDED_BY(settingsMutex_) = "png";
};

}  // namespace ycontacts
