#include <algorithm>
#include <cstddef>
#include <exception>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/per/key_value_storage.h"
#include "ara/per/logic_error_exception.h"
#include "tests/support/database_test.h"
#include "tests/support/thrown.h"
#include "tests/support/value_text.h"

namespace ara::per::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Status = KeyValueStorage::Status;
using Bytes = std::vector<unsigned char>;

KvsType Binary() {
  Bytes bytes = {0x0a, 0xff};
  return KvsType(bytes.data(), bytes.size());
}

KvsType Container(std::vector<KvsType> items) {
  KvsType container;
  for (KvsType& item : items) {
    item.SetKey("item");
    container.AddArrayItem(item);
  }
  return container;
}

class TypedValuesTest : public DatabaseTest {
 protected:
  /// The lines of the family without their level, which is debug, and with "#" for the key.
  std::string TakeLogged() {
    const std::string text = TakeText(kTypesFile, " for key:k", "#");
    return std::regex_replace(text, std::regex("(^|\\|)5 "), "$1");
  }

  /// Stores a value, reads it and saves it.
  /// @param type, text  how it stands in the file
  /// @param logged  the lines of the family as `TakeLogged` gives them
  template <class T>
  void Check(const T& value, const std::string& type, const std::string& text,
             const std::string& logged) {
    SCOPED_TRACE(logged);
    log_.Clear();
    EXPECT_EQ(database_.SetValue("k", value), Status::kSuccess);
    EXPECT_EQ(ReadAs<T>(), value);
    EXPECT_EQ(TakeLogged(), logged);
    database_.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), R"([{"key":"k","type":")" + type + R"(","value":)" + text + "}]");
  }

  /// The same of a vector, and that an empty one leaves it alone.
  template <class T>
  void CheckVector(const std::vector<T>& value, const std::string& type, const std::string& text,
                   const std::string& logged) {
    Check(value, type, text, logged);
    EXPECT_EQ(database_.SetValue("k", std::vector<T>()), Status::kGeneralError);
    EXPECT_EQ(TakeLogged(), logged.substr(0, logged.find('|')));
    EXPECT_EQ(ReadAs<std::vector<T>>(), value);
  }

  /// The same of a vector whose lines differ from others only in the names of the type.
  template <class T>
  void CheckVector(const std::vector<T>& value, const std::string& type, const std::string& text,
                   const std::string& name, const std::string& nameInEnd) {
    CheckVector(value, type, text,
                "vector<" + name + "># |Getvector<" + name + ">Value# status=0|GetValue vector <" +
                    nameInEnd + "> end.");
    EXPECT_EQ(out_.Take(), "SaveArray size=" + std::to_string(value.size()) + "\n");
  }

  template <class T>
  T ReadAs() {
    T read = T();
    EXPECT_EQ(database_.GetValue("k", read), Status::kSuccess);
    return read;
  }

  template <class T>
  T ReadAs(const KvsType& value) {
    database_.SetValue("k", value);
    return ReadAs<T>();
  }

  /// Reads "k", which must change the variable or leave it alone: with an error, or, a vector,
  /// with an exception. @return whether it was changed
  template <class T>
  bool Reads(const T& before) {
    T value = before;
    try {
      const Status status = database_.GetValue("k", value);
      EXPECT_EQ(status, value == before ? Status::kGeneralError : Status::kSuccess);
    } catch (const LogicErrorException&) {
      EXPECT_EQ(value, before);
    }
    return value != before;
  }

  /// @return the name of a group of types when all of them read "k"
  template <class... T>
  std::string Group(const char* name, const T&... before) {
    return (Reads(before) && ...) ? name : "";
  }

  KeyValueStorage database_{"db"};
};

TEST_F(TypedValuesTest, ScalarsAreStoredReadLoggedAndSaved) {
  Check<signed char>(-128, "sint8", "-128", "Setint8_tValue#, value=-128 |GetInt8Value#  status=0");
  Check<short>(-32768, "sint16", "-32768",
               "Setint16_tValue#, value=-32768 |GetInt16Value# status=0");
  Check(-2147483647, "sint32", "-2147483647",
        "Setint32_tValue#, value=-2147483647 |GetInt32Value# status=0|GetValue int32 end.");
  Check(-4294967297L, "sint64", "-1",
        "Setint64_tValue#, value=-1 |GetInt64Value# status=0|GetValue int8 end.");
  Check<unsigned char>(255, "uint8", "255",
                       "Setuint8_tValue#, value=255 |GetUint8Value# status=0|GetValue uint8 end.");
  Check<unsigned short>(
      65535, "uint16", "65535",
      "Setuint16_tValue#,value=65535 |GetUint16Value# status=0|GetValue uint16 end.");
  Check(4294967295U, "uint32", "4294967295",
        "Setuint32_tValue#, value=4294967295 |GetUint32Value# status=0|GetValue uint32 end.");
  Check(8589934591UL, "uint64", "4294967295",
        "Setuint64_tValue#, value=4294967295 |GetUint64Value# status=0|GetValue uint64 end.");
  Check(true, "bool", "1", "SetboolValue#, value=1|GetBoolValue# status=0|GetValue Bool end.");
  Check(0.1F, "float", "0.100000",
        "float#, value=0.100000 |GetfloatValue# status=0|GetValue float end.");
  Check(-1.5, "double", "-1.500000",
        "duble#, value=-1.500000 |GetDoubleValue#, type=2 |GetValue double end.");
  Check<std::string>("a %s\xE9", "string", "\"a %s\xE9\"",
                     "string#, value=a %s\xE9 |GetStringValue# status=0|GetValue String end.");
}

TEST_F(TypedValuesTest, VectorsAreStoredReadLoggedAndSaved) {
  CheckVector<signed char>({-128, 127}, "sint8", "[-128,127]", "int8_t", "int8");
  CheckVector<short>({1, -2, 3}, "sint16", "[1,-2,3]", "int16_t", "int16");
  CheckVector<int>({-7}, "sint32", "-7", "int32_t", "int32");  // one element is a plain value
  CheckVector<long>({-4294967297, 1}, "sint64", "[-4294967297,1]", "int64_t", "int64");
  CheckVector<unsigned short>({0, 65535}, "uint16", "[0,65535]", "uint16_t", "uint16");
  CheckVector<unsigned int>({4294967295U, 1}, "uint32", "[4294967295,1]", "uint32_t", "uint32");
  CheckVector<unsigned long>({~0UL, 1}, "uint64", "[18446744073709551615,1]", "uint64_t", "uint64");
  CheckVector<float>({1.5F, -0.25F}, "float", "[1.500000,-0.250000]", "float", "float");
  CheckVector<double>({1.5, 1e9}, "double", "[1.500000,1000000000.000000]", "double", "double");
  CheckVector<bool>(
      {true, false, true}, "bool", "[1,0,1]",
      "std::vector<bool># |GetValue# status=0|Getvector<bool>Value vector <bool> end.");
  EXPECT_EQ(out_.Take(), "SaveArray size=3\n");
  CheckVector<std::string>({"x", "", "y"}, "string", R"(["x","","y"])",
                           "Setvector<std::string>Value# |SetValue vector <string> end.|"
                           "Getvector<std::string>Value# status=0|GetValue vector <string> end.");
  CheckVector<unsigned char>({0x0a, 0xff, 0}, "string", R"("0aff00")",
                             "Setvector<byte_t>Value# |SetValue vector<byte_t> end.|"
                             "Getvector<byte_t>Value# status=0|GetValue string_value_ is 0aff00");
  EXPECT_EQ(Thrown<std::exception>([] { SaveArray(std::vector<bool>()); }),
            std::exception().what());
  EXPECT_EQ(out_.Take(), "");
}

TEST_F(TypedValuesTest, LinesOfFamilyEngineAndValueComeInThisOrder) {
  database_.SetValue("k", SaveArray(std::vector<float>{1.5F, 2.5F}));
  log_.Clear();
  ReadAs<std::vector<float>>();
  database_.SetValue<std::vector<int>>("k", {1, 2});
  database_.SetValue<std::vector<std::string>>("k", {"x"});
  ReadAs<KvsType>(Binary());
  EXPECT_EQ(TakeText("", "KeyValueStorage::Impl::", "@"),
            "6 @getValue key for:k|6 @getValue find|5 Getvector<float>Value for key:k status=0"
            "|5 type=2|5 type=2|5 GetValue vector <float> end.|5 vector<int32_t> for key:k "
            "|5 addArrayItem type=5|5 addArrayItem type is int|6 @setValue for key: k isTimer=0"
            "|5 Setvector<std::string>Value for key:k |6 @setValue for key: k isTimer=0"
            "|5 SetValue vector <string> end.|5 KvsType for key:k "
            "|6 @setValue for key: k isTimer=0|6 @getValue key for:k|6 @getValue find"
            "|5 KeyValueStorage::GetValue for key:k status=0|5 add (\"key\":\"k\") to Object"
            "|5 write to: error");
}

TEST_F(TypedValuesTest, ReadsKeepToTheGroupOfTheStoredValue) {
  struct Case {
    KvsType value;
    const char* scalars;   // the groups that read it: signed, unsigned, floating, bool, text
    const char* elements;  // and as a vector
  };
  const std::vector<Case> cases = {
      {KvsType(short{5}), "s", "s"},
      {KvsType(5UL), "u", "u"},
      {KvsType(5.5F), "f", "f"},
      {KvsType(5.5), "f", "f"},
      {KvsType(true), "b", "b"},
      {KvsType("55"), "ty", "t"},
      {Binary(), "", "t"},
      {SaveArray(std::vector<int>{1, 2}), "s", "s"},
      {Container({KvsType(short{5}), KvsType(6L)}), "", "s"},
      {Container({KvsType(short{5}), KvsType("6")}), "", ""},
      {KvsType(), "", "sufbt"},
  };
  for (std::size_t i = 0; i <= cases.size(); ++i) {
    SCOPED_TRACE(i);
    const Case& c = cases[std::min(i, cases.size() - 1)];
    database_.SetValue("k", c.value);
    if (i == cases.size()) {  // a missing key reads like an empty container
      database_.RemoveKey("k");
    }
    EXPECT_EQ(Group("s", static_cast<signed char>(77), short{77}, 77, 77L) +
                  Group("u", static_cast<unsigned char>(77), static_cast<unsigned short>(77), 77U) +
                  Group("f", 77.0F, 77.0) + Group("b", false) + Group("t", std::string("before")) +
                  Group("y", Bytes{77}),
              c.scalars);
    EXPECT_EQ(Group("s", std::vector<signed char>(3), std::vector{7, 7, 7}, std::vector{7L, 7L}) +
                  Group("u", std::vector<unsigned short>(3), std::vector{7UL, 7UL}) +
                  Group("f", std::vector{7.0F, 7.0F}, std::vector{7.0, 7.0}) +
                  Group("b", std::vector<bool>(3)) + Group("t", std::vector<std::string>(3)),
              c.elements);
  }
}

TEST_F(TypedValuesTest, NumbersKeepTheirLowBitsAndBytesArePairsOfDigits) {
  EXPECT_EQ(ReadAs<signed char>(KvsType(300)), 44);
  EXPECT_EQ(ReadAs<int>(KvsType(8589934597L)), 5);
  EXPECT_EQ(ReadAs<unsigned char>(KvsType(300U)), 44);
  EXPECT_EQ(ReadAs<unsigned int>(KvsType(8589934597UL)), 5U);
  using SignedChars = std::vector<signed char>;
  EXPECT_THAT(ReadAs<SignedChars>(SaveArray(std::vector{300, -129})), ElementsAre(44, 127));
  EXPECT_THAT(ReadAs<std::vector<float>>(SaveArray(std::vector{0.1})), ElementsAre(0.1F));
  EXPECT_THAT(ReadAs<std::vector<int>>(Container({KvsType(8589934597L)})), ElementsAre(5));
  EXPECT_EQ(ReadAs<Bytes>(KvsType("12zz3F")), (Bytes{0x12, 0, 0x3f}));
  database_.SetValue<std::string>("k", "0afF0");
  EXPECT_FALSE(Reads<Bytes>({7, 7}));
}

TEST_F(TypedValuesTest, WrongTypeOrStatusIsToldAndKeepsTheVariable) {
  KvsType wrong("5");
  wrong.SetKey("k");
  const std::string what = Thrown<LogicErrorException>([&] { wrong.GetSInt64(); });
  database_.SetValue("k", wrong);
  log_.Clear();
  EXPECT_FALSE(Reads(7));
  EXPECT_EQ(TakeLogged(), "GetInt32Value# status=0|error:" + what + " ");
  for (const auto& [number, expected] : std::vector<std::pair<int, int>>{{1, 1}, {2, 2}, {9, 3}}) {
    SCOPED_TRACE(number);
    const auto status = static_cast<Status>(expected);
    KvsType stored("0aff");
    stored.SetStatus(static_cast<KvsType::Status>(number));
    EXPECT_EQ(database_.GetKvsTypeStatus("missing", stored.GetStatus()), status);
    database_.SetValue("k", stored);
    log_.Clear();
    std::string text = "before";
    Bytes bytes = {7};
    KvsType copy;
    EXPECT_EQ(database_.GetValue("k", text), status);
    EXPECT_EQ(database_.GetValue("k", bytes), status);
    EXPECT_EQ(database_.GetValue("k", copy), status);
    const std::string end = "# status=" + std::to_string(number);
    EXPECT_EQ(TakeLogged(), "GetStringValue" + end + "|GetValue String end.|Getvector<byte_t>" +
                                "Value" + end + "|KeyValueStorage::GetValue" + end);
    EXPECT_EQ(text, "before");
    EXPECT_EQ(bytes, Bytes{7});
    EXPECT_EQ(copy.GetString(), "0aff");  // written all the same
  }
}

TEST_F(TypedValuesTest, MultipleOf256NumbersOrFlagsReadsAsEmptyAndPrintsZeros) {
  const KvsType flags = SaveArray(std::vector<bool>(256));
  const KvsType doubles = SaveArray(std::vector<double>(256));
  out_.Take();
  EXPECT_THAT(ReadAs<std::vector<bool>>(flags), IsEmpty());
  EXPECT_THAT(ReadAs<std::vector<double>>(doubles), IsEmpty());
  EXPECT_EQ(std::regex_replace(out_.Take(), std::regex("0\n"), "z"), std::string(512, 'z'));
  database_.SetValue("k", std::vector<std::string>(256));
  EXPECT_EQ(ReadAs<std::vector<std::string>>().size(), 256U);
}

TEST_F(TypedValuesTest, KvsTypeThatItsTextCannotTellIsReadAsADefaultOne) {
  EXPECT_EQ(ValueText(ReadAs<KvsType>(KvsType("a\"b"))), ":object=!3");
  EXPECT_EQ(ValueText(ReadAs<KvsType>(Container({KvsType(1), Binary()}))), ":object=!3");
  database_.RemoveKey("k");
  EXPECT_EQ(ValueText(ReadAs<KvsType>()), ":object=[]");
}

}  // namespace
}  // namespace ara::per::testing
