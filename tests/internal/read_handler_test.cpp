#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "ara/per/internal_access.h"
#include "ara/per/json_parser.h"
#include "ara/per/json_read_handler.h"
#include "ara/per/physical_storage_error_exception.h"
#include "tests/support/thrown.h"
#include "tests/support/value_text.h"

namespace ara::per::testing {
namespace {

class ReadHandlerTest : public ::testing::Test {
 protected:
  /// Opens an item as a file's item begins.
  void Begin(const std::string& key, const std::string& typeName) {
    EXPECT_TRUE(handler_.StartObject());
    EXPECT_TRUE(handler_.Key("key"));
    EXPECT_TRUE(handler_.String(key.c_str()));
    EXPECT_TRUE(handler_.setValueType(typeName, type_));
  }

  std::string Items() const { return ValueTexts(items_); }

  std::string EndError() {
    return Thrown<PhysicalStorageErrorException>([this] { handler_.EndObject(); });
  }

  JsonParser parser_{""};
  std::list<std::unique_ptr<KvsType>> items_;
  JsonReadHandler handler_{parser_, items_};
  InternalAccess access_;
  KvsType::Type type_ = KvsType::Type::kObject;
};

TEST_F(ReadHandlerTest, ItemsLandInTheListInTheOrderOfTheirEnd) {
  EXPECT_EQ(EndError(), "Should never get here");
  Begin("a", "sint32");
  EXPECT_EQ(type_, KvsType::Type::kSInt32);
  EXPECT_TRUE(handler_.EndObject());
  Begin("b", "nonsense");
  EXPECT_EQ(type_, KvsType::Type::kNotSupported);
  EXPECT_EQ(Items(), "a:sint32=");
  EXPECT_TRUE(handler_.EndObject());
  EXPECT_EQ(EndError(), "Should never get here");
  Begin("never ended", "bool");
  EXPECT_EQ(Items(), "a:sint32= b:getKvsTypeAsString_not_found=");
}

TEST_F(ReadHandlerTest, ValueEventsWidenAndNeedAnItem) {
  KvsType object("x");
  EXPECT_FALSE(handler_.Bool(true) || handler_.Int(1) || handler_.Uint(1) || handler_.Int64(1) ||
               handler_.Uint64(1) || handler_.Double(1) || handler_.String("x") ||
               handler_.KObject(object) || handler_.Null());
  Begin("a", "sint8");
  EXPECT_TRUE(handler_.Int(-1) && handler_.Int64(4294967296) && handler_.Null());
  EXPECT_TRUE(handler_.String("dropped") && handler_.EndObject());
  Begin("b", "uint8");
  EXPECT_TRUE(handler_.Uint(~0U) && handler_.Uint64(0) && handler_.EndObject());
  Begin("c", "float");
  EXPECT_TRUE(handler_.setParseAsArray(true) && handler_.Double(0.5) && handler_.EndObject());
  Begin("d", "binary");
  EXPECT_TRUE(handler_.String("ab") && handler_.EndObject());
  Begin("e", "object");
  EXPECT_TRUE(handler_.KObject(object) && handler_.EndObject());
  EXPECT_EQ(Items(),
            "a:sint8=-1,4294967296 b:uint8=4294967295u,0u c:float=[0.500000] d:binary='ab' "
            "e:object=:string='x'");
}

TEST_F(ReadHandlerTest, MemberNamesDecideWhatATextIs) {
  handler_.StartObject();
  handler_.setValueType("string", type_);
  for (const char* const name : {"documentation", "type", "value"}) {
    EXPECT_TRUE(handler_.Key(name));  // the last two leave what the first has set
  }
  handler_.String("doc");
  handler_.Key("checksum");
  handler_.Uint(5);  // value events do not look at the name
  EXPECT_THROW(handler_.String("of another kind"), std::logic_error);
  handler_.Key("key");
  handler_.String("k");
  handler_.Key("key");
  handler_.Key("version");
  EXPECT_THROW(handler_.String("a value again"), std::logic_error);
  EXPECT_TRUE(handler_.setCheckSum(77));
  handler_.Key("key");  // survives the end of the item
  handler_.EndObject();
  handler_.StartObject();
  handler_.String("late");
  handler_.EndObject();
  EXPECT_EQ(Items(), "k:string=5u late:object=");
  EXPECT_EQ(access_.GetDocumentation(*items_.front()), "doc");
  EXPECT_EQ(access_.GetChecksum(*items_.front()), 77U);
  EXPECT_THROW(handler_.Key(nullptr), std::logic_error);
}

TEST_F(ReadHandlerTest, MemberNamesOfAValueObjectAreTypeNames) {
  const auto expect = [this](const char* name, const std::string& text) {
    handler_.setNewItem();
    EXPECT_TRUE(handler_.Key(name));
    EXPECT_EQ(ValueText(*handler_.getNewItem()), text);
  };
  expect("sint32", ":sint32=");
  expect("sint32[]", ":sint32=[]");
  expect("[]bool", ":bool=[]");
  expect("bool[][]", ":getKvsTypeAsString_not_found=[]");
  expect("key", ":getKvsTypeAsString_not_found=");
}

TEST_F(ReadHandlerTest, ChildrenGoIntoTheirParents) {
  Begin("parent", "object");
  for (const char* const key : {"first", "second"}) {
    handler_.StartObject();  // a value object
    Begin(key, "object");
    handler_.StartObject();
    Begin("inner", "string");
    handler_.String(key);
    for (int i = 0; i < 4; ++i) {
      EXPECT_TRUE(handler_.EndObject());
    }
  }
  EXPECT_EQ(Items(), "");
  EXPECT_TRUE(handler_.EndObject());
  EXPECT_EQ(Items(),
            "parent:object=first:object=inner:string='first',second:object=inner:string='second'");
}

TEST_F(ReadHandlerTest, TakenItemLeavesNothingToEnd) {
  Begin("k", "bool");
  EXPECT_EQ(ValueText(*handler_.getNewItem()), "k:bool=");
  EXPECT_EQ(handler_.getNewItem(), nullptr);
  EXPECT_FALSE(handler_.EndObject() || handler_.EndObject());
  handler_.setNewItem();
  EXPECT_TRUE(handler_.EndObject());  // the value object
  EXPECT_TRUE(handler_.EndObject());
  EXPECT_EQ(Items(), ":object=");
}

TEST_F(ReadHandlerTest, NothingIsComparedOrTakenFromArraysAndRawNumbers) {
  KvsType value(1);
  value.SetStatus(KvsType::Status::kCheckSumError);
  access_.SetChecksum(value, 5);
  handler_.CompareCrcAndUpdateStatus(value);
  EXPECT_EQ(value.GetStatus(), KvsType::Status::kSuccess);
  EXPECT_TRUE(handler_.StartArray() && handler_.EndArray());
  handler_.StartObject();
  EXPECT_FALSE(handler_.RawNumber("1"));
}

}  // namespace
}  // namespace ara::per::testing
