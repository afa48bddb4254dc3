#ifndef ARA_PER_READ_WRITE_ACCESSOR_H_
#define ARA_PER_READ_WRITE_ACCESSOR_H_

#include "ara/per/export.h"
#include "ara/per/read_accessor.h"
#include "ara/per/write_accessor.h"

namespace ara::per {

/// Reads and writes a file of a file proxy, both at the one position of the accessor.
class ARA_PER_EXPORT ReadWriteAccessor : public ReadAccessor, public WriteAccessor {
 public:
  ~ReadWriteAccessor() override;
};

}  // namespace ara::per

#endif  // ARA_PER_READ_WRITE_ACCESSOR_H_
