#include <functional>
#include <regex>
#include <stdexcept>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "ara/per/kvs_type_impl_internal_type.h"
#include "ara/per/logic_error_exception.h"
#include "tests/support/thrown.h"

namespace ara::per::testing {

using Store = KvsTypeInternalType;

/// What is thrown, with "#" for the name of the class.
template <class Operation>
std::string Error(Operation&& operation) {
  return std::regex_replace(Thrown<std::logic_error>(operation), std::regex("^\\w+::"), "#");
}

/// Adds an element again and again and reads it with the operation of its kind.
/// @param adding, reading  what a store of another kind says
template <class Item, class Element, class Next>
void ExpectKind(Element element, Next next, const char* adding, const char* reading) {
  SCOPED_TRACE(adding);
  const auto add = [&](Store& store) { store.Add(Item(element)); };
  const auto read = [&](Store& store) { EXPECT_EQ(std::invoke(next, store), element); };
  const auto end = [&](Store& store) { return Error([&] { std::invoke(next, store); }); };
  Store other = std::is_same_v<Item, std::string> ? Store(1L) : Store(std::string("x"));
  EXPECT_EQ(Error([&] { add(other); }), adding);
  EXPECT_EQ(end(other), reading);
  Store assigned;
  Store store;
  add(store);
  read(store);
  add(store);  // rewinds
  read(store);
  read(store);
  store.resetGetter();
  read(store);
  assigned = store;  // in the middle of a pass
  Store copy(store);
  store = Store();
  for (Store* const again : {&assigned, &copy}) {
    read(*again);
    EXPECT_EQ(end(*again), "1");
    read(*again);
    EXPECT_EQ(again->GetSize(), 2U);
  }
}

TEST(KvsTypeInternalTypeTest, FirstAddSettlesTheKindAndPassesEndWithOneAndCopiesGoOn) {
  ExpectKind<double>(1.5, &Store::GetDoubleNext, "#Add(bool)() Internal type is not a double",
                     "#GetDoubleNext() Internal type is not a double");
  ExpectKind<long>(-5L, &Store::GetIntNext, "#Add(int64_t)() Internal type is not an int",
                   "#GetIntNext() Internal type is not an integer");
  ExpectKind<unsigned long>(7UL, &Store::GetUintNext,
                            "#Add(uint64_t)() Internal type is not an u-int",
                            "#GetUintNext() Internal type is not an uint");
  ExpectKind<bool>(true, &Store::GetBoolNext, "#Add(bool)() Internal type is not a bool",
                   "#GetUint() Internal type is not a boolean");
  const auto text = [](Store& s) { return s.GetKvsTypeNext().GetString(); };
  ExpectKind<std::string>("x", &Store::GetStringNext,
                          "#Add(string)() Internal type is not a string", "-1");
  ExpectKind<KvsType>("x", text, "#Add(const KvsType& aKvsObj Internal type is not an object",
                      "no exception");
}

TEST(KvsTypeInternalTypeTest, FailedAddNeitherRewindsNorTakesTheItemAndAGoodOneTakesIt) {
  Store store(1L);
  store.Add(2L);
  EXPECT_EQ(store.getNext(), 1U);
  const KvsType item("text");
  EXPECT_THROW(store.Add(item), std::logic_error);
  EXPECT_THROW(store.Add(true), std::logic_error);
  EXPECT_EQ(store.GetKvsTypeNext().GetSInt64(), 2);
  Store objects;
  objects.Add(item);
  EXPECT_THROW(item.GetString(), LogicErrorException);
  EXPECT_EQ(objects.GetKvsTypeNext().GetString() + objects.GetKvsType().GetString(), "texttext");
}

TEST(KvsTypeInternalTypeTest, ScalarsInMultiplesOf256CountAsNoneAndReadersReinterpretBits) {
  Store store;
  EXPECT_EQ(Error([&] { store.GetKvsTypeNext(); }), "getKvsTypeNext() wrong type asked");
  for (int count = 1; count <= 512; ++count) {
    store.Add(1.0);
    EXPECT_EQ(Error([&] { store.GetDoubleNext(); }), count % 256 == 0 ? "0" : "no exception");
  }
  EXPECT_EQ(store.GetInt(), 0x3FF0000000000000);
  EXPECT_FALSE(store.GetBool());  // the low byte of the bits
}

}  // namespace ara::per::testing
