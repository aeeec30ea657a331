#pragma once
// YContactImageStatus: what a photo request found: still current (304), no photo (204 or 403), or a new image (200).

#include "ycontacts/Platform/MarloComponents/YRawValue.h"

namespace ycontacts {

enum class YContactImageStatus { notModified, noContent, newImage };

// Case names, for log lines.
template <>
struct YRawValues<YContactImageStatus> {
    using E = YContactImageStatus;
    static constexpr YRawValueEntry<E> entries[] = {
        {E::notModified, "notModified"},
        {E::noContent, "noContent"},
        {E::newImage, "newImage"},
    };
};

}  // namespace ycontacts
