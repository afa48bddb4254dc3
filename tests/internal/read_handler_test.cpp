#include <list>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "ara/per/internal_access.h"
#include "ara/per/json_parser.h"
#include "ara/per/json_read_handler.h"
#include "ara/per/physical_storage_error_exception.h"
#include "tests/support/thrown.h"
#include "tests/support/value_text.h"

namespace ara::per::testing {

class ReadHandlerTest : public ::testing::Test {
 protected:
  /// Opens an item as a file's item begins.
  bool Begin(const std::string& key, const std::string& typeName) {
    return handler_.StartObject() && handler_.Key("key") && handler_.String(key.c_str()) &&
           handler_.setValueType(typeName, type_);
  }

  JsonParser parser_{""};
  std::list<std::unique_ptr<KvsType>> items_;
  JsonReadHandler handler_{parser_, items_};
  KvsType::Type type_ = KvsType::Type::kObject;
};

TEST_F(ReadHandlerTest, EventsNeedAnItemWhichLandsInTheListWhenItEnds) {
  EXPECT_FALSE(handler_.Int(1) || handler_.String("x") || handler_.Null());
  EXPECT_EQ(Thrown<PhysicalStorageErrorException>([this] { handler_.EndObject(); }),
            "Should never get here");
  EXPECT_TRUE(Begin("b", "binary") && handler_.setParseAsArray(true) && handler_.String("ab"));
  EXPECT_TRUE(handler_.Key("documentation") && handler_.Key("type") && handler_.String("doc"));
  EXPECT_TRUE(handler_.String("c") && handler_.Key("checksum") && handler_.String("d"));
  EXPECT_TRUE(handler_.setCheckSum(77) && handler_.EndObject());
  EXPECT_TRUE(Begin("a", "sint8") && handler_.Int(-1) && handler_.Int64(4294967296));
  EXPECT_TRUE(handler_.Null() && handler_.String("dropped"));
  EXPECT_TRUE(handler_.Key("key") && handler_.EndObject());  // the name survives it
  EXPECT_TRUE(handler_.StartObject() && handler_.String("z") && handler_.EndObject());
  EXPECT_EQ(ValueTexts(items_), "b:binary=['ab','c','d'] a:sint8=-1,4294967296 z:object=");
  EXPECT_EQ(InternalAccess().GetDocumentation(*items_.front()), "doc");
  EXPECT_EQ(InternalAccess().GetChecksum(*items_.front()), 77U);
}

TEST_F(ReadHandlerTest, ChildrenGoIntoTheirParentsAndValueObjectsHaveTypeNames) {
  Begin("parent", "object");
  for (const char* const key : {"first", "second"}) {
    EXPECT_TRUE(handler_.StartObject() && Begin(key, "object"));  // in a value object
    EXPECT_TRUE(handler_.StartObject() && Begin("inner", "object") && handler_.StartObject());
    EXPECT_TRUE(handler_.Key("[]string") && handler_.String(key) && handler_.EndObject());
    EXPECT_TRUE(handler_.EndObject() && handler_.EndObject() && handler_.EndObject());
    EXPECT_TRUE(handler_.EndObject() && items_.empty());
  }
  EXPECT_TRUE(handler_.EndObject());
  EXPECT_EQ(ValueTexts(items_),
            "parent:object=first:object=inner:string=['first'],"
            "second:object=inner:string=['second']");
}

}  // namespace ara::per::testing
