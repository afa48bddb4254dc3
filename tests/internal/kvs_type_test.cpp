#include "ara/per/kvs_type.h"

#include <array>
#include <functional>
#include <regex>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "ara/per/internal_access.h"
#include "ara/per/logic_error_exception.h"
#include "tests/support/log_capture.h"
#include "tests/support/thrown.h"
#include "tests/support/value_text.h"

namespace ara::per::testing {
namespace {

using Type = KvsType::Type;
using Status = KvsType::Status;

std::array<unsigned char, 4> someBytes = {0xAB, 0x05, 0x00, 0xFF};

KvsType Bytes() { return KvsType(someBytes.data(), someBytes.size()); }

/// The message of the refusal, with "#" for the source line.
template <class Operation>
std::string Refusal(Operation&& operation) {
  static const std::regex line(" : [0-9]+ : ");
  return std::regex_replace(Thrown<LogicErrorException>(operation), line, " : # : ");
}

std::string CastMessage(const std::string& getter, const std::string& type,
                        const std::string& status = "Status::kSuccess") {
  return "key-value-storage/kvs_type_impl.cpp : # : " + getter +
         "() :  key: speed :  type = " + type + " : status = " + status +
         " incorrect cast requested.";
}

/// What the getters give that do not refuse; checks the messages of the others.
std::string Reads(const KvsType& value, const std::string& type) {
  std::string reads;
  const auto read = [&](const std::string& getter, const std::function<std::string()>& get) {
    const std::string refusal = Refusal([&] { reads += getter + "=" + get() + " "; });
    EXPECT_EQ(refusal, reads.find(getter + "=") == std::string::npos ? CastMessage(getter, type)
                                                                     : "no exception");
  };
  read("GetBool", [&] { return value.GetBool() ? "true" : "false"; });
  read("GetInt", [&] { return std::to_string(value.GetSInt()); });
  read("GetInt64", [&] { return std::to_string(value.GetSInt64()); });
  read("GetUInt", [&] { return std::to_string(value.GetUInt()); });
  read("GetUInt64", [&] { return std::to_string(value.GetUInt64()); });
  read("GetFloat", [&] { return std::to_string(value.GetFloat()); });
  read("GetDouble", [&] { return std::to_string(value.GetDouble()); });
  read("GetString", [&] { return value.GetString(); });
  return reads;
}

TEST(KvsTypeTest, EachTypeIsReadByTheGettersOfItsGroupAlone) {
  InternalAccess access;
  const auto expect = [&](KvsType value, int number, const std::string& name,
                          const std::string& reads) {
    SCOPED_TRACE(name);
    value.SetKey("speed");
    EXPECT_EQ(static_cast<int>(value.GetType()), number);
    EXPECT_EQ(Reads(value, name), reads);
    EXPECT_EQ(value.IsSignedInteger(), reads.rfind("GetInt", 0) == 0);
    EXPECT_EQ(value.IsUnsignedInteger(), reads.rfind("GetUInt", 0) == 0);
    EXPECT_EQ(access.getKvsTypeAsString(value, value.GetType()), name);
    EXPECT_EQ(access.getKvsTypeFromString(value, name), value.GetType());
  };
  expect(KvsType(1.5F), 1, "float", "GetFloat=1.500000 GetDouble=1.500000 ");
  expect(KvsType(16777217.0), 2, "double", "GetFloat=16777216.000000 GetDouble=16777217.000000 ");
  expect(KvsType(static_cast<signed char>(-128)), 3, "sint8", "GetInt=-128 GetInt64=-128 ");
  expect(KvsType(static_cast<short>(-32768)), 4, "sint16", "GetInt=-32768 GetInt64=-32768 ");
  expect(KvsType(-2147483647), 5, "sint32", "GetInt=-2147483647 GetInt64=-2147483647 ");
  expect(KvsType(4294967295L), 6, "sint64", "GetInt=-1 GetInt64=4294967295 ");
  expect(KvsType(static_cast<unsigned char>(255)), 7, "uint8", "GetUInt=255 GetUInt64=255 ");
  expect(KvsType(static_cast<unsigned short>(65535)), 8, "uint16",
         "GetUInt=65535 GetUInt64=65535 ");
  expect(KvsType(4294967295U), 9, "uint32", "GetUInt=4294967295 GetUInt64=4294967295 ");
  expect(KvsType(4294967296UL), 10, "uint64", "GetUInt=0 GetUInt64=4294967296 ");
  expect(KvsType(std::string("a\0b", 3)), 11, "string", std::string("GetString=a\0b ", 14));
  expect(KvsType("true"), 11, "string", "GetString=true ");
  expect(Bytes(), 12, "binary", "");
  expect(KvsType(true), 13, "bool", "GetBool=true ");
  expect(KvsType(), 14, "object", "");
  EXPECT_EQ(access.getKvsTypeFromString(KvsType(), "Float"), Type::kNotSupported);
  EXPECT_EQ(access.getKvsTypeAsString(KvsType(), Type::kNotSupported),
            "getKvsTypeAsString_not_found");
  const char* const null = nullptr;
  EXPECT_THROW(KvsType{null}, std::logic_error);
}

TEST(KvsTypeTest, RefusalNamesTheStatus) {
  KvsType value(1);
  value.SetKey("speed");
  int number = 0;
  for (const char* const text : {"Status::kSuccess", "Status::kNotFound", "Status::kCheckSumError",
                                 "Status::kGeneralError:", "Unknown state, should not happen!"}) {
    value.SetStatus(static_cast<Status>(number++));
    EXPECT_EQ(Refusal([&] { value.GetUInt(); }), CastMessage("GetUInt", "sint32", text));
  }
}

TEST(KvsTypeTest, BinaryIsHexadecimalTextAndReadInItsExactSize) {
  std::array<unsigned char, 4> target{};
  const auto refuse = [](KvsType value, void* data, std::size_t len, const std::string& logged,
                         const std::string& suffix) {
    SCOPED_TRACE(logged);
    value.SetKey("speed");
    LogCapture log;
    EXPECT_EQ(
        Refusal([&] { value.GetBinary(data, len); }),
        CastMessage("GetBinary", value.GetType() == Type::kBinary ? "binary" : "string") + suffix);
    EXPECT_EQ(log.Joined(), logged);
  };
  const std::string length = "5 string_value_.length() is 8";
  refuse(KvsType("ab"), nullptr, 0, "5 GetType() != Type::kBinary", "");
  refuse(Bytes(), nullptr, 0, "5 data == nullptr", " target ptr is a nullptr");
  refuse(KvsType(nullptr, 0), target.data(), 0, "5 len == 0", " requested size is 0");
  for (const std::size_t len : {std::size_t{3}, std::size_t{5}, (std::size_t{1} << 63U) + 4}) {
    refuse(Bytes(), target.data(), len, length + " / 5 (2 * len) != string_value_.length()",
           " stored length and requested length do not match");
  }
  KvsType value = Bytes();
  EXPECT_EQ(ValueText(value), ":binary='ab0500ff'");
  LogCapture log;
  value.GetBinary(target.data(), 4);
  EXPECT_EQ(target, someBytes);
  EXPECT_EQ(log.Joined(), length);
  InternalAccess().SetInternalValue(value, KvsTypeInternalType(std::string("ABgh7g 5")));
  value.GetBinary(target.data(), 4);  // each pair as a stream reads it
  EXPECT_EQ(target, (std::array<unsigned char, 4>{0xAB, 0x00, 0x07, 0x05}));
}

TEST(KvsTypeTest, ContainerKeepsItemsWholeAndTakesThem) {
  KvsType container;
  KvsType number(static_cast<short>(-3));
  number.SetKey("n");
  LogCapture log;
  container.AddArrayItem(number);
  container.AddArrayItem(Bytes());
  container.AddArrayItem(KvsType());
  EXPECT_EQ(log.Joined(),
            "5 addArrayItem type=14 / 5 addArrayItem type=14 / 5 addArrayItem type=14");
  EXPECT_EQ(ValueText(container), ":object=[n:sint16=-3,:binary='ab0500ff',:object=]");
  EXPECT_EQ(container.GetNumberOfArrayItems(), 3U);
  EXPECT_EQ(container.GetNextArrayItem().GetKey(), "n");
  container.ResetArrayItemGetter();
  EXPECT_EQ(container.GetNextArrayItem().GetKey(), "n");
  EXPECT_EQ(Refusal([&] { number.GetSInt(); }), "KvsType: the value has been moved from");
}

TEST(KvsTypeTest, PlainValueKeepsItemsBesideItselfByTheirGroupWithoutWidth) {
  const auto expect = [](KvsType value, const KvsType& item, const std::string& text,
                         const std::string& last, const std::string& logged) {
    SCOPED_TRACE(text);
    LogCapture log;
    value.AddArrayItem(item);
    EXPECT_EQ(log.Joined(), logged);
    EXPECT_NO_THROW(item.GetType());  // not moved from
    EXPECT_EQ(ValueText(value), text);
    value.GetNextArrayItem();
    EXPECT_EQ(ValueText(value.GetNextArrayItem()), last);
  };
  expect(KvsType(5), KvsType(4294967296L), ":sint32=[5,4294967296]", ":sint64=4294967296",
         "5 addArrayItem type=5 / 5 addArrayItem type is int");
  expect(KvsType(static_cast<unsigned char>(1)), KvsType(300U), ":uint8=[1u,300u]", ":uint64=300u",
         "5 addArrayItem type=7 / 5 addArrayItem type is uint");
  expect(KvsType(1.5F), KvsType(0.25), ":float=[1.500000,0.250000]", ":double=0.250000",
         "5 addArrayItem type=1 / 5 type=2");
  expect(KvsType("a"), KvsType("b"), ":string=['a','b']", ":string='b'",
         "5 addArrayItem type=11 / 5 type=11 / 5 type=11");
  expect(KvsType(true), KvsType(false), ":bool=[true,false]", ":bool=false",
         "5 addArrayItem type=13");
}

TEST(KvsTypeTest, RefusedItemLeavesTheArrayFlagSet) {
  KvsType unknown(1);
  InternalAccess().SetInternalType(unknown, Type::kNotSupported);
  for (const KvsType& item : {Bytes(), KvsType(), unknown}) {
    KvsType value("text");
    EXPECT_EQ(Refusal([&] { value.AddArrayItem(item); }),
              "void KvsType::Impl::AddArrayItem(const KvsType& kvs): not supported type");
    EXPECT_EQ(ValueText(value), ":string=['text']");
  }
  KvsType number(5);
  EXPECT_THROW(number.AddArrayItem(KvsType(5U)), std::logic_error);
  EXPECT_EQ(ValueText(number), ":sint32=[5]");
}

TEST(KvsTypeTest, CopiesAreDeepAndCarryEverything) {
  InternalAccess access;
  KvsType source;
  source.AddArrayItem(KvsType("a"));
  access.SetChecksum(source, 7);
  access.SetDocumentation(source, "doc");
  source.SetStatus(Status::kNotFound);
  KvsType assigned(3.5);
  assigned = source;
  const KvsType copy(source);
  source.AddArrayItem(KvsType(1));
  access.SetInternalType(source, Type::kBinary);
  for (const KvsType* const value : {&copy, static_cast<const KvsType*>(&assigned)}) {
    EXPECT_EQ(ValueText(*value), ":object=[:string='a']!1");
    EXPECT_EQ(access.GetChecksum(*value), 7U);
    EXPECT_EQ(access.GetDocumentation(*value), "doc");
  }
}

TEST(KvsTypeTest, MovedFromValueMayBeCopiedAndAssignedAndRefusesTheRest) {
  KvsType empty(1);
  const KvsType target(std::move(empty));
  EXPECT_THROW(KvsType(empty).GetType(), LogicErrorException);
  KvsType value(2);
  value = empty;
  EXPECT_THROW(InternalAccess().GetStatus(value), LogicErrorException);
  value = target;  // and is alive again
  KvsType held("replaced");
  held = std::move(value);
  KvsType& same = held;
  held = std::move(same);
  held = same;
  EXPECT_EQ(held.GetSInt(), 1);
}

TEST(KvsTypeTest, LogStateWritesNineLines) {
  KvsType value(static_cast<unsigned char>(1));
  value.SetKey("speed");
  value.SetStatus(Status::kCheckSumError);
  value.AddArrayItem(KvsType(2U));
  InternalAccess().SetChecksum(value, 4294967295U);
  InternalAccess().SetDocumentation(value, "100%d");
  LogCapture log;
  value.LogState();
  EXPECT_EQ(log.Joined(),
            "5 ========== KVS Object ========== / 5 m_key:speed / 5 m_checksum:-1 / 5 m_status:2 / "
            "5 m_internal_type:uint8 / 5 m_documentation:100%d / 5 objects:2 / "
            "5 internal_value_.GetSize():2 / 5 ========== end of object ==========");
}

TEST(InternalAccessTest, ChangesGoThroughAConstValue) {
  InternalAccess access;
  const KvsType value;
  access.SetInternalType(value, Type::kUInt8);
  EXPECT_EQ(value.GetUInt(), 0U);  // a type without content
  access.SetInternalValue(value, KvsTypeInternalType(5UL));
  access.SetKey(value, "k");
  access.SetStatus(value, Status::kGeneralError);
  EXPECT_EQ(ValueText(value), "k:uint8=5u!3");
  access.GetInternalType(value) = Type::kUInt64;
  access.GetKey(value) = access.GetKey(value) + "2";
  access.GetStatus(value) = Status::kSuccess;
  EXPECT_EQ(ValueText(value), "k2:uint64=5u");
}

}  // namespace
}  // namespace ara::per::testing
