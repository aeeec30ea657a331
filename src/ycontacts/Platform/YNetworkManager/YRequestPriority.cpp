#include "ycontacts/Platform/YNetworkManager/YRequestPriority.h"

#include <array>
#include <utility>

namespace ycontacts {

namespace {

constexpr std::array<std::pair<YRequestPriority, std::string_view>, 5> kPriorities{{
    {YRequestPriority::veryLow, "veryLow"},
    {YRequestPriority::low, "low"},
    {YRequestPriority::normal, "normal"},
    {YRequestPriority::high, "high"},
    {YRequestPriority::veryHigh, "veryHigh"},
}};

}  // namespace

std::string_view rawValue(YRequestPriority priority) {
    for (const auto& [value, raw] : kPriorities) {
        if (value == priority) return raw;
    }
    return "normal";
}

std::optional<YRequestPriority> requestPriorityFromRawValue(std::string_view raw) {
    for (const auto& [value, text] : kPriorities) {
        if (text == raw) return value;
    }
    return std::nullopt;
}

}  // namespace ycontacts
