#include <algorithm>
#include <cstddef>
#include <regex>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/per/key_value_storage.h"
#include "tests/support/database_test.h"

namespace ara::per::testing {
namespace {

using ::testing::ElementsAre;

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

}  // namespace
}  // namespace ara::per::testing
