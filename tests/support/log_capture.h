#pragma once

// RAII capture of log records for tests:
//
//   LogCapture capture(6);            // log level 6 while the object lives
//   ... code under test ...
//   QVERIFY(capture.Contains(1, "custom event handler didn't init"));
//
// The previous level and sink come back when the capture goes away. Records are collected
// from every thread under a lock.

#include <mutex>
#include <string>
#include <vector>

#include "base/log/log.h"

class LogCapture {
 public:
  explicit LogCapture(int level = 6) : previous_level_(base::log::GetLogLevel()) {
    base::log::SetLogLevel(level);
    previous_sink_ = base::log::SetLogSink([this](const base::log::LogRecord& record) {
      std::lock_guard<std::mutex> lock(mutex_);
      records_.push_back(record);
    });
  }
  ~LogCapture() {
    base::log::SetLogSink(std::move(previous_sink_));
    base::log::SetLogLevel(previous_level_);
  }
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::vector<base::log::LogRecord> Records() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return records_;
  }
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const auto& record : Records()) texts.push_back(record.text);
    return texts;
  }
  /// Number of records with exactly this level and text.
  int Count(int level, const std::string& text) const {
    int n = 0;
    for (const auto& record : Records()) n += record.level == level && record.text == text;
    return n;
  }
  bool Contains(int level, const std::string& text) const { return Count(level, text) > 0; }
  size_t Size() const { return Records().size(); }
  void Clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    records_.clear();
  }

 private:
  int previous_level_;
  base::log::LogSink previous_sink_;
  mutable std::mutex mutex_;
  std::vector<base::log::LogRecord> records_;
};
