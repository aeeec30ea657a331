#pragma once
// YJSONSerializer: reads a JSON body into a parsed top-level object (YJSONDictionary) with simdjson's DOM.

#include <memory>
#include <optional>
#include <string_view>

#include <simdjson.h>

namespace ycontacts {

// A parsed JSON object together with the parser that owns its storage. The root and every element reached
// from it stay valid while the dictionary lives, also after it is moved.
class YJSONDictionary {
public:
    YJSONDictionary(YJSONDictionary&&) noexcept = default;
    YJSONDictionary& operator=(YJSONDictionary&&) noexcept = default;
    YJSONDictionary(const YJSONDictionary&) = delete;
    YJSONDictionary& operator=(const YJSONDictionary&) = delete;

    simdjson::dom::object root() const { return root_; }

private:
    friend class YJSONSerializer;
    YJSONDictionary(std::unique_ptr<simdjson::dom::parser> parser, simdjson::dom::object root)
        : parser_(std::move(parser)), root_(root) {}

    std::unique_ptr<simdjson::dom::parser> parser_;
    simdjson::dom::object root_;
};

class YJSONSerializer {
public:
    // Present only when `data` is valid JSON whose top level is an object; otherwise a warning is logged.
    // Never throws.
    static std::optional<YJSONDictionary> dictionary(std::string_view data);
};

}  // namespace ycontacts
