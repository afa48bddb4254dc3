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

static std::array<unsigned char, 4> someBytes = {0xAB, 0x05, 0x00, 0xFF};

static KvsType Bytes() { return KvsType(someBytes.data(), someBytes.size()); }

/// The message of the refusal, with "#" for the source line.
template <class Operation>
std::string Refusal(Operation&& operation) {
  static const std::regex line(" : [0-9]+ : ");
  return std::regex_replace(Thrown<LogicErrorException>(operation), line, " : # : ");
}

static std::string CastMessage(const std::string& getter, const std::string& typeAndStatus) {
  return "key-value-storage/kvs_type_impl.cpp : # : " + getter +
         "() :  key: speed :  type = " + typeAndStatus + " incorrect cast requested.";
}

/// What the getters give that do not refuse; checks the messages of the others.
static std::string Reads(const KvsType& value, const std::string& typeAndStatus) {
  std::string reads;
  const auto read = [&](const std::string& getter, const std::function<std::string()>& get) {
    const std::string refusal = Refusal([&] { reads += getter + "=" + get() + " "; });
    EXPECT_TRUE(refusal == "no exception" || refusal == CastMessage(getter, typeAndStatus));
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
  int number = 0;
  const auto expect = [&](KvsType value, const std::string& name, const std::string& reads) {
    static const std::string states[] = {
        "Status::kSuccess", "Status::kNotFound", "Status::kCheckSumError",
        "Status::kGeneralError:", "Unknown state, should not happen!"};
    SCOPED_TRACE(name);
    EXPECT_EQ(static_cast<int>(value.GetType()), ++number);
    EXPECT_EQ(InternalAccess().getKvsTypeFromString(value, name), value.GetType());
    value.SetKey("speed");
    value.SetStatus(static_cast<KvsType::Status>(number % 5));
    EXPECT_EQ(Reads(value, name + " : status = " + states[number % 5]), reads);
    EXPECT_EQ(value.IsSignedInteger(), reads.rfind("GetInt", 0) == 0);
    EXPECT_EQ(value.IsUnsignedInteger(), reads.rfind("GetUInt", 0) == 0);
  };
  expect(KvsType(1.5F), "float", "GetFloat=1.500000 GetDouble=1.500000 ");
  expect(KvsType(16777217.0), "double", "GetFloat=16777216.000000 GetDouble=16777217.000000 ");
  expect(KvsType(static_cast<signed char>(-128)), "sint8", "GetInt=-128 GetInt64=-128 ");
  expect(KvsType(static_cast<short>(-32768)), "sint16", "GetInt=-32768 GetInt64=-32768 ");
  expect(KvsType(-2147483647), "sint32", "GetInt=-2147483647 GetInt64=-2147483647 ");
  expect(KvsType(4294967295L), "sint64", "GetInt=-1 GetInt64=4294967295 ");
  expect(KvsType(static_cast<unsigned char>(255)), "uint8", "GetUInt=255 GetUInt64=255 ");
  expect(KvsType(static_cast<unsigned short>(65535)), "uint16", "GetUInt=65535 GetUInt64=65535 ");
  expect(KvsType(4294967295U), "uint32", "GetUInt=4294967295 GetUInt64=4294967295 ");
  expect(KvsType(4294967296UL), "uint64", "GetUInt=0 GetUInt64=4294967296 ");
  expect(KvsType("true"), "string", "GetString=true ");
  expect(Bytes(), "binary", "");
  expect(KvsType(true), "bool", "GetBool=true ");
  expect(KvsType(), "object", "");
}

TEST(KvsTypeTest, BinaryIsHexadecimalTextAndReadInItsExactSize) {
  std::array<unsigned char, 4> target{};
  KvsType value = Bytes();
  value.SetKey("speed");
  const auto refuse = [&](void* data, std::size_t len, const std::string& logged,
                          const std::string& suffix) {
    LogCapture log;
    EXPECT_EQ(Refusal([&] { value.GetBinary(data, len); }),
              CastMessage("GetBinary", "binary : status = Status::kSuccess") + suffix);
    EXPECT_EQ(log.Joined(), logged);
  };
  refuse(nullptr, 0, "5 data == nullptr", " target ptr is a nullptr");
  refuse(target.data(), 0, "5 len == 0", " requested size is 0");
  refuse(target.data(), (1UL << 63U) + 4,
         "5 string_value_.length() is 8 / 5 (2 * len) != string_value_.length()",
         " stored length and requested length do not match");
  value.GetBinary(target.data(), 4);
  EXPECT_EQ(target, someBytes);
}

TEST(KvsTypeTest, ContainerTakesItemsWholeAndPlainValueKeepsThemByTheirGroupWithoutWidth) {
  const auto expect = [](KvsType value, const KvsType& item, const std::string& text,
                         const std::string& logged, const std::string& refusal = "no exception") {
    LogCapture log;
    EXPECT_EQ(Refusal([&] { value.AddArrayItem(item); }), refusal);
    EXPECT_EQ(log.Joined(), "5 addArrayItem type=" + logged);
    EXPECT_EQ(Refusal([&] { item.GetType(); }) == "no exception", text[1] != 'o');  // moved from
    EXPECT_EQ(ValueText(value), text);
  };
  expect(KvsType(), Bytes(), ":object=[:binary='ab0500ff']", "14");
  expect(KvsType(5), KvsType(3L), ":sint32=[5,3]", "5 / 5 addArrayItem type is int");
  expect(KvsType(1UL), KvsType(3U), ":uint64=[1u,3u]", "10 / 5 addArrayItem type is uint");
  expect(KvsType(1.5F), KvsType(0.25), ":float=[1.500000,0.250000]", "1 / 5 type=2");
  expect(KvsType("a"), KvsType("b"), ":string=['a','b']", "11 / 5 type=11 / 5 type=11");
  expect(KvsType(true), KvsType(false), ":bool=[true,false]", "13");
  expect(KvsType("a"), KvsType(), ":string=['a']", "11",
         "void KvsType::Impl::AddArrayItem(const KvsType& kvs): not supported type");
  EXPECT_THROW(KvsType(5).AddArrayItem(KvsType(5U)), std::logic_error);
}

TEST(KvsTypeTest, CopiesAreDeepAndCarryEverythingAsNineLinesTell) {
  KvsType source(static_cast<unsigned char>(1));
  source.SetKey("speed");
  source.SetStatus(KvsType::Status::kCheckSumError);
  source.AddArrayItem(KvsType(2U));
  InternalAccess().SetChecksum(source, 4294967295U);
  InternalAccess().SetDocumentation(source, "100%d");
  const KvsType copy(source);
  KvsType assigned(3.5);
  assigned = copy;
  source.AddArrayItem(KvsType(3U));
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
