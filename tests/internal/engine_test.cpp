#include <gtest/gtest.h>

#include "ara/per/key_value_storage.h"
#include "tests/support/database_test.h"

namespace ara::per {

extern void (*gfunction)(void*);  // the timer's: what the sleeping threads will call

using EngineTest = testing::DatabaseTest;

TEST_F(EngineTest, DelayedCallOfAStoppedTimerPrintsAndDoesNothing) {
  testing::WriteConfig(false, 0, 60000);
  KeyValueStorage database("db");
  database.RemoveAllKeys();
  log_.Clear();
  gfunction(nullptr);
  EXPECT_EQ(out_.Take() + log_.Joined(), "timer is called but the data is invalid\n");
}

}  // namespace ara::per
