// The storage beside a std::map of variants and, for its file, beside nlohmann-json.
#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

#include "benchmarks/items.h"
#include "benchmarks/row.h"
#include "benchmarks/turns.h"

namespace ara::per::bench {
namespace {

constexpr Goals kSetGoals = {2.4, 2.3, 1.9, 1.3};
constexpr Goals kGetGoals = {1.6, 2.3, 1.8, 1.3};
constexpr Goals kSaveGoals = {0.8, 0.8, 0.8, 0.8};
constexpr Goals kOpenGoals = {0.9, 1.0, 1.1, 1.1};
constexpr Goals kRemoveGoals = {2, 2, 2, 2};

constexpr char kNoFile[] = "absent.json";
constexpr char kNoDisk[] = "/dev/null";

/// A part of a row of items.
struct Items {
  explicit Items(const std::vector<Item>& all) : first(all.data()), last(first + all.size()) {}
  Items(const Item* sliceFirst, const Item* sliceLast) : first(sliceFirst), last(sliceLast) {}

  const Item* begin() const { return first; }
  const Item* end() const { return last; }

  const Item* first;
  const Item* last;
};

constexpr std::size_t kSliceSize = 100000;

std::size_t SlicesOf(const std::vector<Item>& items) {
  return std::max<std::size_t>(1, items.size() / kSliceSize);
}

Items SliceOf(const std::vector<Item>& items, std::size_t slice) {
  const Item* const first = items.data() + slice * kSliceSize;
  return {first, first + std::min(items.size(), kSliceSize)};
}

template <class Store>
void SetAll(Store& store, const Items& items) {
  for (const Item& item : items) {
    Set(store, item);
  }
}

template <class Store>
bool GetItem(const Store& store, const Item& item) {
  return std::visit(
      [&](const auto& typed) {
        std::decay_t<decltype(typed)> value{};
        const bool isThere = Get(store, item.key, value);
        benchmark::DoNotOptimize(value);
        return isThere;
      },
      item.value);
}

template <class Store>
void GetAll(const Store& store, const Items& items) {
  bool areAllThere = true;
  for (const Item& item : items) {
    areAllThere &= GetItem(store, item);
  }
  Demand(areAllThere, "a value was not found");
}

template <class Store>
void RemoveAll(Store& store, const Items& items) {
  for (const Item& item : items) {
    Remove(store, item.key);
  }
}

// The names of the types in a database file, as far as the items need them.
const char* NameOf(std::int32_t) { return "sint32"; }
const char* NameOf(double) { return "double"; }
const char* NameOf(const std::string&) { return "string"; }
const char* NameOf(bool) { return "bool"; }
const char* NameOf(const std::vector<std::uint32_t>&) { return "uint32"; }

void SaveByNlohmann(const std::vector<Item>& items, const std::string& path) {
  nlohmann::json array = nlohmann::json::array();
  for (const Item& item : items) {
    std::visit(
        [&](const auto& value) {
          array.push_back({{"key", item.key}, {"type", NameOf(value)}, {"value", value}});
        },
        item.value);
  }
  const std::string text = array.dump();
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  const ssize_t written = ::write(fd, text.data(), text.size());
  ::syncfs(fd);
  ::close(fd);
  Demand(written == static_cast<ssize_t>(text.size()), "the file was not written");
}

Value ValueOf(const std::string& type, const nlohmann::json& value) {
  if (type == "sint32") {
    return value.get<std::int32_t>();
  }
  if (type == "double") {
    return value.get<double>();
  }
  if (type == "string") {
    return value.get<std::string>();
  }
  if (type == "bool") {
    return value.get<int>() != 0;
  }
  return value.get<std::vector<std::uint32_t>>();
}

ValueMap OpenByNlohmann(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string text(static_cast<std::size_t>(file.seekg(0, std::ios::end).tellg()), '\0');
  file.seekg(0).read(text.data(), static_cast<std::streamsize>(text.size()));
  const nlohmann::json array = nlohmann::json::parse(text);
  ValueMap map;
  for (const nlohmann::json& item : array) {
    map.insert_or_assign(item["key"].get<std::string>(),
                         ValueOf(item["type"].get_ref<const std::string&>(), item["value"]));
  }
  return map;
}

/// Takes what others have left to be written to the disk out of the measurement.
void WaitForDisk(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY);
  ::syncfs(fd);
  ::close(fd);
}

/// Both files are there and both ways have been gone once before the clock starts.
/// @param measure  `Seconds` or `CpuSeconds`
template <class Measure>
Pair SaveInTurn(const Turn& turn, std::int64_t count, const std::string& ourPath,
                const std::string& theirPath, Measure&& measure) {
  const std::vector<Item> items = ShuffledItems(count, turn.number);
  KeyValueStorage storage(ourPath);
  SetAll(storage, Items(items));
  storage.SyncToStorage();
  Set(storage, items.front());  // or nothing would be written again
  SaveByNlohmann(items, theirPath);
  return turn.Run(
      [&] {
        WaitForDisk(ourPath);
        return measure([&] { storage.SyncToStorage(); });
      },
      [&] {
        WaitForDisk(theirPath);
        return measure([&] { SaveByNlohmann(items, theirPath); });
      });
}

/// Leaves so much memory in the heap that filling the stores gets none from the system, which costs
/// more than an item does and is a matter of the system.
void KeepMemoryAtHand(std::size_t items) {
  constexpr std::size_t kBlockSize = 64 << 10;
  constexpr std::size_t kBytesPerItem = 1000;  // of both stores
  ::mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  std::vector<std::string> blocks(1 + items * kBytesPerItem / kBlockSize);
  for (std::string& block : blocks) {
    block.assign(kBlockSize, 'x');
  }
}

/// One turn of `work` on each store, slice by slice.
/// @param work  is given a store and a slice of `items`
template <class Theirs, class Work>
Pair RunSlices(const Turn& turn, const std::vector<Item>& items, KeyValueStorage& ours,
               Theirs& theirs, const Work& work) {
  const auto timed = [&](auto& store, std::size_t slice) {
    return CpuSeconds([&] { work(store, SliceOf(items, slice)); });
  };
  return turn.Run(
      SlicesOf(items), [&](std::size_t slice) { return timed(ours, slice); },
      [&](std::size_t slice) { return timed(theirs, slice); });
}

/// @param prepareMemory  is given the number of items
template <class PrepareMemory>
void CompareSets(benchmark::State& state, const char* what, double goal,
                 PrepareMemory&& prepareMemory) {
  Compare(state, what, state.range(0), goal, [&](const Turn& turn) {
    const std::vector<Item> items = ShuffledItems(state.range(0), turn.number);
    prepareMemory(items.size());
    KeyValueStorage ours(kNoFile);
    ValueMap theirs;
    return RunSlices(turn, items, ours, theirs,
                     [](auto& store, const Items& slice) { SetAll(store, slice); });
  });
}

template <class Theirs>
void CompareRemovals(benchmark::State& state, const char* what, double goal) {
  Compare(state, what, state.range(0), goal, [&](const Turn& turn) {
    const std::vector<Item> items = ShuffledItems(state.range(0), turn.number);
    const std::vector<Item> others = ShuffledItems(state.range(0), turn.number + 1);
    KeyValueStorage ours(kNoFile);
    Theirs theirs;
    SetAll(ours, Items(items));
    SetAll(theirs, Items(items));
    const Pair pair = RunSlices(turn, others, ours, theirs,
                                [](auto& store, const Items& slice) { RemoveAll(store, slice); });
    Demand(ours.GetAllKeys().empty(), "a key was not removed");
    return pair;
  });
}

}  // namespace

void BM_Set(benchmark::State& state) {
  CompareSets(state, "2 set / std::map", GoalAt(state.range(0), kSetGoals), &KeepMemoryAtHand);
}

void BM_SetInFreshMemory(benchmark::State& state) {
  CompareSets(state, "  set, memory first got from the system", 0, [](std::size_t) {});
}

void BM_Get(benchmark::State& state) {
  const double goal = GoalAt(state.range(0), kGetGoals);
  Compare(state, "2 get / std::map", state.range(0), goal, [&](const Turn& turn) {
    const std::vector<Item> items = ShuffledItems(state.range(0), turn.number);
    const std::vector<Item> others = ShuffledItems(state.range(0), turn.number + 1);
    KeyValueStorage ours(kNoFile);
    ValueMap theirs;
    SetAll(ours, Items(items));
    SetAll(theirs, Items(items));
    return RunSlices(turn, others, ours, theirs,
                     [](const auto& store, const Items& slice) { GetAll(store, slice); });
  });
}

void BM_Save(benchmark::State& state) {
  const double goal = GoalAt(state.range(0), kSaveGoals);
  Compare(state, "3 save / nlohmann-json", state.range(0), goal, [&](const Turn& turn) {
    const TemporaryFile ours("saved.json");
    const TemporaryFile theirs("nlohmann.json");
    return SaveInTurn(turn, state.range(0), ours.path(), theirs.path(),
                      [](const auto& save) { return Seconds(save); });
  });
}

void BM_Compose(benchmark::State& state) {
  const char* const what = "  save without the disk / nlohmann-json";
  Compare(state, what, state.range(0), 0, [&](const Turn& turn) {
    return SaveInTurn(turn, state.range(0), kNoDisk, kNoDisk,
                      [](const auto& save) { return CpuSeconds(save); });
  });
}

void BM_Open(benchmark::State& state) {
  const TemporaryFile file("opened.json");
  const double goal = GoalAt(state.range(0), kOpenGoals);
  const auto count = static_cast<std::size_t>(state.range(0));
  const std::optional<std::uint32_t> firstNumber = InChild([&] {
    const std::vector<std::uint32_t> numbers = ShuffledNumbers(state.range(0), 0);
    KeyValueStorage storage(file.path());
    for (const std::uint32_t number : numbers) {
      Set(storage, MakeItem(number));
    }
    storage.SyncToStorage();
    return numbers.front();
  });
  const Item first = MakeItem(firstNumber.value_or(0));
  Compare(state, "4 open and get / nlohmann-json", state.range(0), goal, [&](const Turn& turn) {
    std::unique_ptr<KeyValueStorage> ourStore;
    ValueMap theirStore;
    const auto ours = [&] {
      ourStore.reset();
      return CpuSeconds([&] {
        ourStore = CreateKeyValueStorage(file.path());
        Demand(GetItem(*ourStore, first), "the first item was not read");
      });
    };
    const auto theirs = [&] {
      theirStore.clear();
      return CpuSeconds([&] {
        theirStore = OpenByNlohmann(file.path());
        Demand(GetItem(theirStore, first), "the first item was not read");
      });
    };
    turn.Run(ours, theirs);  // both ways have been gone once before the times count
    const Pair pair = turn.Run(ours, theirs);
    Demand(ourStore->GetAllKeys().size() == count && theirStore.size() == count,
           "an item was not read");
    return pair;
  });
}

void BM_Remove(benchmark::State& state) {
  CompareRemovals<ValueMap>(state, "7 remove / std::map", GoalAt(state.range(0), kRemoveGoals));
}

void BM_RemoveFromList(benchmark::State& state) {
  CompareRemovals<PlainContainers>(state, "  remove / walking the list", 0);
}

}  // namespace ara::per::bench
