// The checksums without their log lines, beside one look-up after the other and beside zlib.
#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "benchmarks/row.h"
#include "benchmarks/turns.h"
#include "crc/crc_profile.h"

namespace ara::per::bench {
namespace {

using crc::Shift;

constexpr std::size_t kMessageSize = 1 << 20;
constexpr std::size_t kMessages = 8;  // of a turn

// Against one look-up after the other, from the second size up and, before, for the shortest.
constexpr double kGoal = 1.0 / 8;
constexpr double kIeeeGoal = 1.0 / 10;
constexpr double kShortGoal = 1.0 / 5;
constexpr double kZlibGoal = 1;

/// Adds a piece to what the call before has given.
template <class Register>
using Add = Register (*)(Register value, const unsigned char* data, std::size_t length);

template <const auto& kTable, Shift kShift, class Register>
Register FeedByteByByte(Register value, const unsigned char* data, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    value = crc::Feed<kShift>(kTable, value, data[i]);
  }
  return value;
}

unsigned int SumSliced(unsigned int sum, const unsigned char* data, std::size_t length) {
  return crc::Crc32::Finish(crc::Crc32::FeedAll(crc::Crc32::Start(false, sum), data, length));
}

unsigned int SumByZlib(unsigned int sum, const unsigned char* data, std::size_t length) {
  return static_cast<unsigned int>(::crc32(sum, data, static_cast<uInt>(length)));
}

/// Both ways go through messages in pieces, whose size is the benchmark's argument.
template <class Register>
void CompareChains(benchmark::State& state, const std::string& what, double goal,
                   Add<Register> ours, Add<Register> theirs) {
  std::vector<unsigned char> message(kMessageSize);
  std::generate(message.begin(), message.end(),
                [random = std::mt19937(20240229)]() mutable { return random() & 0xFF; });
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto chain = [&message, size](Add<Register> add, Register& value) {
    const volatile Add<Register> unknown = add;  // not inlined, since zlib's way cannot be either
    return [&message, size, add = Add<Register>(unknown), &value](std::size_t) {
      return CpuSeconds([&] {
        for (std::size_t place = 0; place < kMessageSize; place += size) {
          value = add(value, message.data() + place, size);
        }
      });
    };
  };
  const auto calls = static_cast<std::int64_t>(kMessages * kMessageSize / size);
  Compare(state, what, calls, goal, [&](const Turn& turn) {
    Register our = 0;
    Register their = 0;
    turn.Run(1, chain(ours, our), chain(theirs, their));  // tables and message are at hand now
    const Pair pair = turn.Run(kMessages, chain(ours, our), chain(theirs, their));
    Demand(our == their, "the checksums differ");
    return pair;
  });
}

template <class Profile, const auto& kTable, Shift kShift>
void CompareProfile(benchmark::State& state, const std::string& name, double longGoal = kGoal) {
  const double goal = state.range(0) < kPieceSizes[1] ? kShortGoal : longGoal;
  CompareChains<typename Profile::Register>(state, "6 " + name + " / byte by byte", goal,
                                            &Profile::FeedAll, &FeedByteByByte<kTable, kShift>);
}

}  // namespace

void BM_Crc8(benchmark::State& state) {
  CompareProfile<crc::Crc8, crc::lookupTableCrc8, Shift::kLeft>(state, "CRC-8");
}
void BM_Crc8H2F(benchmark::State& state) {
  CompareProfile<crc::Crc8H2F, crc::lookupTableCrc8H2F, Shift::kLeft>(state, "CRC-8 0x2F");
}
void BM_Crc16(benchmark::State& state) {
  CompareProfile<crc::Crc16, crc::lookupTableCrc16, Shift::kLeft>(state, "CRC-16");
}
void BM_Crc32(benchmark::State& state) {
  CompareProfile<crc::Crc32, crc::lookupTableCrc32, Shift::kRight>(state, "CRC-32", kIeeeGoal);
}
void BM_Crc32P4(benchmark::State& state) {
  CompareProfile<crc::Crc32P4, crc::lookupTableCrc32P4, Shift::kRight>(state, "CRC-32 P4");
}
void BM_Crc64(benchmark::State& state) {
  CompareProfile<crc::Crc64, crc::lookupTableCrc64, Shift::kRight>(state, "CRC-64");
}
void BM_Crc32ByZlib(benchmark::State& state) {
  CompareChains<unsigned int>(state, "6 CRC-32 / zlib", kZlibGoal, &SumSliced, &SumByZlib);
}

}  // namespace ara::per::bench
