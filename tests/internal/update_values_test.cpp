#include <cstddef>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/database_test.h"
#include "tests/support/value_text.h"
#include "update/per_update_impl.h"

namespace ara::per::testing {

class UpdateValuesTest : public DatabaseTest {
 protected:
  std::string List(const std::string& type, const std::string& text) {
    return ValueText(update_.parserVectorData(type, text));
  }

  PersistencyUpdateImpl update_;
};

TEST_F(UpdateValuesTest, SplittingDropsEmptyPiecesAndTrimsNothing) {
  EXPECT_EQ(update_.parserSplit(",a,, b c ;,", ','), (Lines{"a", " b c ;"}));
  EXPECT_EQ(update_.parserSplit("a;b,c", ';'), (Lines{"a", "b,c"}));
}

TEST_F(UpdateValuesTest, NamesOfTypesHaveTheirNumbers) {
  const Lines types = {"object", "float",  "double", "sint8",  "sint16", "sint32", "sint64",
                       "uint8",  "uint16", "uint32", "uint64", "string", "binary", "bool"};
  for (std::size_t i = 0; i < types.size(); ++i) {
    EXPECT_EQ(static_cast<std::size_t>(update_.switchType(types[i])), i) << types[i];
  }
  EXPECT_EQ(update_.switchType("Sint8"), KvsType::Type::kNotSupported);
}

TEST_F(UpdateValuesTest, PathsAreCutAtTheirLastSlashThatIsNotAtTheEnd) {
  std::string cut;
  for (const char* path : {"/a/b/c.txt", "c.txt", "a/b//", "a//b", "/", ""}) {
    fileStruct parts;
    update_.filePathParser(path, parts);
    cut += parts.filePath + "|" + parts.fileName + " ";
  }
  EXPECT_EQ(cut, "/a/b|c.txt .|c.txt a|b a|b /|/ .|. ");
}

TEST_F(UpdateValuesTest, TypeOfElementsStandsBetweenTheFirstBracketsOfEachKind) {
  for (const char* type : {"uint16>vector", "vector<uint16", "uint16", "<uint16>>"}) {
    EXPECT_EQ(List(type, "1,2"), ":uint16=[1u,2u]") << type;
    EXPECT_EQ(List(type, ",7"), ":uint16=7u") << type;
  }
  for (const char* type : {">vector<uint16>", "vector<<uint16>>", "vector", "vector<binary>"}) {
    EXPECT_EQ(List(type, ""), ":object=") << type;
  }
  log_.Clear();
  List("vector<bool>", "1,0");
  EXPECT_EQ(TakeText("", "PersistencyUpdateImpl::", "@"),
            "6 @parserSplit dataType is:vector<bool> initValue:1,0 |6 @switchType type is bool|"
            "6 @parserSplit tok is |6 @parserSplit tok is |5 addArrayItem type=13");
  EXPECT_EQ(out_.Take(), "");
}

TEST_F(UpdateValuesTest, EmptyTextIsZeroOrEmptyAndABinaryHasNoValue) {
  EXPECT_EQ(ValueText(update_.parserData("sint8", "")), ":sint8=0");
  EXPECT_EQ(ValueText(update_.parserData("string", "")), ":string=''");
  EXPECT_EQ(ValueText(update_.parserData("binary", "1")), ":object=");
}

}  // namespace ara::per::testing
