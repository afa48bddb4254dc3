#ifndef SUPPORT_LOG_HERE_H_
#define SUPPORT_LOG_HERE_H_

#include "ara/per/log_extend.h"

#define ARA_PER_TEXT_OF(token) #token
#define ARA_PER_LINE_TEXT(line) ARA_PER_TEXT_OF(line)

/// The `LogPlace` of the line where it stands.
#define ARA_PER_HERE \
  ::ara::per::LogPlace { "[" __FILE__ "][" ARA_PER_LINE_TEXT(__LINE__) "]" }

#endif  // SUPPORT_LOG_HERE_H_
