#include "ara/per/kvs_type.h"

#include <array>
#include <regex>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "ara/per/internal_access.h"
#include "ara/per/logic_error_exception.h"
#include "tests/support/log_capture.h"
#include "tests/support/thrown.h"
#include "tests/support/value_text.h"

namespace ara::per::testing {

using Store = KvsTypeInternalType;

/// What a store throws, with "~" for what all its refusals say.
template <class Operation>
std::string Error(Operation&& operation) {
  static const std::regex common("KvsTypeInternalType::| Internal type is not");
  return std::regex_replace(Thrown<std::logic_error>(operation), common, "~");
}

TEST(KvsTypeInternalTypeTest, ItemsOfOtherKindsAreRefusedWithoutAnyEffectAndGoodOnesTaken) {
  const KvsType item("text");
  Store text(std::string("x"));
  Store store(1L);
  store.Add(2L);
  EXPECT_EQ(store.getNext(), 1U);
  EXPECT_EQ(Error([&] { store.Add(1.5); }), "~Add(bool)()~ a double");
  EXPECT_EQ(Error([&] { text.Add(1L); }), "~Add(int64_t)()~ an int");
  EXPECT_EQ(Error([&] { store.Add(1UL); }), "~Add(uint64_t)()~ an u-int");
  EXPECT_EQ(Error([&] { store.Add(true); }), "~Add(bool)()~ a bool");
  EXPECT_EQ(Error([&] { store.Add(std::string("x")); }), "~Add(string)()~ a string");
  EXPECT_EQ(Error([&] { store.Add(item); }), "~Add(const KvsType& aKvsObj~ an object");
  EXPECT_EQ(Error([&] { store.GetDoubleNext(); }), "~GetDoubleNext()~ a double");
  EXPECT_EQ(Error([&] { text.GetIntNext(); }), "~GetIntNext()~ an integer");
  EXPECT_EQ(Error([&] { store.GetUintNext(); }), "~GetUintNext()~ an uint");
  EXPECT_EQ(Error([&] { text.GetBoolNext(); }), "~GetUint()~ a boolean");
  EXPECT_EQ(Error([&] { store.GetStringNext(); }), "-1");
  EXPECT_EQ(store.GetKvsTypeNext().GetSInt64(), 2);
  Store objects;
  EXPECT_EQ(Error([&] { objects.GetKvsTypeNext(); }), "getKvsTypeNext() wrong type asked");
  objects.Add(item);
  EXPECT_THROW(item.GetString(), LogicErrorException);
  EXPECT_EQ(objects.GetKvsTypeNext().GetString(), "text");
  EXPECT_EQ(objects.GetKvsType().GetString(), "text");  // the list keeps it
}

TEST(KvsTypeInternalTypeTest, PassesEndWithOneAndAddingAndResettingRewindAndCopiesGoOn) {
  KvsType objects;
  objects.AddArrayItem(KvsType(1));
  for (KvsType value : {KvsType(1.5), KvsType("x"), objects}) {
    value.AddArrayItem(value.GetNextArrayItem());
    value.GetNextArrayItem();
    value.GetNextArrayItem();
    value.ResetArrayItemGetter();
    value.GetNextArrayItem();
    std::array<KvsType, 2> copies{value, KvsType()};
    copies[1] = value;
    value = KvsType();
    for (KvsType& copy : copies) {
      copy.GetNextArrayItem();
      EXPECT_EQ(Error([&] { copy.GetNextArrayItem(); }), "1");
      copy.GetNextArrayItem();
      EXPECT_EQ(copy.GetNumberOfArrayItems(), 2U);
    }
  }
}

TEST(KvsTypeInternalTypeTest, ScalarsInMultiplesOf256CountAsNoneAndReadersReinterpretBits) {
  Store store;
  for (int count = 1; count <= 512; ++count) {
    store.Add(1.0);
    EXPECT_EQ(Error([&] { store.GetDoubleNext(); }), count % 256 == 0 ? "0" : "no exception");
  }
  EXPECT_TRUE(store.GetInt() == 0x3FF0000000000000 && !store.GetBool());  // its low byte is 0
}

static std::array<unsigned char, 4> someBytes = {0xAB, 0x05, 0x00, 0xFF};

/// What the value "speed" refuses a getter with: the getter's name, its own type and status, and
/// what follows.
template <class Operation>
std::string Refusal(Operation&& operation) {
  static const std::regex message(
      "^key-value-storage/kvs_type_impl.cpp : \\d+ : (\\w+)\\(\\) :  key: speed :  type = (\\w+) : "
      "status = (.*) incorrect cast requested\\.");
  return std::regex_replace(Thrown<LogicErrorException>(operation), message, "$1 $2 $3");
}

/// What the getters give that do not refuse; checks the messages of the others.
static std::string Reads(const KvsType& value, const std::string& typeAndStatus) {
  std::string reads;
  const auto read = [&](const std::string& getter, auto get) {
    const std::string refusal =
        Refusal([&] { reads += " " + getter + "=" + ::testing::PrintToString((value.*get)()); });
    EXPECT_TRUE(refusal == "no exception" || refusal == getter + " " + typeAndStatus) << refusal;
  };
  read("GetBool", &KvsType::GetBool);
  read("GetInt", &KvsType::GetSInt);
  read("GetInt64", &KvsType::GetSInt64);
  read("GetUInt", &KvsType::GetUInt);
  read("GetUInt64", &KvsType::GetUInt64);
  read("GetFloat", &KvsType::GetFloat);
  read("GetDouble", &KvsType::GetDouble);
  read("GetString", &KvsType::GetString);
  return reads + (value.IsSignedInteger() ? " signed" : "") +
         (value.IsUnsignedInteger() ? " unsigned" : "");
}

TEST(KvsTypeTest, EachTypeIsReadByTheGettersOfItsGroupAlone) {
  const std::string states[] = {"Status::kSuccess", "Status::kNotFound", "Status::kCheckSumError",
                                "Status::kGeneralError:", "Unknown state, should not happen!"};
  std::string texts;
  for (KvsType value :
       {KvsType(1.5F), KvsType(2.5), KvsType(static_cast<signed char>(-128)),
        KvsType(static_cast<short>(-32768)), KvsType(-2147483647), KvsType(4294967295),
        KvsType(static_cast<unsigned char>(255)), KvsType(static_cast<unsigned short>(65535)),
        KvsType(4294967295U), KvsType(4294967296UL), KvsType("true"), KvsType(someBytes.data(), 4),
        KvsType(true), KvsType()}) {
    const int number = static_cast<int>(value.GetType());
    const std::string name = InternalAccess().getKvsTypeAsString(value, value.GetType());
    value.SetKey("speed");
    value.SetStatus(static_cast<KvsType::Status>(number % 5));
    texts +=
        std::to_string(number) + " " + name + Reads(value, name + " " + states[number % 5]) + "\n";
  }
  EXPECT_EQ(texts,
            "1 float GetFloat=1.5 GetDouble=1.5\n2 double GetFloat=2.5 GetDouble=2.5\n3 sint8 "
            "GetInt=-128 GetInt64=-128 signed\n4 sint16 GetInt=-32768 GetInt64=-32768 signed\n"
            "5 sint32 GetInt=-2147483647 GetInt64=-2147483647 signed\n6 sint64 GetInt=-1 "
            "GetInt64=4294967295 signed\n7 uint8 GetUInt=255 GetUInt64=255 unsigned\n8 uint16 "
            "GetUInt=65535 GetUInt64=65535 unsigned\n9 uint32 GetUInt=4294967295 GetUInt64="
            "4294967295 unsigned\n10 uint64 GetUInt=0 GetUInt64=4294967296 unsigned\n11 string "
            "GetString=\"true\"\n12 binary\n13 bool GetBool=true\n14 object\n");
}

TEST(KvsTypeTest, BinaryIsHexadecimalTextAndReadInItsExactSize) {
  std::array<unsigned char, 4> target{};
  KvsType value(someBytes.data(), 4);
  value.SetKey("speed");
  EXPECT_EQ(ValueText(KvsType(nullptr, 4)), ":binary=''");
  LogCapture log;
  const auto refuse = [&](void* data, std::size_t len, const std::string& suffix) {
    EXPECT_EQ(Refusal([&] { value.GetBinary(data, len); }),
              "GetBinary binary Status::kSuccess" + suffix);
  };
  refuse(nullptr, 0, " target ptr is a nullptr");
  refuse(target.data(), 0, " requested size is 0");
  refuse(target.data(), (1UL << 63U) + 4, " stored length and requested length do not match");
  value.GetBinary(target.data(), 4);
  EXPECT_EQ(target, someBytes);
  EXPECT_EQ(log.Joined(),
            "5 data == nullptr / 5 len == 0 / 5 string_value_.length() is 8 / "
            "5 (2 * len) != string_value_.length() / 5 string_value_.length() is 8");
}

TEST(KvsTypeTest, ContainerTakesItemsWholeAndPlainValueKeepsThemByTheirGroupWithoutWidth) {
  const KvsType bytes(someBytes.data(), 4);
  std::string texts;
  const auto add = [&](KvsType value, const KvsType& item) {
    LogCapture log;
    texts += Refusal([&] { value.AddArrayItem(item); });
    texts += " / " + log.Joined();
    texts += " / " + ValueText(value) + "\n";
  };
  add(KvsType(), bytes);
  add(KvsType(5), KvsType(3L));
  add(KvsType(1UL), KvsType(3U));
  add(KvsType(1.5F), KvsType(0.25));
  add(KvsType("a"), KvsType("b"));
  add(KvsType(true), KvsType(false));
  add(KvsType("a"), KvsType());
  EXPECT_EQ(
      texts,
      "no exception / 5 addArrayItem type=14 / :object=[:binary='ab0500ff']\n"
      "no exception / 5 addArrayItem type=5 / 5 addArrayItem type is int / :sint32=[5,3]\n"
      "no exception / 5 addArrayItem type=10 / 5 addArrayItem type is uint / :uint64=[1u,3u]\n"
      "no exception / 5 addArrayItem type=1 / 5 type=2 / :float=[1.500000,0.250000]\n"
      "no exception / 5 addArrayItem type=11 / 5 type=11 / 5 type=11 / :string=['a','b']\n"
      "no exception / 5 addArrayItem type=13 / :bool=[true,false]\n"
      "void KvsType::Impl::AddArrayItem(const KvsType& kvs): not supported type / "
      "5 addArrayItem type=11 / :string=['a']\n");
  EXPECT_THROW(bytes.GetType(), LogicErrorException);  // moved from
}

TEST(KvsTypeTest, CopiesCarryEverythingAsNineLinesTell) {
  KvsType source(static_cast<unsigned char>(1));
  source.SetKey("speed");
  source.SetStatus(KvsType::Status::kCheckSumError);
  source.AddArrayItem(KvsType(2U));
  InternalAccess().SetChecksum(source, 4294967295U);
  InternalAccess().SetDocumentation(source, "100%d");
  const KvsType copy(source);
  KvsType assigned(3.5);
  assigned = copy;
  LogCapture log;
  assigned.LogState();
  EXPECT_EQ(log.Joined(),
            "5 ========== KVS Object ========== / 5 m_key:speed / 5 m_checksum:-1 / 5 m_status:2 / "
            "5 m_internal_type:uint8 / 5 m_documentation:100%d / 5 objects:2 / "
            "5 internal_value_.GetSize():2 / 5 ========== end of object ==========");
  EXPECT_EQ(KvsType(std::move(source)).GetUInt(), 1U);
  EXPECT_THROW((assigned = source).GetUInt(), LogicErrorException);  // copied but not asked
}

}  // namespace ara::per::testing
