#include <filesystem>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ara/per/internal_access.h"
#include "ara/per/json_parser.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"
#include "tests/support/value_text.h"

namespace ara::per::testing {
namespace {

using Type = KvsType::Type;

KvsType Named(const std::string& key, KvsType value) {
  value.SetKey(key);
  return value;
}

KvsType Binary() {
  char byte = 'x';
  return KvsType(&byte, 1);
}

KvsType Container(const std::vector<KvsType>& items) {
  KvsType container;
  for (const KvsType& item : items) {
    container.AddArrayItem(KvsType(item));
  }
  return container;
}

template <class Element>
KvsType ArrayOf(const std::vector<Element>& elements) {
  KvsType array(Element{elements.front()});
  InternalAccess().GetInternalValue(array).SetParsedAsArray(true);
  for (std::size_t i = 1; i < elements.size(); ++i) {
    array.AddArrayItem(KvsType(Element{elements[i]}));
  }
  return array;
}

/// A value that claims to be of another type.
KvsType As(Type type, KvsType value) {
  InternalAccess().SetInternalType(value, type);
  return value;
}

/// The item "k" as it must be in a file.
std::string Item(const std::string& type, const std::string& value) {
  return R"({"key":"k","type":")" + type + R"(","value":)" + value + "}";
}

void ExpectItem(KvsType value, const std::string& type, const std::string& text) {
  value.SetKey("k");
  for (int time = 0; time < 2; ++time) {  // the cursor begins anew
    std::string file;
    EXPECT_TRUE(JsonParser("").serializeKvsJson(value, file));
    EXPECT_EQ(file, "[" + Item(type, text) + "]");
  }
}

TEST(JsonWriterTest, ScalarsHaveTheTextOfTheirType) {
  ExpectItem(KvsType(0.1F), "float", "0.100000");
  ExpectItem(KvsType(123456789.0000001), "double", "123456789.000000");
  ExpectItem(KvsType(static_cast<signed char>(-128)), "sint8", "-128");
  ExpectItem(KvsType(static_cast<short>(-32768)), "sint16", "-32768");
  ExpectItem(KvsType(-2147483647), "sint32", "-2147483647");
  ExpectItem(KvsType(static_cast<unsigned char>(255)), "uint8", "255");
  ExpectItem(KvsType(static_cast<unsigned short>(65535)), "uint16", "65535");
  ExpectItem(KvsType(4294967295U), "uint32", "4294967295");
  ExpectItem(KvsType(true), "bool", "1");
  ExpectItem(KvsType(false), "bool", "0");
  ExpectItem(KvsType(std::string("a\0\"\\\n", 5)), "string", std::string("\"a\0\"\\\n\"", 7));
}

TEST(JsonWriterTest, SixtyFourBitScalarsKeepTheirLow32BitsAlone) {
  ExpectItem(KvsType(4294967297L), "sint64", "1");
  ExpectItem(KvsType(4294967295L), "sint64", "-1");
  ExpectItem(KvsType(4294967296UL), "uint64", "0");
  ExpectItem(KvsType(4294967295UL), "uint64", "4294967295");
}

TEST(JsonWriterTest, ArraysHaveTheTextOfTheirTypeAndKeep64Bits) {
  ExpectItem(As(Type::kFloat, ArrayOf<double>({0.5, 16777217})), "float",
             "[0.500000,16777216.000000]");
  ExpectItem(ArrayOf<double>({0.5, 16777217}), "double", "[0.500000,16777217.000000]");
  for (const Type type : {Type::kSInt8, Type::kSInt16, Type::kSInt32}) {
    ExpectItem(As(type, ArrayOf<long>({4294967297, -1})),
               InternalAccess().getKvsTypeAsString(KvsType(), type), "[1,-1]");
  }
  ExpectItem(ArrayOf<long>({4294967297, -1}), "sint64", "[4294967297,-1]");
  for (const Type type : {Type::kUInt8, Type::kUInt16, Type::kUInt32}) {
    ExpectItem(As(type, ArrayOf<unsigned long>({4294967297})),
               InternalAccess().getKvsTypeAsString(KvsType(), type), "[1]");
  }
  ExpectItem(ArrayOf<unsigned long>({0, ~0UL}), "uint64", "[0,18446744073709551615]");
  ExpectItem(ArrayOf<std::string>({"a", "", "c"}), "string", R"(["a","","c"])");
  ExpectItem(ArrayOf<bool>({true, false}), "bool", "[1,0]");
  ExpectItem(Container({Named("k", KvsType(7U)), Container({KvsType()})}), "object",
             "[" + Item("uint32", "7") +
                 R"(,{"key":"","type":"object","value":[{"key":"","type":"object","value":[]}]}])");
}

TEST(JsonWriterTest, ContentOfAnotherKindThanTheTypeIsCutOffAndTheReasonLogged) {
  LogCapture log;
  ExpectItem(As(Type::kString, ArrayOf<int>({1, 2})), "string", "[]");
  ExpectItem(As(Type::kBoolean, ArrayOf<int>({1, 2})), "bool", "[]");
  ExpectItem(ArrayOf(std::vector<int>(256, 1)), "sint32", "[]");
  ExpectItem(KvsType(), "object", "[]");
  ExpectItem(As(Type::kUInt8, KvsType("x")), "uint8", "0");
  ExpectItem(As(Type::kObject, KvsType(5)), "object", R"([{"key":"","type":"sint64","value":5}])");
  EXPECT_TRUE(log.Has(5, "what=-1"));
  EXPECT_TRUE(log.Has(5, "what=KvsTypeInternalType::GetUint() Internal type is not a boolean"));
  EXPECT_TRUE(log.Has(5, "what=0"));
  EXPECT_TRUE(log.Has(5, "what=getKvsTypeNext() wrong type asked"));
}

TEST(JsonWriterTest, NumberArraysOfAMultipleOf256AreWrittenEmpty) {
  for (const std::size_t count : {255U, 256U, 257U, 512U}) {
    std::string ones = "1";
    std::string texts = "\"x\"";
    for (std::size_t i = 1; i < count; ++i) {
      ones += ",1";
      texts += ",\"x\"";
    }
    ExpectItem(ArrayOf(std::vector<signed char>(count, 1)), "sint8",
               count % 256 == 0 ? "[]" : "[" + ones + "]");
    ExpectItem(ArrayOf(std::vector<std::string>(count, "x")), "string", "[" + texts + "]");
  }
}

TEST(JsonWriterTest, WritingGoesOnWhereTheCursorStands) {
  KvsType list = Named("k", ArrayOf<int>({1, 2, 3}));
  list.GetNextArrayItem();
  EXPECT_EQ(list.SerializeKvsData(), "[" + Item("sint32", "[2,3]") + "]");
  EXPECT_EQ(list.SerializeKvsData(), "[" + Item("sint32", "[1,2,3]") + "]");
  // A refusal leaves the cursor behind the item that is to blame.
  KvsType container = Named("k", Container({Binary(), Named("k", KvsType(1))}));
  EXPECT_EQ(container.SerializeKvsData(), "");
  EXPECT_EQ(container.SerializeKvsData(),
            "[" + Item("object", "[" + Item("sint32", "1") + "]") + "]");
}

TEST(JsonWriterTest, UnwritableValuesAreRefused) {
  for (KvsType value :
       {Binary(), As(Type::kBinary, ArrayOf<std::string>({"00"})),
        As(Type::kNotSupported, KvsType(1)), As(Type::kNotSupported, ArrayOf<int>({1})),
        Container({KvsType(1), Container({As(static_cast<Type>(15), KvsType(1))})})}) {
    SCOPED_TRACE(ValueText(value));
    std::string text = "untouched";
    LogCapture log;
    EXPECT_FALSE(JsonParser("a file").serializeKvsJson(value, text));
    EXPECT_EQ(text, "untouched");
    EXPECT_EQ(log.Lines().back(), (LogLine{5, "write to:a file error", ""}));
  }
}

TEST(JsonWriterTest, LinesOfOneSerialisationInTheirOrder) {
  KvsType value = Named("k", Container({Named("k", KvsType(true)), ArrayOf<int>({1, 2})}));
  LogCapture log;
  value.SerializeKvsData();
  const std::string list = R"("key":"","type":"sint32","value":[1,2])";
  const std::string items = "[" + Item("bool", "1") + ",{" + list + "}]";
  EXPECT_EQ(log.Joined(),
            R"(5 add ("key":"k") to Object / 5 add ("type":"object") to Object / )"
            R"(5 add ("key":"k") to Object / 5 add ("type":"bool") to Object / )"
            R"(5 add ("value":1) to Object / 5 add value=)" +
                Item("bool", "1") +
                R"( to array / 5 add ("key":"") to Object / )"
                R"(5 key=key, strType=sint32, eType=5 / 5 add ("type":"sint32") to Object / )"
                R"(5 add value=1 to array / 5 add value=2 to array / 5 what=1 / )"
                R"(5 add ("value":[1,2]) to Object / 5 add value={)" +
                list + R"(} to array / 5 what=1 / 5 add ("value":)" + items +
                ") to Object / 5 add value=" + Item("object", items) + " to array");
}

TEST(JsonWriterTest, NullObjectsAreRefused) {
  KvsType value(1);
  LogCapture log;
  EXPECT_FALSE(JsonParser("").writeSingleValueToObject(nullptr, &value));
  EXPECT_FALSE(JsonParser("").writeArrayToObject(nullptr, &value));
  EXPECT_EQ(log.Joined(), "5 get jsonObject is error / 5 writeArrayToObject:startArray error");
  EXPECT_EQ(JsonParser("").calculateChecksum(value), 0U);
}

/// Writes files in a directory of its own.
class JsonWriterFileTest : public ::testing::Test {
 protected:
  static std::string Write(const std::vector<KvsType>& values) {
    std::list<std::shared_ptr<KvsType>> items;
    for (const KvsType& value : values) {
      items.push_back(std::make_shared<KvsType>(value));
    }
    for (const char* const path : {"db", "missing/db", "/dev/full"}) {
      EXPECT_TRUE(JsonParser(path).writeKvsJson(items)) << path;
    }
    EXPECT_FALSE(std::filesystem::exists("missing"));
    return ReadFile("db");
  }

  TempDir dir_;
  LogCapture log_;
};

TEST_F(JsonWriterFileTest, WorkedExampleIsWrittenToTheByte) {
  EXPECT_EQ(Write({Named("speed", KvsType(-5)), Named("ratio", KvsType(1.5)),
                   Named("name", KvsType("abc")), Named("on", KvsType(true)),
                   Named("list", ArrayOf<unsigned short>({1, 2, 3})),
                   Named("cfg", Container({Named("a", KvsType(static_cast<unsigned char>(7)))}))}),
            R"([{"key":"speed","type":"sint32","value":-5},)"
            R"({"key":"ratio","type":"double","value":1.500000},)"
            R"({"key":"name","type":"string","value":"abc"},{"key":"on","type":"bool","value":1},)"
            R"({"key":"list","type":"uint16","value":[1,2,3]},)"
            R"({"key":"cfg","type":"object","value":[{"key":"a","type":"uint8","value":7}]}])");
}

TEST_F(JsonWriterFileTest, UnwritableItemsAndHiddenFieldsAreLeftOut) {
  EXPECT_EQ(Write({}), "[]");
  KvsType kept = Named("k", KvsType(1));
  kept.SetStatus(KvsType::Status::kGeneralError);
  InternalAccess().SetChecksum(kept, 5);
  InternalAccess().SetDocumentation(kept, "doc");
  EXPECT_EQ(Write({Binary(), kept, Container({KvsType(1), Binary()})}),
            "[" + Item("sint32", "1") + "]");
}

TEST_F(JsonWriterFileTest, ChecksumMapIsWrittenInKeyOrder) {
  EXPECT_TRUE(JsonParser("crc").updateCrcFile({{"b", 0}, {"a", 4294967295U}}));
  EXPECT_EQ(ReadFile("crc"), R"([{"key":"a","checksum":4294967295},{"key":"b","checksum":0}])");
  EXPECT_TRUE(JsonParser("missing/crc").updateCrcFile({}));
}

}  // namespace
}  // namespace ara::per::testing
