#include <initializer_list>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ara/per/internal_access.h"
#include "ara/per/json_parser.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace ara::per::testing {

using Type = KvsType::Type;

static KvsType Named(const std::string& key, KvsType value) {
  value.SetKey(key);
  return value;
}

static KvsType Binary() { return KvsType(std::string("x").data(), 1); }

template <class Element>
KvsType ArrayOf(const std::vector<Element>& elements, KvsType array = KvsType()) {
  InternalAccess access;
  access.SetInternalValue(array, KvsTypeInternalType());
  for (const Element& element : elements) {
    access.GetInternalValue(array).Add(Element{element});
  }
  access.GetInternalValue(array).SetParsedAsArray(true);
  return array;
}

/// The item "k" as it must be in a file.
static std::string Item(const std::string& type, const std::string& value) {
  return R"({"key":"k","type":")" + type + R"(","value":)" + value + "}";
}

static void ExpectItem(Type type, std::initializer_list<std::pair<KvsType, std::string>> cases) {
  for (auto [value, text] : cases) {
    InternalAccess().SetInternalType(value, type);
    value.SetKey("k");
    text = "[" + Item(InternalAccess().getKvsTypeAsString(value, type), text) + "]";
    EXPECT_EQ(value.SerializeKvsData(), text);
    EXPECT_EQ(value.SerializeKvsData(), text);  // the cursor begins anew
  }
}

TEST(JsonWriterTest, EachTypeHasItsTextAndScalarsOf64BitsKeepTheirLow32) {
  const KvsType longs = ArrayOf<long>({4294967297, -1});
  const KvsType ulongs = ArrayOf<unsigned long>({4294967297, ~0UL});
  const KvsType texts = ArrayOf<std::string>({"a", "", "c"});
  const KvsType objects = ArrayOf<KvsType>({Named("k", KvsType(7U))});
  ExpectItem(Type::kFloat, {{KvsType(.1F), "0.100000"}, {ArrayOf<double>({99.9}), "[99.900002]"}});
  ExpectItem(Type::kDouble, {{KvsType(0.5), "0.500000"}, {ArrayOf<double>({2}), "[2.000000]"}});
  ExpectItem(Type::kSInt8, {{KvsType(-128), "-128"}, {longs, "[1,-1]"}});
  ExpectItem(Type::kSInt16, {{KvsType(-32768), "-32768"}, {longs, "[1,-1]"}});
  ExpectItem(Type::kSInt32, {{KvsType(-2147483647), "-2147483647"}, {longs, "[1,-1]"}});
  ExpectItem(Type::kSInt64, {{KvsType(4294967295L), "-1"}, {longs, "[4294967297,-1]"}});
  ExpectItem(Type::kUInt8, {{KvsType(255U), "255"}, {ulongs, "[1,4294967295]"}});
  ExpectItem(Type::kUInt16, {{KvsType(65535U), "65535"}, {ulongs, "[1,4294967295]"}});
  ExpectItem(Type::kUInt32, {{KvsType(~0U), "4294967295"}, {ulongs, "[1,4294967295]"}});
  ExpectItem(Type::kUInt64,
             {{KvsType(4294967297UL), "1"}, {ulongs, "[4294967297,18446744073709551615]"}});
  ExpectItem(Type::kString, {{KvsType("a\"\\\n"), "\"a\"\\\n\""}, {texts, R"(["a","","c"])"}});
  ExpectItem(Type::kBoolean, {{KvsType(true), "1"}, {ArrayOf<bool>({true, false}), "[1,0]"}});
  ExpectItem(Type::kSInt32, {{ArrayOf(std::vector<long>(256, 1)), "[]"}});
  LogCapture log;  // content of another kind is cut off
  ExpectItem(Type::kBoolean, {{ArrayOf<long>({1}), "[]"}});
  EXPECT_TRUE(log.Has(5, "what=KvsTypeInternalType::GetUint() Internal type is not a boolean"));
  ExpectItem(Type::kObject, {{objects, "[" + Item("uint32", "7") + "]"}, {KvsType(), "[]"}});
}

TEST(JsonWriterTest, WritingGoesOnWhereTheCursorStandsAlsoBehindARefusedItem) {
  KvsType list = Named("k", ArrayOf<long>({1, 2}, KvsType(1)));
  list.GetNextArrayItem();
  EXPECT_EQ(list.SerializeKvsData(), "[" + Item("sint32", "[2]") + "]");
  EXPECT_EQ(list.SerializeKvsData(), "[" + Item("sint32", "[1,2]") + "]");
  KvsType container = Named("k", ArrayOf<KvsType>({Binary(), Named("k", KvsType(1))}));
  LogCapture log;
  std::string text = "untouched";
  EXPECT_FALSE(JsonParser("a file").serializeKvsJson(container, text));
  EXPECT_TRUE(text == "untouched" && log.Has(5, "write to:a file error"));
  EXPECT_EQ(container.SerializeKvsData(),
            "[" + Item("object", "[" + Item("sint32", "1") + "]") + "]");
}

TEST(JsonWriterTest, LinesOfOneSerialisationInTheirOrder) {
  KvsType value = Named("k", ArrayOf<KvsType>({ArrayOf<long>({1}, KvsType(1))}));
  LogCapture log;
  value.SerializeKvsData();
  EXPECT_EQ(
      log.Joined(),
      R"(5 add ("key":"k") to Object / 5 add ("type":"object") to Object / 5 add ("key":"") )"
      R"(to Object / 5 key=key, strType=sint32, eType=5 / 5 add ("type":"sint32") to Object)"
      R"( / 5 add value=1 to array / 5 what=1 / 5 add ("value":[1]) to Object / 5 add value=)"
      R"({"key":"","type":"sint32","value":[1]} to array / 5 what=1 / 5 add ("value":[{"key":)"
      R"("","type":"sint32","value":[1]}]) to Object / 5 add value={"key":"k","type":)"
      R"("object","value":[{"key":"","type":"sint32","value":[1]}]} to array)");
}

TEST(JsonWriterTest, FilesHoldTheWritableItemsToTheByteWithoutTheHiddenFields) {
  const TempDir dir;
  KvsType speed = Named("speed", KvsType(-5));
  InternalAccess().SetChecksum(speed, 5);
  std::list<std::shared_ptr<KvsType>> items;
  for (const KvsType& value : {speed, Binary(), ArrayOf<std::string>({"00"}, Binary()),
                               ArrayOf<KvsType>({KvsType(1), ArrayOf<KvsType>({Binary()})})}) {
    items.push_back(std::make_shared<KvsType>(value));
  }
  EXPECT_TRUE(JsonParser("db").writeKvsJson(items) && JsonParser("no/db").writeKvsJson(items));
  EXPECT_EQ(ReadFile("db"), R"([{"key":"speed","type":"sint32","value":-5}])");
  EXPECT_TRUE(JsonParser("crc").updateCrcFile({{"b", 0}, {"a", 4294967295U}}));
  EXPECT_EQ(ReadFile("crc"), R"([{"key":"a","checksum":4294967295},{"key":"b","checksum":0}])");
}

}  // namespace ara::per::testing
