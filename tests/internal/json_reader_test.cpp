#include <list>
#include <memory>
#include <regex>
#include <string>

#include <gmock/gmock.h>

#include "ara/per/internal_access.h"
#include "ara/per/json_parser.h"
#include "ara/per/physical_storage_error_exception.h"
#include "tests/support/database_test.h"
#include "tests/support/thrown.h"
#include "tests/support/value_text.h"

namespace ara::per::testing {

/// The items "k" of a file from a text like "sint8:5|bool:true".
static std::string Items(std::string text) {
  static const std::regex item("([^:|]+):([^|]*)");
  text = std::regex_replace(text, item, R"({"key":"k","type":"$1","value":$2})");
  return std::regex_replace(text, std::regex("[|]"), ",");
}

/// A file of one "object" item whose list, or the innermost of whose lists, holds the given items.
static std::string Nest(std::string items, int levels = 1) {
  for (int i = 0; i < levels; ++i) {
    items = R"({"key":"k","type":"object","value":[)" + items + "]}";
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
    return values + std::regex_replace(out_.Take(), std::regex("the json type is invalid\n"), "!");
  }
};

TEST_F(JsonReaderTest, TopLevelValuesAreReadByTheirDeclaredType) {
  const std::string items =
      Items(R"(sint8:300|sint16:4294967295|sint32:"5"|sint64:-9223372036854775808|uint8:300)"
            R"(|uint16:4294967297|uint32:-1|uint64:18446744073709551615|float:16777217|double:-0.5)"
            R"(|bool:7|string:"\"\u0041"|string:"a\u0000b"|string:12|binary:"ab"|other:5)"
            R"(|sint8:[300,null]|sint32:[]|string:["a","",1]|binary:["ab"]|other:[5]|object:5)");
  EXPECT_EQ(Load("[" + items + R"(,{"version":1,"value":5,"type":"sint8","x":"d"}])"),
            "k:sint8=300 k:sint16=-1 k:sint32=0 k:sint64=-9223372036854775808 k:uint8=300u "
            "k:uint16=1u k:uint32=4294967295u k:uint64=18446744073709551615u "
            "k:float=16777217.000000 k:double=-0.500000 k:bool=true k:string='\"A' k:string='a' "
            "k:string='12' k:binary= k:getKvsTypeAsString_not_found= k:sint8=[300,0] k:sint32=[] "
            "k:string=['a','','1'] k:binary=[] k:getKvsTypeAsString_not_found=[] k:object=[] "
            ":sint8=5");
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
}

TEST_F(JsonReaderTest, RefusalsGiveAnEmptyListOrAReplacementAndTellWhy) {
  const auto expect = [this](const std::string& file, const std::string& result,
                             const std::string& lastLines) {
    EXPECT_EQ(Load(file), result) << file;
    EXPECT_THAT(log_.Joined(), ::testing::EndsWith(lastLines)) << file;
  };
  const std::string walk = " / 5 parseJsonArrayObject";
  const std::string first = "5 parseArrayObj error" + walk;
  const std::string deep = "k:object=[k:object=[";
  expect("[" + Items("bool:1") + ",]", "", "5 Parse strFileName(db) to jsonObject is error()");
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
  EXPECT_TRUE(JsonParser("missing").parseKvsJson().empty());
  EXPECT_TRUE(log_.Has(5, "strFileName(missing) is not exit"));
}

TEST_F(JsonReaderTest, LinesOfOneReadInTheirOrder) {
  Load(Nest(Items("bool:[1]|object:[{\"key\":\"\",\"type\":\"bool\",\"value\":5}]")));
  EXPECT_EQ(
      TakeText("", "JsonReadHandler::", "*"),
      "5 the arrary size=(1)|5 *StartObject is called.|5 *Key:key|5 *Key end|5 *String value:k "
      "|5 *String end.|5 setValueType:object:14|5 eObjType=(7),eKvsType=object|5 iAarraySize=2|"
      "5 tempString:bool|5 eKvsType:1,eObjType:7,objValueType:bool |5 parseArrayValueInner "
      "enter|5 tempString:object|5 eKvsType:8,eObjType:7,objValueType:object |5 iAarraySize=1|"
      "5 objValue:5|5 eObjType=(3)|5 tempString:bool|5 eKvsType:1,eObjType:3,objValueType:bool "
      "|5 addArrayItem type=14|5 *EndObject is called|5 *CompareCrcAndUpdateStatus checksum is "
      "abled.");
}

TEST_F(JsonReaderTest, TextGivesItsFirstItemAndInitModeTakesOtherNamesButOnTheFirstNestedLevel) {
  const auto expect = [](const std::string& text, bool initMode, const std::string& value) {
    EXPECT_EQ(ValueText(KvsType::DeSerializeKvsData(text, initMode)), value) << text;
  };
  expect("[" + Items("bool:1|bool:0") + "]", false, "k:bool=true");
  expect("[" + Items("uint8:7") + "]", true, ":object=!3");
  expect(R"([{"key":"k","valueDataType":"object","initValue":)"
         R"([{"key":"i","valueDataType":"object","initValue":[]}]}])",
         true, "k:object=[:object=]");
  expect("{}", false, ":object=!3");
  expect("[]", false, ":object=!3");
  EXPECT_TRUE(log_.Has(6, "parseKvsTypeFromString error=[]") &&
              log_.Has(5, "the Kvs format error"));
}

class ReadHandlerTest : public ::testing::Test {
 protected:
  /// Opens an item as a file's item begins.
  bool Begin(const std::string& key, const std::string& typeName) {
    return handler_.StartObject() && handler_.Key("key") && handler_.String(key.c_str()) &&
           handler_.setValueType(typeName, type_);
  }

  JsonParser parser_{""};
  std::list<std::unique_ptr<KvsType>> items_;
  JsonReadHandler handler_{parser_, items_};
  KvsType::Type type_ = KvsType::Type::kObject;
};

TEST_F(ReadHandlerTest, EventsNeedAnItemWhichLandsInTheListWhenItEnds) {
  EXPECT_FALSE(handler_.Int(1) || handler_.String("x") || handler_.Null());
  EXPECT_EQ(Thrown<PhysicalStorageErrorException>([this] { handler_.EndObject(); }),
            "Should never get here");
  EXPECT_TRUE(Begin("b", "binary") && handler_.setParseAsArray(true) && handler_.String("ab"));
  EXPECT_TRUE(handler_.Key("documentation") && handler_.Key("type") && handler_.String("doc"));
  EXPECT_TRUE(handler_.Key("checksum") && handler_.String("d") && handler_.setCheckSum(77));
  EXPECT_TRUE(handler_.EndObject() && Begin("a", "sint8") && handler_.Int(-1));
  EXPECT_TRUE(handler_.Int64(4294967296) && handler_.Null() && handler_.String("dropped"));
  EXPECT_TRUE(handler_.Key("key") && handler_.EndObject());  // the name survives it
  EXPECT_TRUE(handler_.StartObject() && handler_.String("z") && handler_.EndObject());
  EXPECT_EQ(ValueTexts(items_), "b:binary=['ab','d'] a:sint8=-1,4294967296 z:object=");
  EXPECT_EQ(InternalAccess().GetDocumentation(*items_.front()), "doc");
  EXPECT_EQ(InternalAccess().GetChecksum(*items_.front()), 77U);
}

TEST_F(ReadHandlerTest, ChildrenGoIntoTheirParentsAndValueObjectsHaveTypeNames) {
  EXPECT_TRUE(Begin("parent", "object") && handler_.StartObject() && Begin("child", "object"));
  EXPECT_TRUE(handler_.StartObject() && Begin("inner", "object") && handler_.StartObject());
  EXPECT_TRUE(handler_.Key("[]string") && handler_.String("x") && handler_.EndObject());
  EXPECT_TRUE(handler_.EndObject() && handler_.EndObject() && handler_.EndObject());
  EXPECT_TRUE(handler_.EndObject() && items_.empty() && handler_.EndObject());
  EXPECT_EQ(ValueTexts(items_), "parent:object=child:object=inner:string=['x']");
}

}  // namespace ara::per::testing
