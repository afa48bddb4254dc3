#include <gtest/gtest.h>

#include "ara/per/key_value_storage.h"
#include "tests/support/database_test.h"

namespace ara::per {

extern void (*gfunction)(void*);  // the timer's: what the sleeping threads will call

namespace testing {
namespace {

class EngineTest : public DatabaseTest {};

TEST_F(EngineTest, DelayedCallOfAStoppedTimerPrintsAndDoesNothing) {
  WriteConfig(false, 0, 60000);
  KeyValueStorage database("db");
  database.RemoveAllKeys();
  ASSERT_NE(gfunction, nullptr);
  log_.Clear();
  gfunction(nullptr);
  EXPECT_EQ(out_.Take(), "timer is called but the data is invalid\n");
  EXPECT_EQ(TakeLines(), Lines());
}

}  // namespace
}  // namespace testing
}  // namespace ara::per
