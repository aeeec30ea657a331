#pragma once
// YNetworkResponse: the base of the records network services hand back; a failed call sets only `error`.

#include <optional>

#include "ycontacts/Contacts/Data/Network/YContactError.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Gives Self a static getResponse(error) that makes a Self whose error is set and whose data fields keep
// their empty defaults. Every response record takes it, so a failure path always yields a record.
template <class Self>
struct YNetworkResponseFactory {
    static Self getResponse(YContactError error) {
        Self response;
        response.error = error;
        return response;
    }
};

struct YCONTACTS_EXPORT YNetworkResponse : YNetworkResponseFactory<YNetworkResponse> {
    std::optional<YContactError> error;
};

// Base of the YNetworkResponse subclasses: Self::getResponse makes a Self, not a plain YNetworkResponse.
template <class Self>
struct YNetworkResponseOf : YNetworkResponse, YNetworkResponseFactory<Self> {
    using YNetworkResponseFactory<Self>::getResponse;
};

}  // namespace ycontacts
