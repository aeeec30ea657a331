#pragma once
// SampleContactsServer: a loopback HTTP server speaking the contacts REST API over generated data, with a
// thread-safe API for tests to change data, read what was requested and inject faults.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sample_server/SampleContact.h"
#include "sample_server/SampleFault.h"
#include "sample_server/SampleRequestLog.h"
#include "sample_server/SampleServerOptions.h"

namespace sample_server {

class SampleContactsServer {
public:
    using Options = SampleServerOptions;

    explicit SampleContactsServer(Options options = {});
    ~SampleContactsServer();
    SampleContactsServer(const SampleContactsServer&) = delete;
    SampleContactsServer& operator=(const SampleContactsServer&) = delete;

    // Binds 127.0.0.1 (the options' port, or an ephemeral one) and serves on background threads. Returns once
    // connections are being accepted, with the port; -1 when the port cannot be bound. A second call returns
    // the same port.
    int start();
    // Stops serving, closes open connections and joins the server threads. The destructor stops too.
    void stop();
    int port() const;
    // "http://127.0.0.1:<port>", the base for every path.
    std::string baseURL() const;

    std::vector<std::string> userIds() const;
    // The user's authorization value; empty for an unknown user.
    std::string userToken(const std::string& yuid) const;
    std::optional<std::string> yoidOf(const std::string& yuid) const;
    std::vector<SampleCategory> categories(const std::string& yuid) const;
    // The user's personal contact ids with their usage counts, highest first.
    std::vector<std::pair<std::string, int>> usageCounts(const std::string& yuid) const;

    // Server-side changes, as another device of the user would make them. `owner` is a yuid for personal
    // contacts; for organisation contacts a yoid or the yuid of one of its members. Each change stamps the
    // contact with the server clock; a delete leaves a tombstone for incremental replies.
    // An empty contact id gets a fresh one; returns the id, absent for an unknown owner or a taken id.
    std::optional<std::string> addContact(const std::string& owner, bool isOrg, SampleContact contact);
    // Replaces the contact with the same id; false when there is none.
    bool updateContact(const std::string& owner, bool isOrg, SampleContact contact);
    bool deleteContact(const std::string& owner, bool isOrg, const std::string& contactId);
    // A new photo for the contact (or none), dated after every Date header sent so far; false for no contact.
    bool changePhoto(const std::string& owner, bool isOrg, const std::string& contactId, bool hasPhoto = true);

    std::vector<SampleContact> contacts(const std::string& owner, bool isOrg) const;
    std::optional<SampleContact> contact(const std::string& owner, bool isOrg, const std::string& contactId) const;
    std::vector<SampleTombstone> tombstones(const std::string& owner, bool isOrg) const;
    // A reading of the server clock (ms); every later change carries a later time.
    std::int64_t clockMs();
    // The contact as a list reply carries it (every section included).
    std::string toWireJson(const SampleContact& contact) const;

    void injectFault(Fault fault);
    void clearFaults();
    std::size_t pendingFaults() const;

    std::vector<LoggedRequest> requestLog() const;
    void clearRequestLog();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace sample_server
