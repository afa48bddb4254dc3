#include "jsconfig/jsconfig.h"

#include <pthread.h>

#include <cfloat>
#include <climits>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace jsconfig {
namespace {

using ara::per::testing::ReadFile;
using ara::per::testing::WriteFile;
using std::string_literals::operator""s;

class JsconfigTest : public ::testing::Test {
 protected:
  CObject& Parse(const std::string& text) {
    if (!document_.parseString(text)) throw std::runtime_error(document_.errorString());
    return *document_.root();
  }

  std::string Saved() {
    EXPECT_TRUE(document_.save("saved")) << document_.errorString();
    return ReadFile("saved");
  }

  ara::per::testing::TempDir folder_;
  CObjectDocument document_;
};

std::string Nested(int depth, const char* open, const std::string& inner, const char* close) {
  std::string text;
  for (int i = 0; i < depth; ++i) text += open;
  text += inner;
  for (int i = 0; i < depth; ++i) text += close;
  return text;
}

const std::pair<bool, std::vector<std::string>> kTexts[] = {
    {true, {"5", "null", " \t\r\n{ \"a\" : [ 1 , 2 ] }\n ", "[[],{}]", R"({"a":1,"a":2})"}},
    {true, {R"(["\"\\\/\b\f\n\r\t\u00e9\uD83D\ude00\u0000"])", "\"\x7f\"", "\"\xff\xed\xa0\x80\""}},
    {true, {"[18446744073709551615,-9223372036854775808]", "[-0,-0.0,0e5]", "5e-324", "1e-999"}},
    {true, {Nested(1000, "[", "", "]"), Nested(1000, "{\"a\":", "1", "}")}},
    {false, {Nested(1001, "[", "", "]"), Nested(1000, "[", "{}", "]"), Nested(9999, "[", "", "")}},
    {false, {Nested(1001, "{\"a\":", "1", "}"), "", " \n", "\0"s, "\xef\xbb\xbf[]"}},
    {false, {"[", "{", "{\"a", "{\"a\"", "{\"a\":", "{\"a\":1", "[1,", "[\"ab", "\"a", "[1}"}},
    {false, {"[\"\\", "[\"\\u12", "[1,]", R"({"a":1,})", "[1 2]", R"({"a" 1})", "{a:1}", "{1:1}"}},
    {false, {"[tru", "['a']", "[True]", "[1]//x", "[/*x*/1]", "18446744073709551616", "[1e309]"}},
    {false, {R"(["\x41"])", R"(["\u12G4"])", "[\"a\nb\"]", "[\"a\0b\"]"s, "[\"\\\xff\"]"}},
    {false, {R"(["\ud800"])", R"(["\udc00"])", R"(["\ud800\ud800"])", "[\xff]", "\"\xff\\uDBFF\""}},
    {false, {"\"\xff\\uD800\\uDBFF\\uDF00\"", "\"\xff\\uDBFF\\uDFG0\"", "\"\xff\\UDBFF\\uDF00\""}},
    {false, {"\"\xff\\uDF00\"", "\"\xff\\uDBFF\\uDF0G\"", "-9223372036854775809", "[]\0"s}},
    {false, {"[01]", "[+1]", "[.5]", "[1.]", "[1e]", "[-]", "[0x10]", "[NaN]", "[-Infinity]"}},
    {false, {"[] []", "1 x", "[],", "\xef\xbb\xbf", "[]\xff", "1\0"s, "\"a\"\0"s, "{}\n\0"s}},
};

TEST_F(JsconfigTest, AcceptsAndRefusesTexts) {
  for (const auto& [accepted, texts] : kTexts) {
    for (const std::string& text : texts) {
      SCOPED_TRACE(text.substr(0, 50));
      EXPECT_EQ(document_.parseString(text), accepted);
      EXPECT_EQ(document_.root() != nullptr, accepted);
      EXPECT_EQ(document_.errorString().empty(), accepted);
      WriteFile("text", text);
      EXPECT_EQ(document_.parse("text"), accepted);
      if (!accepted) continue;
      const std::string saved = Saved();
      Parse(saved);
      EXPECT_EQ(Saved(), saved);
    }
  }
}

TEST_F(JsconfigTest, DeepTextsNeedLittleStack) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  const auto run = [](void*) -> void* {
    CObjectDocument document;
    EXPECT_FALSE(document.parseString(Nested(100000, "[", "", "]")));
    EXPECT_FALSE(document.parseString(Nested(100000, "{\"a\":", "\xff", "}")));
    EXPECT_TRUE(document.parseString(Nested(500, "[{\"a\":", "1", "}]")));
    EXPECT_TRUE(document.save("deep"));
    return nullptr;
  };
  pthread_t thread = {};
  ASSERT_EQ(pthread_create(&thread, &attributes, run, nullptr), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(ReadFile("deep"), Nested(500, "[{\"a\":", "1", "}]"));
}

TEST_F(JsconfigTest, FileErrorsNameThePath) {
  EXPECT_FALSE(document_.save("empty"));
  EXPECT_FALSE(document_.parse("."));
  EXPECT_EQ(document_.errorString(), "cannot read .: Is a directory");
  Parse("[1]");
  EXPECT_FALSE(document_.save("no/file"));
  EXPECT_EQ(document_.errorString(), "cannot open no/file: No such file or directory");
  EXPECT_FALSE(document_.save("/dev/full"));
  EXPECT_EQ(Saved(), "[1]");
  EXPECT_EQ(document_.errorString(), "");
  EXPECT_FALSE(document_.parse("none"));
  EXPECT_EQ(document_.errorString(), "cannot open none: No such file or directory");
  EXPECT_EQ(document_.root(), nullptr);
}

/// A token, its class, what it is as each kind of number, and its text if that is not the token.
using Conversion = std::tuple<const char*, int, std::int32_t, std::uint32_t, std::int64_t,
                              std::uint64_t, double, const char*>;
const Conversion kConversions[] = {
    {"null", 0, 0, 0, 0, 0, 0, ""},
    {"true", 1, 1, 1, 1, 1, 1, {}},
    {"false", 1, 0, 0, 0, 0, 0, {}},
    {"0", 3, 0, 0, 0, 0, 0, {}},
    {"4294967296", 3, 0, 0, 4294967296, 4294967296, 4294967296, {}},
    {"9223372036854775807", 3, -1, UINT32_MAX, INT64_MAX, INT64_MAX, 0x1p63, {}},
    {"18446744073709551615", 3, -1, UINT32_MAX, -1, UINT64_MAX, 0x1p64, {}},
    {"-1", 4, -1, UINT32_MAX, -1, UINT64_MAX, -1, {}},
    {"-9223372036854775808", 4, 0, 0, INT64_MIN, 1ULL << 63, -0x1p63, {}},
    {"-1.9", 5, -1, 0, -1, 0, -1.9, {}},
    {"5e0", 5, 5, 5, 5, 5, 5, "5.0"},
    {"2147483647.5", 5, INT32_MAX, 2147483647, 2147483647, 2147483647, 2147483647.5, {}},
    {"-3e9", 5, INT32_MIN, 0, -3000000000, 0, -3e9, "-3e+09"},
    {"9223372036854775808.0", 5, INT32_MAX, UINT32_MAX, INT64_MAX, 1ULL << 63, 0x1p63, {}},
    {"1.7976931348623157e+308", 5, INT32_MAX, UINT32_MAX, INT64_MAX, UINT64_MAX, DBL_MAX, {}},
    {"-1e300", 5, INT32_MIN, 0, INT64_MIN, 0, -1e300, "-1e+300"},
    {R"("12\u00e9\n")", 6, 0, 0, 0, 0, 0, "12\xc3\xa9\n"},
    {"\"\xff\\\\\\uDBFF\\uDF00\"", 6, 0, 0, 0, 0, 0, "\xff\\\xF4\x8F\xBC\x80"},
    {"\"\\\"\xff\\udbff\\udfff\"", 6, 0, 0, 0, 0, 0, "\"\xff\xF4\x8F\xBF\xBF"},
    {"\"\\\\uDBFF\\\\uDF00\xff\\uDBFF\\uDEFF\"", 6, 0, 0, 0, 0, 0, "\\uDBFF\\uDF00\xff\U0010FEFF"},
    {"[1]", 7, 0, 0, 0, 0, 0, ""},
    {"{\"a\":1}", 8, 0, 0, 0, 0, 0, ""},
};

/// Reads once with the flag and once without.
template <class Result>
void ExpectConversion(const CObject& token, Result (CObject::*convert)(bool*) const,
                      const Result& expected, bool expectedOk) {
  bool ok = !expectedOk;
  EXPECT_EQ((token.*convert)(&ok), expected);
  EXPECT_EQ(ok, expectedOk);
  EXPECT_EQ((token.*convert)(nullptr), expected);
}

TEST_F(JsconfigTest, ConvertsEveryTokenToEveryKind) {
  for (const auto& [text, type, int32, uint32, int64, uint64, real, string] : kConversions) {
    SCOPED_TRACE(text);
    CObject& token = Parse(text);
    const bool isInteger = type == 3 || type == 4;
    EXPECT_EQ(token.getType(), type);
    ExpectConversion(token, &CObject::toBool, real != 0, type == 1);
    ExpectConversion(token, &CObject::toInt32, int32, isInteger);
    ExpectConversion(token, &CObject::toUInt32, uint32, isInteger);
    ExpectConversion(token, &CObject::toInt64, int64, isInteger);
    ExpectConversion(token, &CObject::toUInt64, uint64, isInteger);
    ExpectConversion(token, &CObject::toDouble, real, isInteger || type == 5);
    ExpectConversion(token, &CObject::toString, {string == nullptr ? text : string}, type == 6);
    bool ok = type != 7;
    EXPECT_EQ(token.toArray(&ok).countObject(), type == 7 ? 1 : 0);
    EXPECT_EQ(ok, type == 7);
  }
}

TEST_F(JsconfigTest, WhatIsNotThereHasClassTwoAndTakesNothing) {
  const std::string text = R"({"a":[10,"x",[]],"text":"b","a":[11,12]})";
  CObject& root = Parse(text);
  const CObject& constant = root;
  CObjectArray array = root["a"].toArray(nullptr);
  ASSERT_EQ(array.countObject(), 2);  // of two members with one name the last counts
  EXPECT_EQ(array[0].toInt32(nullptr), 11);
  EXPECT_EQ(constant["a"][1].toInt32(nullptr), 12);

  // Assigning to a reference leaves it where it was.
  root["text"] = root["a"];
  root["text"].toArray(nullptr)[0] = root["a"];
  EXPECT_EQ(root["text"].toString(nullptr), "b");

  const char* const noName = nullptr;
  std::vector<CObject> nothing = {CObject(), root[noName], root["text"]["c"], root["b"]["c"]["d"]};
  for (const int index : {-1, 2, INT_MAX, INT_MIN}) {
    nothing.insert(nothing.end(), {array[index], constant["a"][index], constant[index]});
  }
  for (CObject& object : nothing) {
    object.setValue(5);
    EXPECT_EQ(object.getType(), 2) << &object - nothing.data();
  }
  EXPECT_EQ(constant["A"].getType(), 2);
  EXPECT_EQ(constant[""].getType(), 2);
  EXPECT_EQ(Saved(), text);
}

TEST_F(JsconfigTest, ChangeThroughACopyKeepsAllElseInItsOrder) {
  CObject& root = Parse(
      " {\"z\": {\"checksum\" : -1, \"s\":\"\\u001f\\\"\\\\\\/\xC3\xA9\xff\"}, \"list\": [ 1.50, "
      "1e2, 18446744073709551615, null, true ], \"d\":2, \"d\":3 } ");
  CObject section = root["z"];
  CObject checksum;
  checksum = section["checksum"];
  checksum.setValue(4294967295U);
  root["d"].setValue(0);
  CObject(root["list"].toArray(nullptr)[3]).setValue(9);

  CObject added = root["added"];
  const CObject twin = root["added"];
  EXPECT_EQ(root["looked for"].getType(), 2);
  added.setValue(7);
  EXPECT_EQ(twin.toUInt32(nullptr), 7U);
  EXPECT_EQ(Saved(),
            "{\"z\":{\"checksum\":4294967295,\"s\":\"\\u001f\\\"\\\\/\xC3\xA9\xff\"},"
            "\"list\":[1.5,100.0,18446744073709551615,9,true],\"d\":2,\"d\":0,\"added\":7}");

  section.setValue(1);
  EXPECT_EQ(checksum.toUInt32(nullptr), 4294967295U);  // the handle lives as long as the document
  root["list"].setValue(2);
  EXPECT_EQ(Saved(), R"({"z":1,"list":2,"d":2,"d":0,"added":7})");
}

// From U+10FF00 on, characters stand for bytes that are not valid UTF-8 while a text is read, so
// the genuine ones are likely here, too.
TEST_F(JsconfigTest, AnyBytesComeBackExactly) {
  std::mt19937 random(4711);
  const std::string often = "\xF4\x8F\xBC\x80\xF4\x8F\xBF\xBF\xF4\x8F\xBB\xBF\xE0\xED\xA0\x90\xC2";
  for (int round = 0; round < 2000; ++round) {
    std::string bytes;
    while (bytes.size() < random() % 24) {
      bytes += static_cast<char>(random() % 224 + 32);
      if (bytes.back() == '"' || bytes.back() == '\\') bytes.pop_back();
      bytes += often.substr(random() % often.size(), random() % 5);
    }
    const std::string text = "{\"" + bytes + "\":\"" + bytes + "\"}";
    ASSERT_EQ(Parse(text)[bytes.c_str()].toString(nullptr), bytes);
    ASSERT_EQ(Saved(), text);
  }
}

}  // namespace
}  // namespace jsconfig
