#include "crc/crc.h"

#include <string_view>

#include "ara/per/log_extend.h"
#include "crc/crc_profile.h"
#include "support/log_here.h"

namespace crc {

using ara::log::LogLevel;
using ara::per::LogExtend;

LogExtend* const CRC::mCrcLog = LogExtend::getLogExtenObject("PersistencyService");

namespace {

// Intended: the texts differ by a blank or a colon.
struct Crc8Lines {
  static constexpr char kBefore[] = "CRC::CalculateCRC8 isFirstCall is :%d";
  static constexpr char kAfter[] = "CRC::CalculateCRC8 crc is %d";
};
struct Crc8H2FLines {
  static constexpr char kBefore[] = "CRC::CalculateCRC8H2F isFirstCall is %d";
  static constexpr char kAfter[] = "CRC::CalculateCRC8H2F crc is :%d";
};
struct Crc16Lines {
  static constexpr char kBefore[] = "CRC::CalculateCRC16 isFirstCall is:%d ";
  static constexpr char kAfter[] = "CRC::CalculateCRC16 crc is: %d";
};
struct Crc32Lines {
  static constexpr char kBefore[] = "CRC::CalculateCRC32 isFirstCall is %d";
  static constexpr char kAfter[] = "CRC::CalculateCRC32 crc is: ";  // Intended: no number
};
struct Crc32P4Lines {
  static constexpr char kBefore[] = "CRC::CalculateCRC32P4 isFirstCall is %d ";
  static constexpr char kAfter[] = "CRC::CalculateCRC32P4 crc:%d ";
};
struct Crc64Lines {
  static constexpr char kBefore[] = "CRC::CalculateCRC64 isFirstCall is:%d ";
  static constexpr char kAfter[] = "CRC::CalculateCRC64 crc is %d";
};

/// Logs a result as `%d` shows it, which is its low 32 bits.
template <class Lines, class Register>
void LogResult(Register crc) {
  if constexpr (std::string_view(Lines::kAfter).find('%') != std::string_view::npos) {
    CRC::mCrcLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Lines::kAfter, static_cast<int>(crc));
  } else {
    CRC::mCrcLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "%s", Lines::kAfter);
  }
}

template <class Profile, class Lines>
typename Profile::Register Calculate(const unsigned char* data, unsigned long length,
                                     bool isFirstCall, typename Profile::Register seed) {
  CRC::mCrcLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, Lines::kBefore,
                         static_cast<int>(isFirstCall));
  const auto crc =
      Profile::Finish(Profile::FeedAll(Profile::Start(isFirstCall, seed), data, length));
  LogResult<Lines>(crc);
  return crc;
}

/// Exchanges neighbouring groups of `bits` bits; `low` masks the lower group of each pair.
constexpr unsigned int ExchangeGroups(unsigned int value, int bits, unsigned int low) {
  return ((value >> bits) & low) | ((value & low) << bits);
}

}  // namespace

unsigned char CRC::CalculateCRC8(BufferView buffer, bool isFirstCall, unsigned char seed) {
  return Calculate<Crc8, Crc8Lines>(buffer.data, buffer.length, isFirstCall, seed);
}

unsigned char CRC::CalculateCRC8H2F(BufferView buffer, bool isFirstCall, unsigned char seed) {
  return Calculate<Crc8H2F, Crc8H2FLines>(buffer.data, buffer.length, isFirstCall, seed);
}

unsigned short CRC::CalculateCRC16(BufferView buffer, bool isFirstCall, unsigned short seed) {
  return Calculate<Crc16, Crc16Lines>(buffer.data, buffer.length, isFirstCall, seed);
}

unsigned int CRC::CalculateCRC32(BufferView buffer, bool isFirstCall, unsigned int seed) {
  return Calculate<Crc32, Crc32Lines>(buffer.data, buffer.length, isFirstCall, seed);
}

unsigned int CRC::CalculateCRC32P4(BufferView buffer, bool isFirstCall, unsigned int seed) {
  return Calculate<Crc32P4, Crc32P4Lines>(buffer.data, buffer.length, isFirstCall, seed);
}

unsigned long CRC::CalculateCRC64(BufferView buffer, bool isFirstCall, unsigned long seed) {
  return Calculate<Crc64, Crc64Lines>(buffer.data, buffer.length, isFirstCall, seed);
}

unsigned int CRC::do_crc32(const unsigned char* data, unsigned int length) {
  const unsigned int crc = Crc32::FeedAll(Crc32::Start(true, 0), data, length);
  // Intended: the register before its complement, unlike the result.
  mCrcLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "CRC::do_crc32 crc is :%d",
                    static_cast<int>(crc));
  return Crc32::Finish(crc);
}

unsigned int CRC::Reflect(unsigned int value) {
  mCrcLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "CRC::Reflect crc is %d ",
                    static_cast<int>(value));
  unsigned int reflected = ExchangeGroups(value, 1, 0x55555555);
  reflected = ExchangeGroups(reflected, 2, 0x33333333);
  reflected = ExchangeGroups(reflected, 4, 0x0F0F0F0F);
  reflected = ExchangeGroups(reflected, 8, 0x00FF00FF);
  reflected = ExchangeGroups(reflected, 16, 0x0000FFFF);
  mCrcLog->logPrint(LogLevel::kDebug, ARA_PER_LINE("CRC::Reflect end"));
  return reflected;
}

unsigned long CRC::Reflect(unsigned long value) {
  mCrcLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "CRC::Reflect64 crc is %d ",
                    static_cast<int>(value));
  const unsigned long low = Reflect(static_cast<unsigned int>(value >> 32));
  const unsigned long high = Reflect(static_cast<unsigned int>(value));
  const unsigned long reflected = high << 32 | low;
  mCrcLog->logPrint(LogLevel::kDebug, ARA_PER_HERE, "CRC::Reflect64 reflected is %d",
                    static_cast<int>(reflected));
  return reflected;
}

}  // namespace crc
