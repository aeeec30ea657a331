#include "ycontacts/Contacts/Domain/Entities/YContactUsageCountResponse.h"

namespace ycontacts {

template <JsonDocument J>
void to_json(J& json, const YContactUsageCountResponse& value) {
    json = J::object();
    jsoncoding::encodeIfPresent(json, "contacts", value.contacts);
}

template <JsonDocument J>
void from_json(const J& json, YContactUsageCountResponse& value) {
    jsoncoding::requireObject(json, "YContactUsageCountResponse");
    value.contacts = jsoncoding::decodeIfPresent<std::map<std::string, std::string>>(json, "contacts");
}

template void to_json(nlohmann::json&, const YContactUsageCountResponse&);
template void to_json(nlohmann::ordered_json&, const YContactUsageCountResponse&);
template void from_json(const nlohmann::json&, YContactUsageCountResponse&);
template void from_json(const nlohmann::ordered_json&, YContactUsageCountResponse&);

}  // namespace ycontacts
