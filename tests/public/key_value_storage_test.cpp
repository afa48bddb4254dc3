#include "ara/per/key_value_storage.h"

#include <unistd.h>

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

constexpr char kOneItem[] = R"([{"key":"a","type":"sint32","value":1}])";
constexpr char kEmpty[] = "3 KeyValueStorage::Impl::InitWithoutRedundancy the file is empty";
constexpr char kRead[] = "6 getKVSItemsFromJson is end filename=db";

class KeyValueStorageTest : public DatabaseTest {};

TEST_F(KeyValueStorageTest, OpeningTellsWhatItFound) {
  struct Case {
    const char* name;
    bool config;
    const char* file;  // null: there is none
    Lines lines;
  };
  const std::vector<Case> cases = {
      {"nothing",
       false,
       nullptr,
       {"3 config file is not exit", "2 database db file is not exit", kEmpty}},
      {"configuration alone", true, nullptr, {"2 database db file is not exit", kEmpty}},
      {"no item", true, "[]", {kRead, kEmpty}},
      {"an item",
       true,
       kOneItem,
       {kRead, "6 KeyValueStorage::Impl::InitWithoutRedundancy end database_=db"}},
  };
  const std::string config = std::filesystem::current_path().string() + "/PersistencyConfig.json";
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::filesystem::remove(config);
    if (c.config) {
      WriteConfig(false, 0, 0);
    }
    if (c.file != nullptr) {
      WriteFile("db", c.file);
    }
    Lines expected = c.lines;
    expected.insert(expected.begin(), "6 impl configpath: " + config + " :database=db");
    expected.emplace_back("6 KeyValueStorage::Impl::Impl end");
    log_.Clear();
    const auto database = CreateKeyValueStorage("db");
    EXPECT_EQ(TakeLines(kEngineFile), expected);
  }
}

TEST_F(KeyValueStorageTest, BadFileOpensEmptyAndIsLeftAloneUntilAChange) {
  constexpr char kNoJson[] = "5 Parse strFileName(db) to jsonObject is error()";
  constexpr char kBadItem[] = "5 parseJsonArrayObject";
  constexpr char kRefused[] = "the json type is invalid\n";
  struct Case {
    const char* name;
    std::string file;
    const char* line;  // beginning
    const char* printed;
  };
  const std::vector<Case> cases = {
      {"no byte", "", kNoJson, ""},
      {"cut off", R"([{"key":"a","type":"sint32","val)", kNoJson, ""},
      {"text behind", std::string(kOneItem) + "x", kNoJson, ""},
      {"too deep", std::string(100000, '[') + std::string(100000, ']'), kNoJson, ""},
      {"object", "{}", "5 to arrayObject error(", ""},
      {"null element", "[null]", kBadItem, kRefused},
      {"no value, behind a good item",
       R"([{"key":"a","type":"sint32","value":1},{"key":"b","type":"sint8"}])", kBadItem, kRefused},
      {"nested without key",
       R"([{"key":"a","type":"object","value":[{"type":"sint8","value":1}]}])", kBadItem, kRefused},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    WriteFile("db", c.file);
    log_.Clear();
    KeyValueStorage database("db");
    EXPECT_THAT(database.GetAllKeys(), IsEmpty());
    EXPECT_EQ(out_.Take(), c.printed);
    EXPECT_THAT(TakeLines(), AllOf(Contains(StartsWith(c.line)), Contains(kEmpty)));
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), c.file);
    database.SetValue<int>("a", 1);
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), kOneItem);
  }
}

TEST_F(KeyValueStorageTest, NameIsAPathFromTheWorkingDirectoryOfTheMoment) {
  std::filesystem::create_directory("sub");
  KeyValueStorage database("name without extension");
  database.SetValue<int>("a", 1);
  std::filesystem::current_path("sub");
  database.SyncToStorage();
  EXPECT_EQ(ReadFile(dir_.Path() / "sub" / "name without extension"), kOneItem);
  EXPECT_FALSE(std::filesystem::exists(dir_.Path() / "name without extension"));
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
  EXPECT_EQ(TakeLines(kEngineFile), (Lines{"6 KeyValueStorage::Impl::setValue for key: a isTimer=0",
                                           "3 KeyValueStorage::Impl::setValue not find the key",
                                           "6 KeyValueStorage::Impl::setValue for key: a isTimer=0",
                                           "6 KeyValueStorage::Impl::hasKey key is:a ",
                                           "6 KeyValueStorage::Impl::hasKey key is:b ",
                                           "6 KeyValueStorage::Impl::syncToLocalStorage end",
                                           "6 KeyValueStorage::Impl::getValue key for:a",
                                           "6 KeyValueStorage::Impl::getValue find",
                                           "6 KeyValueStorage::Impl::getValue key for:b"}));
  database.RemoveKey("b");
  database.SyncToStorage();
  database.SyncToStorage();
  database.RemoveAllKeys();
  database.RemoveAllKeys();
  database.setLogLevel(0);
  EXPECT_EQ(TakeLines(kEngineFile),
            (Lines{"6 KeyValueStorage::Impl::removeKey key: ",
                   "3 KeyValueStorage::Impl::removeKey not find the key", "6 db_changed_:1 ",
                   "6 syncToLocalStorage db_changed_ database_:db ",
                   "6 KeyValueStorage::Impl::syncToLocalStorage end", "6 db_changed_:0 ",
                   "6 KeyValueStorage::Impl::removeAllKeys kvs_items_in_add_order_.count:1",
                   "6 KeyValueStorage::Impl::removeAllKeys kvs_items_in_add_order_.count:0"}));
}

TEST_F(KeyValueStorageTest, SyncTouchesTheFileOnlyWhenSomethingCountsAsChanged) {
  struct Case {
    const char* name;
    void (*change)(KeyValueStorage&);
    const char* file;  // null: not even touched
  };
  const std::vector<Case> cases = {
      {"nothing", [](KeyValueStorage&) {}, nullptr},
      {"equal value", [](KeyValueStorage& d) { d.SetValue<int>("a", 1); }, kOneItem},
      {"empty vector", [](KeyValueStorage& d) { d.SetValue("a", std::vector<int>()); }, nullptr},
      {"removed", [](KeyValueStorage& d) { d.RemoveKey("a"); }, "[]"},
      {"removed a missing one", [](KeyValueStorage& d) { d.RemoveKey("b"); }, nullptr},
      {"removed all", [](KeyValueStorage& d) { d.RemoveAllKeys(); }, "[]"},
      {"a value that was moved from",
       [](KeyValueStorage& d) {
         KvsType value(5);
         const KvsType taken(std::move(value));
         EXPECT_THROW(d.SetValue("a", value), LogicErrorException);
       },
       kOneItem},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    WriteFile("db", kOneItem);
    KeyValueStorage database("db");
    WriteFile("db", "other");
    const std::filesystem::file_time_type longAgo{};
    std::filesystem::last_write_time("db", longAgo);
    c.change(database);
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), c.file == nullptr ? "other" : c.file);
    EXPECT_EQ(std::filesystem::last_write_time("db") == longAgo, c.file == nullptr);
    database.RemoveAllKeys();
    database.SyncToStorage();
    WriteFile("db", "other");
    database.RemoveAllKeys();  // of nothing
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), "other");
  }
}

TEST_F(KeyValueStorageTest, FailedSaveIsNeitherReportedNorTriedAgain) {
  std::filesystem::create_directory("db");
  KeyValueStorage database("db");
  database.SetValue<int>("a", 1);
  log_.Clear();
  database.SyncToStorage();
  EXPECT_THAT(TakeLines(), Contains("2 open the file(db) error(Is a directory)"));
  std::filesystem::remove("db");
  database.SyncToStorage();
  EXPECT_FALSE(std::filesystem::exists("db"));
  database.SetValue<int>("a", 1);
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), kOneItem);
}

TEST_F(KeyValueStorageTest, KeysStayInTheOrderOfFirstInsertion) {
  KeyValueStorage database("db");
  for (const char* key : {"c", "a", "b", "a"}) {
    database.SetValue<int>(key, 1);
  }
  EXPECT_THAT(database.GetAllKeys(), ElementsAre("c", "a", "b"));
  database.RemoveKey("c");
  database.SetValue<bool>("c", true);
  EXPECT_THAT(database.GetAllKeys(), ElementsAre("a", "b", "c"));
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"),
            R"([{"key":"a","type":"sint32","value":1},{"key":"b","type":"sint32","value":1},)"
            R"({"key":"c","type":"bool","value":1}])");
  EXPECT_THAT(KeyValueStorage("db").GetAllKeys(), ElementsAre("a", "b", "c"));
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
  EXPECT_THAT(database.GetAllKeys(), ElementsAre("a"));
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), kOneItem);
  database.RemoveAllKeys();  // the map was empty: no change
  EXPECT_THAT(database.GetAllKeys(), IsEmpty());
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), kOneItem);
}

TEST_F(KeyValueStorageTest, DestructionAndMoveAssignmentLoseUnsynchronisedChanges) {
  WriteFile("db", kOneItem);
  {
    KeyValueStorage destroyed("db");
    destroyed.SetValue<int>("a", 2);
    KeyValueStorage assigned("db");
    assigned.SetValue<int>("a", 3);
    assigned = KeyValueStorage("other");
    assigned.SyncToStorage();
  }
  EXPECT_EQ(ReadFile("db"), kOneItem);
  EXPECT_FALSE(std::filesystem::exists("other"));
}

TEST_F(KeyValueStorageTest, MovedFromDatabaseDoesNothingOrThrows) {
  WriteFile("db", kOneItem);
  KeyValueStorage shell("db");
  KeyValueStorage database(std::move(shell));
  int value = 0;
  shell.RemoveKey("a");
  shell.RemoveAllKeys();
  shell.SyncToStorage();
  shell.setLogLevel(1);
  EXPECT_THROW(shell.HasKey("a"), LogicErrorException);
  EXPECT_THROW(shell.GetAllKeys(), LogicErrorException);
  EXPECT_THROW(shell.GetValue("a", value), LogicErrorException);
  EXPECT_THROW(shell.SetValue("a", 2), LogicErrorException);
  EXPECT_EQ(database.GetValue("a", value), Status::kSuccess);
  EXPECT_EQ(value, 1);
  shell = std::move(database);
  EXPECT_TRUE(shell.HasKey("a"));
  EXPECT_THROW(database.HasKey("a"), LogicErrorException);
}

TEST_F(KeyValueStorageTest, RecoverAndResetLeaveFilesAlone) {
  WriteFile("db", kOneItem);
  WriteFile("bad", "{");
  for (const char* name : {"db", "bad", "missing"}) {
    RecoverKeyValueStorage(name);
    ResetKeyValueStorage(name);
  }
  EXPECT_EQ(ReadFile("db"), kOneItem);
  EXPECT_EQ(ReadFile("bad"), "{");
  EXPECT_FALSE(std::filesystem::exists("missing"));
}

TEST_F(KeyValueStorageTest, StatusOfAValueMapsToTheSameNumberOrGeneralError) {
  const KeyValueStorage database("db");
  const std::vector<std::pair<int, int>> numbers = {{0, 0}, {1, 1}, {2, 2},
                                                    {3, 3}, {4, 3}, {255, 3}};
  for (const auto& [number, expected] : numbers) {
    SCOPED_TRACE(number);
    const auto status = static_cast<KvsType::Status>(number);
    EXPECT_EQ(static_cast<int>(ConvertKvsTypeStatus(status)), expected);
    EXPECT_EQ(static_cast<int>(database.GetKvsTypeStatus("no such key", status)), expected);
  }
}

/// A value that holds one that was moved from, which no save gets past.
KvsType Unwritable() {
  KvsType item(1);
  const KvsType taken(std::move(item));
  KvsType value;
  InternalAccess().GetInternalValue(value).Add(item);
  return value;
}

TEST_F(KeyValueStorageTest, ExceptionOutOfASaveBlocksWritersUntilADatabaseIsOpened) {
  WriteFile("bad", kOneItem);
  KeyValueStorage bad("bad");
  KeyValueStorage good("good");
  bad.SetValue("a", Unwritable());
  good.SetValue<int>("a", 1);
  EXPECT_THROW(bad.SyncToStorage(), LogicErrorException);
  EXPECT_EQ(ReadFile("bad"), kOneItem);

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
    KeyValueStorage bad("bad");
    KeyValueStorage good("good");
    bad.SetValue("a", Unwritable());
    good.SetValue<int>("a", 1);
    EXPECT_THROW(bad.SyncToStorage(), LogicErrorException);
    std::thread([&] { good.SyncToStorage(); }).detach();
    ::poll(nullptr, 0, 50);
    std::exit(0);
  };
  EXPECT_EXIT(endBlocked(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace ara::per::testing
