#ifndef ARA_PER_PER_VERSION_H_
#define ARA_PER_PER_VERSION_H_

#include "ara/per/export.h"

/// Prints the library's version, two digits a group, and a line end on standard output. Safe from
/// any thread.
ARA_PER_EXPORT void get_version();

#endif  // ARA_PER_PER_VERSION_H_
