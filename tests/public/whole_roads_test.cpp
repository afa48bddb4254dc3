#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/per/key_value_storage.h"
#include "tests/support/database_test.h"

namespace ara::per::testing {
namespace {

using ::testing::ElementsAre;
using Status = KeyValueStorage::Status;

class WholeRoadsTest : public DatabaseTest {};

TEST_F(WholeRoadsTest, DatabaseOfEveryKindIsWrittenAndReadByteForByte) {
  const std::string top =
      R"([{"key":"speed","type":"sint32","value":-5},{"key":"ratio","type":"double","value":1.500000})"
      R"(,{"key":"name","type":"string","value":"abc"},{"key":"on","type":"bool","value":1})"
      R"(,{"key":"list","type":"uint16","value":[1,2,3]})";
  {
    KeyValueStorage database("db");
    database.SetValue<int>("speed", -5);
    database.SetValue<double>("ratio", 1.5);
    database.SetValue<std::string>("name", "abc");
    database.SetValue<bool>("on", true);
    database.SetValue<std::vector<unsigned short>>("list", {1, 2, 3});
    KvsType cfg;
    KvsType a(static_cast<unsigned char>(7));
    a.SetKey("a");
    cfg.AddArrayItem(a);
    database.SetValue("cfg", cfg);
    database.SyncToStorage();
  }
  EXPECT_EQ(
      ReadFile("db"),
      top + R"(,{"key":"cfg","type":"object","value":[{"key":"a","type":"uint8","value":7}]}])");

  KeyValueStorage database("db");
  EXPECT_THAT(database.GetAllKeys(), ElementsAre("speed", "ratio", "name", "on", "list", "cfg"));
  int speed = 0;
  double ratio = 0;
  std::string name;
  bool on = false;
  std::vector<unsigned short> list;
  std::vector<unsigned int> cfg;
  EXPECT_EQ(database.GetValue("speed", speed), Status::kSuccess);
  EXPECT_EQ(database.GetValue("ratio", ratio), Status::kSuccess);
  EXPECT_EQ(database.GetValue("name", name), Status::kSuccess);
  EXPECT_EQ(database.GetValue("on", on), Status::kSuccess);
  EXPECT_EQ(database.GetValue("list", list), Status::kSuccess);
  EXPECT_EQ(database.GetValue("cfg", cfg), Status::kSuccess);
  EXPECT_EQ(speed, -5);
  EXPECT_EQ(ratio, 1.5);
  EXPECT_EQ(name, "abc");
  EXPECT_TRUE(on);
  EXPECT_THAT(list, ElementsAre(1, 2, 3));
  EXPECT_THAT(cfg, ElementsAre(7U));

  database.SetValue<int>("speed", -5);
  database.SyncToStorage();
  EXPECT_EQ(
      ReadFile("db"),
      top + R"(,{"key":"cfg","type":"object","value":[{"key":"a","type":"uint64","value":7}]}])");
}

TEST_F(WholeRoadsTest, EverySaveChangesAnItemUntilNoneOfItsLossesIsLeft) {
  // What each save makes of the item behind its key, the first one by hand; empty: no item.
  const std::vector<Lines> cases = {
      {R"("type":"sint8","value":-128)"},
      {R"("type":"sint16","value":-32768)"},
      {R"("type":"sint32","value":-5,"checksum":7,"version":1)", R"("type":"sint32","value":-5)"},
      {R"("type":"sint64","value":4294967295)", R"("type":"sint64","value":-1)"},
      {R"("type":"uint8","value":255)"},
      {R"("type":"uint16","value":65535)"},
      {R"("type":"uint32","value":4294967295)"},
      {R"("type":"uint64","value":4294967296)", R"("type":"uint64","value":0)"},
      {R"("type":"float","value":0.1)", R"("type":"float","value":0.100000)"},
      {R"("type":"double","value":0.0000001)", R"("type":"double","value":0.000000)"},
      {R"("type":"double","value":1e20)",
       R"("type":"double","value":100000000000000000000.000000)"},
      {R"("type":"bool","value":true)", R"("type":"bool","value":1)"},
      {R"("type":"string","value":"a\/b\u00e9")", R"("type":"string","value":"a/bé")"},
      {R"("type":"binary","value":"00")", ""},
      {R"("type":"nonsense","value":5)", ""},
      {R"("type":"sint32","value":[])"},
      {R"("type":"sint64","value":[-4294967297,1])"},
      {R"("type":"uint64","value":[18446744073709551615,1])"},
      {R"("type":"float","value":[1.5,2])", R"("type":"float","value":[1.500000,2.000000])"},
      {R"("type":"bool","value":[true,0])", R"("type":"bool","value":[1,0])"},
      {R"("type":"string","value":["x",""])"},
      {R"("type":"object","value":[])"},
      {R"("type":"object","value":[{"key":"n","type":"sint16","value":-1}])",
       R"("type":"object","value":[{"key":"n","type":"sint64","value":-1}])"},
      {R"("type":"object","value":[{"key":"n","type":"bool","value":true}])",
       R"("type":"object","value":[{"key":"n","type":"bool","value":1}])",
       R"("type":"object","value":[{"key":"n","type":"uint64","value":1}])"},
      {R"("type":"object","value":[{"key":"n","type":"float","value":2.0}])",
       R"("type":"object","value":[{"key":"n","type":"double","value":2.000000}])"},
      {R"("type":"object","value":[{"key":"n","type":"sint8","value":[-1,2]}])",
       R"("type":"object","value":[{"key":"n","type":"sint64","value":[-1,2]}])"},
      {R"("type":"object","value":[{"key":"n","type":"float","value":[1.5,2.5]}])",
       R"("type":"object","value":[{"key":"n","type":"double","value":[1.500000,2.500000]}])",
       R"("type":"object","value":[{"key":"n","type":"uint64","value":[1,2]}])"},
      {R"("type":"object","value":[{"key":"o","type":"object","value":[{"key":"n","type":"sint8","value":1}]}])",
       R"("type":"object","value":[{"key":"o","type":"object","value":[{"key":"n","type":"uint64","value":1}]}])"},
  };
  const auto fileOf = [](const std::string& item) {
    return "[" + (item.empty() ? "" : R"({"key":"k",)" + item + "},") +
           R"({"key":"z","type":"sint32","value":1}])";
  };
  for (const Lines& saved : cases) {
    SCOPED_TRACE(saved.front());
    WriteFile("db", fileOf(saved.front()));
    for (std::size_t i = 0; i <= saved.size(); ++i) {
      EXPECT_EQ(ReadFile("db"), fileOf(saved[std::min(i, saved.size() - 1)]));
      KeyValueStorage database("db");
      database.SetValue<int>("z", 1);
      database.SyncToStorage();
    }
  }
}

TEST_F(WholeRoadsTest, TextIsNotEscapedAndCanMakeTheWholeFileUnreadable) {
  KeyValueStorage database("db");
  database.SetValue<int>("good", 1);
  database.SetValue<std::string>("bad", "a\"b");
  database.SyncToStorage();
  EXPECT_EQ(ReadFile("db"), R"([{"key":"good","type":"sint32","value":1},)"
                            R"({"key":"bad","type":"string","value":"a"b"}])");
  EXPECT_TRUE(KeyValueStorage("db").GetAllKeys().empty());
}

}  // namespace
}  // namespace ara::per::testing
