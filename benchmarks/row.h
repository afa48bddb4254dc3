#ifndef BENCHMARKS_ROW_H_
#define BENCHMARKS_ROW_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include <benchmark/benchmark.h>

namespace ara::per::bench {

/// Numbers of items that the storage is measured with.
inline constexpr std::array<std::int64_t, 4> kSizes = {1000, 10000, 100000, 1000000};

/// Bytes of the pieces that the checksums are measured with.
inline constexpr std::array<std::int64_t, 3> kPieceSizes = {64, 4 << 10, 1 << 20};

/// The most that is wanted at each of `kSizes`; 0 where nothing is wanted.
using Goals = std::array<double, kSizes.size()>;

inline double GoalAt(std::int64_t size, const Goals& goals) {
  const auto* const place = std::find(kSizes.begin(), kSizes.end(), size);
  return place == kSizes.end() ? 0 : goals[static_cast<std::size_t>(place - kSizes.begin())];
}

/// What a benchmark tells the table.
struct Row {
  std::string what;
  double ours;
  double theirs;
  double judged;  // what must not exceed the goal
  double goal;    // 0: there is none
};

inline void SetRow(benchmark::State& state, const Row& row) {
  state.SetLabel(row.what);
  state.counters["ours"] = row.ours;
  state.counters["theirs"] = row.theirs;
  state.counters["judged"] = row.judged;
  state.counters["goal"] = row.goal;
}

inline Row RowOf(const benchmark::BenchmarkReporter::Run& run) {
  const auto cell = [&](const char* name) { return run.counters.at(name).value; };
  return {run.report_label, cell("ours"), cell("theirs"), cell("judged"), cell("goal")};
}

// The benchmarks by what they measure. The argument of the storage's is the number of items,
// that of the checksums' the size of a piece.
void BM_MemoryHeld(benchmark::State& state);
void BM_MemorySaving(benchmark::State& state);
void BM_MemoryOpening(benchmark::State& state);
void BM_Line(benchmark::State& state);
void BM_LineOfFileText(benchmark::State& state);
void BM_FloatText(benchmark::State& state);
void BM_ArrayEnd(benchmark::State& state);
void BM_Set(benchmark::State& state);
void BM_SetInFreshMemory(benchmark::State& state);
void BM_Get(benchmark::State& state);
void BM_Save(benchmark::State& state);
void BM_Compose(benchmark::State& state);
void BM_Open(benchmark::State& state);
void BM_Remove(benchmark::State& state);
void BM_RemoveFromList(benchmark::State& state);
void BM_Crc8(benchmark::State& state);
void BM_Crc8H2F(benchmark::State& state);
void BM_Crc16(benchmark::State& state);
void BM_Crc32(benchmark::State& state);
void BM_Crc32P4(benchmark::State& state);
void BM_Crc64(benchmark::State& state);
void BM_Crc32ByZlib(benchmark::State& state);
void BM_WriteBlocks(benchmark::State& state);
void BM_ReadBlocks(benchmark::State& state);
void BM_Manifest(benchmark::State& state);

}  // namespace ara::per::bench

#endif  // BENCHMARKS_ROW_H_
