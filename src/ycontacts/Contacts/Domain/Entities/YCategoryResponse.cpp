#include "ycontacts/Contacts/Domain/Entities/YCategoryResponse.h"

#include <utility>

namespace ycontacts {

template <JsonDocument J>
void to_json(J& json, const YCategoryResponse& value) {
    json = J::object();
    json["categories"] = value.categories;
}

template <JsonDocument J>
void from_json(const J& json, YCategoryResponse& value) {
    jsoncoding::requireObject(json, "YCategoryResponse");
    value.categories = jsoncoding::decodeRequired<std::vector<YContactCategory>>(json, "categories");
}

template void to_json(nlohmann::json&, const YCategoryResponse&);
template void to_json(nlohmann::ordered_json&, const YCategoryResponse&);
template void from_json(const nlohmann::json&, YCategoryResponse&);
template void from_json(const nlohmann::ordered_json&, YCategoryResponse&);

}  // namespace ycontacts
