#pragma once
// StoreRefusal: makes a contacts database file refuse one contact, as a full disk or a broken constraint would.

#include <sqlite3.h>

#include <filesystem>
#include <string>

namespace ycontacts::testsupport {

// Runs `sql` on the database file through a connection of its own; true when it succeeded.
inline bool runOn(const std::filesystem::path& database, const std::string& sql) {
    sqlite3* handle = nullptr;
    bool done = sqlite3_open(database.c_str(), &handle) == SQLITE_OK;
    if (done) {
        sqlite3_busy_timeout(handle, 5000);
        done = sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
    }
    sqlite3_close(handle);
    return done;
}

// From now on every write of the contact's row fails, and with it the write that carries it.
inline bool refuseContact(const std::filesystem::path& database, const std::string& contactId) {
    char* sql = sqlite3_mprintf("CREATE TRIGGER refuseContact BEFORE INSERT ON YContactDetail WHEN NEW.contactId = %Q "
                                "BEGIN SELECT RAISE(ABORT, 'contact refused by the test'); END",
                                contactId.c_str());
    const bool done = runOn(database, sql);
    sqlite3_free(sql);
    return done;
}

inline bool acceptEveryContact(const std::filesystem::path& database) {
    return runOn(database, "DROP TRIGGER IF EXISTS refuseContact");
}

}  // namespace ycontacts::testsupport
