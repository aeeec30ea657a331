#pragma once
// YSqliteValueList: a list of texts bound as "IN (?, ?, ...)" in chunks of one fixed size.

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "ycontacts/Platform/YSqliteHelper/YSqliteValue.h"

namespace ycontacts {

// Every chunk has the same number of parameters, so a list of any length runs as a few statements that all
// share one text and one cached statement. Each value is its own bound parameter: a JSON array through
// json_each would be one parameter, but json_each hands a text back cut at its first NUL, and then "a\0b"
// would reach the rows of "a".
struct YSqliteValueList {
    static constexpr std::size_t chunkSize = 250;

    // "(?, ?, ..., ?)" with chunkSize parameters.
    static const std::string& placeholders() {
        static const std::string text = [] {
            std::string built = "(?";
            for (std::size_t index = 1; index < chunkSize; ++index) built += ", ?";
            return built + ")";
        }();
        return text;
    }

    // Calls `each(values)` for each chunk of `texts`, in order, with chunkSize values: the last chunk is
    // padded with repeats of its last text, which an IN test does not notice. Stops at the first chunk for
    // which `each` returns false and returns false; an empty list calls nothing and returns true.
    template <class Each>
    static bool forEachChunk(const std::vector<std::string>& texts, Each&& each) {
        for (std::size_t start = 0; start < texts.size(); start += chunkSize) {
            std::vector<YSqliteValue> values;
            values.reserve(chunkSize);
            for (std::size_t index = 0; index < chunkSize; ++index) {
                values.emplace_back(texts[std::min(start + index, texts.size() - 1)]);
            }
            if (!each(values)) return false;
        }
        return true;
    }
};

}  // namespace ycontacts
