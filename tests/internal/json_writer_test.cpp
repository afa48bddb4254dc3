#include <cmath>
#include <filesystem>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "ara/per/internal_access.h"
#include "ara/per/json_create_array_object.h"
#include "ara/per/json_parser.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

static unsigned int lastPause = 0;

/// Stands before the C library's function.
extern "C" int usleep(unsigned int microseconds) {
  lastPause = microseconds;
  return 0;
}

namespace ara::per::testing {

class JsonTextTest : public ::testing::Test {
 protected:
  std::unique_ptr<JsonArray> array_{JsonArray::startArray()};
  std::unique_ptr<JsonObject> object_{JsonObject::StartObject()};
  LogCapture log_;
};

TEST_F(JsonTextTest, AdditionsGoInByteForByteAndGiveTrueTheFirstTimeAlone) {
  EXPECT_FALSE(object_->addArrayToObject("a", nullptr) || object_->addObjectToObject("o", nullptr));
  EXPECT_FALSE(array_->addObjectToArray(nullptr) || array_->addArrayToArray(nullptr));
  EXPECT_EQ(log_.Joined(), "2  the object is invalid / 2  the array object is invalid");
  EXPECT_TRUE(array_->addArrayToArray(array_.get()));
  EXPECT_TRUE(object_->addObjectToObject("%d", object_.get()));
  const std::string text("a\0\"\\\n%s", 7);
  EXPECT_FALSE(array_->addStringToArray(text) || object_->addStringToObject("s", text));
  EXPECT_FALSE(array_->addDoubleToArray(-HUGE_VAL) || object_->addInt64ToObject("l", -4294967296));
  EXPECT_EQ(array_->getSerializationForObject(), "[[],\"" + text + "\",-inf]");
  EXPECT_EQ(object_->getSerializationForObject(),
            "{\"%d\":{},\"s\":\"" + text + "\",\"l\":-4294967296}");
}

TEST_F(JsonTextTest, SavingTouchesThroughAShellAndWritesInPlace) {
  const TempDir dir;
  const std::string path = "a; touch b; :";  // goes unquoted through a shell
  array_->addStringToArray("123456");
  log_.Clear();
  EXPECT_EQ(array_->saveArrayObject(path), 0);
  EXPECT_TRUE(std::filesystem::remove("b") && lastPause == 300);
  WriteFile(path, std::string(100, 'x'));
  std::filesystem::create_hard_link(path, "file");
  std::filesystem::create_symlink("/dev/full", "full");
  EXPECT_EQ(array_->saveArrayObject(path) + object_->saveObject("full"), 0);
  EXPECT_EQ(ReadFile("file"), "[\"123456\"]");
  EXPECT_FALSE(std::filesystem::exists("b"));
  EXPECT_EQ(object_->saveObject("object") + object_->saveObject("missing/file"), -1);
  EXPECT_TRUE(ReadFile("object") == "{}" && lastPause == 30);
  EXPECT_EQ(log_.Joined(),
            "5 write size =10 / 5 write size =10 / 5 write size=-1, oringe size=2 / "
            "5 write size=2, oringe size=2 / "
            "2 open the file(missing/file) error(No such file or directory)");
}

/// An array of the type of its first item, or a container of the others.
static KvsType ArrayOf(KvsType first, const std::vector<KvsType>& others) {
  for (const KvsType& other : others) {
    first.AddArrayItem(KvsType(other));
  }
  return first;
}

static KvsType Binary() { return KvsType(std::string("x").data(), 1); }

/// The text of a value without a key, as its type and value alone.
static std::string Text(KvsType& value) {
  static const std::regex frame(R"re(\[\{"key":"","type":"|"(,)"value":|\}\])re");
  return std::regex_replace(value.SerializeKvsData(), frame, "$1");
}

TEST(JsonWriterTest, EachTypeHasItsTextAndScalarsOf64BitsKeepTheirLow32) {
  std::string texts;
  for (int type = 0; type <= 13; ++type) {
    KvsType value = type <= 2    ? ArrayOf(KvsType(99.9), {KvsType(2.0)})
                    : type <= 6  ? ArrayOf(KvsType(8589934292), {KvsType(-1)})
                    : type <= 10 ? ArrayOf(KvsType(8589934591UL), {KvsType(~0UL)})
                    : type <= 12 ? ArrayOf(KvsType("\"\\\n"), {KvsType("")})
                                 : ArrayOf(KvsType(true), {KvsType(false)});
    InternalAccess().SetInternalType(value, static_cast<KvsType::Type>(type));
    texts += Text(value) + " ";
    InternalAccess().GetInternalValue(value).SetParsedAsArray(false);
    texts += Text(value) + "/";
  }
  EXPECT_EQ(texts,
            " /float,[99.900002,2.000000] float,99.900002/double,[99.900000,2.000000] double,"
            "99.900000/sint8,[-300,-1] sint8,-300/sint16,[-300,-1] sint16,-300/sint32,[-300,-1] "
            "sint32,-300/sint64,[8589934292,-1] sint64,-300/uint8,[4294967295,4294967295] uint8,"
            "4294967295/uint16,[4294967295,4294967295] uint16,4294967295/uint32,[4294967295,"
            "4294967295] uint32,4294967295/uint64,[8589934591,18446744073709551615] uint64,"
            "4294967295/string,[\"\"\\\n\",\"\"] string,\"\"\\\n\"/ /bool,[1,0] bool,1/");
}

TEST(JsonWriterTest, WritingGoesOnWhereTheCursorStandsAlsoBehindARefusedItem) {
  KvsType list = ArrayOf(KvsType(1), {KvsType(2)});
  list.GetNextArrayItem();
  EXPECT_EQ(Text(list), "sint32,[2]");
  EXPECT_EQ(Text(list), "sint32,[1,2]");
  KvsType container = ArrayOf(KvsType(), {Binary(), KvsType(1)});
  LogCapture log;
  std::string text = "untouched";
  EXPECT_FALSE(JsonParser("a file").serializeKvsJson(container, text));
  EXPECT_TRUE(text == "untouched" && log.Has(5, "write to:a file error"));
  EXPECT_EQ(Text(container), "object,sint32,1");
}

TEST(JsonWriterTest, FilesHoldTheWritableItemsToTheByteWithoutTheHiddenFields) {
  const TempDir dir;
  KvsType speed = ArrayOf(KvsType(-5), {KvsType(1)});
  speed.SetKey("speed");
  InternalAccess().SetChecksum(speed, 5);
  InternalAccess().SetInternalType(speed, KvsType::Type::kBoolean);  // is written as empty
  const KvsType deep = ArrayOf(KvsType(), {KvsType(1), ArrayOf(KvsType(), {Binary()})});
  LogCapture log;
  EXPECT_TRUE(JsonParser("db").writeKvsJson({std::make_shared<KvsType>(Binary()),
                                             std::make_shared<KvsType>(ArrayOf(KvsType(), {speed})),
                                             std::make_shared<KvsType>(deep)}));
  EXPECT_THAT(
      log.Joined(),
      ::testing::HasSubstr(
          R"(5 add ("type":"object") to Object / 5 add ("key":"speed") to Object / 5 key=key, )"
          R"(strType=bool, eType=13 / 5 add ("type":"bool") to Object / 5 what=)"
          R"(KvsTypeInternalType::GetUint() Internal type is not a boolean / 5 add ("value":[]) )"
          R"(to Object / 5 add value={"key":"speed","type":"bool","value":[]} to array / 5 what=1 )"
          R"(/ 5 add ("value":[{"key":"speed","type":"bool","value":[]}]) to Object)"));
  EXPECT_EQ(ReadFile("db"),
            R"([{"key":"","type":"object","value":[{"key":"speed","type":"bool","value":[]}]}])");
  EXPECT_TRUE(JsonParser("no/db").writeKvsJson({}));
  EXPECT_TRUE(JsonParser("crc").updateCrcFile({{"b", 0}, {"a", 4294967295U}}));
  EXPECT_EQ(ReadFile("crc"), R"([{"key":"a","checksum":4294967295},{"key":"b","checksum":0}])");
}

}  // namespace ara::per::testing
