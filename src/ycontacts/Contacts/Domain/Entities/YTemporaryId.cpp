#include "ycontacts/Contacts/Domain/Entities/YTemporaryId.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <random>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {
namespace {

std::int64_t drawRandomPart() {
    // One engine per thread, seeded once from the system's random source; the distribution rejects
    // the biased range instead of taking a modulo.
    thread_local std::mt19937_64 engine = [] {
        std::random_device source;
        std::seed_seq seed{source(), source(), source(), source()};
        return std::mt19937_64(seed);
    }();
    std::uniform_int_distribution<std::int64_t> distribution(0, 9999);
    return distribution(engine);
}

}  // namespace

std::optional<std::int64_t> temporaryIdNumber(double secondsSince1970, std::int64_t randomPart) {
    const double scaled = std::trunc(secondsSince1970 * 100000.0);
    constexpr double twoToThe63 = 9223372036854775808.0;
    if (!std::isfinite(scaled) || scaled >= twoToThe63 || scaled < -twoToThe63) return std::nullopt;
    const auto base = static_cast<std::int64_t>(scaled);
    constexpr auto max = std::numeric_limits<std::int64_t>::max();
    constexpr auto min = std::numeric_limits<std::int64_t>::min();
    if ((randomPart > 0 && base > max - randomPart) || (randomPart < 0 && base < min - randomPart)) {
        return std::nullopt;
    }
    return base + randomPart;
}

std::string makeTemporaryId(std::string_view prefix) {
    const double seconds =
        std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    const std::int64_t randomPart = drawRandomPart();
    auto number = temporaryIdNumber(seconds, randomPart);
    if (!number) {
        // Only a clock hundreds of thousands of years off gets here; the id stays well formed.
        Logger::shared().error("Temporary id: clock out of range, using the random part alone, seconds " +
                               std::to_string(seconds));
        number = randomPart;
    }
    return std::string(prefix) + std::to_string(*number);
}

}  // namespace ycontacts
