#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/per/key_value_storage.h"
#include "tests/support/database_test.h"

namespace ara::per::testing {
namespace {

using ::testing::ElementsAre;

constexpr char kDirectory[] = ARA_PER_REDUNDANT_DIR;
constexpr char kRedundantFile[] = ARA_PER_REDUNDANT_DIR "/kvsdatabase.json";
constexpr char kRefused[] = "the file is max size, it can not to storage the data.";
constexpr char kNoMore[] = "KeyValueStorage::Impl::InitWithRedundancy redundant_items is null";

/// A database file with one item for each letter; their values count up from `first`.
std::string FileOf(const std::string& keys, int first) {
  std::string text;
  for (const char key : keys) {
    text += text.empty() ? "" : ",";
    text += std::string(R"({"key":")") + key + R"(","type":"sint32","value":)" +
            std::to_string(first++) + "}";
  }
  return "[" + text + "]";
}

/// Creates the compiled-in directory of the redundant copies and removes what it has created. Other
/// processes that run these tests wait.
class RedundancyTest : public DatabaseTest {
 protected:
  void SetUp() override {
    ::flock(lock_, LOCK_EX);
    for (std::filesystem::path path = kDirectory; !std::filesystem::exists(path);
         path = path.parent_path()) {
      created_.push_back(path);
    }
    std::error_code failed;
    std::filesystem::create_directories(kDirectory, failed);
    if (std::filesystem::exists(kRedundantFile)) {
      GTEST_SKIP() << kRedundantFile << " exists and does not belong to the tests";
    }
    WriteFile(kRedundantFile, "[]");
    if (!std::filesystem::exists(kRedundantFile)) {
      GTEST_SKIP() << kRedundantFile << " cannot be created";
    }
    isMine_ = true;
  }

  void TearDown() override {
    std::error_code ignored;
    if (isMine_) {
      std::filesystem::remove(kRedundantFile, ignored);
    }
    for (const std::filesystem::path& path : created_) {
      std::filesystem::remove(path, ignored);
    }
    ::close(lock_);
  }

 private:
  const int lock_ = ::open(std::filesystem::temp_directory_path().c_str(), O_RDONLY | O_CLOEXEC);
  std::vector<std::filesystem::path> created_;
  bool isMine_ = false;
};

TEST_F(RedundancyTest, ItemsSurviveWhereTheKeysOfBothFilesAgreeByPosition) {
  struct Case {
    const char* name;
    std::string file;
    std::string redundantFile;
    std::string expected;  // the file after opening and saving
    bool toldOfEnd;
  };
  const std::vector<Case> cases = {
      {"the same", FileOf("abc", 1), FileOf("abc", 7), FileOf("abc", 1), false},
      {"one missing", FileOf("abc", 1), FileOf("ac", 7), FileOf("a", 1), true},
      {"one more", FileOf("ab", 1), FileOf("abc", 7), FileOf("ab", 1), false},
      {"one less", FileOf("abc", 1), FileOf("ab", 7), FileOf("ab", 1), true},
      {"first differs", FileOf("abc", 1), FileOf("xbc", 7), FileOf("bc", 2), false},
      {"other order", FileOf("abc", 1), FileOf("bca", 7), FileOf("abc", 1), false},
      {"shifted", FileOf("abc", 1), FileOf("bc", 7), FileOf("abc", 1), true},
      {"redundant file empty", FileOf("ab", 1), "[]", FileOf("ab", 1), true},
      {"redundant file bad", FileOf("ab", 1), "{", FileOf("ab", 1), true},
      {"main file missing", "", FileOf("ab", 7), "", false},
      {"main file empty", "[]", FileOf("ab", 7), "[]", false},
      {"main file bad", "{", FileOf("ab", 7), "{", false},
      {"key twice", FileOf("aba", 1), FileOf("aba", 7),
       R"([{"key":"a","type":"sint32","value":3},{"key":"b","type":"sint32","value":2}])", false},
      {"other checksum and value", R"([{"key":"a","type":"sint8","value":1,"checksum":5}])",
       R"([{"key":"a","type":"string","value":"x"}])", R"([{"key":"a","type":"sint8","value":1}])",
       false},
  };
  WriteConfig(true, 1000, 0);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::filesystem::remove("db");
    if (!c.file.empty()) {
      WriteFile("db", c.file);
    }
    WriteFile(kRedundantFile, c.redundantFile);
    log_.Clear();
    const KeyValueStorage database("db");
    EXPECT_EQ(log_.Has(2, kNoMore), c.toldOfEnd);
    const std::size_t loaded = database.GetAllKeys().size();
    database.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), c.expected);
    EXPECT_EQ(log_.Has(2, "database db file is not exit"), c.file.empty());
    EXPECT_EQ(loaded == 0, log_.Has(6, "db_changed_:0 "));
    EXPECT_EQ(ReadFile(kRedundantFile), c.redundantFile);
  }
}

TEST_F(RedundancyTest, MergeLogsItsStepsAndArmsNothing) {
  WriteConfig(true, 1000, 60000);
  WriteFile("db", FileOf("abc", 1));
  WriteFile(kRedundantFile, FileOf("ac", 7));
  KeyValueStorage database("db");
  const Lines lines = TakeLines(kEngineFile);
  EXPECT_EQ(Lines(lines.begin() + 1, lines.end()),
            (Lines{"6 getKVSItemsFromJson is end filename=db",
                   std::string("6 getKVSItemsFromJson is end filename=") + kRedundantFile,
                   "6 KeyValueStorage::Impl::setValue for key: a isTimer=0",
                   "3 KeyValueStorage::Impl::setValue not find the key",
                   "6 KeyValueStorage::Impl::InitWithRedundancy set value3",
                   "6 KeyValueStorage::Impl::InitWithRedundancy set value3",
                   std::string("2 ") + kNoMore, "6 KeyValueStorage::Impl::Impl end"}));
  EXPECT_THAT(database.GetAllKeys(), ElementsAre("a"));
  log_.Clear();
  database.SetValue<int>("b", 1);
  database.SetValue<int>("b", 1);
  EXPECT_TRUE(log_.Has(6, "KeyValueStorage::Impl::setValue for key: b isTimer=0"));
  EXPECT_TRUE(log_.Has(6, "KeyValueStorage::Impl::setValue for key: b isTimer=1"));
}

TEST_F(RedundancyTest, WithoutTheRedundantFileSettingNeverArmsAndNoSizeCounts) {
  std::filesystem::remove(kRedundantFile);
  WriteConfig(true, 1, 60000);
  WriteFile("db", FileOf("a", 1));
  KeyValueStorage database("db");
  const Lines lines = TakeLines(kEngineFile);
  EXPECT_EQ(Lines(lines.begin() + 1, lines.end()),
            (Lines{"6 KeyValueStorage::Impl::InitWithoutRedundancy redundant data file is not exit",
                   "6 getKVSItemsFromJson is end filename=db",
                   "6 KeyValueStorage::Impl::InitWithoutRedundancy end database_=db",
                   "6 KeyValueStorage::Impl::Impl end"}));
  const auto isArmed = [&] {
    log_.Clear();
    database.SetValue<int>("b", 2);
    return log_.Has(6, "KeyValueStorage::Impl::setValue for key: b isTimer=1");
  };
  EXPECT_FALSE(isArmed());
  EXPECT_FALSE(isArmed());
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), FileOf("ab", 1));
  EXPECT_FALSE(isArmed());
  database.RemoveKey("c");
  EXPECT_TRUE(isArmed());
  database.SyncToStorage();
  EXPECT_FALSE(isArmed());
  database.RemoveAllKeys();
  EXPECT_TRUE(isArmed());
}

TEST_F(RedundancyTest, FileThatIsNotBelowTheLimitRefusesASave) {
  struct Case {
    const char* name;
    bool isRedundancy;
    unsigned int maxSize;
    const char* file;  // null: there is none
    bool saved;
  };
  const std::vector<Case> cases = {
      {"no size, no file", true, 0, nullptr, true},
      {"no size, empty file", true, 0, "", false},
      {"file at the limit", true, 2, "[]", false},
      {"file below the limit", true, 3, "[]", true},
      {"limit of 32 bits", true, 4294967295U, "[]", true},
      {"without redundancy", false, 1, "[]", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    WriteConfig(c.isRedundancy, c.maxSize, 0);
    const std::string name = c.name;
    if (c.file != nullptr) {
      WriteFile(name, c.file);
    }
    KeyValueStorage database(name);
    database.SetValue<int>("a", 1);
    log_.Clear();
    database.SyncToStorage();
    EXPECT_EQ(log_.Has(2, kRefused), !c.saved);
    EXPECT_EQ(ReadFile(name), c.saved ? FileOf("a", 1) : c.file);
    if (!c.saved) {  // the change waits for a later one
      std::filesystem::remove(name);
      database.SyncToStorage();
      EXPECT_FALSE(std::filesystem::exists(name));
      database.SetValue<int>("b", 2);
      database.SyncToStorage();
      EXPECT_EQ(ReadFile(name), FileOf("ab", 1));
    }
  }
}

}  // namespace
}  // namespace ara::per::testing
