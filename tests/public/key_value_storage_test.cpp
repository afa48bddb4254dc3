#include "ara/per/key_value_storage.h"

#include <filesystem>
#include <future>
#include <regex>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/per/internal_access.h"
#include "ara/per/logic_error_exception.h"
#include "tests/support/delays.h"
#include "tests/support/redundant_file.h"

namespace ara::per::testing {
namespace {

using ::testing::EndsWith;
using Operation = void (*)(KeyValueStorage&);

constexpr char kRedundantFile[] = ARA_PER_REDUNDANT_DIR "/kvsdatabase.json";

/// The text of a file in which each pair of a letter and a digit stands for an item.
std::string FileOf(const std::string& text) {
  static const std::regex item("([a-z])([0-9])");
  return std::regex_replace(text, item, R"({"key":"$1","type":"sint32","value":$2})");
}

KvsType MovedFrom() {
  KvsType value(1);
  const KvsType taken(std::move(value));
  return value;
}

class KeyValueStorageTest : public DatabaseTest {
 protected:
  std::string TakeEngineText() { return TakeText(kEngineFile, "KeyValueStorage::Impl::", "@"); }
};

TEST_F(KeyValueStorageTest, OpeningAndOperationsLogTheirSteps) {
  const std::string config = std::filesystem::current_path().string() + "/PersistencyConfig.json";
  const std::string begin = "6 impl configpath: " + config + " :database=db|";
  std::filesystem::remove(config);
  CreateKeyValueStorage("db");
  EXPECT_EQ(TakeEngineText(), begin +
                                  "3 config file is not exit|2 database db file is not exit"
                                  "|3 @InitWithoutRedundancy the file is empty|6 @Impl end");
  WriteConfig(false, 0, 0);
  WriteFile("db", FileOf("[a1,a2]"));
  KeyValueStorage database("db");
  int value = 0;
  database.SetValue("b", 1);
  database.SetValue("b", 2);
  database.GetValue("b", value);
  EXPECT_TRUE(database.HasKey("b"));
  database.RemoveKey("b");
  database.RemoveKey("b");
  EXPECT_FALSE(database.HasKey("b"));
  database.GetValue("b", value);
  database.GetAllKeys();
  database.setLogLevel(0);
  database.RemoveKey("a");
  database.SyncToStorage();
  database.RemoveAllKeys();  // the list's first item, which the map did not hold: no change
  database.SyncToStorage();
  EXPECT_EQ(TakeEngineText(),
            begin +
                "6 getKVSItemsFromJson is end filename=db|6 @InitWithoutRedundancy end "
                "database_=db|6 @Impl end|6 @setValue for key: b isTimer=0"
                "|3 @setValue not find the key|6 @setValue for key: b isTimer=0"
                "|6 @getValue key for:b|6 @getValue find|6 @hasKey key is:b "
                "|6 @removeKey key: |6 @removeKey key: |3 @removeKey not find the key"
                "|6 @hasKey key is:b |6 @getValue key for:b|6 @syncToLocalStorage end"
                "|6 @removeKey key: |6 db_changed_:1 |6 syncToLocalStorage db_changed_ "
                "database_:db |6 @syncToLocalStorage end"
                "|6 @removeAllKeys kvs_items_in_add_order_.count:1|6 db_changed_:0 ");
}

TEST_F(KeyValueStorageTest, BadFileOpensEmptyAndIsLeftAloneUntilAChange) {
  for (const std::string& file :
       {std::string(), FileOf("[a1"), FileOf("[a1]x"), std::string("{}"), std::string("[null]"),
        FileOf(R"([a1,{"key":"b","type":"sint8"}])"),
        FileOf(R"([{"key":"b","type":"object","value":[{"type":"sint8","value":1}]}])"),
        std::string(100000, '[') + std::string(100000, ']')}) {
    SCOPED_TRACE(file.substr(0, 80));
    WriteFile("db", file);
    KeyValueStorage database("db");
    EXPECT_THAT(TakeEngineText(),
                EndsWith("db|3 @InitWithoutRedundancy the file is empty|6 @Impl end"));
    RecoverKeyValueStorage("db");  // do nothing
    ResetKeyValueStorage("db");
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), file);
    database.SetValue("a", 1);
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), FileOf("[a1]"));
  }
}

TEST_F(KeyValueStorageTest, SyncWritesTheListWhenSomethingCountsAsChanged) {
  const std::vector<std::tuple<std::string, std::string, Operation>> cases = {
      // the file that is opened, what is saved in the place of another file, and the change
      {"[a1,b2]", "[a1,b2]", [](KeyValueStorage& d) { d.SetValue("a", 1); }},
      {"[a1]", "[a1]", [](KeyValueStorage& d) { EXPECT_ANY_THROW(d.SetValue("a", MovedFrom())); }},
      {"[a1]", "another", [](KeyValueStorage& d) { d.SetValue("a", std::vector<int>()); }},
      {"[a1,b2]", "[b2]", [](KeyValueStorage& d) { d.RemoveKey("a"); }},
      {"[a1]", "another", [](KeyValueStorage& d) { d.RemoveKey("b"); }},
      {"[a1]", "[]", [](KeyValueStorage& d) { d.RemoveAllKeys(); }},
      {"[]", "another", [](KeyValueStorage& d) { d.RemoveAllKeys(); }},
      // the list keeps both items of one key, of which the later one is found
      {"[a1,a2]", "[a1,a3]", [](KeyValueStorage& d) { d.SetValue("a", 3); }},
      {"[a1,a2]", "[a1]", [](KeyValueStorage& d) { d.RemoveKey("a"); }},
  };
  for (const auto& [opened, saved, change] : cases) {
    SCOPED_TRACE(opened + " " + saved);
    WriteFile("db", FileOf(opened));
    {
      KeyValueStorage database("db");
      WriteFile("db", "another");
      change(database);
      database.SyncToStorage();
      database.SetValue("c", 3);  // lost
    }
    EXPECT_EQ(ReadFile("db"), FileOf(saved));
  }
}

TEST_F(KeyValueStorageTest, KeysAreToldApartByEveryByteAndTheirLength) {
  KeyValueStorage database("db");
  Lines keys = {"b", "", "baaaaaaa"};
  for (const std::size_t size : {0U, 7U, 8U, 15U}) {
    for (const char last : {'\xff', '\0', 'a'}) {
      keys.push_back(std::string(size, 'a') + last);
    }
  }
  for (std::size_t i = 0; i < 2 * keys.size(); ++i) {
    database.SetValue(keys[i % keys.size()], 1);  // finds it the second time
  }
  EXPECT_EQ(database.GetAllKeys(), keys);
}

TEST_F(KeyValueStorageTest, MovedFromDatabaseDoesNothingOrThrows) {
  KeyValueStorage shell("db");
  KeyValueStorage database(std::move(shell));
  shell.RemoveKey("a");
  shell.RemoveAllKeys();
  shell.SyncToStorage();
  EXPECT_THROW(shell.GetAllKeys(), LogicErrorException);
  EXPECT_THROW(shell.SetValue("a", 2), LogicErrorException);
  shell = std::move(database);
  EXPECT_FALSE(shell.HasKey("a"));
  EXPECT_THROW(database.HasKey("a"), LogicErrorException);
}

TEST_F(KeyValueStorageTest, ExceptionOutOfASaveBlocksWritersUntilADatabaseIsOpened) {
  WriteFile("bad", FileOf("[a1]"));
  KeyValueStorage bad("bad");
  KeyValueStorage good("good");
  good.SetValue("a", 1);
  KvsType value;
  InternalAccess().GetInternalValue(value).Add(MovedFrom());
  bad.SetValue("a", value);
  EXPECT_THROW(bad.SyncToStorage(), LogicErrorException);
  const auto writer = std::async(std::launch::async, [&] { good.SyncToStorage(); });
  // On a machine so slow that the writer has not come that far, this shows nothing.
  EXPECT_EQ(writer.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
  const KeyValueStorage opened("opened");
  ASSERT_EQ(writer.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  EXPECT_EQ(ReadFile("good"), FileOf("[a1]"));
  bad.SyncToStorage();  // the change counts as handled
  EXPECT_EQ(ReadFile("bad"), FileOf("[a1]"));
}

class RedundancyTest : public KeyValueStorageTest {
 protected:
  RedundancyTest() { Delays::OfTheProcess().Hold(true); }
  ~RedundancyTest() override { Delays::OfTheProcess().Hold(false); }

  void SetUp() override {
    if (!redundant_.isOurs()) {
      GTEST_SKIP() << kRedundantFile << " is not the tests' own or cannot be created";
    }
  }

  /// Sets "b". @return whether the database believes that a delay lasts
  bool IsArmed(KeyValueStorage& database) {
    log_.Clear();
    database.SetValue("b", 2);
    return log_.Has(6, "KeyValueStorage::Impl::setValue for key: b isTimer=1");
  }

 private:
  const RedundantFile redundant_{kRedundantFile};
};

TEST_F(RedundancyTest, ItemsSurviveWhereTheKeysOfBothFilesAgreeByPosition) {
  const std::vector<std::tuple<const char*, const char*, const char*, bool>> cases = {
      // the file, the redundant one, what is saved, and whether the end of the second is told
      {"[a1,b2,c3]", "[a7,c8]", "[a1]", true},
      {"[a1,b2]", "[a7,b8,c9]", "[a1,b2]", false},
      {"[a1,b2,c3]", "[x7,b8,c9]", "[b2,c3]", false},
      {"[a1,b2,c3]", "[b7,c8,a9]", "[a1,b2,c3]", false},
      {"[a1,b2]", "[]", "[a1,b2]", true},
      {"[]", "[a7,b8]", "[]", false},
      {"{", "[a7,b8]", "{", false},
      {"[a1,b2,a3]", "[a7,b8,a9]", "[a3,b2]", false},
  };
  WriteConfig(true, 1000, 0);
  for (const auto& [file, redundantFile, saved, toldOfEnd] : cases) {
    SCOPED_TRACE(file + std::string(" / ") + redundantFile);
    WriteFile("db", FileOf(file));
    WriteFile(kRedundantFile, FileOf(redundantFile));
    log_.Clear();
    const KeyValueStorage database("db");
    EXPECT_EQ(log_.Has(2, "KeyValueStorage::Impl::InitWithRedundancy redundant_items is null"),
              toldOfEnd);
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), FileOf(saved));
    EXPECT_EQ(ReadFile(kRedundantFile), FileOf(redundantFile));
  }
}

TEST_F(RedundancyTest, MergeLogsItsStepsAndArmsNothing) {
  WriteConfig(true, 1000, 60000);
  WriteFile("db", FileOf("[a1,b2,c3]"));
  WriteFile(kRedundantFile, FileOf("[a7,c8]"));
  KeyValueStorage database("db");
  const std::string read = "|6 getKVSItemsFromJson is end filename=";
  EXPECT_THAT(TakeEngineText(),
              EndsWith(read + "db" + read + kRedundantFile +
                       "|6 @setValue for key: a isTimer=0|3 @setValue not find the key"
                       "|6 @InitWithRedundancy set value3|6 @InitWithRedundancy set value3"
                       "|2 @InitWithRedundancy redundant_items is null|6 @Impl end"));
  EXPECT_FALSE(IsArmed(database));
  EXPECT_TRUE(IsArmed(database));
}

TEST_F(RedundancyTest, WithoutTheRedundantFileSettingNeverArmsAndNoSizeCounts) {
  std::filesystem::remove(kRedundantFile);
  WriteConfig(true, 1, 60000);
  WriteFile("db", FileOf("[a1]"));
  KeyValueStorage database("db");
  EXPECT_THAT(TakeEngineText(), EndsWith("|6 @InitWithoutRedundancy redundant data file is not exit"
                                         "|6 getKVSItemsFromJson is end filename=db"
                                         "|6 @InitWithoutRedundancy end database_=db|6 @Impl end"));
  EXPECT_FALSE(IsArmed(database));
  EXPECT_FALSE(IsArmed(database));
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), FileOf("[a1,b2]"));
  database.RemoveKey("c");
  EXPECT_TRUE(IsArmed(database));
  database.SyncToStorage();
  database.RemoveAllKeys();
  EXPECT_TRUE(IsArmed(database));
}

TEST_F(RedundancyTest, FileThatIsNotBelowTheLimitRefusesASaveWhichIsNotTriedAgain) {
  const std::vector<std::tuple<bool, unsigned int, bool>> cases = {
      // redundancy, the limit, and whether it refuses to overwrite a file of two bytes
      {true, 0, true},   {true, 2, true}, {true, 3, false}, {true, 4294967295U, false},
      {false, 1, false},
  };
  for (const auto& [isRedundancy, maxSize, isRefused] : cases) {
    SCOPED_TRACE(maxSize);
    const std::string name = std::to_string(maxSize);  // no late "touch" of another case
    WriteConfig(isRedundancy, maxSize, 0);
    WriteFile(name, "[]");
    KeyValueStorage database(name);
    database.SetValue("a", 1);
    database.SyncToStorage();
    EXPECT_EQ(log_.Has(2, "the file is max size, it can not to storage the data."), isRefused);
    EXPECT_EQ(ReadFile(name), FileOf(isRefused ? "[]" : "[a1]"));
    std::filesystem::remove(name);
    database.SyncToStorage();
    EXPECT_FALSE(std::filesystem::exists(name));
    database.SetValue("b", 2);
    database.SyncToStorage();
    EXPECT_EQ(ReadFile(name), FileOf("[a1,b2]"));
    log_.Clear();
  }
}

}  // namespace
}  // namespace ara::per::testing
