#pragma once
// FakeContactsFileService: a gmock photo cache that holds no photo unless a test says otherwise.

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Contracts/YContactsFileServiceContract.h"

namespace ycontacts::testsupport {

class FakeContactsFileService : public YContactsFileServiceContract {
public:
    MOCK_METHOD(ImageFile, getContactImage, (const std::string&, const std::string&, bool), (override));
    MOCK_METHOD(std::string, saveContactImage,
                (const std::string&, const std::string&, const std::vector<std::uint8_t>&, bool), (override));
    MOCK_METHOD(void, deleteContactImage, (const std::string&, const std::string&), (override));
    MOCK_METHOD(void, deleteAllImages, (const std::string&), (override));
    MOCK_METHOD(std::optional<std::chrono::system_clock::time_point>, getModifiedDate,
                (const std::string&, const std::string&, bool), (override));
    MOCK_METHOD(void, updateModifiedDate,
                (const std::string&, const std::string&, bool, std::chrono::system_clock::time_point), (override));
};

}  // namespace ycontacts::testsupport
