#include "key-value-storage/key_pool.h"

#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace ara::per::testing {

TEST(KeyPoolTest, ServesATreeOfKeysOfAllLengthsThroughManyRemovals) {
  KeyPool pool;
  std::pmr::map<std::pmr::string, int> tree(&pool);
  std::map<std::string, int> expected;
  std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same run each time
  for (int round = 0; round < 40000; ++round) {
    const std::string key(1 + random() % 700, static_cast<char>('a' + random() % 26));
    if (random() % 3 == 0) {
      tree.erase(std::pmr::string(key));
      expected.erase(key);
    } else {
      tree[std::pmr::string(key)] = round;
      expected[key] = round;
    }
  }
  EXPECT_EQ((std::map<std::string, int>(tree.begin(), tree.end())), expected);
}

TEST(KeyPoolTest, UsesAPieceAgainForTheSameSizeAlone) {
  KeyPool pool;
  void* const piece = pool.allocate(17, 1);
  pool.deallocate(piece, 17, 1);
  EXPECT_TRUE(pool.allocate(16, 8) != piece && pool.allocate(25, 8) != piece);
  EXPECT_EQ(pool.allocate(24, 8), piece);
}

}  // namespace ara::per::testing
