#include <atomic>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ara/per/json_create_array_object.h"
#include "ara/per/json_create_object.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

namespace {

std::atomic<unsigned int> lastPause = 0;

}  // namespace

/// Stands before the C library's function.
extern "C" int usleep(unsigned int microseconds) {
  lastPause = microseconds;
  return 0;
}

namespace ara::per::testing {
namespace {

/// Both builders, in a directory of its own.
class JsonTextTest : public ::testing::Test {
 protected:
  using A = JsonArray;
  using O = JsonObject;

  /// Adds one value twice to a new array and as the member "n" to a new object.
  template <class Value>
  static void ExpectText(bool (A::*toArray)(Value), bool (O::*toObject)(std::string, Value),
                         const Value& value, const std::string& text) {
    SCOPED_TRACE(text);
    const std::unique_ptr<A> array(A::startArray());
    const std::unique_ptr<O> object(O::StartObject());
    for (const bool isFirst : {true, false, false}) {
      EXPECT_EQ((array.get()->*toArray)(value), isFirst);
      EXPECT_EQ((object.get()->*toObject)("n", value), isFirst);
    }
    EXPECT_EQ(array->getSerializationForObject(), "[" + text + "," + text + "," + text + "]");
    const std::string member = "\"n\":" + text;
    EXPECT_EQ(object->getSerializationForObject(),
              "{" + member + "," + member + "," + member + "}");
  }

  static void ExpectDouble(double value, const std::string& text) {
    ExpectText(&A::addDoubleToArray, &O::addDoubleToObject, value, text);
  }

  /// Fills the builders with texts of 8 bytes. @return how each is saved
  std::vector<std::function<int(const std::string& path)>> Savers() {
    array_->addIntToArray(123456);
    object_->addIntToObject("n", 12);
    return {[this](const std::string& path) { return array_->saveArrayObject(path); },
            [this](const std::string& path) { return object_->saveObject(path); }};
  }

  TempDir dir_;
  const std::unique_ptr<A> array_{A::startArray()};
  const std::unique_ptr<O> object_{O::StartObject()};
};

TEST_F(JsonTextTest, AdditionsComposeTextAndGiveTrueTheFirstTimeAlone) {
  using Double = std::numeric_limits<double>;
  ExpectText(&A::addIntToArray, &O::addIntToObject, -2147483647 - 1, "-2147483648");
  ExpectText(&A::addUint32ToArray, &O::addUint32ToObject, 4294967295U, "4294967295");
  ExpectText(&A::addInt64ToArray, &O::addInt64ToObject, -4294967297L, "-4294967297");
  ExpectText(&A::addUint64ToArray, &O::addUint64ToObject, ~0UL, "18446744073709551615");
  ExpectText(&A::addfloatToArray, &O::addFloatToObject, 0.1F, "0.100000");
  ExpectText(&A::addfloatToArray, &O::addFloatToObject, -3.402823466e38F,
             "-340282346638528859811704183484516925440.000000");
  ExpectDouble(0.0000001, "0.000000");
  ExpectDouble(-0.0, "-0.000000");
  ExpectDouble(-Double::max(), std::to_string(-Double::max()));
  ExpectDouble(Double::infinity(), "inf");
  ExpectDouble(-Double::quiet_NaN(), "-nan");
  for (const std::string& value : {std::string(), std::string("a\0\"\\\n%s", 7)}) {
    ExpectText(&A::addStringToArray, &O::addStringToObject, value, "\"" + value + "\"");
  }
}

TEST_F(JsonTextTest, NestedBuildersAreCopiedAndNullOnesAddNothing) {
  LogCapture log;
  EXPECT_FALSE(object_->addArrayToObject("a", nullptr));
  EXPECT_FALSE(object_->addObjectToObject("o", nullptr));
  EXPECT_FALSE(array_->addObjectToArray(nullptr));
  EXPECT_FALSE(array_->addArrayToArray(nullptr));
  EXPECT_EQ(log.Joined(), "2  the object is invalid / 2  the array object is invalid");
  EXPECT_EQ(object_->getSerializationForObject(), "{}");
  EXPECT_TRUE(array_->addObjectToArray(object_.get()));
  EXPECT_TRUE(object_->addArrayToObject("a", array_.get()));
  array_->addArrayToArray(array_.get());
  object_->addObjectToObject("\"", object_.get());
  EXPECT_EQ(array_->getSerializationForObject(), "[{},[{}]]");
  EXPECT_EQ(object_->getSerializationForObject(), "{\"a\":[{}],\"\"\":{\"a\":[{}]}}");
}

TEST_F(JsonTextTest, EachPieceIsLoggedWithoutItsComma) {
  LogCapture log;
  array_->addIntToArray(5);
  array_->addStringToArray("a%d");
  object_->addIntToObject("n", 1);
  object_->addArrayToObject("a", array_.get());
  EXPECT_EQ(log.Joined(),
            "5 add value=5 to array / 5 add value=\"a%d\" to array / "
            "5 add (\"n\":1) to Object / 5 add (\"a\":[5,\"a%d\"]) to Object");
}

TEST_F(JsonTextTest, SavedFilesHoldTheTextAloneAndAreOverwrittenInPlace) {
  const std::string texts[] = {"[123456]", "{\"n\":12}"};
  const std::string logged[] = {"5 write size =8", "5 write size=8, oringe size=8"};
  const std::string full[] = {"5 write size =8", "5 write size=-1, oringe size=8"};
  int index = 0;
  for (const auto& save : Savers()) {
    WriteFile("longer", std::string(100, 'x'));
    std::filesystem::create_hard_link("longer", texts[index]);
    for (const char* const path : {"new", "with blank", "longer"}) {
      LogCapture log;
      EXPECT_EQ(save(path), 0);
      EXPECT_EQ(log.Joined(), logged[index]);
      EXPECT_EQ(ReadFile(path), texts[index]);
      std::filesystem::remove(path);
    }
    EXPECT_EQ(ReadFile(texts[index]), texts[index]);
    LogCapture log;
    EXPECT_EQ(save("/dev/full"), 0);  // a failed write is not a fault
    EXPECT_EQ(log.Joined(), full[index++]);
  }
}

TEST_F(JsonTextTest, UnopenableFileGivesMinusOneAndTheReason) {
  for (const auto& save : Savers()) {
    LogCapture log;
    EXPECT_EQ(save("missing/file"), -1);
    EXPECT_EQ(save("."), -1);
    EXPECT_EQ(log.Joined(),
              "2 open the file(missing/file) error(No such file or directory) / "
              "2 open the file(.) error(Is a directory)");
    EXPECT_EQ(save(std::string(5000, 'p')), -1);
  }
}

TEST_F(JsonTextTest, MissingFileIsTouchedByAShellWithThePathUnquotedAndWaitedForABit) {
  const std::string path = "a; touch b; :";
  unsigned int pause = 300;  // microseconds
  for (const auto& save : Savers()) {
    save(path);
    EXPECT_TRUE(std::filesystem::remove("b"));
    EXPECT_EQ(lastPause.exchange(0), pause);
    pause = 30;
    save(path);  // exists now
    EXPECT_FALSE(std::filesystem::remove("b"));
    EXPECT_EQ(lastPause, 0U);
    std::filesystem::remove(path);
  }
}

}  // namespace
}  // namespace ara::per::testing
