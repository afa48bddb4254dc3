#include <atomic>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "ara/per/json_create_array_object.h"
#include "ara/per/json_create_object.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_dir.h"

static std::atomic<unsigned int> lastPause = 0;

/// Stands before the C library's function.
extern "C" int usleep(unsigned int microseconds) {
  lastPause = microseconds;
  return 0;
}

namespace ara::per::testing {

using A = JsonArray;
using O = JsonObject;

/// Adds one value twice to a new array and as the member "n" to a new object.
template <class Value>
void ExpectText(bool (A::*toArray)(Value), bool (O::*toObject)(std::string, Value),
                const Value& value, const std::string& text) {
  const std::unique_ptr<A> array(A::startArray());
  const std::unique_ptr<O> object(O::StartObject());
  for (const bool isFirst : {true, false}) {
    EXPECT_EQ((array.get()->*toArray)(value), isFirst);
    EXPECT_EQ((object.get()->*toObject)("n", value), isFirst);
  }
  EXPECT_EQ(array->getSerializationForObject(), "[" + text + "," + text + "]");
  EXPECT_EQ(object->getSerializationForObject(), "{\"n\":" + text + ",\"n\":" + text + "}");
}

TEST(JsonTextTest, AdditionsComposeTextAndGiveTrueTheFirstTimeAlone) {
  ExpectText(&A::addIntToArray, &O::addIntToObject, -2147483647 - 1, "-2147483648");
  ExpectText(&A::addUint32ToArray, &O::addUint32ToObject, 4294967295U, "4294967295");
  ExpectText(&A::addInt64ToArray, &O::addInt64ToObject, -4294967297L, "-4294967297");
  ExpectText(&A::addUint64ToArray, &O::addUint64ToObject, ~0UL, "18446744073709551615");
  ExpectText(&A::addfloatToArray, &O::addFloatToObject, 0.1F, "0.100000");
  for (const double value : {1e-7, -0.0, -1e300, HUGE_VAL, std::nan("")}) {
    ExpectText(&A::addDoubleToArray, &O::addDoubleToObject, value, std::to_string(value));
  }
  const std::string value("a\0\"\\\n%s", 7);
  ExpectText(&A::addStringToArray, &O::addStringToObject, value, "\"" + value + "\"");
}

TEST(JsonTextTest, NestedBuildersAreCopiedAndNullOnesAddNothing) {
  const std::unique_ptr<A> array(A::startArray());
  const std::unique_ptr<O> object(O::StartObject());
  LogCapture log;
  EXPECT_FALSE(object->addArrayToObject("a", nullptr) || object->addObjectToObject("o", nullptr));
  EXPECT_FALSE(array->addObjectToArray(nullptr) || array->addArrayToArray(nullptr));
  EXPECT_EQ(log.Joined(), "2  the object is invalid / 2  the array object is invalid");
  EXPECT_TRUE(array->addObjectToArray(object.get()) && !array->addArrayToArray(array.get()));
  EXPECT_TRUE(object->addArrayToObject("a", array.get()));
  EXPECT_FALSE(object->addObjectToObject("%d", object.get()));
  EXPECT_EQ(object->getSerializationForObject(), R"({"a":[{},[{}]],"%d":{"a":[{},[{}]]}})");
}

TEST(JsonTextTest, SavingTouchesThroughAShellAndWritesInPlace) {
  const std::unique_ptr<A> array(A::startArray());
  const std::unique_ptr<O> object(O::StartObject());
  array->addIntToArray(123456);
  object->addIntToObject("n", 12);
  const TempDir dir;
  const std::string path = "a; touch b; :";  // goes unquoted through a shell
  for (const bool isArray : {true, false}) {
    const auto save = [&](const std::string& file) {
      return isArray ? array->saveArrayObject(file) : object->saveObject(file);
    };
    LogCapture log;
    EXPECT_TRUE(save(path) == 0 && std::filesystem::remove("b"));
    EXPECT_EQ(lastPause.exchange(0), isArray ? 300 : 30);
    WriteFile(path, std::string(100, 'x'));
    std::filesystem::rename(path, "file");
    std::filesystem::create_hard_link("file", path);
    EXPECT_EQ(save(path) + save("/dev/full"), 0);  // in place; a failed write is not a fault
    EXPECT_FALSE(std::filesystem::remove("b") || lastPause != 0);
    EXPECT_EQ(ReadFile("file"), isArray ? "[123456]" : "{\"n\":12}");
    EXPECT_EQ(save("missing/file") + save("."), -2);
    const std::string logged = isArray ? "5 write size =8 / " : "5 write size=8, oringe size=8 / ";
    EXPECT_EQ(log.Joined(), logged + logged +
                                (isArray ? logged : "5 write size=-1, oringe size=8 / ") +
                                "2 open the file(missing/file) error(No such file or directory) / "
                                "2 open the file(.) error(Is a directory)");
    std::filesystem::remove(path);
  }
}

}  // namespace ara::per::testing
