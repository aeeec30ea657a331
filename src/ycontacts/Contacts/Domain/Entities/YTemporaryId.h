#pragma once
// YTemporaryId: the time-and-random ids given to records made on this device before the server has named them.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ycontacts {

// `prefix` followed by the decimal digits of temporaryIdNumber(now, r) with r drawn uniformly from [0, 9999].
std::string makeTemporaryId(std::string_view prefix);

// (secondsSince1970 × 100000, cut to an integer) + randomPart; no value when the scaled time does not fit
// a signed 64-bit integer or the sum overflows.
std::optional<std::int64_t> temporaryIdNumber(double secondsSince1970, std::int64_t randomPart);

}  // namespace ycontacts
