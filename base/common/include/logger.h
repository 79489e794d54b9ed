#pragma once

/// @file
/// The log writer every diagnostic line of the library goes through.
///
///     QTU_LOG(base::log::kLevelWarning) << "theme manager missing, using " << name;
///
/// The level is tested before anything else: when base::log::GetLogLevel() is below the
/// record's level no writer is built and no argument after QTU_LOG(...) is evaluated.
/// A record gathers its text in a per-thread buffer of 1024 characters; text beyond that
/// is dropped. The record reaches base::log::PrintLog when the statement ends.

#include <cstddef>
#include <cstring>
#include <functional>
#include <string>
#include <type_traits>

#include "base/log/log.h"
#include "base/threading/thread_local.h"

// glibc's assertion reporter; declared here because <assert.h> hides it under NDEBUG, and the
// length check must fire in release builds too.
extern "C" void __assert_fail(const char* assertion, const char* file, unsigned int line,
                              const char* function) noexcept __attribute__((__noreturn__));

namespace base::log {

/// The per-thread text buffer shared by all records of one thread, one after the other.
/// Stored in base::threading::ThreadLocal under kLogStreamKey.
struct LogStreamBuffer {
  char* data;    ///< capacity + 1 bytes; data[length] is always 0
  int capacity;  ///< 1024 for every buffer the writer makes
  int length;    ///< Characters gathered so far by the record being written
};

// The levels the library writes at; a record is written when GetLogLevel() is at least its level.
inline constexpr int kLevelFailure = 1;     ///< an operation could not do what it was asked
inline constexpr int kLevelWarning = 4;     ///< done, but not as the caller probably meant
inline constexpr int kLevelQtCritical = 5;  ///< Qt's critical messages relayed into the log
inline constexpr int kLevelInfo = 6;        ///< information and traces

/// The base::threading::ThreadLocal key of the thread's LogStreamBuffer.
inline constexpr char kLogStreamKey[] = "base.log.stream";
/// Characters a record keeps; the rest is dropped.
inline constexpr int kLogStreamCapacity = 1024;
/// The one level whose records are exempt from the length check.
inline constexpr int kUnlimitedLogLevel = 7;

/// A new empty buffer of `capacity` characters (plus the terminating zero).
inline LogStreamBuffer* NewLogStreamBuffer(int capacity) {
  auto* buffer = new LogStreamBuffer;
  buffer->data = new char[static_cast<size_t>(capacity) + 1]();
  buffer->capacity = capacity;
  buffer->length = 0;
  return buffer;
}

/// Frees a buffer made by NewLogStreamBuffer; the ThreadLocal deleter of kLogStreamKey.
inline void DeleteLogStreamBuffer(void* value) {
  auto* buffer = static_cast<LogStreamBuffer*>(value);
  delete[] buffer->data;
  delete buffer;
}

/// Offset of the base name in a source path; evaluated by the compiler at each call site.
constexpr size_t BaseNameOffset(const char* path) {
  size_t offset = 0;
  for (size_t i = 0; path[i] != '\0'; ++i) {
    if (path[i] == '/' || path[i] == '\\') offset = i + 1;
  }
  return offset;
}

/// Swallows the writer expression so that QTU_LOG can be a single conditional expression
/// (no dangling-else surprises when used under an unbraced if).
struct LogVoidify {
  /// Takes the writer and discards it; the writer's destructor then hands the record on.
  template <typename T>
  void operator&(T&&) const {}
};

}  // namespace base::log

// The name is the framework's, shared with the client's other modules.
/// One log record being written: QTU_LOG builds it, operator<< appends text to the thread's
/// buffer, and the destructor hands the record to its printer (base::log::PrintLog).
class __logwriter {
 public:
  /// Receives the finished record: tag, file, line, function, level, text.
  using Printer =
      std::function<void(std::string&&, std::string&&, int, std::string&&, int, std::string&&)>;

  /// Starts a record of `level` for the call site `file`:`line` in `function`; the thread's
  /// text buffer is attached (created on the thread's first record).
  __logwriter(int level, std::string&& file, int line, std::string&& function, Printer&& printer)
      : buffer_(AttachBuffer()),
        file(std::move(file)),
        function(std::move(function)),
        level(level),
        line(line),
        printer(std::move(printer)) {}

  __logwriter(const __logwriter&) = delete;
  __logwriter& operator=(const __logwriter&) = delete;

  virtual ~__logwriter() {
    if (!printer || !buffer_) return;
    buffer_->data[buffer_->length] = '\0';
    std::string text(buffer_->data, static_cast<size_t>(buffer_->length));
    buffer_->length = 0;
    buffer_->data[0] = '\0';

    if (level != base::log::kUnlimitedLogLevel &&
        text.size() > static_cast<size_t>(base::log::kLogStreamCapacity)) {
      if (base::log::GetCheckLogLength()) {
        __assert_fail("false", __FILE__, __LINE__, __PRETTY_FUNCTION__);
      }
      text.resize(base::log::kLogStreamCapacity);
    }
    printer(std::move(tag), std::move(file), line, std::move(function), level, std::move(text));
  }

  /// Appends `text`; a null pointer appends "nullptr". Text beyond the buffer is dropped.
  __logwriter& operator<<(const char* text) {
    if (!text) return Append("nullptr", 7);
    return Append(text, std::strlen(text));
  }
  /// Appends `text` (UTF-8 bytes as they are).
  __logwriter& operator<<(const std::string& text) { return Append(text.data(), text.size()); }
  /// Appends `value` in decimal.
  __logwriter& operator<<(int value) { return *this << std::to_string(value); }

 private:
  static base::log::LogStreamBuffer* AttachBuffer() {
    using base::threading::ThreadLocal;
    auto* buffer =
        static_cast<base::log::LogStreamBuffer*>(ThreadLocal::GetValue(base::log::kLogStreamKey));
    if (buffer) return buffer;
    buffer = base::log::NewLogStreamBuffer(base::log::kLogStreamCapacity);
    ThreadLocal::EnsureInitializedForCurrentThread();
    ThreadLocal::SetValue(base::log::kLogStreamKey, buffer, base::log::DeleteLogStreamBuffer);
    // Read it back: a thread that is already tearing down its store frees the buffer at once.
    return static_cast<base::log::LogStreamBuffer*>(
        ThreadLocal::GetValue(base::log::kLogStreamKey));
  }

  __logwriter& Append(const char* text, size_t size) {
    if (!buffer_) return *this;
    const size_t room = static_cast<size_t>(buffer_->capacity - buffer_->length);
    const size_t n = size < room ? size : room;
    std::memcpy(buffer_->data + buffer_->length, text, n);
    buffer_->length += static_cast<int>(n);
    buffer_->data[buffer_->length] = '\0';
    return *this;
  }

  // The thread's buffer, or null when the thread's store is already gone (the record is lost).
  base::log::LogStreamBuffer* buffer_;
  std::string file;
  std::string function;
  int level;
  int line;
  std::string tag;  // always empty; the sink may give it a meaning
  Printer printer;
};

/// Base name of the including source file, cut by the compiler.
// Indexed rather than added to, which clang would flag (-Wstring-plus-int) at every call site.
#define QTU_LOG_FILE_NAME \
  (&__FILE__[std::integral_constant<size_t, ::base::log::BaseNameOffset(__FILE__)>::value])

/// QTU_LOG(level) << part << part...; see the top of this file. `level` is read twice (the test,
/// then the record), so pass a plain value.
#define QTU_LOG(level) QTU_LOG_IN_FILE(level, QTU_LOG_FILE_NAME)

/// QTU_LOG with `file` (a base name, like QTU_LOG_FILE_NAME's) as the record's file instead of the
/// including unit's: for a facility whose source is split into several units, so that its
/// records name the facility whichever unit wrote them. Line and function stay the call site's.
#define QTU_LOG_IN_FILE(level, file)                                                    \
  !(::base::log::GetLogLevel() >= (level))                                              \
      ? (void)0                                                                         \
      : ::base::log::LogVoidify() & ::__logwriter((level), std::string(file), __LINE__, \
                                                  std::string(__func__), ::base::log::PrintLog)
