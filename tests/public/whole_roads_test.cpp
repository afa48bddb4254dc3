#include <algorithm>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <iterator>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/per/file_proxy_accessor_factory.h"
#include "ara/per/key_value_storage.h"
#include "ara/per/per_update.h"
#include "tests/support/database_test.h"
#include "tests/support/delays.h"
#include "tests/support/thrown.h"

namespace ara::per::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class WholeRoadsTest : public DatabaseTest {};

TEST_F(WholeRoadsTest, DatabaseOfEveryKindIsWrittenAndReadByteForByte) {
  const std::string top =
      R"([{"key":"speed","type":"sint32","value":-5},{"key":"on","type":"bool","value":1},)"
      R"({"key":"ratio","type":"double","value":1.500000},)"
      R"({"key":"name","type":"string","value":"abc"})"
      R"(,{"key":"list","type":"uint16","value":[1,2,3]},{"key":"cfg","type":"object","value":[)";
  {
    KeyValueStorage database("db");
    database.SetValue<int>("speed", -5);
    database.SetValue<bool>("on", true);
    database.SetValue<double>("ratio", 1.5);
    database.SetValue<std::string>("name", "abc");
    database.SetValue<std::vector<unsigned short>>("list", {1, 2, 3});
    KvsType cfg;
    KvsType a(static_cast<unsigned char>(7));
    a.SetKey("a");
    cfg.AddArrayItem(a);
    database.SetValue("cfg", cfg);
    database.SyncToStorage();
  }
  EXPECT_EQ(ReadFile("db"), top + R"({"key":"a","type":"uint8","value":7}]}])");

  KeyValueStorage database("db");
  EXPECT_THAT(database.GetAllKeys(), ElementsAre("speed", "on", "ratio", "name", "list", "cfg"));
  int speed = 0;
  std::vector<unsigned int> cfg;
  database.GetValue("speed", speed);
  database.GetValue("cfg", cfg);
  EXPECT_EQ(speed, -5);
  EXPECT_THAT(cfg, ElementsAre(7U));
  database.SetValue("speed", speed);
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), top + R"({"key":"a","type":"uint64","value":7}]}])");
}

/// A file in which `@` stands for the begin of an item up to its type and `=` goes on to its value.
std::string FileOf(const std::string& item) {
  const std::string text = std::regex_replace(item, std::regex("@"), R"({"key":"k","type":")") +
                           (item.empty() ? "" : ",");
  return "[" + std::regex_replace(text, std::regex("="), R"(","value":)") +
         R"({"key":"z","type":"sint32","value":1}])";
}

TEST_F(WholeRoadsTest, EverySaveChangesAnItemUntilNoneOfItsLossesIsLeft) {
  // What each save makes of an item, the first one by hand; empty: no item.
  const std::vector<Lines> cases = {
      {R"(@sint8=-128},@sint16=-32768},@uint8=255},@uint16=65535},@uint32=4294967295},@sint32=[]})"
       R"(,@uint64=[18446744073709551615,1]},@string=["x",""]},@object=[]})"},
      {"@sint32=-5,\"checksum\":7,\"version\":1}", "@sint32=-5}"},
      {"@sint64=4294967295},@sint64=[-4294967297,1]}", "@sint64=-1},@sint64=[-4294967297,1]}"},
      {"@uint64=4294967296}", "@uint64=0}"},
      {"@float=0.1},@float=[1.5,2]}", "@float=0.100000},@float=[1.500000,2.000000]}"},
      {"@double=0.0000001},@double=1e9}", "@double=0.000000},@double=1000000000.000000}"},
      {"@bool=true},@bool=[true,0]}", "@bool=1},@bool=[1,0]}"},
      {R"(@string="a\/b\u00e9"})", R"(@string="a/bé"})"},
      {R"(@binary="00"},@nonsense=5})", ""},
      {"@object=[@sint16=-1}]}", "@object=[@sint64=-1}]}"},
      {"@object=[@bool=true}]}", "@object=[@bool=1}]}", "@object=[@uint64=1}]}"},
      {"@object=[@float=2.0}]}", "@object=[@double=2.000000}]}"},
      {"@object=[@sint8=[-1,2]}]}", "@object=[@sint64=[-1,2]}]}"},
      {"@object=[@float=[1.5,2]}]}", "@object=[@double=[1.500000,2.000000]}]}",
       "@object=[@uint64=[1,2]}]}"},
      {"@object=[@object=[@sint8=1}]}]}", "@object=[@object=[@uint64=1}]}]}"},
  };
  for (const Lines& saved : cases) {
    SCOPED_TRACE(saved.front());
    WriteFile("db", FileOf(saved.front()));
    for (std::size_t i = 0; i <= saved.size(); ++i) {
      EXPECT_EQ(ReadFile("db"), FileOf(saved[std::min(i, saved.size() - 1)]));
      KeyValueStorage database("db");
      database.SetValue<int>("z", 1);
      database.SyncToStorage();
    }
  }
}

/// Items of every type that a manifest knows: name, type, value, and what the file says of it.
constexpr char kEveryType[] =
    "i8|sint8|7|55;u8|uint8|200|50;i16|sint16|-7|-7;u16|uint16|7|7;i32|sint32|-5x|-5;"
    "u32|uint32|4294967295|4294967295;i64|sint64|-3|-3;u64|uint64|3|3;f|float|0.1|0.100000;"
    "d|double|-2.5e3|-2500.000000;b|bool|1|1;s|string|two words|\"two words\";bin|binary|00|[];"
    "i8s|vector<sint8>|7,8|[55,56];u16s|vector<uint16>|1, ,x,3|[1,0,0,3];bs|vector<bool>|1,0|[1,0];"
    "i64s|vector<sint64>|-4294967297,1|[-4294967297,1];"
    "u64s|vector<uint64>|18446744073709551615,1|[18446744073709551615,1];"
    "fs|vector<float>|1.5,2|[1.500000,2.000000];ss|vector<string>|a, b|[\"a\",\" b\"];";

/// Applies a manifest that installs the items in the file "db" and "new" in the file "file".
void Install(const std::string& items, const char* strategy = "keepExisting") {
  const std::regex item("([^|;]*)[|]([^|;]*)[|]([^|;]*)[^;]*;");
  std::string pairs = std::regex_replace(
      items, item,
      R"({"name":"$1","valueDataType":"$2","initValue":"$3","updateStrategy":"overWrite"},)");
  pairs.pop_back();
  WriteFile("source", "new");
  WriteFile("manifest",
            R"({"DeploymentConfig":{"UpdateType":"installation","FileProxy":{"uri":"file",)"
            R"("contentUri":"source"},"KeyValukDatabase":{"uri":"db","updateStrategy":")" +
                std::string(strategy) + R"(","keyValuePairs":[)" + pairs + "]}}}");
  PersistencyUpdate::CreatePersistencyUpdate()->updatePersistency("manifest");
}

template <class T>
T Read(const KeyValueStorage& database, const char* key) {
  T value{};
  EXPECT_EQ(database.GetValue(key, value), KeyValueStorage::Status::kSuccess) << key;
  return value;
}

TEST_F(WholeRoadsTest, InstalledValuesOfEveryTypeAreReadBackAfterARestart) {
  Install(kEveryType);
  EXPECT_EQ(ReadFile("file"), "new");
  const KeyValueStorage database("db");
  EXPECT_EQ(Read<signed char>(database, "i8"), 55);
  EXPECT_EQ(Read<unsigned char>(database, "u8"), 50);
  EXPECT_EQ(Read<short>(database, "i16"), -7);
  EXPECT_EQ(Read<unsigned short>(database, "u16"), 7);
  EXPECT_EQ(Read<int>(database, "i32"), -5);
  EXPECT_EQ(Read<unsigned int>(database, "u32"), 4294967295U);
  EXPECT_EQ(Read<long>(database, "i64"), -3);
  EXPECT_EQ(Read<unsigned long>(database, "u64"), 3U);
  EXPECT_EQ(Read<float>(database, "f"), 0.1F);
  EXPECT_EQ(Read<double>(database, "d"), -2500.0);
  EXPECT_TRUE(Read<bool>(database, "b"));
  EXPECT_EQ(Read<std::string>(database, "s"), "two words");
  EXPECT_THAT(Read<std::vector<signed char>>(database, "i8s"), ElementsAre(55, 56));
  EXPECT_THAT(Read<std::vector<unsigned short>>(database, "u16s"), ElementsAre(1, 0, 0, 3));
  EXPECT_THAT(Read<std::vector<long>>(database, "i64s"), ElementsAre(-4294967297, 1));
  EXPECT_THAT(Read<std::vector<unsigned long>>(database, "u64s"), ElementsAre(~0UL, 1U));
  EXPECT_THAT(Read<std::vector<float>>(database, "fs"), ElementsAre(1.5F, 2.0F));
  EXPECT_THAT(Read<std::vector<bool>>(database, "bs"), ElementsAre(true, false));
  EXPECT_THAT(Read<std::vector<std::string>>(database, "ss"), ElementsAre("a", " b"));
}

TEST_F(WholeRoadsTest, InstalledFileStaysAsItIsThroughLoadingCopyingAndSaving) {
  Install(kEveryType);
  const std::regex item("([^|;]*)[|](vector<)?([^|;>]*)>?[|][^|;]*[|]([^;]*);");
  std::string expected =
      "[" + std::regex_replace(kEveryType, item, R"({"key":"$1","type":"$3","value":$4},)");
  expected.replace(expected.find("binary"), 6, "object");
  expected.back() = ']';
  for (int turn = 0; turn < 3; ++turn) {
    EXPECT_EQ(ReadFile("db"), expected);
    KeyValueStorage database("db");
    for (const std::string& key : database.GetAllKeys()) {
      database.SetValue(key, Read<KvsType>(database, key.c_str()));
    }
    database.SyncToStorage();
  }
}

TEST_F(WholeRoadsTest, EmptyListInAManifestLeavesTheDatabaseOnDiskAsItWas) {
  const std::string before = R"([{"key":"a","type":"sint32","value":1}])";
  for (const char* strategy : {"keepExisting", "delete"}) {
    SCOPED_TRACE(strategy);
    WriteFile("db", before);
    WriteFile("file", "old");
    log_.Clear();
    const auto install = [&] { Install("a|sint32|2;b|vector<uint8>|,;c|sint32|3;", strategy); };
    EXPECT_EQ(Thrown<std::exception>(install), "std::exception");
    EXPECT_EQ(ReadFile("db"), before);
    EXPECT_EQ(ReadFile("file"), "new");
    EXPECT_THAT(TakeText(kEngineFile, "KeyValueStorage::Impl::", "@"),
                HasSubstr("@setValue for key: a isTimer=0"));
    Install("a|sint32|2;");  // the lock of the writers is free
    EXPECT_EQ(ReadFile("db"), R"([{"key":"a","type":"sint32","value":2}])");
  }
}

class DelayedRoadsTest : public DatabaseTest {
 protected:
  DelayedRoadsTest() {
    WriteConfig(false, 0, 50);
    delays_.Hold(true);
  }

  ~DelayedRoadsTest() override { delays_.Hold(false); }

  /// Opens the file "data" and writes to it.
  std::unique_ptr<ReadWriteAccessor> Write() {
    auto accessor =
        CreateFileAccessorFactory(".")->CreateRWAccess("data", BasicOperations::OpenMode::out);
    accessor->write("x", 1);
    AwaitDelay();
    return accessor;
  }

  /// Opens the database "db" and changes it.
  std::unique_ptr<KeyValueStorage> Change() {
    auto database = CreateKeyValueStorage("db");
    database->SetValue<int>("a", 1);
    AwaitDelay();
    return database;
  }

  /// Ends the delays in their order. @return whether the accessor was synchronised
  bool Synchronised() {
    for (; armed_ > 0; --armed_) {
      const std::ptrdiff_t before = ThreadCount();
      delays_.EndOne();
      EXPECT_TRUE(WaitUntil([&] { return ThreadCount() < before; }));
    }
    delays_.Hold(false);
    EXPECT_TRUE(WaitUntil([this] { return ThreadCount() <= threads_; }));
    delays_.Hold(true);
    return log_.Has(6, "ReadWriteAccessorImpl::fsync end.");
  }

 private:
  /// Waits until the delay that was just armed has begun.
  void AwaitDelay() {
    ++armed_;
    EXPECT_TRUE(WaitUntil([this] { return delays_.Asked().size() >= armed_; }));
  }

  Delays& delays_ = Delays::OfTheProcess();
  std::size_t armed_ = 0;
  const std::ptrdiff_t threads_ = ThreadCount();
};

TEST_F(DelayedRoadsTest, AccessorThatIsArmedLastOrSynchronisedSilencesTheDatabase) {
  for (const bool isArmedLast : {true, false}) {
    SCOPED_TRACE(isArmedLast);
    const auto accessor = Write();
    const auto database = Change();
    const auto last = isArmedLast ? Write() : nullptr;
    if (!isArmedLast) {
      accessor->fsync();
    }
    EXPECT_TRUE(Synchronised());
    EXPECT_EQ(out_.Take(), "");
    EXPECT_FALSE(std::filesystem::exists("db"));
  }
}

TEST_F(DelayedRoadsTest, DatabaseThatIsArmedLastTakesTheCallOfTheAccessor) {
  const auto accessor = Write();
  const auto database = Change();
  EXPECT_FALSE(Synchronised());
  EXPECT_EQ(out_.Take(), "timer is called but the data is invalid\ntimer is called\n");
  EXPECT_EQ(ReadFile("db"), R"([{"key":"a","type":"sint32","value":1}])");
}

TEST_F(DelayedRoadsTest, InstallerSilencesTheApplicationWhichOverwritesItWithItsNextSave) {
  const auto accessor = Write();
  const auto database = Change();
  Install("b|sint32|2;");
  log_.Clear();
  EXPECT_FALSE(Synchronised());
  EXPECT_EQ(out_.Take(), "");
  EXPECT_EQ(ReadFile("db"), R"([{"key":"b","type":"sint32","value":2}])");
  database->SetValue<int>("a", 3);
  EXPECT_TRUE(log_.Has(6, "KeyValueStorage::Impl::setValue for key: a isTimer=1"));
  database->SyncToStorage();
  EXPECT_EQ(ReadFile("db"), R"([{"key":"a","type":"sint32","value":3}])");
}

}  // namespace
}  // namespace ara::per::testing
