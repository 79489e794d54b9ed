#include <QtTest>
#include <string>

#include "qt_util/qt_log_hooker.h"
#include "support/log_capture.h"

namespace {

// Emits through Qt's own machinery with an explicit context, as a client's qWarning() does
// in a build that records message context.
class MessageHandlerScope {
 public:
  MessageHandlerScope() : previous_(qInstallMessageHandler(&QtLogHooker::HandleGlobalMessage)) {}
  ~MessageHandlerScope() { qInstallMessageHandler(previous_); }
  MessageHandlerScope(const MessageHandlerScope&) = delete;
  MessageHandlerScope& operator=(const MessageHandlerScope&) = delete;

 private:
  QtMessageHandler previous_;
};

void Relay(QtMsgType type, const char* file, int line, const QString& message) {
  const QMessageLogContext context(file, line, "void f()", "default");
  QtLogHooker::HandleGlobalMessage(type, context, message);
}

}  // namespace

class tst_QtLogHooker : public QObject {
  Q_OBJECT

 private slots:
  void windowsPathWarning_loggedAtLevel4WithShortName() {
    LogCapture capture(6);
    Relay(QtWarningMsg, "src\\ui\\view.cc", 12, QStringLiteral("x"));
    QCOMPARE(capture.Texts(), std::vector<std::string>{"QWarningMsg(view.cc:12) x"});
    QCOMPARE(capture.Records()[0].level, 4);
  }

  void infoWithoutFile_usesUnknown() {
    LogCapture capture(6);
    Relay(QtInfoMsg, nullptr, 0, QStringLiteral("hello there"));
    QCOMPARE(capture.Texts(), std::vector<std::string>{"QInfoMsg(unknown:0) hello there"});
    QCOMPARE(capture.Records()[0].level, 6);
  }

  void emptyFile_usesUnknown() {
    LogCapture capture(6);
    Relay(QtWarningMsg, "", 7, QStringLiteral("m"));
    QCOMPARE(capture.Texts(), std::vector<std::string>{"QWarningMsg(unknown:7) m"});
  }

  void shortFileName_data() {
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("expected");
    QTest::newRow("no separator kept whole") << "main.cpp"
                                             << "main.cpp";
    QTest::newRow("unix path") << "/home/u/src/panel.cpp"
                               << "panel.cpp";
    QTest::newRow("windows path") << "C:\\src\\ui\\view.cc"
                                  << "view.cc";
    QTest::newRow("mixed separators") << "a/b\\c.cpp"
                                      << "c.cpp";
    QTest::newRow("trailing separator") << "dir/"
                                        << "";
    QTest::newRow("utf-8 name") << QStringLiteral("src/\u00e9t\u00e9.cpp")
                                << QStringLiteral("\u00e9t\u00e9.cpp");
  }
  void shortFileName() {
    QFETCH(QString, file);
    QFETCH(QString, expected);
    LogCapture capture(6);
    const QByteArray utf8 = file.toUtf8();
    Relay(QtWarningMsg, utf8.constData(), 3, QStringLiteral("m"));
    const std::string want = "QWarningMsg(" + expected.toUtf8().toStdString() + ":3) m";
    QCOMPARE(capture.Texts(), std::vector<std::string>{want});
  }

  void debugNeverLogged() {
    LogCapture capture(1000);
    Relay(QtDebugMsg, "a.cpp", 1, QStringLiteral("chatter"));
    QCOMPARE(capture.Size(), size_t(0));
  }

  void unknownTypeNeverLogged() {
    LogCapture capture(1000);
    // Values past the last type that QtMsgType can still hold; wider ones are not a QtMsgType.
    for (int value : {5, 6, 7}) {
      Relay(static_cast<QtMsgType>(value), "a.cpp", 1, QStringLiteral("odd"));
    }
    QCOMPARE(capture.Size(), size_t(0));
  }

  // Every type against every log level: written exactly when the level admits its row.
  void levelTable_data() {
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("logLevel");
    QTest::addColumn<QString>("expected");  // empty: nothing logged
    QTest::addColumn<int>("recordLevel");
    struct Row {
      QtMsgType type;
      const char* name;
      int level;  // 0: never logged
    };
    const Row rows[] = {{QtDebugMsg, "QDebugMsg", 0},
                        {QtInfoMsg, "QInfoMsg", 6},
                        {QtWarningMsg, "QWarningMsg", 4},
                        {QtCriticalMsg, "QCriticalMsg", 5},
                        {QtFatalMsg, "QFatalMsg", 1}};
    for (const Row& row : rows) {
      for (int log_level = 0; log_level <= 7; ++log_level) {
        const bool written = row.level > 0 && log_level >= row.level;
        QTest::addRow("%s at log level %d", row.name, log_level)
            << int(row.type) << log_level
            << (written ? QStringLiteral("%1(m.cpp:5) text").arg(row.name) : QString())
            << row.level;
      }
    }
  }
  void levelTable() {
    QFETCH(int, type);
    QFETCH(int, logLevel);
    QFETCH(QString, expected);
    QFETCH(int, recordLevel);
    LogCapture capture(logLevel);
    Relay(static_cast<QtMsgType>(type), "dir/m.cpp", 5, QStringLiteral("text"));
    if (expected.isEmpty()) {
      QCOMPARE(capture.Size(), size_t(0));
      return;
    }
    const auto records = capture.Records();
    QCOMPARE(records.size(), size_t(1));
    QCOMPARE(records[0].text, expected.toStdString());
    QCOMPARE(records[0].level, recordLevel);
    QCOMPARE(records[0].function, std::string("HandleGlobalMessage"));
    QCOMPARE(records[0].file, std::string("qt_log_hooker.cpp"));
  }

  void placeholdersInMessageKeptLiterally() {
    LogCapture capture(6);
    Relay(QtWarningMsg, "a.cpp", 2, QStringLiteral("100% of %1 and %2"));
    QCOMPARE(capture.Texts(), std::vector<std::string>{"QWarningMsg(a.cpp:2) 100% of %1 and %2"});
  }

  void nonBmpMessageArrivesAsUtf8() {
    LogCapture capture(6);
    Relay(QtWarningMsg, "a.cpp", 2, QString::fromUcs4(U"smile \U0001F600"));
    QCOMPARE(capture.Texts(),
             std::vector<std::string>{"QWarningMsg(a.cpp:2) smile \xf0\x9f\x98\x80"});
  }

  void installedHandler_relaysQtMessages() {
    LogCapture capture(6);
    MessageHandlerScope scope;
    QMessageLogger("widgets/panel.cpp", 31, "void Panel::f()").warning("warned %d", 3);
    QMessageLogger("widgets/panel.cpp", 32, "void Panel::f()").info("informed");
    QMessageLogger("widgets/panel.cpp", 33, "void Panel::f()").critical("critical");
    QMessageLogger("widgets/panel.cpp", 34, "void Panel::f()").debug("debugged");
    QCOMPARE(capture.Texts(), (std::vector<std::string>{"QWarningMsg(panel.cpp:31) warned 3",
                                                        "QInfoMsg(panel.cpp:32) informed",
                                                        "QCriticalMsg(panel.cpp:33) critical"}));
  }

  void installedHandler_relaysFromOtherThreads() {
    LogCapture capture(6);
    MessageHandlerScope scope;
    QThread* thread = QThread::create(
        [] { QMessageLogger("worker.cpp", 9, "void run()").warning("from a worker"); });
    thread->start();
    QVERIFY(thread->wait(10000));
    delete thread;
    QCOMPARE(capture.Texts(), std::vector<std::string>{"QWarningMsg(worker.cpp:9) from a worker"});
  }
};

QTEST_MAIN(tst_QtLogHooker)
#include "tst_qt_log_hooker.moc"
