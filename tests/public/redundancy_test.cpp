#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/per/key_value_storage.h"
#include "tests/support/database_test.h"
#include "tests/support/redundant_file.h"

namespace ara::per::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;

constexpr char kRedundantFile[] = ARA_PER_REDUNDANT_DIR "/kvsdatabase.json";
/// A database file with an item for each pair of a letter and a digit; other texts as they are.
std::string FileOf(const std::string& items) {
  if (items.empty() || items[0] < 'a' || items[0] > 'z') {
    return items;
  }
  std::string text;
  for (std::size_t i = 0; i < items.size(); i += 2) {
    text += std::string(i == 0 ? "[" : ",") + R"({"key":")" + items[i] +
            R"(","type":"sint32","value":)" + items[i + 1] + "}";
  }
  return text + "]";
}

class RedundancyTest : public DatabaseTest {
 protected:
  void SetUp() override {
    if (!redundant_.isOurs()) {
      GTEST_SKIP() << kRedundantFile << " is not the tests' own or cannot be created";
    }
    WriteFile(kRedundantFile, "[]");
  }

  /// Sets "b". @return whether the database believes that a delay lasts
  bool IsArmed(KeyValueStorage& database) {
    log_.Clear();
    database.SetValue<int>("b", 2);
    return log_.Has(6, "KeyValueStorage::Impl::setValue for key: b isTimer=1");
  }

 private:
  const RedundantFile redundant_{kRedundantFile};
};

TEST_F(RedundancyTest, ItemsSurviveWhereTheKeysOfBothFilesAgreeByPosition) {
  struct Case {
    std::string file;  // empty: there is none
    std::string redundantFile;
    std::string saved;
    bool toldOfEnd;
  };
  const std::vector<Case> cases = {
      {"a1b2c3", "a7b8c9", "a1b2c3", false}, {"a1b2c3", "a7c8", "a1", true},
      {"a1b2", "a7b8c9", "a1b2", false},     {"a1b2c3", "a7b8", "a1b2", true},
      {"a1b2c3", "x7b8c9", "b2c3", false},   {"a1b2c3", "b7c8a9", "a1b2c3", false},
      {"a1b2c3", "b7c8", "a1b2c3", true},    {"a1b2", "[]", "a1b2", true},
      {"a1b2", "{", "a1b2", true},           {"", "a7b8", "", false},
      {"[]", "a7b8", "[]", false},           {"{", "a7b8", "{", false},
      {"a1b2a3", "a7b8a9", "a3b2", false},
  };
  WriteConfig(true, 1000, 0);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file + " / " + c.redundantFile);
    std::filesystem::remove("db");
    if (!c.file.empty()) {
      WriteFile("db", FileOf(c.file));
    }
    WriteFile(kRedundantFile, FileOf(c.redundantFile));
    log_.Clear();
    const KeyValueStorage database("db");
    EXPECT_EQ(log_.Has(2, "KeyValueStorage::Impl::InitWithRedundancy redundant_items is null"),
              c.toldOfEnd);
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), FileOf(c.saved));
    EXPECT_EQ(ReadFile(kRedundantFile), FileOf(c.redundantFile));
  }
}

TEST_F(RedundancyTest, MergeLogsItsStepsAndArmsNothing) {
  WriteConfig(true, 1000, 60000);
  WriteFile("db", FileOf("a1b2c3"));
  WriteFile(kRedundantFile, FileOf("a7c8"));
  KeyValueStorage database("db");
  const std::string read = "|6 getKVSItemsFromJson is end filename=";
  EXPECT_THAT(TakeText(kEngineFile, "KeyValueStorage::Impl::", "@"),
              EndsWith(read + "db" + read + kRedundantFile +
                       "|6 @setValue for key: a isTimer=0|3 @setValue not find the key"
                       "|6 @InitWithRedundancy set value3|6 @InitWithRedundancy set value3"
                       "|2 @InitWithRedundancy redundant_items is null|6 @Impl end"));
  EXPECT_THAT(database.GetAllKeys(), ElementsAre("a"));
  EXPECT_FALSE(IsArmed(database));
  EXPECT_TRUE(IsArmed(database));
}

TEST_F(RedundancyTest, WithoutTheRedundantFileSettingNeverArmsAndNoSizeCounts) {
  std::filesystem::remove(kRedundantFile);
  WriteConfig(true, 1, 60000);
  WriteFile("db", FileOf("a1"));
  KeyValueStorage database("db");
  EXPECT_THAT(TakeText(kEngineFile, "KeyValueStorage::Impl::", "@"),
              EndsWith("|6 @InitWithoutRedundancy redundant data file is not exit"
                       "|6 getKVSItemsFromJson is end filename=db"
                       "|6 @InitWithoutRedundancy end database_=db|6 @Impl end"));
  EXPECT_FALSE(IsArmed(database));
  EXPECT_FALSE(IsArmed(database));
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), FileOf("a1b2"));
  database.RemoveKey("c");
  EXPECT_TRUE(IsArmed(database));
  database.SyncToStorage();
  EXPECT_FALSE(IsArmed(database));
  database.RemoveAllKeys();
  EXPECT_TRUE(IsArmed(database));
}

TEST_F(RedundancyTest, FileThatIsNotBelowTheLimitRefusesASave) {
  const auto saves = [this](bool isRedundancy, unsigned int maxSize, const char* file) {
    WriteConfig(isRedundancy, maxSize, 0);
    WriteFile("db", file);
    KeyValueStorage database("db");
    database.SetValue<int>("a", 1);
    log_.Clear();
    database.SyncToStorage();
    EXPECT_EQ(log_.Has(2, "the file is max size, it can not to storage the data."),
              ReadFile("db") == file);
    return ReadFile("db") == FileOf("a1");
  };
  EXPECT_FALSE(saves(true, 0, ""));
  EXPECT_FALSE(saves(true, 2, "[]"));
  EXPECT_TRUE(saves(true, 3, "[]"));
  EXPECT_TRUE(saves(true, 4294967295U, "[]"));
  EXPECT_TRUE(saves(false, 1, "[]"));

  WriteConfig(true, 0, 0);
  KeyValueStorage database("db");
  database.RemoveAllKeys();
  database.SetValue<int>("a", 1);
  database.SyncToStorage();  // refused
  std::filesystem::remove("db");
  database.SyncToStorage();  // a refused change waits for a later one
  EXPECT_FALSE(std::filesystem::exists("db"));
  database.SetValue<int>("b", 2);
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), FileOf("a1b2"));
}

}  // namespace
}  // namespace ara::per::testing
