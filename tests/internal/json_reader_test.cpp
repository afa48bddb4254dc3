#include <algorithm>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "ara/per/json_parser.h"
#include "tests/support/log_capture.h"
#include "tests/support/stdout_capture.h"
#include "tests/support/temp_dir.h"
#include "tests/support/value_text.h"

namespace ara::per::testing {
namespace {

/// The worked example of a file, with each form of value.
const std::string kExample =
    R"([{"key":"speed","type":"sint32","value":-5},)"
    R"({"key":"ratio","type":"double","value":1.500000},)"
    R"({"key":"name","type":"string","value":"abc"},{"key":"on","type":"bool","value":1},)"
    R"({"key":"list","type":"uint16","value":[1,2,3]},)"
    R"({"key":"cfg","type":"object","value":[{"key":"a","type":"uint8","value":7}]}])";

/// The item "k" of a file.
std::string Item(const std::string& type, const std::string& value) {
  return R"({"key":"k","type":")" + type + R"(","value":)" + value + "}";
}

/// The items of a text like "sint8:5|bool:true".
std::string Items(const std::string& typesAndValues) {
  std::istringstream rest(typesAndValues);
  std::string items;
  for (std::string item; std::getline(rest, item, '|');) {
    const std::size_t colon = item.find(':');
    items += (items.empty() ? "" : ",") + Item(item.substr(0, colon), item.substr(colon + 1));
  }
  return items;
}

/// A file of one "object" item whose list, or the innermost of whose lists, holds the given items.
std::string Nest(std::string items, int levels = 1) {
  for (int i = 0; i < levels; ++i) {
    items = Item("object", "[" + items + "]");
  }
  return "[" + items + "]";
}

/// Reads files in a directory of its own.
class JsonReaderTest : public ::testing::Test {
 protected:
  /// The items of a file, with a "!" behind them if something was refused on standard output.
  std::string Load(const std::string& file) {
    WriteFile("db", file);
    const std::string values = ValueTexts(JsonParser("db").parseKvsJson());
    const std::string output = stdout_.Take();
    return values + (output == "the json type is invalid\n" ? "!" : output);
  }

  TempDir dir_;
  StdoutCapture stdout_;
};

TEST_F(JsonReaderTest, WorkedExampleComesBackAndLosesTheNestedWidth) {
  EXPECT_EQ(Load(kExample),
            "speed:sint32=-5 ratio:double=1.500000 name:string='abc' on:bool=true "
            "list:uint16=[1u,2u,3u] cfg:object=[a:uint64=7u]");
}

TEST_F(JsonReaderTest, TopLevelValuesAreReadByTheirDeclaredType) {
  EXPECT_EQ(
      Load("[" +
           Items(R"(sint8:300|sint16:4294967295|sint32:"5"|sint64:-9223372036854775808|uint8:300)"
                 R"(|uint16:4294967297|uint32:-1|uint64:18446744073709551615|float:16777217)"
                 R"(|double:-0.5|bool:7|bool:0|bool:true|string:"\"\u0041"|string:"a\u0000b")"
                 R"(|string:12|binary:"ab"|other:5)") +
           "]"),
      "k:sint8=300 k:sint16=-1 k:sint32=0 k:sint64=-9223372036854775808 k:uint8=300u "
      "k:uint16=1u k:uint32=4294967295u k:uint64=18446744073709551615u "
      "k:float=16777217.000000 k:double=-0.500000 k:bool=true k:bool=false k:bool=true "
      "k:string='\"A' k:string='a' k:string='12' k:binary= k:getKvsTypeAsString_not_found=");
  EXPECT_EQ(
      Load("[" +
           Items(R"(sint8:[300,null]|sint32:[]|sint64:[4294967297]|uint32:[4294967297])"
                 R"(|uint64:[4294967297]|float:[0.5,2]|bool:[1,0,true]|string:["a","",1])"
                 R"(|binary:["ab"]|other:[5]|object:[]|object:5)") +
           "]"),
      "k:sint8=[300,0] k:sint32=[] k:sint64=[4294967297] k:uint32=[1u] k:uint64=[4294967297u] "
      "k:float=[0.500000,2.000000] k:bool=[true,false,true] k:string=['a','','1'] k:binary=[] "
      "k:getKvsTypeAsString_not_found=[] k:object=[] k:object=[]");
  EXPECT_EQ(Load(R"([{"type":"bool","value":1},{"key":null,"type":"bool","value":1},)"
                 R"({"version":1,"value":5,"checksum":7,"type":"sint8","x":"d","key":"a"}])"),
            ":bool=true :bool=true a:sint8=5");
}

TEST_F(JsonReaderTest, NestedValuesAreReadByTheirTokenOrTheClassOfTheirType) {
  const std::string items =
      Items(R"(float:7|uint8:-7|sint8:1.5|sint8:true|bool:1|object:"a\u00e4"|sint64:[-1,2])"
            R"(|uint8:[1,300]|bool:[1,false]|float:[0.5,1]|double:[2.0,1]|binary:[1])"
            R"(|string:["a","b"]|sint8:[])");
  const std::string values =
      "k:object=[k:uint64=7u,k:sint64=-7,k:double=1.500000,k:bool=true,k:uint64=1u,"
      "k:string='a\u00e4',k:sint64=[-1,2],k:uint64=[1u,300u],k:bool=[true,false],"
      "k:double=[0.500000,1.000000],k:uint64=[2u,1u],k:uint64=[1u],k:string=['a','b'],:object=]";
  EXPECT_EQ(Load(Nest(items)), values);
  EXPECT_EQ(Load(Nest(items, 3)), "k:object=[k:object=[" + values + "]]");
}

TEST_F(JsonReaderTest, IncompleteNestedItems) {
  // What the first nested level gives, and the second one.
  const auto expect = [this](const std::string& item, const std::string& first,
                             const std::string& second) {
    EXPECT_EQ(Load(Nest(item)), first) << item;
    EXPECT_EQ(Load(Nest(item, 2)), second) << item;
  };
  for (const char* const item :
       {"null", R"({"key":"k","type":"sint8"})", R"({"type":"sint8","value":1})",
        R"({"type":"object","value":[]})", R"({"key":"k","type":"sint8","value":null})"}) {
    expect(item, "!", "!");
  }
  const std::string deep = "k:object=[k:object=[";
  expect(R"({"type":"sint8","value":[1]})", "k:object=[:bool=false]!", deep + ":bool=false]]!");
  expect(R"({"type":"sint8","value":[]})", "k:object=[:object=]", deep + ":object=]]");
  expect(R"({"key":"k","value":[1]})", "k:object=[:bool=false]!", "!");
  expect(R"({"key":"k","value":1})", "k:object=[k:uint64=1u]", "!");
  expect(R"({"key":"k","type":"x","value":{}})", "k:object=[k:object=]", deep + ":object=]]");
  expect(R"({"type":"x","value":{}})", "!", deep + ":object=]]");
  // In the third level a bad item ends its own list alone.
  LogCapture log;
  EXPECT_EQ(Load(Nest(Item("bool", "true") + R"(,{"key":"k"},)" + Item("bool", "true"), 3)),
            deep + "k:object=[k:bool=true]]]!");
  EXPECT_EQ(log.Joined().find("parseArrayObjInner error"), std::string::npos);
}

TEST_F(JsonReaderTest, RefusalsGiveAnEmptyListAndTellWhy) {
  const auto expect = [this](const std::string& file, const std::string& result,
                             const std::string& lastLines) {
    SCOPED_TRACE(file);
    LogCapture log;
    EXPECT_EQ(Load(file), result);
    const std::string lines = " / " + log.Joined();
    EXPECT_EQ(lines.substr(lines.size() - std::min(lines.size(), lastLines.size())), lastLines);
  };
  const std::string walk = " / 5 parseJsonArrayObject";
  expect("", "", " / 5 Parse strFileName(db) to jsonObject is error()");
  expect("[" + Item("bool", "1") + ",]", "", " / 5 Parse strFileName(db) to jsonObject is error()");
  expect("{}", "", " / 5 to arrayObject error()");
  expect("null", "", " / 5 to arrayObject error()");
  expect("[null]", "!", " / 5 the arrary size=(1)" + walk);
  expect("[5]", "!", " / 5 JsonReadHandler::String end." + walk);
  expect(R"([{"type":null,"value":1}])", "!", " / 5 JsonReadHandler::String end." + walk);
  expect("[" + Items("bool:1|bool:null") + "]", "!", " / 5 setValueType:bool:13" + walk);
  expect(Nest("null"), "!", " / 5 iAarraySize=1 / 5 parseArrayObj error" + walk);
  expect(Nest("null", 2), "!",
         " / 5 iAarraySize=1 / 5 parseArrayObjInner error / 5 parseArrayObj error" + walk);
  LogCapture log;
  EXPECT_TRUE(JsonParser("missing").parseKvsJson().empty());
  EXPECT_TRUE(JsonParser(".").parseKvsJson().empty());
  EXPECT_EQ(log.Joined(),
            "5 strFileName(missing) is not exit / "
            "5 Parse strFileName(.) to jsonObject is error()");
}

TEST_F(JsonReaderTest, LinesOfOneReadInTheirOrder) {
  WriteFile("db",
            "[" + Items("string:\"s\"|uint8:[1]") + "," +
                Item("object", "[" + Items("bool:[1]|object:[" + Item("bool", "5") + "]") + "]") +
                "]");
  LogCapture log;
  JsonParser("db").parseKvsJson();
  const std::string begin =
      " / 5 JsonReadHandler::StartObject is called. / 5 JsonReadHandler::Key:key / "
      "5 JsonReadHandler::Key end / 5 JsonReadHandler::String value:k  / "
      "5 JsonReadHandler::String end. / ";
  const std::string end =
      " / 5 JsonReadHandler::EndObject is called / "
      "5 JsonReadHandler::CompareCrcAndUpdateStatus checksum is abled.";
  EXPECT_EQ(log.Joined(),
            "5 the arrary size=(3)" + begin +
                "5 setValueType:string:11 / 5 eObjType=(6),eKvsType=string / "
                "5 JsonReadHandler::String value:s  / 5 JsonReadHandler::String end." +
                end + begin +
                "5 setValueType:uint8:7 / 5 eObjType=(7),eKvsType=uint8 / 5 iAarraySize=1" + end +
                begin +
                "5 setValueType:object:14 / 5 eObjType=(7),eKvsType=object / 5 iAarraySize=2 / "
                "5 tempString:bool / 5 eKvsType:1,eObjType:7,objValueType:bool  / "
                "5 parseArrayValueInner enter / 5 tempString:object / "
                "5 eKvsType:8,eObjType:7,objValueType:object  / 5 iAarraySize=1 / 5 objValue:5 / "
                "5 eObjType=(3) / 5 tempString:bool / 5 eKvsType:1,eObjType:3,objValueType:bool  / "
                "5 addArrayItem type=14" +
                end);
}

TEST_F(JsonReaderTest, TooDeepNestingGivesAnEmptyList) {
  const std::string values = Load(Nest("", 499));  // 999 arrays and objects
  EXPECT_EQ(std::count(values.begin(), values.end(), 'k'), 499);
  EXPECT_EQ(Load(Nest("", 500)), "");
  for (const std::size_t levels : {1001U, 100000U}) {
    EXPECT_EQ(Load(std::string(levels, '[') + std::string(levels, ']')), "");
    EXPECT_EQ(Load(std::string(levels, '[')), "");
  }
}

TEST_F(JsonReaderTest, DamagedFilesNeverCrash) {
  for (std::size_t i = 0; i < kExample.size(); ++i) {
    EXPECT_EQ(Load(kExample.substr(0, i)), "") << i;
    for (const char damage : {'"', '\xff'}) {
      std::string damaged = kExample;
      damaged[i] = damage;
      Load(damaged);
    }
  }
}

TEST_F(JsonReaderTest, TextGivesItsFirstItem) {
  const auto expect = [](const std::string& text, const std::string& value,
                         const std::string& logged) {
    EXPECT_EQ(ValueText(KvsType::DeSerializeKvsData(text, false)), value);
    LogCapture log;
    EXPECT_EQ(JsonParser("").parseKvsTypeFromString(text, false) == nullptr, value[0] == ':');
    const std::string begin = "6 parseKvsTypeFromString error=" + text + " / " + logged;
    EXPECT_EQ(log.Joined().substr(0, begin.size()), begin);
  };
  const std::string failed = ":object=!3";
  expect("[" + Items("bool:1|bool:0") + "]", "k:bool=true", "5 the arrary size=(2)");
  expect("[]", failed, "5 the arrary size=(0)");
  expect("{}", failed, "5 the Kvs format error");
  expect("[null]", failed, "5 the arrary size=(1) / 5 parseJsonArrayObject error");
  expect("[", failed, "5 parseString error=");
  EXPECT_EQ(ValueText(KvsType::DeSerializeKvsData("", true)), failed);
}

TEST_F(JsonReaderTest, InitModeTakesOtherNamesButOnTheFirstNestedLevel) {
  const auto expect = [](const std::string& text, const std::string& value) {
    EXPECT_EQ(ValueText(KvsType::DeSerializeKvsData("[" + text + "]", true)), value) << text;
  };
  const auto item = [](const std::string& type, const std::string& value) {
    return R"({"key":"k","valueDataType":")" + type + R"(","initValue":)" + value + "}";
  };
  const auto nest = [&](const std::string& items) { return item("object", "[" + items + "]"); };
  expect(item("uint8", "7"), "k:uint8=7u");
  expect(Item("uint8", "7"), ":object=!3");
  expect(nest(item("sint8", "7")), "k:object=[k:uint64=7u]");
  expect(nest(item("string", R"(["a"])")), "k:object=[k:string=['a']]");
  expect(nest(R"({"key":"k","type":"string","initValue":["a"]})"), "k:object=[:bool=false]");
  expect(nest(nest(item("sint8", "1"))), "k:object=[:object=]");
  // With a "type" on the first level, the walk goes on below it.
  const std::string begin = R"({"key":"k","type":"object","initValue":[)";
  expect(nest(begin + item("sint8", "[1]") + "," + nest(item("bool", "true")) + "]}"),
         "k:object=[k:object=[k:sint64=[1],k:object=[k:bool=true]]]");
  expect(nest(begin + R"({"key":"k","type":"sint8","initValue":1}]})"), ":object=!3");
}

}  // namespace
}  // namespace ara::per::testing
