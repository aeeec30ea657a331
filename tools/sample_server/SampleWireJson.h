#pragma once
// The sample server's JSON wire format: contact objects, list replies, error bodies and the small replies.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "sample_server/SampleContact.h"
#include "sample_server/SampleContactStore.h"

namespace sample_server {

using WireJson = nlohmann::ordered_json;

// Which optional sections a list reply carries. A request without "include" gets every section; one with
// "include" gets e-mails, phones, links, usage counts and categories only when it names them.
struct WireSections {
    bool emails = true;
    bool phones = true;
    bool urls = true;
    bool usageCount = true;
    bool categories = true;
    bool showDeleted = false;

    static WireSections fromInclude(const std::optional<std::string>& include);
};

// baseURL makes "photo_url" absolute; it is the server's own address.
WireJson contactToWire(const SampleContact& contact, const std::string& baseURL,
                       const WireSections& sections = WireSections{});
WireJson tombstoneToWire(const SampleTombstone& tombstone);
WireJson pageToWire(const ContactPage& page, int pageNumber, int perPage, const std::string& baseURL,
                    const WireSections& sections);

// Reads a contact object of an add request. Every key is optional; a known key of the wrong type makes the
// object unreadable (absent result).
std::optional<SampleContact> contactFromWire(const nlohmann::json& object);

WireJson errorBody(int statusCode, const std::string& message);
WireJson categoriesToWire(const std::vector<SampleCategory>& categories);
WireJson usageCountsToWire(const std::vector<std::pair<std::string, int>>& counts);

}  // namespace sample_server
