#ifndef BENCHMARKS_ITEMS_H_
#define BENCHMARKS_ITEMS_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <list>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "ara/per/key_value_storage.h"
#include "ara/per/kvs_type.h"

namespace ara::per::bench {

using Value = std::variant<std::int32_t, double, std::string, bool, std::vector<std::uint32_t>>;
using ValueMap = std::map<std::string, Value>;

/// What the engine's containers would be without the list's place kept in each item.
struct PlainContainers {
  std::list<std::shared_ptr<KvsType>> list;
  std::map<std::string, std::shared_ptr<KvsType>> map;
};

struct Item {
  std::string key;
  Value value;
};

/// Four in ten are integers, two doubles, two texts of 24 characters, one a flag, one an array
/// of 8.
inline Value MakeValue(std::uint32_t number) {
  switch (number % 10) {
    case 0:
    case 1:
    case 2:
    case 3:
      return static_cast<std::int32_t>(number * 2654435761U);
    case 4:
    case 5:
      return number * 0.37;
    case 6:
    case 7: {
      std::string text = "text of " + std::to_string(number);
      text.resize(24, '.');
      return text;
    }
    case 8:
      return number % 20 == 8;
    default: {
      std::vector<std::uint32_t> array(8);
      std::iota(array.begin(), array.end(), number);
      return array;
    }
  }
}

inline Item MakeItem(std::uint32_t number) {
  std::array<char, 40> key{};
  std::snprintf(key.data(), key.size(), "vehicle/door/%06u/state", number);
  return {key.data(), MakeValue(number)};
}

/// The numbers of the items from 0 on in a random order, which is the same for the same `turn` in
/// every run of the program.
inline std::vector<std::uint32_t> ShuffledNumbers(std::int64_t count, unsigned int turn) {
  std::vector<std::uint32_t> numbers(static_cast<std::size_t>(count));
  std::iota(numbers.begin(), numbers.end(), 0U);
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(20240229 + turn));
  return numbers;
}

/// All items in a random order. Another order in each turn keeps the processor from learning the
/// ways that keys take through a map.
inline std::vector<Item> ShuffledItems(std::int64_t count, unsigned int turn) {
  std::vector<Item> items;
  items.reserve(static_cast<std::size_t>(count));
  for (const std::uint32_t number : ShuffledNumbers(count, turn)) {
    items.push_back(MakeItem(number));
  }
  return items;
}

/// A file that is neither there before nor left behind.
class TemporaryFile {
 public:
  explicit TemporaryFile(std::string path) : path_(std::move(path)) { remove(); }
  ~TemporaryFile() { remove(); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return path_; }

 private:
  void remove() const { static_cast<void>(std::remove(path_.c_str())); }

  const std::string path_;
};

// The same operations on all kinds of stores; `Get` reads the value as the type that the item has.

inline void Set(KeyValueStorage& storage, const Item& item) {
  std::visit([&](const auto& value) { storage.SetValue(item.key, value); }, item.value);
}

inline void Set(ValueMap& map, const Item& item) {
  std::visit([&](const auto& value) { map.insert_or_assign(item.key, value); }, item.value);
}

inline void Set(PlainContainers& containers, const Item& item) {
  containers.list.push_back(std::make_shared<KvsType>());
  containers.map.emplace(item.key, containers.list.back());
}

/// @return whether the value is there
template <class T>
bool Get(const KeyValueStorage& storage, const std::string& key, T& value) {
  return storage.GetValue(key, value) == KeyValueStorage::Status::kSuccess;
}

template <class T>
bool Get(const ValueMap& map, const std::string& key, T& value) {
  const auto entry = map.find(key);
  if (entry == map.end()) {
    return false;
  }
  value = std::get<T>(entry->second);
  return true;
}

inline void Remove(KeyValueStorage& storage, const std::string& key) { storage.RemoveKey(key); }
inline void Remove(ValueMap& map, const std::string& key) { map.erase(key); }

inline void Remove(PlainContainers& containers, const std::string& key) {
  const auto entry = containers.map.find(key);
  containers.list.remove(entry->second);
  containers.map.erase(entry);
}

}  // namespace ara::per::bench

#endif  // BENCHMARKS_ITEMS_H_
