#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "fileaccess/std_ios_base_adapter.h"
#include "tests/support/log_capture.h"
#include "tests/support/thrown.h"

namespace ara::per::testing {

using std::ios;
using Adapter = helper::ios_base_adapter;

TEST(IosBaseAdapterTest, ValuesBecomeThoseOfStreamsAndUnknownFlagsAreLeftOut) {
  const ios::openmode modes[] = {ios::app, ios::binary, ios::in, ios::out, ios::trunc, ios::ate};
  for (int bits = 0; bits < 256; ++bits) {
    SCOPED_TRACE(bits);
    LogCapture log;
    ios::openmode expected{};
    std::string lines;
    for (int flag = 1, i = 0; i < 6; flag *= 2, ++i) {
      expected |= (bits & flag) != 0 ? modes[i] : ios::openmode{};
      const std::string line = "5 std::ios_base::openmode ConvertOpenmode openmode is ";
      lines += (bits & flag) != 0 ? line + std::to_string(flag) + " / " : "";
    }
    const auto mode = static_cast<BasicOperations::OpenMode>(bits);
    EXPECT_EQ(Adapter::ToOpenmode(mode), expected);
    lines += "5 std::ios_base::openmode ToOpenmodee stdom is " + std::to_string(expected);
    EXPECT_EQ(log.Joined(), lines);
    const bool isSingle = bits != 0 && bits < 64 && (bits & (bits - 1)) == 0;
    EXPECT_EQ(Thrown<std::invalid_argument>([&] { Adapter::ConvertOpenmode(mode); }),
              isSingle ? "no exception" : "Could not convert given OpenMode");
  }
}

}  // namespace ara::per::testing
