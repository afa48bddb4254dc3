#include <functional>
#include <list>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ara/per/kvs_type_impl_internal_type.h"
#include "ara/per/logic_error_exception.h"
#include "tests/support/thrown.h"

namespace ara::per::testing {
namespace {

using Store = KvsTypeInternalType;
using Kind = Store::Kind;
using Operation = std::function<void(Store&)>;

std::string Error(const Operation& operation, Store& store) {
  return Thrown<std::logic_error>([&] { operation(store); });
}

/// One element of a kind: how it is added and what the matching read must give.
struct KindCase {
  Kind kind;
  Operation add;
  std::string addRefusal;
  Operation read;
  std::string readRefusal;  // empty: reads any kind
};

const std::vector<KindCase>& KindCases() {
  static const std::string begin = "KvsTypeInternalType::";
  static const std::string end = "() Internal type is not ";
  static const std::vector<KindCase> cases = {
      {Kind::kDouble, [](Store& s) { s.Add(1.5); }, begin + "Add(bool)" + end + "a double",
       [](Store& s) { EXPECT_EQ(s.GetDoubleNext(), 1.5); },
       begin + "GetDoubleNext" + end + "a double"},
      {Kind::kInt, [](Store& s) { s.Add(-5L); }, begin + "Add(int64_t)" + end + "an int",
       [](Store& s) { EXPECT_EQ(s.GetIntNext(), -5); }, begin + "GetIntNext" + end + "an integer"},
      {Kind::kUint, [](Store& s) { s.Add(~0UL); }, begin + "Add(uint64_t)" + end + "an u-int",
       [](Store& s) { EXPECT_EQ(s.GetUintNext(), ~0UL); }, begin + "GetUintNext" + end + "an uint"},
      {Kind::kBool, [](Store& s) { s.Add(true); }, begin + "Add(bool)" + end + "a bool",
       [](Store& s) { EXPECT_TRUE(s.GetBoolNext()); }, begin + "GetUint" + end + "a boolean"},
      {Kind::kObject, [](Store& s) { s.Add(KvsType("nested")); },
       begin + "Add(const KvsType& aKvsObj Internal type is not an object",
       [](Store& s) { EXPECT_EQ(s.GetKvsTypeNext().GetString(), "nested"); }, ""},
      {Kind::kString, [](Store& s) { s.Add(std::string("text")); },
       begin + "Add(string)" + end + "a string",
       [](Store& s) { EXPECT_EQ(s.GetStringNext(), "text"); }, "-1"}};
  return cases;
}

Store Ints(long count) {
  Store store;
  for (long i = 1; i <= count; ++i) {
    store.Add(i);
  }
  return store;
}

TEST(KvsTypeInternalTypeTest, FirstAddSettlesTheKindAndOthersAreRefused) {
  for (const KindCase& first : KindCases()) {
    Store store;
    EXPECT_EQ(store.GetType(), Kind::kNone);
    first.add(store);
    for (const KindCase& other : KindCases()) {
      SCOPED_TRACE(first.addRefusal + " / " + other.addRefusal);
      if (other.kind != first.kind) {
        EXPECT_EQ(Error(other.add, store), other.addRefusal);
        if (!other.readRefusal.empty()) {
          EXPECT_EQ(Error(other.read, store), other.readRefusal);
        }
      }
      EXPECT_EQ(store.GetType(), first.kind);
      EXPECT_EQ(store.GetSize(), 1U);
    }
  }
}

TEST(KvsTypeInternalTypeTest, PassEndsWithOneAndBeginsAnewAndCopiesGoOnInTheirOwnElements) {
  for (const KindCase& c : KindCases()) {
    SCOPED_TRACE(c.addRefusal);
    const auto read = [&](Store& store, int times) {
      for (int i = 0; i < times; ++i) {
        c.read(store);
      }
    };
    std::list<Store> copies(1);
    {
      Store store;
      c.add(store);
      c.add(store);
      read(store, 1);
      c.add(store);  // rewinds
      read(store, 2);
      store.resetGetter();
      read(store, 1);
      copies.front() = store;  // in the middle of a pass
      copies.emplace_back(store);
      c.add(store);
    }
    for (Store& copy : copies) {
      EXPECT_EQ(copy.GetSize(), 3U);
      read(copy, 2);
      EXPECT_EQ(Error(c.read, copy), "1");
      read(copy, 3);
      EXPECT_EQ(Error([](Store& s) { s.GetKvsTypeNext(); }, copy), "1");
      read(copy, 3);
    }
  }
}

TEST(KvsTypeInternalTypeTest, FailedAddNeitherRewindsNorTakesTheItemAndAGoodOneTakesIt) {
  Store store = Ints(3);
  EXPECT_EQ(store.getNext(), 1U);
  const KvsType item("text");
  EXPECT_THROW(store.Add(item), std::logic_error);
  EXPECT_EQ(store.GetIntNext(), 2);
  EXPECT_EQ(store.GetKvsTypeNext().GetSInt64(), 3);
  EXPECT_EQ(item.GetString(), "text");
  Store objects;
  objects.Add(item);
  EXPECT_THROW(item.GetString(), LogicErrorException);
  objects.GetKvsTypeNext().SetKey("changes a copy");
  EXPECT_EQ(objects.GetKvsType().GetKey() + objects.GetKvsType().GetString(), "text");
}

TEST(KvsTypeInternalTypeTest, EmptyStoreHasNoNextAndReadsAsZero) {
  Store store;
  EXPECT_EQ(Error([](Store& s) { s.GetKvsTypeNext(); }, store),
            "getKvsTypeNext() wrong type asked");
  EXPECT_EQ(Error([](Store& s) { s.getNext(); }, store), "0");
  EXPECT_FALSE(store.GetBool() || store.GetParsedAsArray());
  EXPECT_EQ(store.GetDouble() + static_cast<double>(store.GetInt()), 0.0);
  EXPECT_EQ(store.GetUint() + store.GetSize(), 0U);
  EXPECT_EQ(store.GetString(), "");
  EXPECT_EQ(store.GetKvsType().GetType(), KvsType::Type::kObject);
}

TEST(KvsTypeInternalTypeTest, ScalarsInMultiplesOf256CountAsNone) {
  for (const long count : {255, 256, 257, 512}) {
    SCOPED_TRACE(count);
    Store store = Ints(count);
    Store texts;
    Store objects;
    for (long i = 1; i <= count; ++i) {
      texts.Add(std::to_string(i));
      objects.Add(KvsType(i));
    }
    const std::string result = count % 256 == 0 ? "0" : "no exception";
    EXPECT_EQ(Error([](Store& s) { s.GetIntNext(); }, store), result);
    EXPECT_EQ(Error([](Store& s) { s.GetKvsTypeNext(); }, store), result);
    EXPECT_EQ(store.GetSize(), static_cast<std::size_t>(count));
    EXPECT_EQ(store.GetInt(), 1);
    EXPECT_EQ(texts.GetStringNext(), "1");
    EXPECT_EQ(objects.GetKvsTypeNext().GetSInt64(), 1);
  }
}

TEST(KvsTypeInternalTypeTest, ScalarReadersReinterpretTheBits) {
  EXPECT_EQ(Store(1.0).GetInt(), 0x3FF0000000000000);
  EXPECT_FALSE(Store(1.0).GetBool());  // the low byte of the bits
  EXPECT_EQ(Store(-1L).GetUint(), 18446744073709551615UL);
  EXPECT_EQ(Store(0x4000000000000000UL).GetDouble(), 2.0);
}

}  // namespace
}  // namespace ara::per::testing
