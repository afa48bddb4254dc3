// The memory of the storage, each number taken in a process of its own.
#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks/items.h"
#include "benchmarks/row.h"
#include "benchmarks/turns.h"

namespace {

/// Bytes of the heap in use, and the most there were since the peak was last set.
struct HeapCount {
  bool isOn = false;  // counting costs time, which is another benchmark's to measure
  std::ptrdiff_t used = 0;
  std::ptrdiff_t peak = 0;
};

HeapCount g_heap;

std::ptrdiff_t SizeOf(void* block) {
  return static_cast<std::ptrdiff_t>(::malloc_usable_size(block));
}

void* Allocate(std::size_t size, std::size_t alignment) {
  void* const block =
      alignment <= alignof(std::max_align_t)
          ? std::malloc(size)
          : std::aligned_alloc(alignment, (size + alignment - 1) & ~(alignment - 1));
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  if (g_heap.isOn) {
    g_heap.used += SizeOf(block);
    g_heap.peak = std::max(g_heap.peak, g_heap.used);
  }
  return block;
}

void Free(void* block) {
  if (g_heap.isOn) {
    g_heap.used -= SizeOf(block);
  }
  std::free(block);
}

}  // namespace

// All others come down to these.
void* operator new(std::size_t size) { return Allocate(size, 1); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return Allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t) noexcept { Free(block); }
void operator delete(void* block, std::align_val_t) noexcept { Free(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { Free(block); }

namespace ara::per::bench {
namespace {

constexpr double kHeldGoal = 570;
constexpr double kSavingGoal = 730;
constexpr double kOpeningGoal = 850;

constexpr char kWarmUpFile[] = "warm_up.json";

struct Memory {
  double resident;  // bytes
  double heap;      // bytes
};

Memory operator-(const Memory& a, const Memory& b) {
  return {a.resident - b.resident, a.heap - b.heap};
}

/// The number of a line of /proc/self/status that tells kibibytes.
double StatusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(name, 0) == 0) {
      return std::stod(line.substr(name.size())) * 1024;
    }
  }
  return 0;
}

Memory MemoryNow() { return {StatusBytes("VmRSS:"), static_cast<double>(g_heap.used)}; }

Memory PeakMemory() { return {StatusBytes("VmHWM:"), static_cast<double>(g_heap.peak)}; }

void ForgetPeak() {
  std::ofstream("/proc/self/clear_refs") << 5;
  g_heap.peak = g_heap.used;
}

void Fill(KeyValueStorage& storage, const std::vector<std::uint32_t>& numbers) {
  for (const std::uint32_t number : numbers) {
    Set(storage, MakeItem(number));
  }
}

/// So that what the first use of everything costs is not counted among the items.
void WarmUp() {
  KeyValueStorage storage(kWarmUpFile);
  Fill(storage, ShuffledNumbers(10, 0));
  storage.SyncToStorage();
  const KeyValueStorage opened(kWarmUpFile);
}

Memory Held(const std::string& path, const std::vector<std::uint32_t>& numbers) {
  KeyValueStorage storage(path);
  Fill(storage, numbers);
  return MemoryNow();
}

Memory AtPeakOfSaving(const std::string& path, const std::vector<std::uint32_t>& numbers) {
  KeyValueStorage storage(path);
  Fill(storage, numbers);
  ForgetPeak();
  storage.SyncToStorage();
  return PeakMemory();
}

Memory AtPeakOfOpening(const std::string& path, const std::vector<std::uint32_t>&) {
  const KeyValueStorage storage(path);
  return PeakMemory();
}

using Work = Memory (*)(const std::string& path, const std::vector<std::uint32_t>& numbers);

/// Runs `work` in a child. @return the bytes that it gives, less what there was before
std::optional<Memory> Take(const std::string& path, std::int64_t count, Work work) {
  return InChild([&] {
    const std::vector<std::uint32_t> numbers = ShuffledNumbers(count, 0);
    g_heap.isOn = true;
    WarmUp();
    ForgetPeak();
    const Memory before = MemoryNow();
    return work(path, numbers) - before;
  });
}

/// @param before  what is to run in a child of its own beforehand; may be null
void Measure(benchmark::State& state, const char* what, double goal, Work before, Work work) {
  const TemporaryFile file("memory.json");
  const TemporaryFile warmUpFile(kWarmUpFile);
  if (before != nullptr) {
    Take(file.path(), state.range(0), before);
  }
  std::optional<Memory> memory;
  for ([[maybe_unused]] auto iteration : state) {
    state.SetIterationTime(Seconds([&] { memory = Take(file.path(), state.range(0), work); }));
  }
  if (!memory) {
    state.SkipWithError("the work was not done");
    return;
  }
  const auto count = static_cast<double>(state.range(0));
  const double resident = memory->resident / count;
  SetRow(state, {what, resident, memory->heap / count, resident, goal});
}

}  // namespace

void BM_MemoryHeld(benchmark::State& state) {
  Measure(state, "5 bytes held, resident / heap", kHeldGoal, nullptr, Held);
}

void BM_MemorySaving(benchmark::State& state) {
  Measure(state, "5 bytes while saving, resident / heap", kSavingGoal, nullptr, AtPeakOfSaving);
}

void BM_MemoryOpening(benchmark::State& state) {
  Measure(state, "5 bytes while opening, resident / heap", kOpeningGoal, AtPeakOfSaving,
          AtPeakOfOpening);
}

}  // namespace ara::per::bench
