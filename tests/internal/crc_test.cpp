#include "crc/crc.h"

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/thrown.h"

namespace ara::per::testing {
namespace {

using crc::BufferView;
using crc::CRC;
using Bytes = std::vector<unsigned char>;

const Bytes kCheckText = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};

/// A sum by its definition; from 32 bits on, the lowest bit of a byte and of the sum comes first.
unsigned long BitByBit(const Bytes& bytes, std::size_t width, unsigned long polynomial) {
  const unsigned long ones = ~0UL >> (64 - width);
  unsigned long sum = ones;
  for (std::size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
    const bool isRight = width >= 32;
    const unsigned long in = bytes[bit / 8] >> (isRight ? bit % 8 : 7 - bit % 8) & 1;
    const unsigned long out = isRight ? sum & 1 : sum >> (width - 1);
    sum = (isRight ? sum >> 1 : sum << 1 & ones) ^ (in == out ? 0 : polynomial);
  }
  return sum ^ (width == 16 ? 0 : ones);
}

template <class Sum>
void ExpectProfile(Sum (*calculate)(BufferView, bool, Sum), unsigned long polynomial,
                   unsigned long checkValue, const std::string& before, const std::string& after) {
  const LogCapture log;
  EXPECT_EQ(calculate({kCheckText.data(), 9}, true, 7), checkValue);
  EXPECT_EQ(log.Joined(), "5 CRC::CalculateCRC" + before + " / 5 CRC::CalculateCRC" + after);
  std::mt19937 random(20240229);
  for (std::size_t size = 0; size < 2000; size += 1 + random() % 40) {
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random()); });
    const std::size_t split = random() % (size + 1);
    const Sum first = calculate({bytes, 0, split}, true, static_cast<Sum>(random()));
    EXPECT_EQ(calculate({bytes, split, size}, false, first),
              BitByBit(bytes, 8 * sizeof first, polynomial))
        << before << ", bytes: " << size;
  }
}

TEST(CrcTest, ProfilesGiveTheirCheckValuesAndForPiecesTheSumOfTheWholeAndLogBoth) {
  ExpectProfile(CRC::CalculateCRC8, 0x1D, 0x4B, "8 isFirstCall is :1", "8 crc is 75");
  ExpectProfile(CRC::CalculateCRC8H2F, 0x2F, 0xDF, "8H2F isFirstCall is 1", "8H2F crc is :223");
  ExpectProfile(CRC::CalculateCRC16, 0x1021, 0x29B1, "16 isFirstCall is:1 ", "16 crc is: 10673");
  ExpectProfile(CRC::CalculateCRC32, 0xEDB88320, 0xCBF43926, "32 isFirstCall is 1", "32 crc is: ");
  ExpectProfile(CRC::CalculateCRC32P4, 0xC8DF352F, 0x1697D06A, "32P4 isFirstCall is 1 ",
                "32P4 crc:379048042 ");
  ExpectProfile(CRC::CalculateCRC64, 0xC96C5795D7870F42, 0x995DC9BBDF1939FA, "64 isFirstCall is:1 ",
                "64 crc is -551994886");
}

TEST(CrcTest, LaterCallPointerFormAndReflectLogTheirSteps) {
  const LogCapture log;
  EXPECT_EQ(CRC::CalculateCRC8({nullptr, 0}, false, 7), 7);
  EXPECT_EQ(CRC::do_crc32(kCheckText.data(), 9), 0xCBF43926);
  EXPECT_EQ(CRC::Reflect(0x0123456789ABCDEFUL), 0xF7B3D591E6A2C480);
  EXPECT_EQ(log.Joined(),
            "5 CRC::CalculateCRC8 isFirstCall is :0 / 5 CRC::CalculateCRC8 crc is 7 / "
            "5 CRC::do_crc32 crc is :873187033 / 5 CRC::Reflect64 crc is -1985229329  / "
            "5 CRC::Reflect crc is 19088743  / 5 CRC::Reflect end / "
            "5 CRC::Reflect crc is -1985229329  / 5 CRC::Reflect end / "
            "5 CRC::Reflect64 reflected is -425540480");
}

TEST(BufferViewTest, MoveTakesTheBytesFromTheSource) {
  BufferView first(kCheckText, 2), moved(std::move(first)), assigned(kCheckText, 9);
  assigned = std::move(moved);
  EXPECT_EQ(CRC::CalculateCRC32(std::move(assigned), true), CRC::do_crc32(kCheckText.data(), 2));
  for (BufferView* const source : {&first, &moved, &assigned}) {
    EXPECT_EQ(CRC::CalculateCRC32(std::move(*source), true), 0U);
  }
}

template <class Exception, class... Arguments>
void ExpectRefused(const std::string& what, const std::string& before, Arguments... arguments) {
  const LogCapture log;
  EXPECT_EQ(Thrown<Exception>([&] { BufferView view(arguments...); }), what);
  EXPECT_EQ(log.Joined(), before + "3 BufferView::BufferView " + what);
}

TEST(BufferViewTest, EachFormLogsWarningsAndRefusesWhatCannotBeRead) {
  const std::string line = "3 BufferView::BufferView(const Buffer& buf, size_t length) / ";
  const std::string size = "3 BufferView::BufferView buf.size() 9 / ";
  ExpectRefused<std::invalid_argument>("data is incorrect", "", nullptr, 1UL);
  ExpectRefused<std::length_error>("Length is incorrect.", line, kCheckText, 0UL);
  ExpectRefused<std::length_error>("Length is incorrect.", line, kCheckText, 10UL);
  ExpectRefused<std::invalid_argument>("Incorrect buffer boundaries (begin > end).", "", kCheckText,
                                       3UL, 2UL);
  ExpectRefused<std::out_of_range>("Length is incorrect (end > buf.size()).", size, kCheckText, 0UL,
                                   10UL);
}

TEST(BufferViewTest, VectorIsShownInHexadecimalButForUpperCaseLetters) {
  std::ostringstream stream;
  stream << std::hex;
  ::operator<<(::operator<<(stream, {}), {'A', 'z', 0, 'Z', '[', 0xFF, '0'}) << std::setw(4) << 31;
  EXPECT_EQ(stream.str(), "A[7a][00]Z[5b][ff][30]0031");
}

}  // namespace
}  // namespace ara::per::testing
