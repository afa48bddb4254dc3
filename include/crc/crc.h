#ifndef CRC_CRC_H_
#define CRC_CRC_H_

#include "ara/per/export.h"
#include "crc/buffer.h"

namespace crc {

/// The checksums of the AUTOSAR CRC library (AUTOSAR_SWS_CRCLibrary), by table.
///
/// A message may come in pieces: call first with `isFirstCall` true, then for each further piece
/// with false and the result so far as `seed`; the last result is that of the whole message. In a
/// first call `seed` is ignored. None of the operations throws; all are safe from any thread.
///
/// The check value is the checksum of the nine bytes of "123456789".
class ARA_PER_EXPORT CRC {
 public:
  /// SAE J1850, polynomial 0x1D; check value 0x4B.
  static unsigned char CalculateCRC8(BufferView buffer, bool isFirstCall, unsigned char seed = 0);

  /// Polynomial 0x2F; check value 0xDF.
  static unsigned char CalculateCRC8H2F(BufferView buffer, bool isFirstCall,
                                        unsigned char seed = 0);

  /// CCITT-FALSE, polynomial 0x1021; check value 0x29B1. The one without a final complement: an
  /// empty message has 0xFFFF.
  static unsigned short CalculateCRC16(BufferView buffer, bool isFirstCall,
                                       unsigned short seed = 0);

  /// IEEE 802.3, polynomial 0x04C11DB7, reflected; check value 0xCBF43926.
  static unsigned int CalculateCRC32(BufferView buffer, bool isFirstCall, unsigned int seed = 0);

  /// AUTOSAR E2E profile 4, polynomial 0xF4ACFB13, reflected; check value 0x1697D06A.
  static unsigned int CalculateCRC32P4(BufferView buffer, bool isFirstCall, unsigned int seed = 0);

  /// ECMA-182, polynomial 0x42F0E1EBA9EA3693, reflected; check value 0x995DC9BBDF1939FA.
  static unsigned long CalculateCRC64(BufferView buffer, bool isFirstCall, unsigned long seed = 0);

  /// `CalculateCRC32` in a first call.
  /// @param data  `length` readable bytes; not looked at when `length` is 0
  static unsigned int do_crc32(const unsigned char* data, unsigned int length);

  /// @return the bits of `value` in reverse order
  static unsigned int Reflect(unsigned int value);
  static unsigned long Reflect(unsigned long value);

  /// Where the operations log, at debug level.
  static ara::per::LogExtend* const mCrcLog;
};

}  // namespace crc

#endif  // CRC_CRC_H_
