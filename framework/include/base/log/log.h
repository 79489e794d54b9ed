#pragma once

/// @file
/// The framework log: level, length check, sink and PrintLog.

#include <functional>
#include <string>

#include "talvex_framework_export.h"

namespace base::log {

/// One log record as it reaches the sink.
struct LogRecord {
  std::string tag;       ///< Free for the sink's use; the library's records leave it empty.
  std::string file;      ///< Base name of the source file that wrote the record.
  int line = 0;          ///< Line of the call site in that file.
  std::string function;  ///< Name of the function that wrote the record.
  int level = 0;         ///< The record's level (1 failures ... 6 information).
  std::string text;      ///< The message, UTF-8.
};

/// Receives every record written; see SetLogSink.
using LogSink = std::function<void(const LogRecord&)>;

/// The current log level: a record of level L is written when GetLogLevel() >= L.
/// Defaults to 4 (warnings). Lock-free; safe from any thread.
TALVEX_FRAMEWORK_EXPORT int GetLogLevel();
/// Sets the level GetLogLevel returns, for every thread.
TALVEX_FRAMEWORK_EXPORT void SetLogLevel(int level);

/// When true, a record longer than the writer's limit stops the process with a failed
/// assertion instead of being cut. Defaults to false.
TALVEX_FRAMEWORK_EXPORT bool GetCheckLogLength();
/// Sets what GetCheckLogLength returns.
TALVEX_FRAMEWORK_EXPORT void SetCheckLogLength(bool check);

/// Hands one record to the current sink, on the calling thread. Sinks may be called from
/// several threads at once; the default sink serialises its output itself. A record written
/// from inside the installed sink (the sink logs) goes straight to the default stderr output.
TALVEX_FRAMEWORK_EXPORT void PrintLog(std::string&& tag, std::string&& file, int line,
                                      std::string&& function, int level, std::string&& text);

/// Replaces the sink and returns the previous one. An empty sink restores the default,
/// which writes one line per record to stderr:
/// "<ISO time> <level> <thread id> <file>:<line> <function>| <text>".
/// Once this returns, the previous sink is no longer running on any thread. Called from inside
/// the installed sink it changes nothing and returns an empty sink.
TALVEX_FRAMEWORK_EXPORT LogSink SetLogSink(LogSink sink);

/// Formats a record the way the default sink writes it (without the trailing newline).
TALVEX_FRAMEWORK_EXPORT std::string FormatLogLine(const LogRecord& record);

}  // namespace base::log
