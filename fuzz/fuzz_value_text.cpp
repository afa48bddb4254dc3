// A value's text form settles: each round through it may lose something, but after a few there is
// nothing left to lose.

#include "ara/log/sink.h"
#include "ara/per/kvs_type.h"
#include "fuzz/fuzz_support.h"

namespace {

using ara::per::KvsType;

// The longest way down is that of a nested array of floats: to doubles, to unsigned numbers.
constexpr int kRoundsToSettle = 6;

std::string Round(const std::string& text) {
  return KvsType::DeSerializeKvsData(text, false).SerializeKvsData();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  ara::log::SetThreshold(ara::log::LogLevel::kOff);
  if (size == 0) {
    return 0;
  }
  const bool initMode = data[0] == 'i';
  std::string text =
      KvsType::DeSerializeKvsData(fuzz::TextOf(data + 1, size - 1), initMode).SerializeKvsData();
  if (text.find('\\') != std::string::npos) {
    return 0;  // nothing is escaped, so a backslash is a new escape in the next round
  }
  for (int round = 0; round < kRoundsToSettle; ++round) {
    text = Round(text);
  }
  fuzz::Demand(Round(text) == text, "the text form settles");
  return 0;
}
