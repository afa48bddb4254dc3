// What stands behind every call of the library, beside the way that would come to mind first.
#include <array>
#include <cstdarg>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "ara/log/logging.h"
#include "ara/per/kvs_type_impl_internal_type.h"
#include "ara/per/log_extend.h"
#include "benchmarks/row.h"
#include "benchmarks/turns.h"
#include "support/log_here.h"
#include "support/number_text.h"

namespace ara::per::bench {
namespace {

using ara::log::LogLevel;

constexpr int kCalls = 10000;
constexpr double kLineGoal = 0.35;
constexpr char kFormat[] = "KeyValueStorage::Impl::setValue for key: %s type=%s isTimer=%d";
constexpr char kKey[] = "vehicle/door/000123/state";
constexpr char kType[] = "sint32";

/// Two passes over a zeroed buffer, with the path as a text of its own.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
__attribute__((noinline, format(printf, 4, 5))) void PrintInTwoPasses(ara::log::Logger& logger,
                                                                      std::string file, int line,
                                                                      const char* format, ...) {
  std::array<char, 1024> buffer{};
  const int prefix = std::snprintf(buffer.data(), buffer.size(), "[%s][%d]", file.c_str(), line);
  const auto begin = static_cast<std::size_t>(prefix);
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer.data() + begin, buffer.size() - begin, format, arguments);
  va_end(arguments);
  ara::log::LogStream stream = logger.LogVerbose();
  stream << buffer.data();
  stream.Flush();
}
#pragma GCC diagnostic pop

template <class Work>
double SecondsOfCalls(Work&& work) {
  return CpuSeconds([&] {
    for (int i = 0; i < kCalls; ++i) {
      work(i);
    }
  });
}

/// @param ours, theirs  make one call; they are given its number
template <class Ours, class Theirs>
void CompareCalls(benchmark::State& state, const char* what, double goal, Ours&& ours,
                  Theirs&& theirs) {
  Compare(state, what, kCalls, goal, [&](const Turn& turn) {
    return turn.Run([&] { return SecondsOfCalls(ours); }, [&] { return SecondsOfCalls(theirs); });
  });
}

template <class Ours>
void CompareLines(benchmark::State& state, const char* what, Ours&& ours) {
  ara::log::Logger& logger =
      ara::log::CreateLogger("BENCHMARK", "lines in two passes", LogLevel::kVerbose);
  CompareCalls(state, what, kLineGoal, ours, [&](int i) {
    PrintInTwoPasses(logger, __FILE__, __LINE__, kFormat, kKey, kType, i);
  });
}

LogExtend& Log() { return *LogExtend::getLogExtenObject("PersistencyService"); }

}  // namespace

void BM_Line(benchmark::State& state) {
  CompareLines(state, "1 log line / in two passes", [&log = Log()](int i) {
    log.logPrint(LogLevel::kVerbose, ARA_PER_HERE, kFormat, kKey, kType, i);
  });
}

void BM_LineOfFileText(benchmark::State& state) {
  CompareLines(state, "1 log line, path as text / in two passes", [&log = Log()](int i) {
    log.logPrint(LogLevel::kVerbose, __FILE__, __LINE__, kFormat, kKey, kType, i);
  });
}

void BM_FloatText(benchmark::State& state) {
  const auto numberOf = [](int i) { return i * 0.37; };
  const auto ours = [&](int i) {
    std::array<char, kNumberTextSize<double>> text;
    benchmark::DoNotOptimize(WriteNumber(text.data(), numberOf(i)));
  };
  const auto theirs = [&](int i) {
    std::array<char, kNumberTextSize<double> + 1> text;
    benchmark::DoNotOptimize(std::snprintf(text.data(), text.size(), "%f", numberOf(i)));
  };
  CompareCalls(state, "  %f of a double / by snprintf", 0, ours, theirs);
}

void BM_ArrayEnd(benchmark::State& state) {
  KvsTypeInternalType store;
  for (unsigned long i = 0; i < 8; ++i) {
    store.Add(i);
  }
  const auto endByTest = [&](int) {
    while (store.endOfSequence(KvsTypeInternalType::Kind::kUint) == nullptr) {
      benchmark::DoNotOptimize(store.GetUintNext());
    }
  };
  const auto endByException = [&](int) {
    try {
      while (true) {
        benchmark::DoNotOptimize(store.GetUintNext());
      }
    } catch (const std::logic_error&) {  // the end
    }
  };
  CompareCalls(state, "  array of 8 to its end / by exception", 0, endByTest, endByException);
}

}  // namespace ara::per::bench
