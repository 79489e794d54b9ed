#include <sys/wait.h>
#include <unistd.h>

#include <QRegularExpression>
#include <QtTest>
#include <atomic>
#include <cstdio>
#include <set>
#include <thread>

#include "base/common/include/logger.h"
#include "support/log_capture.h"

using base::log::LogRecord;
using base::log::LogStreamBuffer;
using base::threading::ThreadLocal;

namespace {

LogStreamBuffer* ThreadBuffer() {
  return static_cast<LogStreamBuffer*>(ThreadLocal::GetValue(base::log::kLogStreamKey));
}

// Replaces this thread's buffer with a larger one, so that a record can outgrow the limit
// and reach the destructor's length guard.
void UseBufferOfCapacity(int capacity) {
  ThreadLocal::SetValue(base::log::kLogStreamKey, base::log::NewLogStreamBuffer(capacity),
                        base::log::DeleteLogStreamBuffer);
}

// Destroyed after the thread-local store on its thread when built before it: its destructor
// logs the way a late thread-exit destructor of a client would.
struct LateLogger {
  ~LateLogger() { QTU_LOG(base::log::kLevelFailure) << "late " << 1; }
};

// Everything written to stderr while `write` runs.
template <typename Fn>
QString StderrOf(Fn write) {
  std::fflush(stderr);
  const int saved = dup(STDERR_FILENO);
  FILE* file = std::tmpfile();
  if (!file) return QString();
  dup2(fileno(file), STDERR_FILENO);
  write();
  std::fflush(stderr);
  dup2(saved, STDERR_FILENO);
  close(saved);
  std::rewind(file);
  QByteArray text;
  char chunk[512];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, file)) > 0) text.append(chunk, int(n));
  std::fclose(file);
  return QString::fromUtf8(text);
}

int g_evaluations = 0;
const char* CountedText() {
  ++g_evaluations;
  return "counted";
}

}  // namespace

class tst_Logger : public QObject {
  Q_OBJECT

 private slots:
  void init() { UseBufferOfCapacity(base::log::kLogStreamCapacity); }

  void recordLongerThanLimit_printsFirst1024Characters() {
    LogCapture capture(6);
    const std::string first(1000, 'a');
    const std::string second(100, 'b');
    QTU_LOG(base::log::kLevelFailure) << first << second;
    const auto records = capture.Records();
    QCOMPARE(records.size(), size_t(1));
    QCOMPARE(records[0].text, first + std::string(24, 'b'));
  }

  void nullCString_printsNullptr() {
    LogCapture capture(6);
    const char* missing = nullptr;
    QTU_LOG(base::log::kLevelFailure) << "name=" << missing << ";";
    QCOMPARE(capture.Texts(), std::vector<std::string>{"name=nullptr;"});
  }

  void streamsStdStringAndInt() {
    LogCapture capture(6);
    QTU_LOG(base::log::kLevelWarning) << std::string("count ") << 42 << " min " << -2147483647 - 1;
    QCOMPARE(capture.Texts(), std::vector<std::string>{"count 42 min -2147483648"});
  }

  void twoRecordsInARow_secondStartsEmpty() {
    LogCapture capture(6);
    QTU_LOG(base::log::kLevelFailure) << "first";
    QTU_LOG(base::log::kLevelFailure) << "second";
    QCOMPARE(capture.Texts(), (std::vector<std::string>{"first", "second"}));
    QCOMPARE(ThreadBuffer()->length, 0);
    QCOMPARE(ThreadBuffer()->data[0], '\0');
  }

  void levelFilter_data() {
    QTest::addColumn<int>("logLevel");
    QTest::addColumn<QList<int>>("printed");
    QTest::newRow("level 0 prints nothing") << 0 << QList<int>{};
    QTest::newRow("level 4 prints 1 and 4") << 4 << QList<int>{1, 4};
    QTest::newRow("level 6 prints all but 7") << 6 << QList<int>{1, 4, 5, 6};
    QTest::newRow("level 7 prints all") << 7 << QList<int>{1, 4, 5, 6, 7};
  }
  void levelFilter() {
    QFETCH(int, logLevel);
    QFETCH(QList<int>, printed);
    LogCapture capture(logLevel);
    for (int level : {1, 4, 5, 6, 7}) QTU_LOG(level) << "level " << level;
    QList<int> seen;
    for (const LogRecord& record : capture.Records()) {
      seen << record.level;
      QCOMPARE(record.text, "level " + std::to_string(record.level));
    }
    QCOMPARE(seen, printed);
  }

  void disabledRecord_doesNotEvaluateArguments() {
    LogCapture capture(4);
    g_evaluations = 0;
    QTU_LOG(base::log::kLevelQtCritical) << CountedText() << CountedText();
    QCOMPARE(g_evaluations, 0);
    QCOMPARE(capture.Size(), size_t(0));
    QTU_LOG(base::log::kLevelWarning) << CountedText();
    QCOMPARE(g_evaluations, 1);
    QCOMPARE(capture.Size(), size_t(1));
  }

  void levelZero_buildsNoBuffer() {
    // With logging off not even the buffer lookup happens: a thread that only writes
    // disabled records never gets a buffer.
    LogCapture capture(0);
    LogStreamBuffer* seen = reinterpret_cast<LogStreamBuffer*>(1);
    std::thread([&] {
      QTU_LOG(base::log::kLevelFailure) << "never";
      seen = ThreadBuffer();
    }).join();
    QCOMPARE(seen, nullptr);
    QCOMPARE(capture.Size(), size_t(0));
  }

  void recordAfterTheThreadsStoreIsGone_isDroppedSafely() {
    LogCapture capture(6);
    std::thread([] {
      thread_local LateLogger late;
      (void)&late;  // constructed here, before the store the next record creates
      QTU_LOG(base::log::kLevelFailure) << "early";
    }).join();
    // The early record is printed; the late one finds no buffer and is lost without a crash or
    // a leaked buffer (the sanitizer run checks both).
    QCOMPARE(capture.Texts(), std::vector<std::string>{"early"});
  }

  void macroUnderUnbracedIfElse() {
    LogCapture capture(6);
    bool other_branch = false;
    for (bool condition : {true, false}) {
      if (condition)
        QTU_LOG(base::log::kLevelFailure) << "taken";
      else
        other_branch = true;
    }
    QVERIFY(other_branch);
    QCOMPARE(capture.Texts(), std::vector<std::string>{"taken"});
  }

  void recordCarriesBaseNameLineAndUnqualifiedFunction() {
    LogCapture capture(6);
    const int line = __LINE__ + 1;
    QTU_LOG(base::log::kLevelInfo) << "where";
    const auto records = capture.Records();
    QCOMPARE(records.size(), size_t(1));
    QCOMPARE(records[0].file, std::string("tst_logger.cpp"));
    QCOMPARE(records[0].line, line);
    QCOMPARE(records[0].function, std::string("recordCarriesBaseNameLineAndUnqualifiedFunction"));
    QCOMPARE(records[0].tag, std::string());
    QCOMPARE(records[0].level, 6);
  }

  void recordInAnotherFile_carriesThatFileAndTheCallSite() {
    LogCapture capture(6);
    const int line = __LINE__ + 1;
    QTU_LOG_IN_FILE(base::log::kLevelWarning, "facility.cpp") << "named";
    QTU_LOG_IN_FILE(base::log::kLevelInfo + 1, "facility.cpp") << "filtered";
    const auto records = capture.Records();
    QCOMPARE(records.size(), size_t(1));
    QCOMPARE(records[0].file, std::string("facility.cpp"));
    QCOMPARE(records[0].line, line);
    QCOMPARE(records[0].function, std::string("recordInAnotherFile_carriesThatFileAndTheCallSite"));
    QCOMPARE(records[0].level, base::log::kLevelWarning);
    QCOMPARE(records[0].text, std::string("named"));
  }

  void emptyPrinter_printsNothingAndLeavesBufferUntouched() {
    LogCapture capture(6);
    {
      __logwriter writer(1, "f.cpp", 1, "F", __logwriter::Printer());
      writer << "kept";
    }
    QCOMPARE(capture.Size(), size_t(0));
    // The destructor did not reset the buffer: the text is still there.
    QCOMPARE(ThreadBuffer()->length, 4);
    QCOMPARE(std::string(ThreadBuffer()->data), std::string("kept"));
  }

  void appendsNeverGrowTheBuffer() {
    LogCapture capture(6);
    LogStreamBuffer* before = ThreadBuffer();
    char* data_before = before->data;
    QTU_LOG(base::log::kLevelFailure) << std::string(5000, 'x');
    QCOMPARE(ThreadBuffer(), before);
    QCOMPARE(ThreadBuffer()->data, data_before);
    QCOMPARE(ThreadBuffer()->capacity, 1024);
  }

  void overLongRecordFromLargerBuffer_isCutWhenCheckIsOff() {
    LogCapture capture(6);
    base::log::SetCheckLogLength(false);
    UseBufferOfCapacity(3000);
    QTU_LOG(base::log::kLevelFailure) << std::string(2000, 'y');
    QCOMPARE(capture.Texts(), std::vector<std::string>{std::string(1024, 'y')});
  }

  void level7_isExemptFromLengthLimit() {
    LogCapture capture(7);
    base::log::SetCheckLogLength(true);
    UseBufferOfCapacity(3000);
    QTU_LOG(base::log::kUnlimitedLogLevel) << std::string(2000, 'z');
    base::log::SetCheckLogLength(false);
    QCOMPARE(capture.Texts(), std::vector<std::string>{std::string(2000, 'z')});
  }

  void lengthCheck_failsAssertionWhenEnabled() {
    int pipe_fds[2];
    QCOMPARE(pipe(pipe_fds), 0);
    std::fflush(stderr);
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
      dup2(pipe_fds[1], STDERR_FILENO);
      base::log::SetLogLevel(base::log::kLevelInfo);
      base::log::SetCheckLogLength(true);
      UseBufferOfCapacity(3000);
      QTU_LOG(base::log::kLevelFailure) << std::string(1500, 'w');
      _exit(0);  // reached only if the assertion did not fire
    }
    close(pipe_fds[1]);
    QByteArray output;
    char chunk[512];
    ssize_t n;
    while ((n = read(pipe_fds[0], chunk, sizeof chunk)) > 0) output.append(chunk, int(n));
    close(pipe_fds[0]);
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY2(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT, output.constData());
    QVERIFY2(output.contains("Assertion `false' failed"), output.constData());
    QVERIFY2(output.contains("__logwriter::~__logwriter()"), output.constData());
  }

  void threads_neverMixText() {
    LogCapture capture(6);
    constexpr int kThreads = 4;
    constexpr int kRecords = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([t] {
        const std::string mark(20, char('a' + t));
        for (int i = 0; i < kRecords; ++i)
          QTU_LOG(base::log::kLevelFailure) << mark << ":" << i << ":" << mark;
      });
    }
    for (auto& thread : threads) thread.join();
    const auto texts = capture.Texts();
    QCOMPARE(texts.size(), size_t(kThreads * kRecords));
    std::set<std::string> distinct(texts.begin(), texts.end());
    QCOMPARE(distinct.size(), texts.size());
    const QRegularExpression shape("^([a-d])\\1{19}:\\d+:\\1{20}$");
    for (const auto& text : texts)
      QVERIFY2(shape.match(QString::fromStdString(text)).hasMatch(), text.c_str());
  }

  void defaultSink_writesOneFormattedLineToStderr() {
    base::log::SetLogSink({});
    const QString text =
        StderrOf([] { base::log::PrintLog("", "view.cc", 12, "Paint", 4, "hello world"); });
    const QRegularExpression format(
        "^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3} 4 \\d+ view\\.cc:12 Paint\\| hello "
        "world\\n$");
    QVERIFY2(format.match(text).hasMatch(), qPrintable(text));
  }

  void sinkThatLogs_sendsItsOwnRecordsToStderr() {
    LogCapture capture(6);
    std::vector<LogRecord> outer;
    base::log::LogSink previous = base::log::SetLogSink([&](const LogRecord& record) {
      outer.push_back(record);
      QTU_LOG(base::log::kLevelFailure) << "from the sink";
    });
    const QString text = StderrOf([] { QTU_LOG(base::log::kLevelWarning) << "to the sink"; });
    base::log::SetLogSink(std::move(previous));
    QCOMPARE(outer.size(), size_t(1));
    QCOMPARE(outer[0].text, std::string("to the sink"));
    // A lambda's unqualified name is operator().
    const QRegularExpression nested(
        "^\\S+ 1 \\d+ tst_logger\\.cpp:\\d+ operator\\(\\)\\| from the sink\\n$");
    QVERIFY2(nested.match(text).hasMatch(), qPrintable(text));
  }

  void setLogSinkFromInsideTheSink_changesNothing() {
    LogCapture capture(6);
    bool replaced_returned_empty = false;
    int calls = 0;
    base::log::LogSink previous = base::log::SetLogSink([&](const LogRecord&) {
      ++calls;
      replaced_returned_empty = !base::log::SetLogSink([](const LogRecord&) {});
    });
    QTU_LOG(base::log::kLevelFailure) << "one";
    QTU_LOG(base::log::kLevelFailure) << "two";  // still reaches the first sink
    base::log::SetLogSink(std::move(previous));
    QCOMPARE(calls, 2);
    QVERIFY(replaced_returned_empty);
  }

  void setLogSink_returnsPreviousAndEmptyRestoresDefault() {
    int first_calls = 0;
    base::log::SetLogSink([&](const LogRecord&) { ++first_calls; });
    base::log::LogSink previous = base::log::SetLogSink({});
    QVERIFY(previous);
    previous(LogRecord{});
    QCOMPARE(first_calls, 1);
    QVERIFY(!base::log::SetLogSink({}));  // the default is represented by an empty sink
  }
};

QTEST_MAIN(tst_Logger)
#include "tst_logger.moc"
