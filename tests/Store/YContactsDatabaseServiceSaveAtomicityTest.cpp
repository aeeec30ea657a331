#include <gtest/gtest.h>

#include "Store/StoreTestSupport.h"
#include "Support/LogCapture.h"

namespace ycontacts::storetest {
namespace {

class StoreSaveAtomicityTest : public StoreTest {};

// A save whose last table cannot be written leaves the store as it was: no contact without its
// typeahead rows, and the earlier version of a re-saved contact kept whole.
TEST_F(StoreSaveAtomicityTest, AFailedSaveLeavesTheStoreAsItWas) {
    ASSERT_TRUE(store->save("u1", {withEmail(contact("kept", "Ada"), "ada@example.com")}));
    ASSERT_EQ(countRows("YContactSearchTable", "contactId = 'kept'"), 2);

    testsupport::LogCapture log{Logger::Level::error};
    ASSERT_TRUE(YSqliteHelper::getShared()
                    .execute("CREATE TRIGGER refuse BEFORE INSERT ON YContactSearchTable BEGIN "
                             "SELECT RAISE(ABORT, 'search rows refused'); END",
                             true, identifier())
                    .ok());
    EXPECT_FALSE(store->save("u1", {withEmail(contact("kept", "Bea"), "bea@example.com"),
                                    withEmail(contact("new", "Cy"), "cy@example.com")}));

    EXPECT_TRUE(log.contains("search rows refused"));
    EXPECT_EQ(countRows("YContactDetail"), 1);
    EXPECT_EQ(countRows("YContactEmailTable", "email = 'ada@example.com'"), 1);
    EXPECT_EQ(countRows("YContactEmailTable"), 1);
    EXPECT_EQ(countRows("YContactSearchTable", "contactId = 'kept'"), 2);
    const auto kept = store->getContactByContactId("u1", "kept");
    ASSERT_TRUE(kept.has_value());
    EXPECT_EQ(kept->firstName, "Ada");
}

}  // namespace
}  // namespace ycontacts::storetest
