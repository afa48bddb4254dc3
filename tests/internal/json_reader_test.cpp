#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "ara/per/json_parser.h"
#include "tests/support/database_test.h"
#include "tests/support/value_text.h"

namespace ara::per::testing {

/// The item "k" of a file.
static std::string Item(const std::string& type, const std::string& value) {
  return R"({"key":"k","type":")" + type + R"(","value":)" + value + "}";
}

/// The items of a text like "sint8:5|bool:true".
static std::string Items(std::string text) {
  static const std::regex item("([^:|]+):([^|]*)");
  text = std::regex_replace(text, item, Item("$1", "$2"));
  return std::regex_replace(text, std::regex("[|]"), ",");
}

/// A file of one "object" item whose list, or the innermost of whose lists, holds the given items.
static std::string Nest(std::string items, int levels = 1) {
  for (int i = 0; i < levels; ++i) {
    items = Item("object", "[" + items + "]");
  }
  return "[" + items + "]";
}

class JsonReaderTest : public DatabaseTest {
 protected:
  /// The items of a file, with a "!" behind them if something was refused on standard output.
  std::string Load(const std::string& file) {
    WriteFile("db", file);
    log_.Clear();
    const std::string values = ValueTexts(JsonParser("db").parseKvsJson());
    return values + (out_.Take() == "the json type is invalid\n" ? "!" : "");
  }
};

TEST_F(JsonReaderTest, TopLevelValuesAreReadByTheirDeclaredType) {
  const std::string items = Items(
      R"(sint8:300|sint16:4294967295|sint32:"5"|sint64:-9223372036854775808|uint8:300)"
      R"(|uint16:4294967297|uint32:-1|uint64:18446744073709551615|float:16777217|double:-0.5)"
      R"(|bool:7|bool:true|string:"\"\u0041"|string:"a\u0000b"|string:12|binary:"ab"|other:5)"
      R"(|sint8:[300,null]|sint32:[]|sint64:[4294967297]|uint32:[4294967297]|uint64:[4294967297])"
      R"(|float:[0.5,2]|bool:[1,0,true]|string:["a","",1]|binary:["ab"]|other:[5]|object:5)");
  EXPECT_EQ(Load("[" + items + R"(,{"version":1,"value":5,"type":"sint8","x":"d"}])"),
            "k:sint8=300 k:sint16=-1 k:sint32=0 k:sint64=-9223372036854775808 k:uint8=300u "
            "k:uint16=1u k:uint32=4294967295u k:uint64=18446744073709551615u "
            "k:float=16777217.000000 k:double=-0.500000 k:bool=true k:bool=true k:string='\"A' "
            "k:string='a' k:string='12' k:binary= k:getKvsTypeAsString_not_found= "
            "k:sint8=[300,0] k:sint32=[] k:sint64=[4294967297] k:uint32=[1u] k:uint64=[4294967297u]"
            " k:float=[0.500000,2.000000] k:bool=[true,false,true] k:string=['a','','1'] "
            "k:binary=[] k:getKvsTypeAsString_not_found=[] k:object=[] :sint8=5");
}

TEST_F(JsonReaderTest, NestedValuesAreReadByTheirTokenOrTheClassOfTheirType) {
  const std::string items =
      Items(R"(float:7|uint8:-7|sint8:1.5|sint8:true|object:"a\u00e4"|sint64:[-1,2]|uint8:[1,300])"
            R"(|bool:[1,false]|float:[0.5,1]|double:[2.0,1]|binary:[1]|string:["a","b"]|sint8:[])");
  const std::string values =
      "k:object=[k:uint64=7u,k:sint64=-7,k:double=1.500000,k:bool=true,k:string='a\u00e4',"
      "k:sint64=[-1,2],k:uint64=[1u,300u],k:bool=[true,false],k:double=[0.500000,1.000000],"
      "k:uint64=[2u,1u],k:uint64=[1u],k:string=['a','b'],:object=]";
  EXPECT_EQ(Load(Nest(items)), values);
  EXPECT_EQ(Load(Nest(items, 3)), "k:object=[k:object=[" + values + "]]");
  for (std::size_t i = 0; i < items.size(); ++i) {  // damage may change values and never crashes
    EXPECT_EQ(Load(Nest(items).substr(0, i)), "") << i;
    Load(Nest(std::string(items).replace(i, 1, "\"")));
  }
}

TEST_F(JsonReaderTest, RefusalsGiveAnEmptyListOrAReplacementAndTellWhy) {
  const auto expect = [this](const std::string& file, const std::string& result,
                             const std::string& lastLines) {
    EXPECT_EQ(Load(file), result) << file;
    const std::string lines = log_.Joined();
    EXPECT_EQ(lines.substr(lines.size() - lastLines.size()), lastLines) << file;
  };
  const std::string walk = " / 5 parseJsonArrayObject";
  const std::string first = "5 parseArrayObj error" + walk;
  const std::string deep = "k:object=[k:object=[";
  expect("[" + Item("bool", "1") + ",]", "", "5 Parse strFileName(db) to jsonObject is error()");
  expect("{}", "", "5 to arrayObject error()");
  expect("[null]", "!", "5 the arrary size=(1)" + walk);
  expect(R"([{"type":null,"value":1}])", "!", "5 JsonReadHandler::String end." + walk);
  expect("[" + Items("bool:1|bool:null") + "]", "!", "5 setValueType:bool:13" + walk);
  expect(Nest("null"), "!", "5 iAarraySize=1 / " + first);
  expect(Nest(R"({"type":"sint8","value":1})"), "!", first);
  expect(Nest(R"({"type":"sint8","value":[1]})"), "k:object=[:bool=false]!", "");
  expect(Nest(R"({"key":"k","value":{}})"), "k:object=[k:object=]", "");
  expect(Nest(R"({"key":"k","value":1})", 2), "!", "(3) / 5 parseArrayObjInner error / " + first);
  expect(Nest(R"({"type":"x","value":{}})", 2), deep + ":object=]]", "");
  expect(Nest(Items("bool:true|bool:null|bool:true"), 3), deep + "k:object=[k:bool=true]]]!", "");
  expect(Nest("", 500), "", "");  // 1001 arrays and objects
  EXPECT_TRUE(!Load(Nest("", 499)).empty() && Load(std::string(100000, '[')).empty());
  log_.Clear();
  EXPECT_TRUE(JsonParser("missing").parseKvsJson().empty());
  EXPECT_EQ(log_.Joined(), "5 strFileName(missing) is not exit");
}

TEST_F(JsonReaderTest, LinesOfOneReadInTheirOrder) {
  Load(Nest(Items("bool:[1]|object:[" + Item("bool", "5") + "]")));
  const std::string handler = " / 5 JsonReadHandler::";
  const std::string lines =
      "5 the arrary size=(1)" + handler + "StartObject is called." + handler + "Key:key" + handler +
      "Key end" + handler + "String value:k " + handler +
      "String end. / 5 setValueType:object:14"
      " / 5 eObjType=(7),eKvsType=object / 5 iAarraySize=2 / 5 tempString:bool / 5 eKvsType:1,"
      "eObjType:7,objValueType:bool  / 5 parseArrayValueInner enter / 5 tempString:object / "
      "5 eKvsType:8,eObjType:7,objValueType:object  / 5 iAarraySize=1 / 5 objValue:5 / 5 eObjType="
      "(3) / 5 tempString:bool / 5 eKvsType:1,eObjType:3,objValueType:bool  / 5 addArrayItem type="
      "14" +
      handler + "EndObject is called" + handler + "CompareCrcAndUpdateStatus checksum is abled.";
  EXPECT_EQ(log_.Joined().substr(0, lines.size()), lines);
}

TEST_F(JsonReaderTest, TextGivesItsFirstItemAndInitModeTakesOtherNamesButOnTheFirstNestedLevel) {
  const auto expect = [](const std::string& text, bool initMode, const std::string& value) {
    EXPECT_EQ(ValueText(KvsType::DeSerializeKvsData(text, initMode)), value) << text;
  };
  expect("[" + Items("bool:1|bool:0") + "]", false, "k:bool=true");
  expect("[" + Item("uint8", "7") + "]", true, ":object=!3");
  expect(R"([{"key":"k","valueDataType":"object","initValue":)"
         R"([{"key":"i","valueDataType":"object","initValue":[]}]}])",
         true, "k:object=[:object=]");
  log_.Clear();
  for (const char* const text : {"[]", "{}", "["}) {
    expect(text, false, ":object=!3");
  }
  EXPECT_TRUE(log_.Has(6, "parseKvsTypeFromString error=[") && log_.Has(5, "the Kvs format error"));
}

}  // namespace ara::per::testing
