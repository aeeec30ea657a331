#pragma once
// SampleRandom: a tiny splitmix64 generator, so generated data is identical on every platform and library.

#include <cstdint>
#include <vector>

namespace sample_server {

class SampleRandom {
public:
    explicit SampleRandom(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }

    // A value in [0, bound); bound must be positive.
    int below(int bound) { return static_cast<int>(next() % static_cast<std::uint64_t>(bound)); }

    bool chance(int percent) { return below(100) < percent; }

    template <typename T>
    const T& pick(const std::vector<T>& values) {
        return values[static_cast<std::size_t>(below(static_cast<int>(values.size())))];
    }

private:
    std::uint64_t state_;
};

}  // namespace sample_server
