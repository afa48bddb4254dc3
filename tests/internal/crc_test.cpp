#include "crc/crc.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <random>
#include <regex>
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

template <auto kFunction>
unsigned long Call(BufferView view, bool isFirstCall, unsigned long seed) {
  using Result = decltype(kFunction(std::move(view), isFirstCall, 0));
  return kFunction(std::move(view), isFirstCall, static_cast<Result>(seed));
}

unsigned int SumOf(const Bytes& bytes) {
  return CRC::do_crc32(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

struct ProfileCase {
  unsigned long (*calculate)(BufferView, bool, unsigned long);
  int width;                 // from 32 on the bits are reflected
  unsigned long polynomial;  // in normal form
  unsigned long checkValue;
  const char* lines;  // of a first call over the check text
};

const ProfileCase kProfiles[] = {
    {Call<&CRC::CalculateCRC8>, 8, 0x1D, 0x4B, "|8 isFirstCall is :1|8 crc is 75"},
    {Call<&CRC::CalculateCRC8H2F>, 8, 0x2F, 0xDF, "|8H2F isFirstCall is 1|8H2F crc is :223"},
    {Call<&CRC::CalculateCRC16>, 16, 0x1021, 0x29B1, "|16 isFirstCall is:1 |16 crc is: 10673"},
    {Call<&CRC::CalculateCRC32>, 32, 0x04C11DB7, 0xCBF43926, "|32 isFirstCall is 1|32 crc is: "},
    {Call<&CRC::CalculateCRC32P4>, 32, 0xF4ACFB13, 0x1697D06A,
     "|32P4 isFirstCall is 1 |32P4 crc:379048042 "},
    {Call<&CRC::CalculateCRC64>, 64, 0x42F0E1EBA9EA3693, 0x995DC9BBDF1939FA,
     "|64 isFirstCall is:1 |64 crc is -551994886"},
};

/// All lines, with a bar for what each begins with.
std::string Lines(const LogCapture& log, const char* part) {
  return std::regex_replace(log.Joined(), std::regex(std::string("( / )?") + part), "|");
}

unsigned long Reversed(unsigned long value, int width) {
  unsigned long reversed = 0;
  for (int bit = 0; bit < width; ++bit, value >>= 1) {
    reversed = reversed << 1 | (value & 1);
  }
  return reversed;
}

unsigned long BitByBit(const ProfileCase& profile, const Bytes& bytes) {
  const bool reflected = profile.width >= 32;
  const unsigned long ones = ~0UL >> (64 - profile.width);
  unsigned long value = ones;
  for (std::size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
    const unsigned long in = bytes[bit / 8] >> (reflected ? bit % 8 : 7 - bit % 8) & 1;
    const unsigned long out = value >> (profile.width - 1);
    value = (value << 1 & ones) ^ (in == out ? 0 : profile.polynomial);
  }
  return (reflected ? Reversed(value, profile.width) : value) ^ (profile.width == 16 ? 0 : ones);
}

TEST(CrcTest, PublishedCheckValuesAndLogLines) {
  for (const ProfileCase& profile : kProfiles) {
    const LogCapture log;
    EXPECT_EQ(profile.calculate({kCheckText.data(), 9}, true, 7), profile.checkValue);
    EXPECT_EQ(Lines(log, "5 CRC::CalculateCRC"), profile.lines);
    EXPECT_EQ(profile.calculate({nullptr, 0}, false, 7), 7U) << profile.lines;
    EXPECT_NE(log.Lines()[2].text.find('0'), std::string::npos) << profile.lines;
  }
}

TEST(CrcTest, PiecesGiveTheSumOfTheWholeAsBitByBit) {
  std::mt19937 random(20240229);
  for (int round = 0; round < 100; ++round) {
    Bytes bytes(round == 0 ? 0 : random() % 2001);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random()); });
    for (const ProfileCase& profile : kProfiles) {
      SCOPED_TRACE(std::string(profile.lines) + ", bytes: " + std::to_string(bytes.size()));
      const unsigned long expected = BitByBit(profile, bytes);
      EXPECT_EQ(profile.calculate({bytes, 0, bytes.size()}, true, random()), expected);
      unsigned long sum = profile.calculate({nullptr, 0}, true, random());
      for (std::size_t begin = 0, end = 0; begin < bytes.size(); begin = end) {
        end += random() % (bytes.size() - begin + 1);
        sum = profile.calculate({bytes, begin, end}, false, sum);
      }
      EXPECT_EQ(sum, expected);
    }
    EXPECT_EQ(SumOf(bytes), BitByBit(kProfiles[3], bytes));
    const unsigned long value = std::uint64_t{random()} << 32 | random();
    EXPECT_EQ(CRC::Reflect(value), Reversed(value, 64));
  }
}

TEST(CrcTest, PointerFormLogsTheRegisterAndReflectEachStep) {
  const LogCapture log;
  EXPECT_EQ(SumOf(kCheckText), 0xCBF43926);
  EXPECT_EQ(CRC::do_crc32(nullptr, 0), 0U);
  EXPECT_EQ(CRC::Reflect(0x0000000200000002UL), 0x4000000040000000);
  EXPECT_EQ(Lines(log, "5 CRC::"),
            "|do_crc32 crc is :873187033|do_crc32 crc is :-1|Reflect64 crc is 2 |Reflect crc is 2 "
            "|Reflect end|Reflect crc is 2 |Reflect end|Reflect64 reflected is 1073741824");
}

TEST(BufferViewTest, ViewShowsTheBytesOfItsFormAndAMoveEmptiesTheSource) {
  const Bytes bytes = {1, 2, 3, 4};
  BufferView first(bytes, 1, 3), assigned(bytes, 4), moved(std::move(first));
  EXPECT_EQ(CRC::CalculateCRC32({bytes.data() + 1, 3}, true), SumOf({2, 3, 4}));
  EXPECT_EQ(CRC::CalculateCRC32({bytes, 2}, true), SumOf({1, 2}));
  assigned = std::move(moved);
  assigned = std::move(*&assigned);
  EXPECT_EQ(CRC::CalculateCRC32(std::move(assigned), true), SumOf({2, 3}));
  for (BufferView* const source : {&first, &moved, &assigned}) {
    EXPECT_TRUE(source->isValid());
    EXPECT_EQ(CRC::CalculateCRC32(std::move(*source), true), 0U);
  }
}

template <class Exception, class... Arguments>
void ExpectMade(const std::string& thrown, const std::string& lines, Arguments... arguments) {
  const LogCapture log;
  EXPECT_EQ(Thrown<Exception>([&] { BufferView view(arguments...); }), thrown);
  EXPECT_EQ(Lines(log, "3 BufferView::BufferView"), lines);
}

TEST(BufferViewTest, EachFormLogsWarningsAndRefusesWhatCannotBeRead) {
  const Bytes bytes = {1, 2, 3, 4};
  const unsigned char* const null = nullptr;
  ExpectMade<std::invalid_argument>("no exception", "", null, 0UL);
  ExpectMade<std::invalid_argument>("data is incorrect", "| data is incorrect", null, 1UL);
  const std::string length = "|(const Buffer& buf, size_t length)";
  std::string text = "Length is incorrect.";
  ExpectMade<std::length_error>("no exception", length, bytes, 4UL);
  ExpectMade<std::length_error>(text, length + "| " + text, bytes, 0UL);
  ExpectMade<std::length_error>(text, length + "| " + text, bytes, 5UL);
  ExpectMade<std::out_of_range>("no exception", "| buf.size() 4", bytes, 4UL, 4UL);
  text = "Incorrect buffer boundaries (begin > end).";
  ExpectMade<std::invalid_argument>(text, "| " + text, bytes, 3UL, 2UL);
  text = "Length is incorrect (end > buf.size()).";
  ExpectMade<std::out_of_range>(text, "| buf.size() 4| " + text, bytes, 0UL, 5UL);
}

TEST(BufferViewTest, VectorIsShownInHexadecimalButForUpperCaseLetters) {
  std::ostringstream stream;
  stream << std::hex;
  ::operator<<(::operator<<(stream, {}), {'A', 'z', 0, 'Z', '[', 0xFF, '0'}) << std::setw(4) << 31;
  EXPECT_EQ(stream.str(), "A[7a][00]Z[5b][ff][30]0031");
}

}  // namespace
}  // namespace ara::per::testing
