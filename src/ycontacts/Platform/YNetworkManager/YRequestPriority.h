#pragma once
// YRequestPriority: how urgent a request is relative to the other requests of the same client.

#include <optional>
#include <string_view>

namespace ycontacts {

enum class YRequestPriority { veryLow, low, normal, high, veryHigh };

// "veryLow", "low", "normal", "high", "veryHigh".
std::string_view rawValue(YRequestPriority priority);
// The priority named by `raw`; unknown text gives no value.
std::optional<YRequestPriority> requestPriorityFromRawValue(std::string_view raw);

}  // namespace ycontacts
