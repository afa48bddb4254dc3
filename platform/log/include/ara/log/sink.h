#ifndef ARA_LOG_SINK_H_
#define ARA_LOG_SINK_H_

#include <functional>
#include <string_view>

#include "ara/log/logging.h"

namespace ara::log {

/// Takes one finished line: its level, the context of its logger, and the text without a line end.
/// The views are valid during the call only.
using Sink = std::function<void(LogLevel level, std::string_view contextId, std::string_view line)>;

/// Sets the least urgent level that is shown, for the whole process and from the next line on.
/// At start it is what the environment variable ARA_LOG_LEVEL says, a number from 0 to 6 or a
/// level's name ("off", "fatal", "error", "warn", "info", "debug", "verbose") in capital or small
/// letters. Without the variable, or when it says anything else, it is `LogLevel::kError`.
/// Safe from any thread.
ARA_LOG_EXPORT void SetThreshold(LogLevel threshold) noexcept;

/// The threshold in force. Safe from any thread.
ARA_LOG_EXPORT LogLevel GetThreshold() noexcept;

/// Sends all further lines to `sink`; an empty function restores the default, which writes
/// "[contextId][LEVEL] line" and a line end to standard error, each line whole.
///
/// The sink is called in the thread that logs, from several threads at once if several log, and
/// must not throw. It may log, set the threshold and set a sink: no lock is held, and a line that
/// is logged inside the sink goes to the default sink, so that it never calls itself. It must not
/// change what the code that logs is working on, such as the database whose line it takes. A call
/// that another thread has begun may still run in the old sink when `SetSink` returns; the old
/// function is kept for it that long. Safe from any thread.
ARA_LOG_EXPORT void SetSink(Sink sink);

}  // namespace ara::log

#endif  // ARA_LOG_SINK_H_
