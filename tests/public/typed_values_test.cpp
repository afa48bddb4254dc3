#include <cstddef>
#include <exception>
#include <sstream>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ara/per/key_value_storage.h"
#include "ara/per/logic_error_exception.h"
#include "tests/support/database_test.h"

namespace ara::per::testing {
namespace {

using ::testing::ElementsAre;
using Status = KeyValueStorage::Status;
using Bytes = std::vector<unsigned char>;

/// The parts of a text between bars, each as a log line of the debug level.
Lines DebugLines(const std::string& text) {
  Lines lines;
  std::istringstream parts(text);
  for (std::string part; std::getline(parts, part, '|');) {
    lines.push_back("5 " + part);
  }
  return lines;
}

KvsType Binary() {
  Bytes bytes = {0x0a, 0xff};
  return KvsType(bytes.data(), bytes.size());
}

/// A container of items with the keys "a", "b" and so on.
KvsType Container(std::vector<KvsType> items) {
  KvsType container;
  char key = 'a';
  for (KvsType& item : items) {
    item.SetKey(std::string(1, key++));
    container.AddArrayItem(item);
  }
  return container;
}

class TypedValuesTest : public DatabaseTest {
 protected:
  /// Stores a value, reads it and saves it.
  /// @param type, text  how it stands in the file
  /// @param logged  the lines of the family, for `DebugLines`
  template <class T>
  void Check(const T& value, const std::string& type, const std::string& text,
             const std::string& logged) {
    SCOPED_TRACE(logged);
    log_.Clear();
    EXPECT_EQ(database_.SetValue("k", value), Status::kSuccess);
    T read = T();
    EXPECT_EQ(database_.GetValue("k", read), Status::kSuccess);
    EXPECT_EQ(TakeLines(kTypesFile), DebugLines(logged));
    EXPECT_EQ(read, value);
    database_.SyncToStorage();
    EXPECT_EQ(ReadFile("db"), R"([{"key":"k","type":")" + type + R"(","value":)" + text + "}]");
  }

  /// The same of a vector, and that an empty one leaves it alone.
  template <class T>
  void CheckVector(const std::vector<T>& value, const std::string& type, const std::string& text,
                   const std::string& logged) {
    Check(value, type, text, logged);
    SCOPED_TRACE(logged);
    EXPECT_EQ(database_.SetValue("k", std::vector<T>()), Status::kGeneralError);
    EXPECT_EQ(TakeLines(kTypesFile), Lines{DebugLines(logged).front()});
    std::vector<T> read;
    EXPECT_EQ(database_.GetValue("k", read), Status::kSuccess);
    EXPECT_EQ(read, value);
  }

  /// Reads "k", which must succeed or leave the variable alone. @return whether it succeeded
  template <class T>
  bool Fits(const T& before) {
    T value = before;
    const Status status = database_.GetValue("k", value);
    EXPECT_TRUE(status == Status::kSuccess || (status == Status::kGeneralError && value == before));
    return status == Status::kSuccess;
  }

  /// The same of a vector, where a wrong element throws.
  template <class T>
  bool ElementsFit(const T& before) {
    const std::vector<T> untouched = {before, before, before};
    std::vector<T> value = untouched;
    try {
      EXPECT_EQ(database_.GetValue("k", value), Status::kSuccess);
      EXPECT_NE(value, untouched);
      return true;
    } catch (const LogicErrorException&) {
      EXPECT_EQ(value, untouched);
      return false;
    }
  }

  template <class To>
  To ReadAs(const KvsType& value) {
    To read = To();
    EXPECT_EQ(database_.SetValue("k", value), Status::kSuccess);
    EXPECT_EQ(database_.GetValue("k", read), Status::kSuccess);
    return read;
  }

  KeyValueStorage database_{"db"};
};

TEST_F(TypedValuesTest, ScalarsAreStoredReadLoggedAndSaved) {
  Check<signed char>(-128, "sint8", "-128",
                     "Setint8_tValue for key:k, value=-128 |GetInt8Value for key:k  status=0");
  Check<short>(-32768, "sint16", "-32768",
               "Setint16_tValue for key:k, value=-32768 |GetInt16Value for key:k status=0");
  Check<int>(-2147483647, "sint32", "-2147483647",
             "Setint32_tValue for key:k, value=-2147483647 |GetInt32Value for key:k status=0|"
             "GetValue int32 end.");
  Check<long>(-4294967297, "sint64", "-1",
              "Setint64_tValue for key:k, value=-1 |GetInt64Value for key:k status=0|"
              "GetValue int8 end.");
  Check<unsigned char>(255, "uint8", "255",
                       "Setuint8_tValue for key:k, value=255 |GetUint8Value for key:k status=0|"
                       "GetValue uint8 end.");
  Check<unsigned short>(65535, "uint16", "65535",
                        "Setuint16_tValue for key:k,value=65535 |GetUint16Value for key:k status=0|"
                        "GetValue uint16 end.");
  Check<unsigned int>(4294967295U, "uint32", "4294967295",
                      "Setuint32_tValue for key:k, value=4294967295 |"
                      "GetUint32Value for key:k status=0|GetValue uint32 end.");
  Check<unsigned long>(8589934591UL, "uint64", "4294967295",
                       "Setuint64_tValue for key:k, value=4294967295 |"
                       "GetUint64Value for key:k status=0|GetValue uint64 end.");
  Check<bool>(true, "bool", "1",
              "SetboolValue for key:k, value=1|GetBoolValue for key:k status=0|GetValue Bool end.");
  Check<float>(0.1F, "float", "0.100000",
               "float for key:k, value=0.100000 |GetfloatValue for key:k status=0|"
               "GetValue float end.");
  Check<double>(-1.5, "double", "-1.500000",
                "duble for key:k, value=-1.500000 |GetDoubleValue for key:k, type=2 |"
                "GetValue double end.");
  Check<std::string>("a %s\xE9", "string", "\"a %s\xE9\"",
                     "string for key:k, value=a %s\xE9 |GetStringValue for key:k status=0|"
                     "GetValue String end.");
  EXPECT_EQ(out_.Take(), "");
}

TEST_F(TypedValuesTest, VectorsAreStoredReadLoggedAndSaved) {
  CheckVector<signed char>({-128, 127}, "sint8", "[-128,127]",
                           "vector<int8_t> for key:k |Getvector<int8_t>Value for key:k status=0|"
                           "GetValue vector <int8> end.");
  CheckVector<short>({1, -2, 3}, "sint16", "[1,-2,3]",
                     "vector<int16_t> for key:k |Getvector<int16_t>Value for key:k status=0|"
                     "GetValue vector <int16> end.");
  CheckVector<int>({-7}, "sint32", "-7",  // one element is a plain value
                   "vector<int32_t> for key:k |Getvector<int32_t>Value for key:k status=0|"
                   "GetValue vector <int32> end.");
  CheckVector<long>({-4294967297, 1}, "sint64", "[-4294967297,1]",
                    "vector<int64_t> for key:k |Getvector<int64_t>Value for key:k status=0|"
                    "GetValue vector <int64> end.");
  CheckVector<unsigned short>({0, 65535}, "uint16", "[0,65535]",
                              "vector<uint16_t> for key:k |"
                              "Getvector<uint16_t>Value for key:k status=0|"
                              "GetValue vector <uint16> end.");
  CheckVector<unsigned int>({4294967295U, 1}, "uint32", "[4294967295,1]",
                            "vector<uint32_t> for key:k |"
                            "Getvector<uint32_t>Value for key:k status=0|"
                            "GetValue vector <uint32> end.");
  CheckVector<unsigned long>({18446744073709551615UL, 1}, "uint64", "[18446744073709551615,1]",
                             "vector<uint64_t> for key:k |"
                             "Getvector<uint64_t>Value for key:k status=0|"
                             "GetValue vector <uint64> end.");
  CheckVector<bool>({true, false, true}, "bool", "[1,0,1]",
                    "std::vector<bool> for key:k |GetValue for key:k status=0|"
                    "Getvector<bool>Value vector <bool> end.");
  CheckVector<float>({1.5F, -0.25F}, "float", "[1.500000,-0.250000]",
                     "vector<float> for key:k |Getvector<float>Value for key:k status=0|"
                     "GetValue vector <float> end.");
  CheckVector<double>({1.5, 1e15}, "double", "[1.500000,1000000000000000.000000]",
                      "vector<double> for key:k |Getvector<double>Value for key:k status=0|"
                      "GetValue vector <double> end.");
  EXPECT_EQ(out_.Take(),
            "SaveArray size=2\nSaveArray size=3\nSaveArray size=1\nSaveArray size=2\n"
            "SaveArray size=2\nSaveArray size=2\nSaveArray size=2\nSaveArray size=3\n"
            "SaveArray size=2\nSaveArray size=2\n");
  CheckVector<std::string>({"x", "", "y"}, "string", R"(["x","","y"])",
                           "Setvector<std::string>Value for key:k |SetValue vector <string> end.|"
                           "Getvector<std::string>Value for key:k status=0|"
                           "GetValue vector <string> end.");
  CheckVector<unsigned char>({0x0a, 0xff, 0}, "string", R"("0aff00")",
                             "Setvector<byte_t>Value for key:k |SetValue vector<byte_t> end.|"
                             "Getvector<byte_t>Value for key:k status=0|"
                             "GetValue string_value_ is 0aff00");
  EXPECT_EQ(out_.Take(), "");
}

TEST_F(TypedValuesTest, LinesOfFamilyEngineAndValueComeInThisOrder) {
  std::vector<float> floats;
  KvsType copy;
  log_.Clear();
  database_.SetValue<std::vector<int>>("k", {1, 2});
  database_.SetValue<std::vector<unsigned int>>("k", {1, 2});
  database_.SetValue<std::vector<bool>>("k", {true, false});
  database_.SetValue<std::vector<std::string>>("k", {"x"});
  EXPECT_EQ(
      TakeLines(),
      (Lines{"5 vector<int32_t> for key:k ", "5 addArrayItem type=5", "5 addArrayItem type is int",
             "6 KeyValueStorage::Impl::setValue for key: k isTimer=0",
             "3 KeyValueStorage::Impl::setValue not find the key", "5 vector<uint32_t> for key:k ",
             "5 addArrayItem type=9", "5 addArrayItem type is uint",
             "6 KeyValueStorage::Impl::setValue for key: k isTimer=0",
             "5 std::vector<bool> for key:k ", "5 addArrayItem type=13",
             "6 KeyValueStorage::Impl::setValue for key: k isTimer=0",
             "5 Setvector<std::string>Value for key:k ",
             "6 KeyValueStorage::Impl::setValue for key: k isTimer=0",
             "5 SetValue vector <string> end."}));
  database_.SetValue("k", SaveArray(std::vector<float>{1.5F, 2.5F}));
  log_.Clear();
  database_.GetValue("k", floats);
  database_.SetValue("k", Binary());
  database_.GetValue("k", copy);
  EXPECT_EQ(
      TakeLines(),
      (Lines{"6 KeyValueStorage::Impl::getValue key for:k",
             "6 KeyValueStorage::Impl::getValue find", "5 Getvector<float>Value for key:k status=0",
             "5 type=2", "5 type=2", "5 GetValue vector <float> end.", "5 KvsType for key:k ",
             "6 KeyValueStorage::Impl::setValue for key: k isTimer=0",
             "6 KeyValueStorage::Impl::getValue key for:k",
             "6 KeyValueStorage::Impl::getValue find",
             "5 KeyValueStorage::GetValue for key:k status=0", "5 add (\"key\":\"k\") to Object",
             "5 write to: error"}));
}

TEST_F(TypedValuesTest, ReadsKeepToTheGroupOfTheStoredValue) {
  struct Case {
    const char* name;
    KvsType value;
    const char* scalars;   // the groups that read it: signed, unsigned, floating, bool, text
    const char* elements;  // and as a vector
  };
  const std::vector<Case> cases = {
      {"signed", KvsType(short{5}), "s", "s"},
      {"unsigned", KvsType(5UL), "u", "u"},
      {"float", KvsType(5.5F), "f", "f"},
      {"double", KvsType(5.5), "f", "f"},
      {"bool", KvsType(true), "b", "b"},
      {"text", KvsType("55"), "ty", "t"},
      {"bytes", Binary(), "", "t"},
      {"array", SaveArray(std::vector<int>{1, 2}), "s", "s"},
      {"container", Container({KvsType(short{5}), KvsType(6L)}), "", "s"},
      {"mixed container", Container({KvsType(short{5}), KvsType("6")}), "", ""},
      {"empty container", KvsType(), "", "sufbt"},
      {"missing", KvsType(5), "", "sufbt"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    database_.SetValue("k", c.value);
    if (std::string(c.name) == "missing") {
      database_.RemoveKey("k");
    }
    std::string scalars;
    scalars += Fits<signed char>(77) && Fits<short>(77) && Fits(77) && Fits(77L) ? "s" : "";
    scalars += Fits<unsigned char>(77) && Fits<unsigned short>(77) && Fits(77U) ? "u" : "";
    scalars += Fits(77.0F) && Fits(77.0) ? "f" : "";
    scalars += Fits(true) ? "b" : "";
    scalars += Fits<std::string>("before") ? "t" : "";
    scalars += Fits<Bytes>({77}) ? "y" : "";
    EXPECT_EQ(scalars, c.scalars);
    std::string elements;
    elements += ElementsFit<signed char>(77) && ElementsFit(77) && ElementsFit(77L) ? "s" : "";
    elements += ElementsFit<unsigned short>(77) && ElementsFit(77U) && ElementsFit(77UL) ? "u" : "";
    elements += ElementsFit(77.0F) && ElementsFit(77.0) ? "f" : "";
    elements += ElementsFit(true) ? "b" : "";
    elements += ElementsFit<std::string>("before") ? "t" : "";
    EXPECT_EQ(elements, c.elements);
  }
}

TEST_F(TypedValuesTest, WrongTypeIsLoggedWithTheTextOfTheException) {
  KvsType text("5");
  text.SetKey("k");
  std::string what;
  try {
    text.GetSInt64();
  } catch (const LogicErrorException& error) {
    what = error.what();
  }
  ASSERT_NE(what, "");
  database_.SetValue("k", text);
  int value = 7;
  log_.Clear();
  EXPECT_EQ(database_.GetValue("k", value), Status::kGeneralError);
  EXPECT_EQ(TakeLines(kTypesFile),
            (Lines{"5 GetInt32Value for key:k status=0", "5 error:" + what + " "}));
}

TEST_F(TypedValuesTest, IntegersKeepTheirLowBits) {
  EXPECT_EQ(ReadAs<signed char>(KvsType(300)), 44);
  EXPECT_EQ(ReadAs<short>(KvsType(-70000)), -4464);
  EXPECT_EQ(ReadAs<int>(KvsType(8589934597L)), 5);
  EXPECT_EQ(ReadAs<long>(KvsType(static_cast<signed char>(-1))), -1);
  EXPECT_EQ(ReadAs<unsigned char>(KvsType(300U)), 44);
  EXPECT_EQ(ReadAs<unsigned short>(KvsType(65541UL)), 5);
  EXPECT_EQ(ReadAs<unsigned int>(KvsType(8589934597UL)), 5U);
  EXPECT_EQ(ReadAs<float>(KvsType(0.1)), 0.1F);
  EXPECT_EQ(ReadAs<double>(KvsType(0.5F)), 0.5);
  EXPECT_THAT(ReadAs<std::vector<signed char>>(SaveArray(std::vector<int>{300, -129})),
              ElementsAre(44, 127));
  EXPECT_THAT(ReadAs<std::vector<unsigned short>>(SaveArray(std::vector<unsigned long>{65541, 2})),
              ElementsAre(5, 2));
  EXPECT_THAT(ReadAs<std::vector<float>>(SaveArray(std::vector<double>{0.1})), ElementsAre(0.1F));
  EXPECT_THAT(ReadAs<std::vector<int>>(Container({KvsType(300), KvsType(8589934597L)})),
              ElementsAre(300, 5));
}

TEST_F(TypedValuesTest, StoredStatusIsTheResultAndKeepsTheVariable) {
  for (const auto& [number, expected] : std::vector<std::pair<int, int>>{{1, 1}, {2, 2}, {9, 3}}) {
    SCOPED_TRACE(number);
    const auto status = static_cast<Status>(expected);
    KvsType stored("0aff");
    stored.SetStatus(static_cast<KvsType::Status>(number));
    database_.SetValue("k", stored);
    log_.Clear();
    std::string text = "before";
    std::vector<std::string> texts = {"before"};
    Bytes bytes = {7};
    KvsType copy;
    EXPECT_EQ(database_.GetValue("k", text), status);
    EXPECT_EQ(database_.GetValue("k", texts), status);
    EXPECT_EQ(database_.GetValue("k", bytes), status);
    EXPECT_EQ(database_.GetValue("k", copy), status);
    const std::string suffix = " for key:k status=" + std::to_string(number) + "|";
    EXPECT_EQ(TakeLines(kTypesFile),
              DebugLines("GetStringValue" + suffix + "GetValue String end.|" +
                         "Getvector<std::string>Value" + suffix + "GetValue vector <string> end.|" +
                         "Getvector<byte_t>Value" + suffix + "KeyValueStorage::GetValue" + suffix));
    EXPECT_EQ(text, "before");
    EXPECT_THAT(texts, ElementsAre("before"));
    EXPECT_EQ(bytes, Bytes{7});
    EXPECT_EQ(copy.GetString(), "0aff");  // written all the same
    EXPECT_EQ(copy.GetStatus(), KvsType::Status::kSuccess);
  }
}

TEST_F(TypedValuesTest, BytesComeFromPairsOfDigits) {
  const Bytes before = {7, 7, 7};
  struct Case {
    const char* text;
    Status status;
    Bytes bytes;
  };
  const std::vector<Case> cases = {
      {"0AfF", Status::kSuccess, {0x0a, 0xff}},
      {"", Status::kSuccess, {}},
      {"zz", Status::kSuccess, {0}},
      {"12zz34", Status::kSuccess, {0x12, 0, 0x34}},
      {"1g", Status::kSuccess, {1}},
      {" 7-1", Status::kSuccess, {7, 0xff}},
      {"a", Status::kGeneralError, before},
      {"0afF0", Status::kGeneralError, before},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    database_.SetValue<std::string>("k", c.text);
    Bytes bytes = before;
    EXPECT_EQ(database_.GetValue("k", bytes), c.status);
    EXPECT_EQ(bytes, c.bytes);
  }
}

template <class T>
std::size_t SizeReadBack(const KeyValueStorage& database) {
  std::vector<T> read(3);
  EXPECT_EQ(database.GetValue("k", read), Status::kSuccess);
  return read.size();
}

TEST_F(TypedValuesTest, MultipleOf256NumbersOrFlagsReadsAsEmptyAndPrintsZeros) {
  std::string zeros;
  for (int i = 0; i < 256; ++i) {
    zeros += "0\n";
  }
  struct Case {
    std::size_t size;
    std::size_t read;
    std::string printed;
  };
  for (const Case& c : {Case{255, 255, ""}, Case{256, 0, zeros}, Case{512, 0, zeros + zeros}}) {
    SCOPED_TRACE(c.size);
    database_.SetValue("k", SaveArray(std::vector<unsigned short>(c.size)));
    out_.Take();
    EXPECT_EQ(SizeReadBack<unsigned long>(database_), c.read);
    database_.SetValue("k", SaveArray(std::vector<bool>(c.size)));
    out_.Take();
    EXPECT_EQ(SizeReadBack<bool>(database_), c.read);
    EXPECT_EQ(out_.Take(), c.printed);
    database_.SetValue("k", SaveArray(std::vector<double>(c.size)));
    out_.Take();
    EXPECT_EQ(SizeReadBack<double>(database_), c.read);
    EXPECT_EQ(out_.Take(), c.printed);
    database_.SetValue("k", std::vector<std::string>(c.size));
    EXPECT_EQ(SizeReadBack<std::string>(database_), c.size);
    EXPECT_EQ(out_.Take(), "");
  }
}

TEST_F(TypedValuesTest, SaveArrayOfAnEmptyVectorThrowsAPlainException) {
  try {
    SaveArray(std::vector<bool>());
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& error) {
    EXPECT_EQ(typeid(error), typeid(std::exception));
  }
  EXPECT_EQ(out_.Take(), "");
}

TEST_F(TypedValuesTest, KvsTypeIsCopiedThroughTheTextWithItsLosses) {
  struct Case {
    const char* name;
    KvsType value;
    const char* text;  // of the copy; null: a default value with kGeneralError
  };
  const std::vector<Case> cases = {
      {"cut number", KvsType(4294967301L), R"("type":"sint64","value":5)"},
      {"cut decimals", KvsType(0.12345678), R"("type":"double","value":0.123457)"},
      {"text with a quote", KvsType("a\"b"), nullptr},
      {"bytes", Binary(), nullptr},
      {"container of bytes", Container({KvsType(1), Binary()}), nullptr},
      {"container", Container({KvsType(static_cast<signed char>(5)), KvsType(true)}),
       R"("type":"object","value":[{"key":"a","type":"uint64","value":5},)"
       R"({"key":"b","type":"uint64","value":1}])"},
      {"256 elements", SaveArray(std::vector<int>(256)), R"("type":"sint32","value":[])"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    auto copy = ReadAs<KvsType>(c.value);
    if (c.text == nullptr) {
      EXPECT_EQ(copy.GetType(), KvsType::Type::kObject);
      EXPECT_EQ(copy.GetStatus(), KvsType::Status::kGeneralError);
    } else {
      EXPECT_EQ(copy.SerializeKvsData(), std::string(R"([{"key":"k",)") + c.text + "}]");
      EXPECT_EQ(copy.GetStatus(), KvsType::Status::kSuccess);
    }
  }
  KvsType copy(5);
  EXPECT_EQ(database_.GetValue("missing", copy), Status::kSuccess);
  EXPECT_EQ(copy.SerializeKvsData(), R"([{"key":"","type":"object","value":[]}])");
}

}  // namespace
}  // namespace ara::per::testing
