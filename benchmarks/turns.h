#ifndef BENCHMARKS_TURNS_H_
#define BENCHMARKS_TURNS_H_

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "benchmarks/row.h"

namespace ara::per::bench {

/// Ends the repetition, and so the benchmark, when the work was not done.
inline void Demand(bool isDone, const char* failure) {
  if (!isDone) {
    throw std::runtime_error(failure);
  }
}

/// Seconds that pass by while `work` runs.
template <class Work>
double Seconds(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

inline double CpuSecondsNow() {
  timespec now{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Seconds that the processor and the kernel spend on `work`, which waits for nothing. What else
/// the machine does in the meantime does not count.
template <class Work>
double CpuSeconds(Work&& work) {
  const double start = CpuSecondsNow();
  work();
  return CpuSecondsNow() - start;
}

/// Runs `work` in a process of its own, which does not find the heap as other work has left it. So
/// that this is true, a benchmark itself does nothing that takes much memory.
/// @return what `work` gives; nothing if it throws
template <class Work>
auto InChild(Work&& work) -> std::optional<decltype(work())> {
  using Result = decltype(work());
  static_assert(std::is_trivially_copyable_v<Result>);
  std::array<int, 2> ends{};
  if (::pipe(ends.data()) != 0) {
    return std::nullopt;
  }
  const pid_t child = ::fork();
  if (child == 0) {
    const Result result = work();
    ::_exit(::write(ends[1], &result, sizeof result) == sizeof result ? 0 : 1);
  }
  ::close(ends[1]);
  Result result{};
  const bool isComplete = ::read(ends[0], &result, sizeof result) == sizeof result;
  ::close(ends[0]);
  ::waitpid(child, nullptr, 0);
  return isComplete ? std::optional<Result>(result) : std::nullopt;
}

/// Two ways to do the same work. It gives the seconds of each.
struct Pair {
  double ours = 0;
  double theirs = 0;
};

/// One repetition of two ways.
struct Turn {
  unsigned int number;

  /// Runs both in turn, slice by slice, so that both meet what else the machine does. The one that
  /// goes first changes.
  /// @param ours, theirs  do the slice whose number they are given and give its seconds
  template <class Ours, class Theirs>
  Pair Run(std::size_t slices, Ours&& ours, Theirs&& theirs) const {
    Pair pair;
    for (std::size_t slice = 0; slice < slices; ++slice) {
      const bool weGoFirst = (number + slice) % 2 == 0;
      if (weGoFirst) {
        pair.ours += ours(slice);
      }
      pair.theirs += theirs(slice);
      if (!weGoFirst) {
        pair.ours += ours(slice);
      }
    }
    return pair;
  }

  /// The same for work in one slice.
  /// @param ours, theirs  are given nothing
  template <class Ours, class Theirs>
  Pair Run(Ours&& ours, Theirs&& theirs) const {
    return Run(
        1, [&](std::size_t) { return ours(); }, [&](std::size_t) { return theirs(); });
  }
};

inline double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

/// Makes a row of two ways: the nanoseconds a call as the medians of all turns.
/// @param what  the row's name
/// @param calls  how many of them a turn makes in each way
/// @param takeTurn  makes a `Turn`, which it is given, in a process of its own, and gives its
/// `Pair`
template <class TakeTurn>
void Compare(benchmark::State& state, const std::string& what, std::int64_t calls, double goal,
             TakeTurn&& takeTurn) {
  std::vector<double> ours;
  std::vector<double> theirs;
  for ([[maybe_unused]] auto iteration : state) {
    const Turn turn{static_cast<unsigned int>(ours.size())};
    const std::optional<Pair> pair = InChild([&] { return takeTurn(turn); });
    if (!pair) {
      state.SkipWithError("the work was not done");
      return;
    }
    ours.push_back(pair->ours);
    theirs.push_back(pair->theirs);
    state.SetIterationTime(pair->ours);
  }
  const double nanoseconds = 1e9 / static_cast<double>(calls);
  const double ourMedian = Median(std::move(ours)) * nanoseconds;
  const double theirMedian = Median(std::move(theirs)) * nanoseconds;
  SetRow(state, {what, ourMedian, theirMedian, ourMedian / theirMedian, goal});
}

}  // namespace ara::per::bench

#endif  // BENCHMARKS_TURNS_H_
