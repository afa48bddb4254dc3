#ifndef SUPPORT_LOG_HERE_H_
#define SUPPORT_LOG_HERE_H_

#include "ara/per/log_extend.h"

#define ARA_PER_TEXT_OF(token) #token
#define ARA_PER_LINE_TEXT(line) ARA_PER_TEXT_OF(line)

/// The place where it stands, or a whole line from there that has no conversions.
#define ARA_PER_HERE ARA_PER_LINE("")
#define ARA_PER_LINE(message) \
  ::ara::per::LogPlace { "[" __FILE__ "][" ARA_PER_LINE_TEXT(__LINE__) "]" message }

#endif  // SUPPORT_LOG_HERE_H_
