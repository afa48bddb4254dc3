#ifndef ARA_PER_PERSISTENCY_H_
#define ARA_PER_PERSISTENCY_H_

/// Everything that an application needs of `ara::per`.

#include "ara/per/key_value_storage.h"
#include "ara/per/kvs_type.h"
#include "ara/per/logic_error_exception.h"
#include "ara/per/per_version.h"
#include "ara/per/physical_storage_error_exception.h"

#endif  // ARA_PER_PERSISTENCY_H_
