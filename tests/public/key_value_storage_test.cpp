#include "ara/per/key_value_storage.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/per/internal_access.h"
#include "ara/per/logic_error_exception.h"
#include "tests/support/database_test.h"

namespace ara::per::testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;
using Status = KeyValueStorage::Status;
using Operation = void (*)(KeyValueStorage&);

constexpr char kOneItem[] = R"([{"key":"a","type":"sint32","value":1}])";
constexpr char kEmpty[] = "3 KeyValueStorage::Impl::InitWithoutRedundancy the file is empty";

KvsType MovedFrom() {
  KvsType value(1);
  const KvsType taken(std::move(value));
  return value;
}

class KeyValueStorageTest : public DatabaseTest {};

TEST_F(KeyValueStorageTest, OpeningTellsWhatItFound) {
  const std::string config = std::filesystem::current_path().string() + "/PersistencyConfig.json";
  const std::string begin = "6 impl configpath: " + config + " :database=db|";
  const std::string missing = "2 database db file is not exit|";
  const std::string read = "6 getKVSItemsFromJson is end filename=db|";
  const std::string empty = "3 @InitWithoutRedundancy the file is empty|6 @Impl end";
  const auto open = [this] {
    log_.Clear();
    CreateKeyValueStorage("db");
    return TakeText(kEngineFile, "KeyValueStorage::Impl::", "@");
  };
  EXPECT_EQ(open(), begin + missing + empty);
  std::filesystem::remove(config);
  EXPECT_EQ(open(), begin + "3 config file is not exit|" + missing + empty);
  WriteConfig(false, 0, 0);
  WriteFile("db", "[]");
  EXPECT_EQ(open(), begin + read + empty);
  WriteFile("db", kOneItem);
  EXPECT_EQ(open(), begin + read + "6 @InitWithoutRedundancy end database_=db|6 @Impl end");
}

TEST_F(KeyValueStorageTest, BadFileOpensEmptyAndIsLeftAloneUntilAChange) {
  const std::string noJson = "5 Parse strFileName(db) to jsonObject is error()";
  const std::string badItem = "5 parseJsonArrayObject";
  const std::vector<std::pair<std::string, std::string>> cases = {
      // the file, and the beginning of a line
      {"", noJson},
      {R"([{"key":"a","type":"sint32","val)", noJson},
      {std::string(kOneItem) + "x", noJson},
      {std::string(100000, '[') + std::string(100000, ']'), noJson},
      {"{}", "5 to arrayObject error("},
      {"[null]", badItem},
      {R"([{"key":"a","type":"sint32","value":1},{"key":"b","type":"sint8"}])", badItem},
      {R"([{"key":"a","type":"object","value":[{"type":"sint8","value":1}]}])", badItem},
  };
  for (const auto& [file, line] : cases) {
    SCOPED_TRACE(file.substr(0, 80));
    WriteFile("db", file);
    log_.Clear();
    KeyValueStorage database("db");
    EXPECT_THAT(database.GetAllKeys(), IsEmpty());
    EXPECT_EQ(out_.Take(), line == badItem ? "the json type is invalid\n" : "");
    EXPECT_THAT(TakeLines(), AllOf(Contains(StartsWith(line)), Contains(kEmpty)));
    RecoverKeyValueStorage("db");  // do nothing
    ResetKeyValueStorage("db");
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), file);
    database.SetValue<int>("a", 1);
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), kOneItem);
  }
}

TEST_F(KeyValueStorageTest, OperationsLogTheirSteps) {
  KeyValueStorage database("db");
  int value = 0;
  log_.Clear();
  database.SetValue<int>("a", 1);
  database.SetValue<int>("a", 2);
  EXPECT_TRUE(database.HasKey("a"));
  EXPECT_FALSE(database.HasKey("b"));
  database.GetAllKeys();
  database.GetValue("a", value);
  database.GetValue("b", value);
  database.RemoveKey("b");
  database.SyncToStorage();
  database.SyncToStorage();
  database.RemoveAllKeys();
  database.setLogLevel(0);
  EXPECT_EQ(TakeText(kEngineFile, "KeyValueStorage::Impl::", "@"),
            "6 @setValue for key: a isTimer=0|3 @setValue not find the key"
            "|6 @setValue for key: a isTimer=0|6 @hasKey key is:a |6 @hasKey key is:b "
            "|6 @syncToLocalStorage end|6 @getValue key for:a|6 @getValue find"
            "|6 @getValue key for:b|6 @removeKey key: |3 @removeKey not find the key"
            "|6 db_changed_:1 |6 syncToLocalStorage db_changed_ database_:db "
            "|6 @syncToLocalStorage end|6 db_changed_:0 "
            "|6 @removeAllKeys kvs_items_in_add_order_.count:1");
}

TEST_F(KeyValueStorageTest, SyncTouchesTheFileOnlyWhenSomethingCountsAsChanged) {
  const std::vector<std::pair<Operation, const char*>> cases = {
      // null: the file is not even touched
      {[](KeyValueStorage& d) { d.SetValue<int>("a", 1); }, kOneItem},
      {[](KeyValueStorage& d) { d.SetValue("a", std::vector<int>()); }, nullptr},
      {[](KeyValueStorage& d) { d.RemoveKey("a"); }, "[]"},
      {[](KeyValueStorage& d) { d.RemoveKey("b"); }, nullptr},
      {[](KeyValueStorage& d) { d.RemoveAllKeys(); }, "[]"},
      {[](KeyValueStorage& d) { EXPECT_ANY_THROW(d.SetValue("a", MovedFrom())); }, kOneItem},
  };
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(i);
    const auto& [change, file] = cases[i];
    WriteFile("db", kOneItem);
    KeyValueStorage database("db");
    WriteFile("db", "other");
    const std::filesystem::file_time_type longAgo{};
    std::filesystem::last_write_time("db", longAgo);
    change(database);
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), file == nullptr ? "other" : file);
    EXPECT_EQ(std::filesystem::last_write_time("db") == longAgo, file == nullptr);
  }
}

TEST_F(KeyValueStorageTest, FailedSaveIsNeitherReportedNorTriedAgain) {
  std::filesystem::create_directories("db/sub");
  KeyValueStorage database("db");
  database.SetValue<int>("a", 1);
  log_.Clear();
  database.SyncToStorage();
  EXPECT_TRUE(log_.Has(2, "open the file(db) error(Is a directory)"));
  std::filesystem::current_path("db/sub");  // where the name now leads
  database.SyncToStorage();
  EXPECT_FALSE(std::filesystem::exists("db"));
  database.SetValue<int>("a", 1);
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), kOneItem);
}

TEST_F(KeyValueStorageTest, KeysStayInTheOrderOfFirstInsertionAndUnsavedOnesAreLost) {
  {
    KeyValueStorage database("db");
    for (const char* key : {"c", "a", "b", "a"}) {
      database.SetValue<int>(key, 1);
    }
    EXPECT_THAT(database.GetAllKeys(), ElementsAre("c", "a", "b"));
    database.RemoveKey("c");
    database.SetValue<bool>("c", true);
    database.SyncToStorage();
    database.RemoveKey("a");
    KeyValueStorage assigned("other");
    assigned.SetValue<int>("a", 1);
    assigned = std::move(database);
    EXPECT_THAT(assigned.GetAllKeys(), ElementsAre("b", "c"));
  }
  EXPECT_EQ(ReadFile("db"),
            R"([{"key":"a","type":"sint32","value":1},{"key":"b","type":"sint32","value":1},)"
            R"({"key":"c","type":"bool","value":1}])");
  EXPECT_FALSE(std::filesystem::exists("other"));
}

TEST_F(KeyValueStorageTest, KeysAreToldApartByEveryByteAndTheirLength) {
  const Lines keys = {"",
                      "a",
                      "aaaaaaaa",
                      "aaaaaaaab",
                      "aaaaaaab",
                      "baaaaaaa",
                      "\xff",
                      "aaaaaaa\xff",
                      "aaaaaaaaaaaaaaaa",
                      std::string(1, '\0'),
                      std::string("aaaaaaaa\0", 9)};
  KeyValueStorage database("db");
  for (std::size_t i = 0; i < keys.size(); ++i) {
    database.SetValue(keys[i], static_cast<int>(i));
  }
  EXPECT_EQ(database.GetAllKeys(), keys);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    int value = -1;
    database.GetValue(keys[i], value);
    EXPECT_EQ(value, static_cast<int>(i)) << keys[i];
  }
}

TEST_F(KeyValueStorageTest, KeyTwiceInAFileIsListedTwiceAndFoundLast) {
  WriteFile("db",
            R"([{"key":"a","type":"sint32","value":1},{"key":"a","type":"sint32","value":2}])");
  KeyValueStorage database("db");
  EXPECT_THAT(database.GetAllKeys(), ElementsAre("a", "a"));
  int value = 0;
  EXPECT_EQ(database.GetValue("a", value), Status::kSuccess);
  EXPECT_EQ(value, 2);
  database.RemoveKey("a");
  EXPECT_FALSE(database.HasKey("a"));
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), kOneItem);
  database.RemoveAllKeys();  // the map was empty: no change
  EXPECT_THAT(database.GetAllKeys(), IsEmpty());
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), kOneItem);
}

TEST_F(KeyValueStorageTest, MovedFromDatabaseDoesNothingOrThrows) {
  KeyValueStorage shell("db");
  KeyValueStorage database(std::move(shell));
  int value = 0;
  shell.RemoveKey("a");
  shell.RemoveAllKeys();
  shell.SyncToStorage();
  EXPECT_THROW(shell.HasKey("a"), LogicErrorException);
  EXPECT_THROW(shell.GetAllKeys(), LogicErrorException);
  EXPECT_THROW(shell.GetValue("a", value), LogicErrorException);
  EXPECT_THROW(shell.SetValue("a", 2), LogicErrorException);
  shell = std::move(database);
  EXPECT_FALSE(shell.HasKey("a"));
  EXPECT_THROW(database.HasKey("a"), LogicErrorException);
}

/// Fails to save a database with a value that was moved from, which leaves writers blocked.
void Block(KeyValueStorage& database) {
  KvsType value;
  InternalAccess().GetInternalValue(value).Add(MovedFrom());
  database.SetValue("a", value);
  EXPECT_THROW(database.SyncToStorage(), LogicErrorException);
}

TEST_F(KeyValueStorageTest, ExceptionOutOfASaveBlocksWritersUntilADatabaseIsOpened) {
  WriteFile("bad", kOneItem);
  KeyValueStorage bad("bad");
  KeyValueStorage good("good");
  good.SetValue<int>("a", 1);
  Block(bad);
  std::future<void> writer = std::async(std::launch::async, [&] { good.SyncToStorage(); });
  EXPECT_EQ(writer.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
  const KeyValueStorage opened("opened");
  ASSERT_EQ(writer.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  EXPECT_EQ(ReadFile("good"), kOneItem);
  bad.SyncToStorage();  // the change counts as handled
  EXPECT_EQ(ReadFile("bad"), kOneItem);
}

TEST_F(KeyValueStorageTest, ProcessEndsAlsoWhileAWriterIsBlocked) {
  const auto endBlocked = [] {
    ::alarm(5);
    KeyValueStorage database("db");
    Block(database);
    std::thread([&] { database.SyncToStorage(); }).detach();
    ::poll(nullptr, 0, 50);
    std::exit(0);
  };
  EXPECT_EXIT(endBlocked(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace ara::per::testing
