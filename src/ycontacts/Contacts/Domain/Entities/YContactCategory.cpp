#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"

#include <utility>

#include "ycontacts/Contacts/Domain/Entities/YTemporaryId.h"

namespace ycontacts {

YContactCategory::YContactCategory(std::optional<std::string> categoryId)
    : categoryId(categoryId ? std::move(*categoryId) : generateRandomCategoryId()) {}

std::string YContactCategory::generateRandomCategoryId() {
    return makeTemporaryId("TempCategoryId-");
}

template <JsonDocument J>
void to_json(J& json, const YContactCategory& value) {
    json = J::object();
    json["category_id"] = value.categoryId;
    jsoncoding::encodeIfPresent(json, "category_name", value.categoryName);
    jsoncoding::encodeIfPresent(json, "deleted", value.isDeleted);
}

template <JsonDocument J>
void from_json(const J& json, YContactCategory& value) {
    jsoncoding::requireObject(json, "YContactCategory");
    YContactCategory decoded(jsoncoding::decodeRequired<std::string>(json, "category_id"));
    decoded.categoryName = jsoncoding::decodeIfPresent<std::string>(json, "category_name");
    decoded.isDeleted = jsoncoding::decodeIfPresent<std::string>(json, "deleted");
    value = std::move(decoded);
}

template void to_json(nlohmann::json&, const YContactCategory&);
template void to_json(nlohmann::ordered_json&, const YContactCategory&);
template void from_json(const nlohmann::json&, YContactCategory&);
template void from_json(const nlohmann::ordered_json&, YContactCategory&);

}  // namespace ycontacts
