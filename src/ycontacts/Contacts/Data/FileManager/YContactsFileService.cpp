#include "ycontacts/Contacts/Data/FileManager/YContactsFileService.h"

#include <cerrno>
#include <fstream>
#include <iterator>
#include <mutex>
#include <random>
#include <system_error>

#include "ycontacts/Contacts/Data/FileManager/PhotoFileName.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::system_clock;

std::string describe(const fs::path& path) { return Logger::logDescription(path.string()); }

std::string lastErrorText() { return std::error_code(errno, std::generic_category()).message(); }

// Absent for anything but a readable, non-empty regular file: a folder where a photo should be makes the
// stream throw while reading.
std::optional<std::vector<std::uint8_t>> readWholeFile(const fs::path& path) {
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored)) return std::nullopt;
    try {
        std::ifstream in(path, std::ios::binary);
        std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        if (!in.good() && !in.eof()) return std::nullopt;
        if (bytes.empty()) return std::nullopt;
        return bytes;
    } catch (const std::ios_base::failure& failure) {
        Logger::shared().warning("File could not be read! filepath: " + describe(path) + ", error: " + failure.what());
        return std::nullopt;
    }
}

// A name no photo can have: encoded ids contain no '.', so "<name>.<ext>.<random>.tmp" is never a photo.
fs::path temporaryBeside(const fs::path& path) {
    thread_local std::mt19937_64 random{std::random_device{}()};
    return fs::path(path.string() + "." + std::to_string(random()) + ".tmp");
}

// False with the error's text when the bytes could not all be written and renamed into place.
bool writeThenRename(const fs::path& path, const std::vector<std::uint8_t>& data, std::string& error) {
    const fs::path temporary = temporaryBeside(path);
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (out) out.write(reinterpret_cast<const char*>(data.data()), static_cast<std::streamsize>(data.size()));
        if (out) out.close();
        if (!out) {
            error = lastErrorText();
            std::error_code ignored;
            fs::remove(temporary, ignored);
            return false;
        }
    }
    std::error_code renamed;
    fs::rename(temporary, path, renamed);
    if (!renamed) return true;
    error = renamed.message();
    fs::remove(temporary, renamed);
    return false;
}

// Removes one file or folder tree; a missing one counts as a failure, as the all-or-stop deletes want.
bool removeExisting(const fs::path& path, bool tree, std::string& error) {
    std::error_code code;
    const bool removed = tree ? fs::remove_all(path, code) > 0 : fs::remove(path, code);
    if (!code && !removed) code = std::make_error_code(std::errc::no_such_file_or_directory);
    if (!code) return true;
    error = code.message();
    return false;
}

}  // namespace

YContactsFileService::YContactsFileService(fs::path contactImageDirURL)
    : contactImageDirURL_(std::move(contactImageDirURL)) {}

std::shared_ptr<YContactsFileService> YContactsFileService::getSharedInstance(const fs::path& contactImageDirURL) {
    static std::once_flag once;
    static std::shared_ptr<YContactsFileService> instance;
    std::call_once(once, [&] { instance = std::make_shared<YContactsFileService>(contactImageDirURL); });
    return instance;
}

fs::path YContactsFileService::contactImageDirURL() const {
    YMutexLock lock(settingsMutex_);
    return contactImageDirURL_;
}

void YContactsFileService::setContactImageDirURL(fs::path url) {
    YMutexLock lock(settingsMutex_);
    contactImageDirURL_ = std::move(url);
}

std::string YContactsFileService::contactImageExtension() const {
    YMutexLock lock(settingsMutex_);
    return contactImageExtension_;
}

void YContactsFileService::setContactImageExtension(std::string extension) {
    YMutexLock lock(settingsMutex_);
    contactImageExtension_ = std::move(extension);
}

fs::path YContactsFileService::folderFor(const std::string& yuid, bool isThumbnail) const {
    return contactImageDirURL() / (photoFileName(yuid) + (isThumbnail ? "_thumbnail" : "_normal"));
}

fs::path YContactsFileService::getFilePathForContactImage(const std::string& yuid, const std::string& identifier,
                                                          bool isThumbnail, bool createFolders) const {
    const fs::path folder = folderFor(yuid, isThumbnail);
    if (createFolders) {
        for (const bool thumbnail : {isThumbnail, !isThumbnail}) {
            const fs::path pairFolder = folderFor(yuid, thumbnail);
            std::error_code error;
            fs::create_directories(pairFolder, error);
            if (error)
                Logger::shared().warning("Exception while creating file! filepath: " + describe(pairFolder) +
                                         ", error: " + error.message());
        }
    }
    return folder / (photoFileName(identifier) + "." + contactImageExtension());
}

YContactsFileServiceContract::ImageFile YContactsFileService::getContactImage(const std::string& yuid,
                                                                              const std::string& identifier,
                                                                              bool isThumbnail) {
    fs::path path = getFilePathForContactImage(yuid, identifier, isThumbnail);
    std::error_code ignored;
    // Only a missing normal-size photo falls back, to the thumbnail; a missing thumbnail does not.
    if (!fs::exists(path, ignored) && !isThumbnail) path = getFilePathForContactImage(yuid, identifier, true);
    if (!fs::exists(path, ignored)) {
        Logger::shared().debug("File not found! filepath: " + describe(path));
        return {std::nullopt, path.string()};
    }
    return {readWholeFile(path), path.string()};
}

std::string YContactsFileService::saveContactImage(const std::string& yuid, const std::string& identifier,
                                                   const std::vector<std::uint8_t>& data, bool isThumbnail) {
    const fs::path path = getFilePathForContactImage(yuid, identifier, isThumbnail);
    std::string error;
    if (!writeThenRename(path, data, error))
        Logger::shared().warning("File creation error! filepath: " + describe(path) + " error: " + error);
    return path.string();
}

void YContactsFileService::deleteContactImage(const std::string& yuid, const std::string& identifier) {
    for (const bool thumbnail : {true, false}) {
        const fs::path path = getFilePathForContactImage(yuid, identifier, thumbnail, false);
        std::string error;
        if (!removeExisting(path, false, error)) {
            Logger::shared().warning("Exception while deleting file! filepath: " + describe(path) + " error: " + error);
            return;
        }
    }
}

void YContactsFileService::deleteAllImages(const std::string& yuid) {
    const fs::path thumbnails = folderFor(yuid, true);
    const fs::path normals = folderFor(yuid, false);
    std::string error;
    if (removeExisting(thumbnails, true, error) && removeExisting(normals, true, error)) return;
    Logger::shared().warning("Exception while deleting files! thumbnailImagesPath: " + describe(thumbnails) +
                             ", detailImagesPath: " + describe(normals) + " error: " + error);
}

std::optional<Clock::time_point> YContactsFileService::getModifiedDate(const std::string& yuid,
                                                                       const std::string& identifier,
                                                                       bool isThumbnail) {
    std::error_code error;
    const auto written = fs::last_write_time(getFilePathForContactImage(yuid, identifier, isThumbnail, false), error);
    if (error) return std::nullopt;
    return std::chrono::time_point_cast<Clock::duration>(std::chrono::file_clock::to_sys(written));
}

void YContactsFileService::updateModifiedDate(const std::string& yuid, const std::string& identifier, bool isThumbnail,
                                              Clock::time_point modifiedDate) {
    const fs::path path = getFilePathForContactImage(yuid, identifier, isThumbnail, false);
    std::error_code error;
    fs::last_write_time(path, std::chrono::file_clock::from_sys(modifiedDate), error);
    if (error)
        Logger::shared().warning("Error in updating modified date! filepath: " + describe(path) +
                                 ", error: " + error.message());
}

}  // namespace ycontacts
