#include "jsconfig/jsconfig.h"

#include <climits>
#include <filesystem>
#include <iterator>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace jsconfig {
namespace {

using std::string_literals::operator""s;

class JsconfigTest : public ::testing::Test {
 protected:
  CObject& Parse(const std::string& text) {
    if (!document_.parseString(text)) throw std::runtime_error(document_.errorString());
    return *document_.root();
  }

  std::string Saved() {
    EXPECT_TRUE(document_.save("saved")) << document_.errorString();
    return ara::per::testing::ReadFile("saved");
  }

  ara::per::testing::TempDir folder_;
  CObjectDocument document_;
};

std::string Times(int count, const char* text) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

TEST_F(JsconfigTest, RefusesDamagedTexts) {
  std::vector<std::string> texts = {"",        " \n",         "\0"s,        "[]\0"s, "1\0"s,
                                    "{}\n\0"s, "[\"a\0b\"]"s, "[\"a\nb\"]", "[1 2]", "[] []"};
  texts.insert(texts.end(), {Times(1001, "[") + Times(1001, "]"), Times(100000, "["),
                             Times(1000, "[") + "{}" + Times(1000, "]"),
                             Times(100000, "{\"a\":") + "\"\xff\"" + Times(100000, "}")});
  // Behind a byte that is not valid UTF-8, half a pair is no byte that was carried.
  std::istringstream more(R"(
      [ { {"a {"a" {"a": {"a":1 {a:1} {1:1} {"a"1} {"a":1,} [1, [1,] [1} [], [1]2 [tru [True] ['a']
      "a ["ab ["\ ["\x41"] ["\u12 ["\u12G4"] ["\ud800"] ["\udc00"] ["\ud800\ud800"] [1]//x [/*x*/1]
      [01] [+1] [.5] [1.] [1e] [-] [0x10] [NaN] [-Infinity] [1e309] 18446744073709551616
      -9223372036854775809)"
                          " \xef\xbb\xbf[] []\xff [\xff] \"\\\xff\" \"\xff\\uDBFF\" \"\xff\\uDF00\""
                          " \"\xff\\UDBFF\\uDF00\" \"\xff\\uD800\\uDBFF\\uDF00\""
                          " \"\xff\\uDBFF\\uDFG0\" \"\xff\\uDBFF\\uDF0G\"");
  texts.insert(texts.end(), std::istream_iterator<std::string>(more), {});
  for (const std::string& text : texts) {
    SCOPED_TRACE(text.substr(0, 50));
    EXPECT_FALSE(document_.parseString(text));
    EXPECT_EQ(document_.root(), nullptr);
    EXPECT_NE(document_.errorString(), "");
  }
}

TEST_F(JsconfigTest, SavesWhatItHasReadWithoutBlanksAndEscapesAndInTheShortestForm) {
  const std::string deep = Times(499, "[{\"a\":") + "[1]" + Times(499, "}]");
  Parse(" \t\r\n{ \"a\" : [ 1 , {} ], \"a\":null, \"\xff\":" + deep + R"(, "numbers" :
      [18446744073709551615, -9223372036854775808, -0, true, -0.0, 0e5, 5e-324, 1e-999, 1.50],
      "texts":["\"\\\/\b\f\n\r\t\u001f\u0000\u00e9\uD83D\ude00", "\\\uDBFF\uDF00",
      "\"\udbff\udfff", "\\uDBFF\\uDF00\uDBFF\uDEFF"]})");
  EXPECT_EQ(Saved(), "{\"a\":[1,{}],\"a\":null,\"\xff\":" + deep +
                         ",\"numbers\":[18446744073709551615,-9223372036854775808,0,true,-0.0,0.0,"
                         "5e-324,0.0,1.5],\"texts\":["
                         R"("\"\\/\b\f\n\r\t\u001f\u0000)"
                         "\u00e9\U0001f600\",\"\\\\\U0010ff00\",\"\\\"\U0010ffff\","
                         "\"\\\\uDBFF\\\\uDF00\U0010feff\"]}");
}

TEST_F(JsconfigTest, FileErrorsNameThePath) {
  EXPECT_FALSE(document_.save("empty"));
  EXPECT_FALSE(document_.parse("."));
  EXPECT_EQ(document_.errorString(), "cannot read .: Is a directory");
  Parse(" 1 ");
  EXPECT_EQ(document_.errorString(), "");
  std::filesystem::create_symlink("/dev/full", "full");
  EXPECT_FALSE(document_.save("full"));
  EXPECT_EQ(Saved(), "1");
  EXPECT_FALSE(document_.parse("none"));
  EXPECT_EQ(document_.errorString(), "cannot open none: No such file or directory");
  EXPECT_EQ(document_.root(), nullptr);
}

TEST_F(JsconfigTest, ConvertsEveryTokenToEveryKind) {
  CObjectArray tokens = Parse(R"([null,true,0,18446744073709551615,-1,-1.9,-3e9,[1,2],{"a":1},
      9223372036854775808.0,"1\u00e9"])")
                            .toArray(nullptr);
  const char* const kKinds[] = {" b", " i", " u", " I", " U", " d", " a", " s"};
  std::ostringstream all;
  all.precision(3);
  for (int i = 0; i < tokens.countObject(); ++i) {
    CObject& token = tokens[i];
    bool ok[8] = {};
    all << token.toString(&ok[7]) << " " << token.getType() << " " << token.toBool(&ok[0]) << " "
        << token.toInt32(&ok[1]) << " " << token.toUInt32(&ok[2]) << " " << token.toInt64(&ok[3])
        << " " << token.toUInt64(&ok[4]) << " " << token.toDouble(&ok[5]);
    token.toArray(&ok[6]);
    for (int kind = 0; kind < 8; ++kind) all << (ok[kind] ? kKinds[kind] : "");
    all << "\n";
  }
  // Behind the text the class, what the token is as each kind, and which of these are right.
  EXPECT_EQ(all.str(), R"( 0 0 0 0 0 0 0
true 1 1 1 1 1 1 1 b
0 3 0 0 0 0 0 0 i u I U d
18446744073709551615 3 1 -1 4294967295 -1 18446744073709551615 1.84e+19 i u I U d
-1 4 1 -1 4294967295 -1 18446744073709551615 -1 i u I U d
-1.9 5 1 -1 0 -1 0 -1.9 d
-3e+09 5 1 -2147483648 0 -3000000000 0 -3e+09 d
 7 0 0 0 0 0 0 a
 8 0 0 0 0 0 0
9223372036854775808.0 5 1 2147483647 4294967295 9223372036854775807 9223372036854775808 9.22e+18 d
1é 6 0 0 0 0 0 0 s
)");
}

TEST_F(JsconfigTest, WhatIsNotThereHasClassTwoAndTakesNothing) {
  const std::string text = R"({"a":[10,"x",[]],"text":"b","a":[11,12]})";
  CObject& root = Parse(text);
  const CObject& constant = root;
  CObjectArray array = root["a"].toArray(nullptr);  // of two with one name the last counts
  root["text"] = root["a"];                         // leaves the reference where it was
  const char* const noName = nullptr;
  for (CObject object : {CObject(), root[noName], root["text"]["c"], root["b"]["c"], array[-1],
                         array[2], constant["a"][INT_MIN], constant[0], constant["text"][0]}) {
    object.setValue(5);
    EXPECT_EQ(object.getType(), 2);
  }
  EXPECT_EQ(constant["A"].getType(), 2);
  EXPECT_EQ(root.toArray(nullptr).countObject(), 0);
  EXPECT_EQ(array[0].toInt32(nullptr) + constant["a"][1].toInt32(nullptr), 11 + 12);
  EXPECT_EQ(root["text"].toString(nullptr), "b");
  EXPECT_EQ(Saved(), text);
}

TEST_F(JsconfigTest, ChangeThroughACopyKeepsAllElseInItsOrder) {
  CObject& root = Parse(R"({"z":{"checksum":-1,"s":"x"},"d":2,"d":3})");
  CObject section = root["z"];
  CObject checksum;
  checksum = section["checksum"];
  checksum.setValue(4294967295U);
  root["d"].setValue(0);
  CObject added = root["added"];
  EXPECT_EQ(root["looked for"].getType(), 2);
  added.setValue(7);
  EXPECT_EQ(Saved(), R"({"z":{"checksum":4294967295,"s":"x"},"d":2,"d":0,"added":7})");
  section.setValue(1);
  EXPECT_EQ(checksum.toUInt32(nullptr), 4294967295U);  // the handle lives as long as the document
  EXPECT_EQ(Saved(), R"({"z":1,"d":2,"d":0,"added":7})");
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
