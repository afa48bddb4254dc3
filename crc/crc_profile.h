#ifndef CRC_CRC_PROFILE_H_
#define CRC_CRC_PROFILE_H_

#include <endian.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace crc {

/// Which way a register shifts; a reflected checksum shifts right.
enum class Shift { kLeft, kRight };

template <class Register>
using Table = std::array<Register, 256>;

template <class Register>
constexpr int kWidth = std::numeric_limits<Register>::digits;

/// The register without the byte that goes out next.
template <Shift kShift, class Register>
constexpr Register Shifted(Register value, int bits) {
  if constexpr (kShift == Shift::kRight) {
    return static_cast<Register>(std::uint64_t{value} >> bits);
  } else {
    return static_cast<Register>(std::uint64_t{value} << bits);
  }
}

/// The byte that goes out next.
template <Shift kShift, class Register>
constexpr unsigned char NextOut(Register value) {
  return static_cast<unsigned char>(kShift == Shift::kRight ? value
                                                            : value >> (kWidth<Register> - 8));
}

/// The register after one more byte: one look-up.
template <Shift kShift, class Register>
constexpr Register Feed(const Table<Register>& table, Register value, unsigned char byte) {
  return static_cast<Register>(table[NextOut<kShift>(value) ^ byte] ^ Shifted<kShift>(value, 8));
}

/// The table of a polynomial, which is given bit-reversed when the register shifts right.
template <Shift kShift, class Register>
constexpr Table<Register> MakeTable(Register polynomial) {
  constexpr bool kIsRight = kShift == Shift::kRight;
  constexpr Register kOutgoing = kIsRight ? 1 : Register{1} << (kWidth<Register> - 1);
  Table<Register> table{};
  for (unsigned int byte = 0; byte < table.size(); ++byte) {
    auto value =
        static_cast<Register>(std::uint64_t{byte} << (kIsRight ? 0 : kWidth<Register> - 8));
    for (int bit = 0; bit < 8; ++bit) {
      const bool isOne = (value & kOutgoing) != 0;
      value = Shifted<kShift>(value, 1);
      if (isOne) {
        value = static_cast<Register>(value ^ polynomial);
      }
    }
    table[byte] = value;
  }
  return table;
}

/// The tables of a run of bytes: the one at [n] takes a byte that has `kBehind` + n bytes behind
/// it.
template <class Register, std::size_t kCount>
using Slices = std::array<Table<Register>, kCount>;

template <Shift kShift, std::size_t kCount, std::size_t kBehind, class Register>
constexpr Slices<Register, kCount> MakeSlices(const Table<Register>& table) {
  Slices<Register, kCount> slices{};
  for (std::size_t byte = 0; byte < table.size(); ++byte) {
    Register value = table[byte];
    for (std::size_t n = 0; n < kBehind; ++n) {
      value = Feed<kShift>(table, value, 0);
    }
    for (Table<Register>& slice : slices) {
      slice[byte] = value;
      value = Feed<kShift>(table, value, 0);
    }
  }
  return slices;
}

/// The register as the bytes that it adds to the next bytes of the message, the first lowest.
template <Shift kShift, class Register>
std::uint64_t OutgoingBytes(Register value) {
  if constexpr (kShift == Shift::kRight || sizeof value == 1) {
    return value;
  } else {
    static_assert(sizeof value == sizeof(std::uint16_t));
    return __builtin_bswap16(value);
  }
}

inline std::uint64_t LoadLittleEndian(const unsigned char* data) {
  std::uint64_t word = 0;
  std::memcpy(&word, data, sizeof word);
  return le64toh(word);
}

constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::size_t kBraids = 6;
constexpr std::size_t kBlock = kBraids * kWord;
constexpr std::size_t kBraided = 4 * kBlock;  // bytes; a shorter message goes faster without

/// The sum of the look-ups of the bytes of `word`, the last of which takes the table at `last`.
template <class Register>
[[gnu::always_inline]] inline Register LookUp(const Table<Register>* last, std::uint64_t word) {
  // In halves: a byte of 32 bits costs less to get at.
  const auto half = [](const Table<Register>* tables, std::uint32_t bytes) {
    return tables[3][bytes & 0xFF] ^ tables[2][bytes >> 8 & 0xFF] ^ tables[1][bytes >> 16 & 0xFF] ^
           tables[0][bytes >> 24];
  };
  return static_cast<Register>(half(last + 4, static_cast<std::uint32_t>(word)) ^
                               half(last, static_cast<std::uint32_t>(word >> 32)));
}

/// A checksum: its base table, its direction, and what is added to the register in the end. The
/// register starts with all ones.
template <const auto& kTable, Shift kShift,
          typename std::decay_t<decltype(kTable)>::value_type kFinal>
struct Profile {
  using Register = typename std::decay_t<decltype(kTable)>::value_type;

  /// The register before a piece of a message.
  /// @param seed  the result of the pieces before, when this is not the first
  static constexpr Register Start(bool isFirst, Register seed) {
    return isFirst ? std::numeric_limits<Register>::max() : Finish(seed);
  }

  /// The register after `length` bytes, with one look-up a byte.
  static Register FeedAll(Register value, const unsigned char* data, std::size_t length) {
    if (length >= kBraided) {
      const std::size_t size = length / kBlock * kBlock;
      value = FeedBraided(value, data, data + size, std::make_index_sequence<kBraids>());
      data += size;
      length -= size;
    }
    for (; length >= 2 * kWord; length -= 2 * kWord, data += 2 * kWord) {
      const std::uint64_t word = LoadLittleEndian(data) ^ OutgoingBytes<kShift>(value);
      Register behind = LookUp(&kNear[0], LoadLittleEndian(data + kWord));
      asm("" : "+r"(behind));  // not to be mixed with the sum below, which waits for the register
      value = static_cast<Register>(behind ^ LookUp(&kNear[kWord], word));
    }
    for (; length > 0; --length, ++data) {
      value = Feed<kShift>(kTable, value, *data);
    }
    return value;
  }

  static constexpr Register Finish(Register value) { return static_cast<Register>(value ^ kFinal); }

 private:
  /// Each braid takes every `kBraids`-th word into a register of its own, so that none waits for
  /// another; only the words of the last block come one after the other.
  template <std::size_t... kBraid>
  static Register FeedBraided(Register value, const unsigned char* data, const unsigned char* end,
                              std::index_sequence<kBraid...>) {
    std::array<Register, kBraids> braids = {value};
    for (; data != end - kBlock; data += kBlock) {
      ((braids[kBraid] = FeedWord(kFar, braids[kBraid], data + kBraid * kWord)), ...);
    }
    value = 0;
    ((value =
          FeedWord(kNear, static_cast<Register>(value ^ braids[kBraid]), data + kBraid * kWord)),
     ...);
    return value;
  }

  template <class Tables>
  [[gnu::always_inline]] static Register FeedWord(const Tables& tables, Register value,
                                                  const unsigned char* data) {
    return LookUp(&tables[0], LoadLittleEndian(data) ^ OutgoingBytes<kShift>(value));
  }

  static constexpr auto kNear = MakeSlices<kShift, 2 * kWord, 0>(kTable);
  static constexpr auto kFar = MakeSlices<kShift, kWord, (kBraids - 1) * kWord>(kTable);
};

inline constexpr auto lookupTableCrc8 = MakeTable<Shift::kLeft, unsigned char>(0x1D);
inline constexpr auto lookupTableCrc8H2F = MakeTable<Shift::kLeft, unsigned char>(0x2F);
inline constexpr auto lookupTableCrc16 = MakeTable<Shift::kLeft, unsigned short>(0x1021);
inline constexpr auto lookupTableCrc32 = MakeTable<Shift::kRight, unsigned int>(0xEDB88320);
inline constexpr auto lookupTableCrc32P4 = MakeTable<Shift::kRight, unsigned int>(0xC8DF352F);
inline constexpr auto lookupTableCrc64 =
    MakeTable<Shift::kRight, unsigned long>(0xC96C5795D7870F42);

using Crc8 = Profile<lookupTableCrc8, Shift::kLeft, 0xFF>;
using Crc8H2F = Profile<lookupTableCrc8H2F, Shift::kLeft, 0xFF>;
using Crc16 = Profile<lookupTableCrc16, Shift::kLeft, 0>;
using Crc32 = Profile<lookupTableCrc32, Shift::kRight, 0xFFFFFFFF>;
using Crc32P4 = Profile<lookupTableCrc32P4, Shift::kRight, 0xFFFFFFFF>;
using Crc64 = Profile<lookupTableCrc64, Shift::kRight, 0xFFFFFFFFFFFFFFFF>;

}  // namespace crc

#endif  // CRC_CRC_PROFILE_H_
