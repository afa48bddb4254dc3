#include <algorithm>
#include <exception>
#include <regex>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ara/per/key_value_storage.h"
#include "ara/per/logic_error_exception.h"
#include "tests/support/database_test.h"
#include "tests/support/thrown.h"
#include "tests/support/value_text.h"

namespace ara::per::testing {
namespace {

using Status = KeyValueStorage::Status;
using Bytes = std::vector<unsigned char>;

KvsType Binary() { return KvsType(Bytes{0x0a, 0xff}.data(), 2); }

KvsType Container(KvsType first, KvsType second) {
  KvsType container;
  container.AddArrayItem(first);
  container.AddArrayItem(second);
  container.GetNextArrayItem();  // a read starts with the first all the same
  return container;
}

class TypedValuesTest : public DatabaseTest {
 protected:
  /// The lines of the family, with "#" for the key.
  std::string TakeLogged() { return TakeText(kTypesFile, " for key:k", "#"); }

  /// Stores a value, reads it and saves it.
  /// @param type, text  how it stands in the file
  /// @param stored, read  the lines of the family, as `TakeLogged` gives them after a first "5 "
  template <class T>
  void Check(const T& value, const std::string& type, const std::string& text,
             const std::string& stored, const std::string& read) {
    SCOPED_TRACE(stored);
    log_.Clear();
    EXPECT_EQ(database_.SetValue("k", value), Status::kSuccess);
    EXPECT_EQ(ReadAs<T>(), value);
    EXPECT_EQ(TakeLogged(), "5 " + stored + "|5 " + read);
    database_.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), R"([{"key":"k","type":")" + type + R"(","value":)" + text + "}]");
  }

  /// The same of a number and of a vector of it, which keeps all bits in the file.
  template <class T>
  void CheckNumber(T value, const std::string& type, const std::string& text,
                   const std::string& stored, const std::string& read) {
    Check(value, type, text, stored, read);
    const std::string name = type.substr(type[0] == 's' ? 1 : 0);
    const std::string typeName = name + (std::is_integral_v<T> ? "_t" : "");
    const std::string element = std::to_string(value);
    Check<std::vector<T>>(
        {value, value}, type, "[" + element + "," + element + "]", "vector<" + typeName + "># ",
        "Getvector<" + typeName + ">Value# status=0|5 GetValue vector <" + name + "> end.");
    EXPECT_EQ(out_.Take(), "SaveArray size=2\n");
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
  /// with an exception. @return the letter when it was changed
  template <class T>
  std::string Reads(const char* letter, const T& before) {
    T value = before;
    try {
      const Status status = database_.GetValue("k", value);
      EXPECT_EQ(status, value == before ? Status::kGeneralError : Status::kSuccess);
    } catch (const LogicErrorException&) {
      EXPECT_EQ(value, before);
    }
    return value == before ? "" : letter;
  }

  KeyValueStorage database_{"db"};
};

TEST_F(TypedValuesTest, ValuesAreStoredReadLoggedAndSaved) {
  CheckNumber<signed char>(-128, "sint8", "-128", "Setint8_tValue#, value=-128 ",
                           "GetInt8Value#  status=0");
  CheckNumber<short>(-32768, "sint16", "-32768", "Setint16_tValue#, value=-32768 ",
                     "GetInt16Value# status=0");
  CheckNumber(-2147483647, "sint32", "-2147483647", "Setint32_tValue#, value=-2147483647 ",
              "GetInt32Value# status=0|5 GetValue int32 end.");
  CheckNumber(-4294967297L, "sint64", "-1", "Setint64_tValue#, value=-1 ",
              "GetInt64Value# status=0|5 GetValue int8 end.");
  Check<unsigned char>(255, "uint8", "255", "Setuint8_tValue#, value=255 ",
                       "GetUint8Value# status=0|5 GetValue uint8 end.");
  CheckNumber<unsigned short>(65535, "uint16", "65535", "Setuint16_tValue#,value=65535 ",
                              "GetUint16Value# status=0|5 GetValue uint16 end.");
  CheckNumber(4294967295U, "uint32", "4294967295", "Setuint32_tValue#, value=4294967295 ",
              "GetUint32Value# status=0|5 GetValue uint32 end.");
  CheckNumber(~0UL, "uint64", "4294967295", "Setuint64_tValue#, value=4294967295 ",
              "GetUint64Value# status=0|5 GetValue uint64 end.");
  CheckNumber(0.1F, "float", "0.100000", "float#, value=0.100000 ",
              "GetfloatValue# status=0|5 GetValue float end.");
  CheckNumber(-1.5, "double", "-1.500000", "duble#, value=-1.500000 ",
              "GetDoubleValue#, type=2 |5 GetValue double end.");
  Check(true, "bool", "1", "SetboolValue#, value=1", "GetBoolValue# status=0|5 GetValue Bool end.");
  Check<std::vector<bool>>({true, false, true}, "bool", "[1,0,1]", "std::vector<bool># ",
                           "GetValue# status=0|5 Getvector<bool>Value vector <bool> end.");
  EXPECT_EQ(out_.Take(), "SaveArray size=3\n");
  Check<std::string>("a %s\xE9", "string", "\"a %s\xE9\"", "string#, value=a %s\xE9 ",
                     "GetStringValue# status=0|5 GetValue String end.");
  Check<std::vector<std::string>>(
      {"x", "", "y"}, "string", R"(["x","","y"])",
      "Setvector<std::string>Value# |5 SetValue vector <string> end.",
      "Getvector<std::string>Value# status=0|5 GetValue vector <string> end.");
  Check<std::vector<unsigned char>>(
      {0x0a, 0xff, 0}, "string", R"("0aff00")",
      "Setvector<byte_t>Value# |5 SetValue vector<byte_t> end.",
      "Getvector<byte_t>Value# status=0|5 GetValue string_value_ is 0aff00");
  EXPECT_EQ(out_.Take(), "");
  EXPECT_EQ(ValueText(SaveArray(std::vector{-7})), ":sint32=-7");  // one element is no array
}

TEST_F(TypedValuesTest, LinesOfFamilyEngineAndValueComeInThisOrder) {
  database_.SetValue("k", SaveArray(std::vector{1.5F, 2.5F}));
  log_.Clear();
  ReadAs<std::vector<float>>();
  database_.SetValue("k", std::vector<std::string>{"x"});
  EXPECT_EQ(TakeText("", "KeyValueStorage::Impl::", "@"),
            "6 @getValue key for:k|6 @getValue find|5 Getvector<float>Value for key:k status=0"
            "|5 type=2|5 type=2|5 GetValue vector <float> end.|5 Setvector<std::string>Value "
            "for key:k |6 @setValue for key: k isTimer=0|5 SetValue vector <string> end.");
}

TEST_F(TypedValuesTest, ReadsKeepToTheGroupOfTheStoredValue) {
  const std::vector<std::pair<KvsType, const char*>> cases = {
      // the groups that read it: integers, unsigned, floats, bool, text, bytes; vectors in capitals
      {SaveArray(std::vector<short>{5, 6}), "iI"},
      {KvsType(5UL), "uU"},
      {KvsType(5.5F), "fF"},
      {KvsType(true), "bB"},
      {KvsType("55"), "tyT"},
      {Binary(), "T"},
      {Container(KvsType(short{5}), KvsType(6L)), "I"},
      {Container(KvsType(short{5}), KvsType("6")), ""},
      {KvsType(), "IUFBT"},  // an empty container; a missing key reads like that, too
  };
  for (const auto& [value, groups] : cases) {
    SCOPED_TRACE(groups);
    database_.SetValue("k", value);
    EXPECT_EQ(Reads("i", 77) + Reads("u", 77U) + Reads("f", 77.0) + Reads("b", false) +
                  Reads("t", std::string("7")) + Reads("y", Bytes{77}) +
                  Reads("I", std::vector{7, 7, 7}) + Reads("U", std::vector{7UL}) +
                  Reads("F", std::vector{7.0F}) + Reads("B", std::vector<bool>(3)) +
                  Reads("T", Lines(3)),
              groups);
  }
  database_.RemoveKey("k");
  EXPECT_EQ(Reads("i", 77) + Reads("y", Bytes{77}) + Reads("I", std::vector{7}), "I");
}

TEST_F(TypedValuesTest, NumbersKeepTheirLowBitsAndBytesArePairsOfDigits) {
  EXPECT_EQ(ReadAs<signed char>(KvsType(300)), 44);
  EXPECT_EQ(ReadAs<std::vector<short>>(SaveArray(std::vector{65537, 2})),
            (std::vector<short>{1, 2}));
  EXPECT_EQ(ReadAs<std::vector<float>>(KvsType(0.1)), std::vector{0.1F});
  EXPECT_EQ(ReadAs<Bytes>(KvsType("12zz3F")), (Bytes{0x12, 0, 0x3f}));
  database_.SetValue<std::string>("k", "0afF0");
  EXPECT_EQ(Reads("y", Bytes{7, 7}), "");
}

TEST_F(TypedValuesTest, EmptyVectorIsRefusedAndLeavesTheStoredOneAlone) {
  database_.SetValue("k", Bytes{7});
  log_.Clear();
  EXPECT_EQ(database_.SetValue("k", Bytes()), Status::kGeneralError);
  EXPECT_EQ(TakeLogged(), "5 Setvector<byte_t>Value# ");
  EXPECT_EQ(ReadAs<Bytes>(), Bytes{7});
  const auto save = [] { SaveArray(std::vector<bool>()); };
  EXPECT_EQ(Thrown<std::exception>(save), std::exception().what());
}

TEST_F(TypedValuesTest, WrongTypeOrStatusIsToldAndKeepsTheVariable) {
  KvsType wrong("5");
  wrong.SetKey("k");
  database_.SetValue("k", wrong);
  log_.Clear();
  EXPECT_EQ(Reads("i", 7), "");
  const std::string what = Thrown<LogicErrorException>([&] { wrong.GetSInt64(); });
  EXPECT_EQ(TakeLogged(), "5 GetInt32Value# status=0|5 error:" + what + " ");
  for (const int number : {1, 2, 9}) {
    SCOPED_TRACE(number);
    const auto status = static_cast<Status>(std::min(number, 3));
    KvsType stored("0aff");
    stored.SetStatus(static_cast<KvsType::Status>(number));
    EXPECT_EQ(database_.GetKvsTypeStatus("missing", stored.GetStatus()), status);
    log_.Clear();
    database_.SetValue("k", stored);
    std::string text = "before";
    KvsType copy;
    EXPECT_EQ(database_.GetValue("k", text), status);
    EXPECT_EQ(database_.GetValue("k", copy), status);
    const std::string end = "# status=" + std::to_string(number);
    EXPECT_EQ(TakeLogged(), "5 KvsType# |5 GetStringValue" + end + "|5 GetValue String end.|5 " +
                                "KeyValueStorage::GetValue" + end);
    EXPECT_EQ(text, "before");
    EXPECT_EQ(copy.GetString(), "0aff");  // written all the same
  }
}

TEST_F(TypedValuesTest, MultipleOf256FlagsOrNumbersReadsAsEmptyAndPrintsZeros) {
  EXPECT_TRUE(ReadAs<std::vector<bool>>(SaveArray(std::vector<bool>(256))).empty());
  EXPECT_TRUE(ReadAs<std::vector<double>>(SaveArray(std::vector<double>(256))).empty());
  const std::string printed = std::regex_replace(out_.Take(), std::regex("SaveArray.*\n|0\n"), "z");
  EXPECT_EQ(printed, std::string(514, 'z'));
}

TEST_F(TypedValuesTest, MissingKvsTypeOrOneThatItsTextCannotTellIsReadAsADefaultOne) {
  EXPECT_EQ(ValueText(ReadAs<KvsType>(KvsType("a\"b"))), ":object=!3");
  database_.RemoveKey("k");
  EXPECT_EQ(ValueText(ReadAs<KvsType>()), ":object=[]");
}

}  // namespace
}  // namespace ara::per::testing
