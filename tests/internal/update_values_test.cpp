#include <cstddef>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/database_test.h"
#include "tests/support/thrown.h"
#include "tests/support/value_text.h"
#include "update/per_update_impl.h"

namespace ara::per::testing {
namespace {

class UpdateValuesTest : public DatabaseTest {
 protected:
  PersistencyUpdateImpl update_;
  const std::string noValue_ = ValueText(KvsType());
};

TEST_F(UpdateValuesTest, SplittingDropsEmptyPiecesAndTrimsNothing) {
  const std::vector<std::pair<const char*, Lines>> cases = {
      {"a,,b", {"a", "b"}}, {",a, b ,", {"a", " b "}}, {"a;b c", {"a;b c"}}, {",,", {}}, {"", {}},
  };
  for (const auto& [text, pieces] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(update_.parserSplit(text, ','), pieces);
    EXPECT_EQ(TakeLines(), Lines(pieces.size(), "6 PersistencyUpdateImpl::parserSplit tok is "));
  }
  EXPECT_EQ(update_.parserSplit("a;b,c", ';'), (Lines{"a", "b,c"}));
}

TEST_F(UpdateValuesTest, NamesGiveNumbersAndOthersTheLeast) {
  const Lines types = {"",      "float",  "double", "sint8",  "sint16", "sint32", "sint64",
                       "uint8", "uint16", "uint32", "uint64", "string", "binary", "bool"};
  for (std::size_t i = 0; i < types.size(); ++i) {
    EXPECT_EQ(static_cast<std::size_t>(update_.switchType(types[i])), i) << types[i];
    EXPECT_EQ(update_.switchType(types[i] + " "), KvsType::Type::kNotSupported) << types[i];
  }
  EXPECT_EQ(update_.switchUpdateType("installation"), EUpdateType::kInstallation);
  EXPECT_EQ(update_.switchUpdateType("update"), EUpdateType::kUpdate);
  for (const char* other : {"uninstallation", "Update", "update ", ""}) {
    EXPECT_EQ(update_.switchUpdateType(other), EUpdateType::kUninstallation) << other;
  }
  EXPECT_EQ(log_.Lines().front().text, "PersistencyUpdateImpl::switchType type is ");
  EXPECT_EQ(log_.Lines().back().text, "PersistencyUpdateImpl::getUpdateType type: ");
}

TEST_F(UpdateValuesTest, PathsAreCutAtTheirLastSlashThatIsNotAtTheEnd) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"/a/b/c.txt", "/a/b|c.txt"},
      {"c.txt", ".|c.txt"},
      {"a/b//", "a|b"},
      {"a//b", "a|b"},
      {"/a", "/|a"},
      {"/", "/|/"},
      {"", ".|."},
      {"..", ".|.."},
  };
  for (const auto& [path, parts] : cases) {
    fileStruct cut;
    update_.filePathParser(std::string(path), cut);
    EXPECT_EQ(cut.filePath + "|" + cut.fileName, parts);
  }
  EXPECT_EQ(log_.Lines().front().text, "PersistencyUpdateImpl::filePathParser path is /a/b/c.txt");
}

TEST_F(UpdateValuesTest, SingleValuesAndElementsOfListsAreWhatTheStreamExtracts) {
  // A type, and after it texts with the values that they give, as single values and as elements.
  const std::vector<Lines> cases = {
      {"sint8", "7>55", " -1>45", " >0", "\xC8>-56"},
      {"uint8", "200>50u", " >0u", "\xC8>200u"},
      {"sint16", "-32768>-32768", " >0", "40000>32767", "-40000>-32768"},
      {"sint32", "42>42", " 4x>4", " >0", "x>0", "0x10>0", "2147483648>2147483647", "010>10"},
      {"sint64", "-9223372036854775808>-9223372036854775808", "--1>0", "1e3>1"},
      {"uint16", "65535>65535u", "x>0u", "65536>65535u", "-1>65535u"},
      {"uint32", "4294967295>4294967295u", " >0u", "-1>4294967295u"},
      {"uint64", "18446744073709551616>18446744073709551615u", " >0u", "1.9>1u"},
      {"float", "-1e39>-340282346638528859811704183484516925440.000000", "inf>0.000000"},
      {"double", "-2.5e3x>-2500.000000", "nan>0.000000", "16777217>16777217.000000"},
      {"bool", "1>true", "0>false", "2>true", "true>false", " >false"},
      {"string", " two words>' two words'", " >' '", "x>'x'"},
  };
  for (const Lines& c : cases) {
    const std::string begin = ":" + c[0] + "=";
    const std::string listType = "vector<" + c[0] + ">";
    std::string texts;
    std::string values;
    for (std::size_t i = 1; i < c.size(); ++i) {
      SCOPED_TRACE(c[0] + " " + c[i]);
      const std::string text = c[i].substr(0, c[i].find('>'));
      const std::string value = c[i].substr(text.size() + 1);
      EXPECT_EQ(ValueText(update_.parserData(c[0], text)), begin + value);
      EXPECT_EQ(ValueText(update_.parserVectorData(listType, "," + text)), begin + value);
      texts += text + ",,";
      values += (values.empty() ? "" : ",") + value;
    }
    EXPECT_EQ(ValueText(update_.parserVectorData(listType, texts)), begin + "[" + values + "]");
    for (const char* empty : {"", ",,"}) {
      EXPECT_EQ(Thrown<std::exception>([&] { update_.parserVectorData(listType, empty); }),
                std::exception().what());
    }
  }
  EXPECT_EQ(ValueText(update_.parserData("sint8", "")), ":sint8=0");
  EXPECT_EQ(ValueText(update_.parserData("string", "")), ":string=''");
  for (const char* type : {"sint32 ", "", "binary"}) {
    log_.Clear();
    EXPECT_EQ(ValueText(update_.parserData(type, "1")), noValue_) << type;
  }
  EXPECT_EQ(TakeText("", "PersistencyUpdateImpl::", "@"),
            "6 @switchType type is binary|6 @parserData eType:12 |6 @parserData end");
  EXPECT_EQ(out_.Take(), "");
}

TEST_F(UpdateValuesTest, TypeOfElementsStandsBetweenTheFirstBracketsOfEachKind) {
  for (const char* type :
       {"vector<uint16>", "uint16>vector", "vector<uint16", "uint16", "<uint16>>"}) {
    EXPECT_EQ(ValueText(update_.parserVectorData(type, "1,2")), ":uint16=[1u,2u]") << type;
  }
  for (const char* type : {">vector<uint16>", "vector<<uint16>>", "vector< uint16>", "vector",
                           "vector<binary>", "vector<>", ""}) {
    EXPECT_EQ(ValueText(update_.parserVectorData(type, "")), noValue_) << type;
  }
  log_.Clear();
  update_.parserVectorData("vector<bool>", "1,0");
  EXPECT_EQ(TakeText("", "PersistencyUpdateImpl::", "@"),
            "6 @parserSplit dataType is:vector<bool> initValue:1,0 |6 @switchType type is bool|"
            "6 @parserSplit tok is |6 @parserSplit tok is |5 addArrayItem type=13");
}

}  // namespace
}  // namespace ara::per::testing
