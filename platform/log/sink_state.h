#ifndef PLATFORM_LOG_SINK_STATE_H_
#define PLATFORM_LOG_SINK_STATE_H_

#include <string_view>

#include "ara/log/logging.h"

namespace ara::log {

/// Hands a finished line to the sink in force, or to the default one if called inside a sink.
void SendToSink(LogLevel level, std::string_view contextId, std::string_view line);

}  // namespace ara::log

#endif  // PLATFORM_LOG_SINK_STATE_H_
