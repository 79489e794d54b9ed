#include "base/log/log.h"

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>
#include <atomic>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <shared_mutex>

namespace base::log {
namespace {

std::atomic<int> g_level{4};
std::atomic<bool> g_check_length{false};

// Logging may happen while statics are being destroyed at exit, so the sink state is never
// destroyed: it lives on the heap for the life of the process.
struct SinkState {
  std::shared_mutex mutex;
  LogSink sink;  // empty means the default stderr sink
  std::mutex stderr_mutex;
};

SinkState& State() {
  static SinkState* state = new SinkState;
  return *state;
}

// Set while this thread runs the installed sink. A sink that logs, or that swaps sinks, would
// take the sink lock a second time on the same thread, which may deadlock.
thread_local bool t_in_sink = false;

class InSinkScope {
 public:
  InSinkScope() { t_in_sink = true; }
  ~InSinkScope() { t_in_sink = false; }
  InSinkScope(const InSinkScope&) = delete;
  InSinkScope& operator=(const InSinkScope&) = delete;
};

void WriteToStderr(const LogRecord& record) {
  std::string line = FormatLogLine(record);
  line += '\n';
  std::lock_guard<std::mutex> lock(State().stderr_mutex);
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
}

}  // namespace

int GetLogLevel() {
  return g_level.load(std::memory_order_relaxed);
}
void SetLogLevel(int level) {
  g_level.store(level, std::memory_order_relaxed);
}
bool GetCheckLogLength() {
  return g_check_length.load(std::memory_order_relaxed);
}
void SetCheckLogLength(bool check) {
  g_check_length.store(check, std::memory_order_relaxed);
}

std::string FormatLogLine(const LogRecord& record) {
  timeval now{};
  gettimeofday(&now, nullptr);
  tm local{};
  localtime_r(&now.tv_sec, &local);
  char stamp[64];
  const size_t used = std::strftime(stamp, sizeof stamp, "%Y-%m-%dT%H:%M:%S", &local);
  std::snprintf(stamp + used, sizeof stamp - used, ".%03d", static_cast<int>(now.tv_usec / 1000));

  std::string line;
  line.reserve(64 + record.file.size() + record.function.size() + record.text.size());
  line += stamp;
  line += ' ';
  line += std::to_string(record.level);
  line += ' ';
  line += std::to_string(static_cast<long>(syscall(SYS_gettid)));
  line += ' ';
  line += record.file;
  line += ':';
  line += std::to_string(record.line);
  line += ' ';
  line += record.function;
  line += "| ";
  line += record.text;
  return line;
}

void PrintLog(std::string&& tag, std::string&& file, int line, std::string&& function, int level,
              std::string&& text) {
  LogRecord record{std::move(tag),      std::move(file), line,
                   std::move(function), level,           std::move(text)};
  if (t_in_sink) {
    WriteToStderr(record);
    return;
  }
  SinkState& state = State();
  std::shared_lock<std::shared_mutex> lock(state.mutex);
  if (state.sink) {
    InSinkScope in_sink;
    state.sink(record);
  } else {
    WriteToStderr(record);
  }
}

LogSink SetLogSink(LogSink sink) {
  if (t_in_sink) return {};
  SinkState& state = State();
  std::unique_lock<std::shared_mutex> lock(state.mutex);
  LogSink previous = std::move(state.sink);
  state.sink = std::move(sink);
  return previous;
}

}  // namespace base::log
