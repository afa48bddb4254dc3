// Runs the benchmarks and prints one table: what was measured, ours beside theirs, and the goal.
// usage: ara_per_benchmark [--quick] [--benchmark_filter=<pattern>]
//   --quick  the two smallest sizes and few repetitions
// It leaves the configuration file of the storage in the working directory.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "ara/log/sink.h"
#include "benchmarks/row.h"

namespace ara::per::bench {
namespace {

constexpr std::size_t kQuickSizes = 2;
constexpr benchmark::IterationCount kQuickRepetitions = 3;

struct Benchmark {
  const char* name;
  void (*run)(benchmark::State& state);
  std::size_t count;  // how many of `sizes` it runs with; 0: it has no size
  const std::int64_t* sizes = kSizes.data();
  benchmark::IterationCount most = 101;  // repetitions
};

constexpr std::array kBenchmarks = {
    Benchmark{"Line", BM_Line, 0},
    Benchmark{"LineOfFileText", BM_LineOfFileText, 0},
    Benchmark{"FloatText", BM_FloatText, 0},
    Benchmark{"ArrayEnd", BM_ArrayEnd, 0},
    Benchmark{"Set", BM_Set, 4},
    Benchmark{"SetInFreshMemory", BM_SetInFreshMemory, 4},
    Benchmark{"Get", BM_Get, 4},
    Benchmark{"Save", BM_Save, 4},
    Benchmark{"Compose", BM_Compose, 4},
    Benchmark{"Open", BM_Open, 4},
    Benchmark{"MemoryHeld", BM_MemoryHeld, 4},
    Benchmark{"MemorySaving", BM_MemorySaving, 4},
    Benchmark{"MemoryOpening", BM_MemoryOpening, 4},
    Benchmark{"Remove", BM_Remove, 4},
    Benchmark{"RemoveFromList", BM_RemoveFromList, 2},
    Benchmark{"Crc8", BM_Crc8, kPieceSizes.size(), kPieceSizes.data()},
    Benchmark{"Crc8H2F", BM_Crc8H2F, kPieceSizes.size(), kPieceSizes.data()},
    Benchmark{"Crc16", BM_Crc16, kPieceSizes.size(), kPieceSizes.data()},
    Benchmark{"Crc32", BM_Crc32, kPieceSizes.size(), kPieceSizes.data()},
    Benchmark{"Crc32P4", BM_Crc32P4, kPieceSizes.size(), kPieceSizes.data()},
    Benchmark{"Crc64", BM_Crc64, kPieceSizes.size(), kPieceSizes.data()},
    Benchmark{"Crc32ByZlib", BM_Crc32ByZlib, kPieceSizes.size(), kPieceSizes.data()},
    Benchmark{"WriteBlocks", BM_WriteBlocks, 0},
    Benchmark{"ReadBlocks", BM_ReadBlocks, 0},
    Benchmark{"Manifest", BM_Manifest, 0, nullptr, 15},
};

// Small sizes need more of them for a steady median, and the largest has no time for many.
constexpr std::array<benchmark::IterationCount, kSizes.size()> kRepetitions = {101, 31, 9, 3};

void Register(bool quick) {
  for (const Benchmark& one : kBenchmarks) {
    const bool isMemory = std::string(one.name).rfind("Memory", 0) == 0;
    const auto repetitions = [&](std::size_t place) {
      const benchmark::IterationCount usual =
          quick ? kQuickRepetitions : std::min(kRepetitions[place], one.most);
      return isMemory ? 1 : usual;
    };
    if (one.count == 0) {
      benchmark::RegisterBenchmark(one.name, one.run)->Iterations(repetitions(0))->UseManualTime();
    }
    for (std::size_t i = 0; i < (quick ? std::min(one.count, kQuickSizes) : one.count); ++i) {
      benchmark::RegisterBenchmark(one.name, one.run)
          ->Arg(one.sizes[i])
          ->Iterations(repetitions(i))
          ->UseManualTime();
    }
  }
}

/// Standard output for the table alone: everything else that is written there meanwhile, as the
/// library does, goes nowhere.
class TableOutput {
 public:
  TableOutput() : file_(::fdopen(::dup(STDOUT_FILENO), "w"), &std::fclose) {
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::close(nowhere);
  }

  std::FILE* file() const { return file_.get(); }

 private:
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
};

class TableReporter : public benchmark::BenchmarkReporter {
 public:
  explicit TableReporter(std::FILE* file) : file_(file) {}

  bool ReportContext(const Context&) override {
    print("times in ns a call or an item: medians of runs in turn; memory in bytes an item");
    print("sizes in items; those of checksums in bytes, so that GB/s is size by time");
    std::fprintf(file_, "%-44s %9s %10s %10s %7s %6s  %s\n", "what / against what", "size", "ours",
                 "theirs", "ratio", "goal", "met");
    return true;
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) {
        print((run.benchmark_name() + ": " + run.error_message).c_str());
        hasFailed_ = true;
      } else {
        reportRow(run);
      }
    }
  }

  /// Whether a benchmark found that the work was not done. A goal that is not met is no failure.
  bool hasFailed() const { return hasFailed_; }

 private:
  void print(const char* line) const { std::fprintf(file_, "%s\n", line); }

  void reportRow(const Run& run) const {
    const Row row = RowOf(run);
    const std::string size = run.run_name.args.empty() ? "-" : run.run_name.args;
    std::fprintf(file_, "%-44s %9s %10.1f %10.1f %7.3f ", row.what.c_str(), size.c_str(), row.ours,
                 row.theirs, row.ours / row.theirs);
    if (row.goal > 0) {
      std::fprintf(file_, "%6g  %s\n", row.goal, row.judged <= row.goal ? "yes" : "no");
    } else {
      std::fprintf(file_, "%6s  -\n", "-");
    }
    static_cast<void>(std::fflush(file_));
  }

  std::FILE* file_;
  bool hasFailed_ = false;
};

int Run(int argc, char** argv) {
  bool quick = false;
  std::vector<char*> arguments;
  for (char* const argument : std::vector<char*>(argv, argv + argc)) {
    if (std::string(argument) == "--quick") {
      quick = true;
    } else {
      arguments.push_back(argument);
    }
  }
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) {
    return 2;
  }
  std::ofstream("PersistencyConfig.json")
      << R"({"DataConfig":{"isRedundancy":false,"maxSize":0,"checksum":0,"updateTime":0}})";
  ara::log::SetThreshold(ara::log::LogLevel::kOff);
  Register(quick);
  const TableOutput output;
  TableReporter reporter(output.file());
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return reporter.hasFailed() ? 1 : 0;
}

}  // namespace
}  // namespace ara::per::bench

int main(int argc, char** argv) { return ara::per::bench::Run(argc, argv); }
