#ifndef ARA_PER_PERSISTENCY_H_
#define ARA_PER_PERSISTENCY_H_

/// All of `ara::per`. The checksums have a header of their own, "crc/crc.h".

#include "ara/per/basic_operations.h"
#include "ara/per/file_proxy_accessor_factory.h"
#include "ara/per/internal_access.h"
#include "ara/per/json_create_array_object.h"
#include "ara/per/json_create_object.h"
#include "ara/per/json_parser.h"
#include "ara/per/json_read_handler.h"
#include "ara/per/key_value_storage.h"
#include "ara/per/kvs_type.h"
#include "ara/per/kvs_type_impl_internal_type.h"
#include "ara/per/log_extend.h"
#include "ara/per/logic_error_exception.h"
#include "ara/per/per_update.h"
#include "ara/per/per_version.h"
#include "ara/per/physical_storage_error_exception.h"
#include "ara/per/read_accessor.h"
#include "ara/per/read_write_accessor.h"
#include "ara/per/write_accessor.h"

#endif  // ARA_PER_PERSISTENCY_H_
