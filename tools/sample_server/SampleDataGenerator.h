#pragma once
// generateSampleData: builds the deterministic users, organisations and contacts for a seed.

#include <cstdint>
#include <vector>

#include "sample_server/SampleContact.h"
#include "sample_server/SampleServerOptions.h"

namespace sample_server {

struct SampleDataSet {
    std::vector<SampleUser> users;
    std::vector<SampleOrganisation> organisations;
    // Personal contacts of every user, then organisation contacts, in creation order.
    std::vector<SampleContact> contacts;
    std::uint64_t nextSequence = 1;
};

// The first contact id is "100001"; ids keep counting from there for contacts added later.
std::string contactIdForSequence(std::uint64_t sequence);

SampleDataSet generateSampleData(const SampleServerOptions& options);

}  // namespace sample_server
