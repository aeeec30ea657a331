#include "ycontacts/Platform/MarloComponents/YJSONSerializer.h"

#include <new>
#include <string>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

std::optional<YJSONDictionary> YJSONSerializer::dictionary(std::string_view data) {
    if (data.empty()) {
        Logger::shared().warning("JSON body not read: it is empty");
        return std::nullopt;
    }
    auto parser = std::unique_ptr<simdjson::dom::parser>(new (std::nothrow) simdjson::dom::parser());
    if (!parser) {
        Logger::shared().error("JSON body not read: no memory for a parser");
        return std::nullopt;
    }
    simdjson::dom::element element;
    if (const auto error = parser->parse(data.data(), data.size()).get(element)) {
        Logger::shared().warning("JSON body not read (" + std::to_string(data.size()) +
                                 " bytes): " + simdjson::error_message(error));
        return std::nullopt;
    }
    simdjson::dom::object root;
    if (element.get_object().get(root)) {
        Logger::shared().warning("JSON body is not an object (" + std::to_string(data.size()) + " bytes)");
        return std::nullopt;
    }
    return YJSONDictionary(std::move(parser), root);
}

}  // namespace ycontacts
