#pragma once
// YRequestPriority: how urgent a request is relative to the other requests of the same client.

namespace ycontacts {

enum class YRequestPriority { veryLow, low, normal, high, veryHigh };

}  // namespace ycontacts
