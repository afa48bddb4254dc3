#include "jsconfig/jsconfig.h"

#include <pthread.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace jsconfig {
namespace {

using std::string_literals::operator""s;

class JsconfigDocumentTest : public ::testing::Test {
 protected:
  JsconfigDocumentTest() {
    std::string folder = ::testing::TempDir() + "jsXXXXXX";
    if (::mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no directory of my own");
    folder_ = folder;
  }
  ~JsconfigDocumentTest() override { std::filesystem::remove_all(folder_); }

  std::string PathOf(const std::string& name) const { return folder_ / name; }

  CObject& Parse(const std::string& text) {
    if (!document_.parseString(text)) throw std::runtime_error(document_.errorString());
    return *document_.root();
  }

  std::string Saved() {
    EXPECT_TRUE(document_.save(PathOf("saved"))) << document_.errorString();
    return Content("saved");
  }

  std::string Content(const std::string& name) const {
    std::ifstream file(PathOf(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::filesystem::path folder_;
  CObjectDocument document_;
};

std::string Nested(std::size_t depth, const std::string& open, const std::string& inner,
                   const std::string& close) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += open;
  text += inner;
  for (std::size_t i = 0; i < depth; ++i) text += close;
  return text;
}

void RunOnStack(std::size_t bytes, std::function<void()> work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, bytes), 0);
  const auto run = [](void* argument) -> void* {
    (*static_cast<std::function<void()>*>(argument))();
    return nullptr;
  };
  pthread_t thread = {};
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

struct TextGroup {
  const char* name;
  bool accepted;
  std::vector<std::string> texts;
};

const TextGroup kTexts[] = {
    {"scalar roots and blanks", true, {"5", "null", " \t\r\n{ \"a\" : [ 1 , 2 ] }\n ", "[[],{}]"}},
    {"duplicate names", true, {R"({"a":1,"a":2})"}},
    {"escapes", true, {R"(["\"\\\/\b\f\n\r\t\u00e9\uD83D\ude00\u0000"])", "[\"\x7f\"]"}},
    {"numbers at the limits",
     true,
     {"[18446744073709551615,-9223372036854775808]", "[-0,-0.0,0e5]",
      "[1.7976931348623157e308,5e-324]", "[1e-999]"}},
    {"deep, but not too deep",
     true,
     {Nested(500, "[", "", "]"), Nested(1000, "[", "", "]"), Nested(1000, "[", "1", "]"),
      Nested(1000, "{\"a\":", "1", "}")}},
    {"bytes that are not UTF-8", true, {"[\"\xff\xc3\",\"\xed\xa0\x80\"]"}},
    {"too deep",
     false,
     {Nested(1001, "[", "", "]"), Nested(1001, "[", "1", "]"), Nested(1000, "[", "{}", "]"),
      Nested(1001, "{\"a\":", "1", "}"), Nested(100000, "[", "", "]"), Nested(100000, "[", "", ""),
      Nested(100000, "{\"a\":", "1", "}")}},
    {"empty", false, {"", " \n", "\0"s}},
    {"byte-order mark", false, {"\xef\xbb\xbf[]", "\xef\xbb\xbf"}},
    {"cut off",
     false,
     {"[", "{", "{\"a", "{\"a\"", "{\"a\":", "{\"a\":1", "[1,", "[\"ab", "[\"\\", "[\"\\u12",
      "[tru", "\"a"}},
    {"structure",
     false,
     {"[1}", "[1,]", R"({"a":1,})", "[1 2]", R"({"a" 1})", "{a:1}", "{1:1}", "['a']", "[True]"}},
    {"escapes", false, {R"(["\x41"])", R"(["\u12G4"])", "[\"a\nb\"]", "[\"a\0b\"]"s}},
    {"lone surrogates", false, {R"(["\ud800"])", R"(["\udc00"])", R"(["\ud800\ud800"])"}},
    {"numbers beyond the limits",
     false,
     {"[18446744073709551616]", "[-9223372036854775809]", "[100000000000000000000000000000]",
      "[1e309]"}},
    {"number form",
     false,
     {"[01]", "[+1]", "[.5]", "[1.]", "[1e]", "[-]", "[0x10]", "[NaN]", "[-Infinity]"}},
    {"comments", false, {"[1]//x", "[/*x*/1]"}},
    {"text after the root", false, {"[] []", "1 x", "[],", "[]\xff"}},
    {"zero byte after the root", false, {"[]\0"s, "1\0"s, "\"a\"\0"s, "true\0"s, "{}\n\0"s}},
    {"bytes outside the text of a string", false, {"[\xff]", "[\"\\\xff\"]"}},
};

TEST_F(JsconfigDocumentTest, AcceptsAndRefusesTexts) {
  for (const TextGroup& group : kTexts) {
    for (const std::string& text : group.texts) {
      SCOPED_TRACE(group.name + ": "s + text.substr(0, 50));
      EXPECT_EQ(document_.parseString(text), group.accepted);
      EXPECT_EQ(document_.root() != nullptr, group.accepted);
      EXPECT_EQ(document_.errorString().empty(), group.accepted);
      std::ofstream(PathOf("text"), std::ios::binary) << text;
      EXPECT_EQ(document_.parse(PathOf("text")), group.accepted);
      if (!group.accepted) continue;
      const std::string saved = Saved();
      Parse(saved);
      EXPECT_EQ(Saved(), saved);
    }
  }
}

TEST_F(JsconfigDocumentTest, DeepTextsNeedLittleStack) {
  const std::string deepest = Nested(500, "[{\"a\":", "1", "}]");
  RunOnStack(256 * 1024, [&] {
    CObjectDocument document;
    ASSERT_TRUE(document.parseString(deepest));
    EXPECT_TRUE(document.save(PathOf("deep")));
  });
  EXPECT_EQ(Content("deep"), deepest);
  RunOnStack(64 * 1024, [] {
    CObjectDocument document;
    EXPECT_FALSE(document.parseString(Nested(100000, "[", "", "]")));
    EXPECT_FALSE(document.parseString(Nested(100000, "{\"a\":", "\xff", "}")));
  });
}

TEST_F(JsconfigDocumentTest, FileErrorsNameThePath) {
  const std::string missing = PathOf("missing");
  EXPECT_FALSE(document_.parse(missing));
  EXPECT_NE(document_.errorString().find(missing), std::string::npos);
  EXPECT_FALSE(document_.parse(folder_));
  EXPECT_NE(document_.errorString().find("directory"), std::string::npos);
  EXPECT_FALSE(document_.save(PathOf("empty")));

  Parse("[1]");
  EXPECT_FALSE(document_.save(PathOf("missing/file")));
  EXPECT_NE(document_.errorString().find("missing/file"), std::string::npos);
  EXPECT_FALSE(document_.save("/dev/full"));
  EXPECT_TRUE(document_.save(PathOf("file")));
  EXPECT_EQ(document_.errorString(), "");
  EXPECT_FALSE(document_.parse(missing));
  EXPECT_EQ(document_.root(), nullptr);
}

/// One token read in every way.
struct ConversionCase {
  const char* token;
  int type;
  bool asBool;
  std::int32_t asInt32;
  std::uint32_t asUInt32;
  std::int64_t asInt64;
  std::uint64_t asUInt64;
  double asDouble;
  const char* asString;
};

constexpr double kTwoTo63 = 9223372036854775808.0;

const ConversionCase kConversions[] = {
    {"null", 0, false, 0, 0, 0, 0, 0, ""},
    {"true", 1, true, 1, 1, 1, 1, 1, "true"},
    {"false", 1, false, 0, 0, 0, 0, 0, "false"},
    {"0", 3, false, 0, 0, 0, 0, 0, "0"},
    {"7", 3, true, 7, 7, 7, 7, 7, "7"},
    {"2147483648", 3, true, INT32_MIN, 2147483648U, 2147483648, 2147483648U, 2147483648.0,
     "2147483648"},
    {"4294967296", 3, true, 0, 0, 4294967296, 4294967296U, 4294967296.0, "4294967296"},
    {"9223372036854775807", 3, true, -1, UINT32_MAX, INT64_MAX, INT64_MAX, kTwoTo63,
     "9223372036854775807"},
    {"18446744073709551615", 3, true, -1, UINT32_MAX, -1, UINT64_MAX, 2 * kTwoTo63,
     "18446744073709551615"},
    {"-1", 4, true, -1, UINT32_MAX, -1, UINT64_MAX, -1, "-1"},
    {"-9223372036854775808", 4, true, 0, 0, INT64_MIN, 1ULL << 63, -kTwoTo63,
     "-9223372036854775808"},
    {"0.0", 5, false, 0, 0, 0, 0, 0, "0.0"},
    {"0.9", 5, true, 0, 0, 0, 0, 0.9, "0.9"},
    {"-1.9", 5, true, -1, 0, -1, 0, -1.9, "-1.9"},
    {"5e0", 5, true, 5, 5, 5, 5, 5, "5.0"},
    {"2147483647.5", 5, true, INT32_MAX, 2147483647U, 2147483647, 2147483647U, 2147483647.5,
     "2147483647.5"},
    {"-3e9", 5, true, INT32_MIN, 0, -3000000000, 0, -3e9, "-3e+09"},
    {"5e9", 5, true, INT32_MAX, UINT32_MAX, 5000000000, 5000000000U, 5e9, "5e+09"},
    {"9223372036854775808.0", 5, true, INT32_MAX, UINT32_MAX, INT64_MAX, 1ULL << 63, kTwoTo63,
     "9223372036854775808.0"},
    {"1e300", 5, true, INT32_MAX, UINT32_MAX, INT64_MAX, UINT64_MAX, 1e300, "1e+300"},
    {"-1e300", 5, true, INT32_MIN, 0, INT64_MIN, 0, -1e300, "-1e+300"},
    {R"("12")", 6, false, 0, 0, 0, 0, 0, "12"},
    {R"("true")", 6, false, 0, 0, 0, 0, 0, "true"},
    {R"("\u00e9\n\ud83d\ude00")", 6, false, 0, 0, 0, 0, 0, "\xc3\xa9\n\xf0\x9f\x98\x80"},
    {"[1]", 7, false, 0, 0, 0, 0, 0, ""},
    {R"({"a":1})", 8, false, 0, 0, 0, 0, 0, ""},
};

/// Reads once with the flag and once without.
template <typename Result>
void ExpectConversion(const CObject& token, Result (CObject::*convert)(bool*) const,
                      const Result& expected, bool expectedOk) {
  bool ok = !expectedOk;
  EXPECT_EQ((token.*convert)(&ok), expected);
  EXPECT_EQ(ok, expectedOk);
  EXPECT_EQ((token.*convert)(nullptr), expected);
}

void ExpectConversions(const CObject& token, const ConversionCase& c) {
  const bool isInteger = c.type == 3 || c.type == 4;
  EXPECT_EQ(token.getType(), c.type);
  ExpectConversion(token, &CObject::toBool, c.asBool, c.type == 1);
  ExpectConversion(token, &CObject::toInt32, c.asInt32, isInteger);
  ExpectConversion(token, &CObject::toUInt32, c.asUInt32, isInteger);
  ExpectConversion(token, &CObject::toInt64, c.asInt64, isInteger);
  ExpectConversion(token, &CObject::toUInt64, c.asUInt64, isInteger);
  ExpectConversion(token, &CObject::toDouble, c.asDouble, isInteger || c.type == 5);
  ExpectConversion(token, &CObject::toString, std::string(c.asString), c.type == 6);

  bool ok = c.type != 7;
  CObject copy(token);
  EXPECT_EQ(token.toArray(&ok).countObject(), c.type == 7 ? 1 : 0);
  EXPECT_EQ(ok, c.type == 7);
  EXPECT_EQ(copy.toArray(&ok).countObject(), token.toArray(nullptr).countObject());
  EXPECT_EQ(ok, c.type == 7);
}

TEST_F(JsconfigDocumentTest, ConvertsEveryTokenToEveryKind) {
  for (const ConversionCase& c : kConversions) {
    SCOPED_TRACE(c.token);
    ExpectConversions(Parse(c.token), c);
  }
  ExpectConversions(CObject(), {"none", 2, false, 0, 0, 0, 0, 0, ""});
}

TEST_F(JsconfigDocumentTest, WhatIsNotThereHasClassTwo) {
  CObject& root = Parse(R"({"a":[10,"x",[]],"text":"b","a":[11,12]})");
  const CObject& constant = root;
  CObjectArray array = root["a"].toArray(nullptr);
  const CObjectArray& constantArray = array;
  ASSERT_EQ(array.countObject(), 2);  // of two members with one name the last counts
  EXPECT_EQ(array[1].toInt32(nullptr), 12);
  EXPECT_EQ(constantArray[0].toInt32(nullptr), 11);
  EXPECT_EQ(&constant["a"], &root["a"]);
  int last = 1;
  EXPECT_EQ(constant["a"][last].toInt32(nullptr), 12);

  EXPECT_EQ(CObjectArray().countObject(), 0);
  for (const int outside : {-1, 2, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(outside);
    EXPECT_EQ(array[outside].getType(), 2);
    EXPECT_EQ(constantArray[outside].getType(), 2);
    EXPECT_EQ(constant["a"][outside].getType(), 2);
    EXPECT_EQ(constant[outside].getType(), 2);
    EXPECT_EQ(CObjectArray()[outside].getType(), 2);
  }
  const char* const noName = nullptr;
  EXPECT_EQ(root[noName].getType(), 2);
  EXPECT_EQ(root["b"].getType(), 2);
  EXPECT_EQ(root["b"]["c"]["d"].getType(), 2);
  EXPECT_EQ(root["text"]["c"].getType(), 2);
  EXPECT_EQ(constant["A"].getType(), 2);
  EXPECT_EQ(constant[""].getType(), 2);
  EXPECT_EQ(CObject()["c"].getType(), 2);
  EXPECT_EQ(Saved(), R"({"a":[10,"x",[]],"text":"b","a":[11,12]})");
}

TEST_F(JsconfigDocumentTest, ChangeThroughACopyKeepsAllElseInItsOrder) {
  CObject& root = Parse(
      " {\"z\": {\"checksum\" : -1, \"s\":\"\\u001f\\\"\\\\\\/\xC3\xA9\xff\"}, \"list\": [ 1.50, "
      "1e2, "
      "18446744073709551615, null, true ], \"d\":2, \"d\":3 } ");
  CObject section = root["z"];
  CObject checksum;
  checksum = section["checksum"];
  checksum.setValue(4294967295U);
  EXPECT_EQ(root["z"]["checksum"].toUInt32(nullptr), 4294967295U);
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

TEST_F(JsconfigDocumentTest, SettingWhatBelongsToNoObjectDoesNothing) {
  CObject& root = Parse(R"({"a":[1],"b":"x"})");
  CObjectArray array = root["a"].toArray(nullptr);
  CObject none;
  for (CObject* object : {&none, &array[1], &array[-1], &root["b"]["c"], &root["c"]["d"]}) {
    object->setValue(5);
    EXPECT_EQ(object->getType(), 2);
  }
  EXPECT_EQ(CObject().getType(), 2);
  EXPECT_EQ(Saved(), R"({"a":[1],"b":"x"})");
}

TEST_F(JsconfigDocumentTest, AssigningToAReferenceOfADocumentChangesNothing) {
  CObject& root = Parse(R"({"a":1,"b":2})");
  root["a"] = root["b"];
  root["a"].toArray(nullptr)[0] = root["b"];
  EXPECT_EQ(root["a"].toInt32(nullptr), 1);
  EXPECT_EQ(CObject().getType(), 2);
  EXPECT_EQ(Saved(), R"({"a":1,"b":2})");
}

TEST_F(JsconfigDocumentTest, DoublesReadBackExactlyAndStayDoubles) {
  std::mt19937_64 random(20);
  for (int round = 0; round < 500; ++round) {
    const std::uint64_t bits = random();
    double value = 0;
    std::memcpy(&value, &bits, sizeof(value));
    if (!std::isfinite(value)) continue;
    char text[40];
    ASSERT_GT(std::snprintf(text, sizeof(text), "%.17e", value), 0);
    ASSERT_EQ(Parse(text).toDouble(nullptr), value);
    ASSERT_EQ(Parse(Saved()).toDouble(nullptr), value) << text;
    ASSERT_EQ(document_.root()->getType(), 5) << text;
  }
}

class JsconfigBytesTest : public JsconfigDocumentTest {
 protected:
  void ExpectKept(const std::string& bytes) {
    const std::string text = "{\"" + bytes + "\":\"" + bytes + "\"}";
    ASSERT_EQ(Parse(text)[bytes.c_str()].toString(nullptr), bytes);
    ASSERT_EQ(Saved(), text);
  }
};

TEST_F(JsconfigBytesTest, AnyBytesComeBackExactly) {
  std::mt19937 random(4711);
  // Bytes that begin and continue long sequences make the borders likely.
  const std::string often = "\xF4\x8F\xBC\xBF\x80\xC2\xE0\xED\xA0\x90";
  for (int round = 0; round < 2000; ++round) {
    std::string bytes;
    while (bytes.size() < random() % 24) {
      const char byte = random() % 2 == 0 ? often[random() % often.size()]
                                          : static_cast<char>(random() % 224 + 32);
      if (byte != '"' && byte != '\\') bytes += byte;
    }
    ASSERT_NO_FATAL_FAILURE(ExpectKept(bytes));
  }
}

TEST_F(JsconfigBytesTest, GenuineCharactersOfTheCarriersRangeComeBackToo) {
  const std::string first = "\xF4\x8F\xBC\x80";
  const std::string last = "\xF4\x8F\xBF\xBF";
  const struct {
    const char* name;
    std::string text;
    std::string decoded;
  } kCases[] = {
      {"raw, all valid", first + last, first + last},
      {"raw", first + "\xff" + last, first + "\xff" + last},
      {"escaped, all valid", R"(\uDBFF\uDF00\udbff\udfff)", first + last},
      {"escaped", "\\uDBFF\\uDF00\xff\\udbff\\udffF", first + "\xff" + last},
      {"escaped neighbour below", "\\uDBFF\\uDEFF\xff", "\xF4\x8F\xBB\xBF\xff"},
      {"escaped behind a backslash", "\\\\\\uDBFF\\uDF00\xff", "\\" + first + "\xff"},
      {"escaped backslash, no escape", "\\\\uDBFF\\\\uDF00\xff", "\\uDBFF\\uDF00\xff"},
      {"beyond the last code point", "\xF4\x90\x80\x80", "\xF4\x90\x80\x80"},
      {"overlong", "\xE0\x80\x80\xC0\x80\xF0\x8F\xBF\xBF", "\xE0\x80\x80\xC0\x80\xF0\x8F\xBF\xBF"},
      {"escaped quote beside a byte", "\xff\\\"\xff", "\xff\"\xff"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Parse("[\"" + c.text + "\"]").toArray(nullptr)[0].toString(nullptr), c.decoded);
    EXPECT_EQ(Parse(Saved()).toArray(nullptr)[0].toString(nullptr), c.decoded);
  }
  for (const char* const refused :
       {R"(\uD800\uDBFF\uDF00)", R"(\uDBFF\uDFG0)", R"(\UDBFF\uDF00)", R"(\uDBFF\UDF00)",
        R"(\uDBFF)", R"(\uDF00)", R"(\uDBFF\uDF0)"}) {
    EXPECT_FALSE(document_.parseString("[\"\xff"s + refused + "\"]")) << refused;
  }
}

}  // namespace
}  // namespace jsconfig
