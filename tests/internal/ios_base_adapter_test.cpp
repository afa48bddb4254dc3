#include <stdexcept>

#include <gtest/gtest.h>

#include "fileaccess/std_ios_base_adapter.h"
#include "tests/support/log_capture.h"
#include "tests/support/thrown.h"

namespace ara::per::testing {

using std::ios;
using Adapter = helper::ios_base_adapter;
using Mode = BasicOperations::OpenMode;

TEST(IosBaseAdapterTest, ValuesBecomeThoseOfStreamsUnknownFlagsAreLeftOutAndOthersRefused) {
  const ios::openmode modes[] = {ios::app, ios::binary, ios::in, ios::out, ios::trunc, ios::ate};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(Adapter::ToOpenmode(static_cast<Mode>(1 << i | 0xC0)), modes[i]) << i;
  }
  const LogCapture log;
  EXPECT_EQ(Adapter::ToOpenmode(Mode::out | Mode::in), ios::in | ios::out);
  EXPECT_EQ(Thrown<std::invalid_argument>([] { Adapter::ConvertOpenmode(Mode{0x0C}); }),
            "Could not convert given OpenMode");
  EXPECT_EQ(
      Thrown<std::invalid_argument>([] { Adapter::ToSeekdir(BasicOperations::SeekDirection{3}); }),
      "Seek_dir not handled in switch statement");
  EXPECT_EQ(log.Joined(),
            "5 std::ios_base::openmode ConvertOpenmode openmode is 4 / "
            "5 std::ios_base::openmode ConvertOpenmode openmode is 8 / "
            "5 std::ios_base::openmode ToOpenmodee stdom is 24 / "
            "5 std::ios_base::openmode ConvertOpenmode openmode is 12 / "
            "5 std::ios_base::seekdir ToSeekdir Seek_dir not handled in switch statement");
}

}  // namespace ara::per::testing
