#pragma once
// YDataManager: the common base of the library's data managers; it carries no state and no operations.

namespace ycontacts {

class YDataManager {
public:
    virtual ~YDataManager() = default;

protected:
    YDataManager() = default;
    YDataManager(const YDataManager&) = default;
    YDataManager& operator=(const YDataManager&) = default;
};

}  // namespace ycontacts
