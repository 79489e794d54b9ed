#include <QFile>
#include <QTemporaryDir>
#include <QWidget>
#include <QtTest>
#include <atomic>
#include <functional>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "base/singleton/scope_singleton.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "support/log_capture.h"

namespace {

// The level-1 lines of the operations that several tests look for.
constexpr char kThemeTypeLine[] =
    "qt ui custom theme helper, current theme type failed! manager nullptr!";
constexpr char kColorStrLine[] =
    "qt ui custom theme helper, get theme color str failed! manager nullptr!";
constexpr char kResPathLine[] = "qt ui custom theme helper, get current theme res path failed!";
constexpr char kSetupQssLine[] = "qt ui custom theme helper, check setup qss failed!";

// What a FakeThemeManager saw; shared with the test so it outlives the manager.
struct ManagerRecord {
  QStringList calls;
  bool deleted = false;
};

// Records every call with its arguments and answers with values no fallback has.
class FakeThemeManager : public ICustomThemeManager {
 public:
  explicit FakeThemeManager(std::shared_ptr<ManagerRecord> record, bool dark = false)
      : record_(std::move(record)), dark_(dark) {}
  ~FakeThemeManager() override { record_->deleted = true; }

  int CurrentThemeType() override {
    Note("CurrentThemeType()");
    return 7;
  }
  std::string GetThemeColorStr(const std::string& token) override {
    Note("GetThemeColorStr(" + token + ")");
    return "#12345678";
  }
  uint32_t GetThemeColor(const std::string& token) override {
    Note("GetThemeColor(" + token + ")");
    return 0x11223344u;
  }
  uint32_t GetThemeColorWithReplaceAlpha(const std::string& token,
                                         const std::string& alpha) override {
    Note("GetThemeColorWithReplaceAlpha(" + token + "," + alpha + ")");
    return 0x55667788u;
  }
  bool InstallAppThemeEventFilter(QObject* object) override {
    Note("InstallAppThemeEventFilter(" + object->objectName().toStdString() + ")");
    return true;
  }
  QColor GetThemeQColor(const std::string& token) override {
    Note("GetThemeQColor(" + token + ")");
    return QColor(10, 20, 30, 40);
  }
  QString GetCurrentThemeResPath(const QString& path) override {
    Note("GetCurrentThemeResPath(" + path.toStdString() + ")");
    return QStringLiteral("themed:") + path;
  }
  bool IsCurrentDarkType() override {
    Note("IsCurrentDarkType()");
    return dark_;
  }
  bool CheckThemeColorTokenValid(const QString& token) override {
    Note("CheckThemeColorTokenValid(" + token.toStdString() + ")");
    return true;
  }
  bool CheckSetupQss(QWidget* widget, const QString& qss) override {
    Note("CheckSetupQss(" + widget->objectName().toStdString() + "," + qss.toStdString() + ")");
    return false;
  }

 private:
  void Note(const std::string& call) { record_->calls << QString::fromStdString(call); }

  std::shared_ptr<ManagerRecord> record_;
  bool dark_;
};

// Creates an empty file; false when it cannot.
bool Touch(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::WriteOnly);
}

QTUICustomThemeHelper* Helper() {
  return QTUICustomThemeHelper::SharedInstance();
}

void InstallFake(const std::shared_ptr<ManagerRecord>& record, bool dark = false) {
  Helper()->SetThemeManager(std::make_unique<FakeThemeManager>(record, dark));
}

// One row per forwarding operation: its call without a manager, whether the result was the
// fallback, and the level-1 line it writes.
struct FallbackRow {
  const char* name;
  std::function<bool(QTUICustomThemeHelper*)> returns_fallback;
  const char* text;
};

const std::vector<FallbackRow>& FallbackRows() {
  static const std::vector<FallbackRow> rows = {
      {"CurrentThemeType", [](QTUICustomThemeHelper* h) { return h->CurrentThemeType() == 1; },
       kThemeTypeLine},
      {"GetThemeColorStr",
       [](QTUICustomThemeHelper* h) { return h->GetThemeColorStr("any") == "#FF000000"; },
       kColorStrLine},
      {"GetThemeColor", [](QTUICustomThemeHelper* h) { return h->GetThemeColor("any") == 0u; },
       "qt ui custom theme helper, get theme color failed! manager nullptr!"},
      {"GetThemeColorWithReplaceAlpha",
       [](QTUICustomThemeHelper* h) { return h->GetThemeColorWithReplaceAlpha("any", "80") == 0u; },
       "qt ui custom theme helper, get theme color with alpha failed! manager nullptr!"},
      {"InstallAppThemeEventFilter",
       [](QTUICustomThemeHelper* h) {
         QObject object;
         return !h->InstallAppThemeEventFilter(&object);
       },
       "qt ui custom theme helper, install theme event failed! manager nullptr!"},
      {"GetThemeQColor",
       [](QTUICustomThemeHelper* h) { return h->GetThemeQColor("any") == QColor(Qt::black); },
       "qt ui custom theme helper, get theme QColor failed! manager nullptr!"},
      {"GetCurrentThemeResPath",
       [](QTUICustomThemeHelper* h) {
         return h->GetCurrentThemeResPath(QStringLiteral(":/a.png")) == QLatin1String(":/a.png");
       },
       kResPathLine},
      {"GenCurrentThemeQssPath",
       [](QTUICustomThemeHelper* h) {
         return h->GenCurrentThemeQssPath(QStringLiteral("x.qss")) == QLatin1String("x.qss");
       },
       "qt ui custom theme helper, get current theme qss path failed!"},
      {"IsCurrentDarkType", [](QTUICustomThemeHelper* h) { return !h->IsCurrentDarkType(); },
       "qt ui custom theme helper, call is current dark type failed!"},
      {"CheckThemeColorTokenValid",
       [](QTUICustomThemeHelper* h) {
         return !h->CheckThemeColorTokenValid(QStringLiteral("color.any"));
       },
       "qt ui custom theme helper, check theme color token valid failed!"},
      {"CheckSetupQss",
       [](QTUICustomThemeHelper* h) {
         QWidget widget;
         return h->CheckSetupQss(&widget, QStringLiteral("QWidget{}"));
       },
       kSetupQssLine},
  };
  return rows;
}

}  // namespace

class tst_QtUiCustomThemeHelper : public QObject {
  Q_OBJECT

 private slots:
  void cleanup();

  // Without a manager
  void noManager_colorStrIsOpaqueBlackAndLogs();
  void noManager_currentThemeTypeIsOneAndLogs();
  void noManager_checkSetupQssAllowsAndLogs();
  void noManager_resPathIsUnchanged();
  void noManager_everyOperationFallsBackWithItsLine_data();
  void noManager_everyOperationFallsBackWithItsLine();
  void noManager_belowFailureLevel_fallsBackWithoutALine_data();
  void noManager_belowFailureLevel_fallsBackWithoutALine();
  void noManager_lineNamesThisSourceFile();

  // With a manager
  void manager_receivesEveryCallWithItsArguments();
  void manager_resultsComeBackUnchanged();
  void manager_forwardingWritesNoLogLine();
  void setThemeManager_secondManagerDeletesTheFirst();
  void setThemeManager_emptyRemovesTheManager();

  // Dark style-sheet paths
  void genQssPath_darkWithTwin_givesTwin();
  void genQssPath_darkWithoutTwin_givesPathWithoutLogLine();
  void genQssPath_darkTwinUnreadable_givesPath();
  void genQssPath_light_givesPathAndAsksOnlyTheTheme();
  void genQssPath_suffixFollowsTheWholePath();

  // Lifetime
  void sharedInstance_isStableAndLogsAllocOnce();
  void sharedInstance_eightThreads_oneHelperOneAllocLine();
  void scopeEnd_logsDeallocAndDeletesTheManager();
  void scopeEnd_nextSharedInstanceIsFreshWithoutManager();
};

// Each test starts without a helper: the scope's end deletes the one the last test made.
void tst_QtUiCustomThemeHelper::cleanup() {
  base::EndSingletonScope();
}

void tst_QtUiCustomThemeHelper::noManager_colorStrIsOpaqueBlackAndLogs() {
  LogCapture capture(6);
  QCOMPARE(Helper()->GetThemeColorStr("any"), std::string("#FF000000"));
  QCOMPARE(capture.Count(1, kColorStrLine), 1);
}

void tst_QtUiCustomThemeHelper::noManager_currentThemeTypeIsOneAndLogs() {
  LogCapture capture(6);
  QCOMPARE(Helper()->CurrentThemeType(), 1);
  QCOMPARE(capture.Count(1, kThemeTypeLine), 1);
}

void tst_QtUiCustomThemeHelper::noManager_checkSetupQssAllowsAndLogs() {
  LogCapture capture(6);
  QWidget widget;
  QVERIFY(Helper()->CheckSetupQss(&widget, QStringLiteral("QLabel { color: red; }")));
  QCOMPARE(capture.Count(1, kSetupQssLine), 1);
}

void tst_QtUiCustomThemeHelper::noManager_resPathIsUnchanged() {
  LogCapture capture(6);
  QCOMPARE(Helper()->GetCurrentThemeResPath(QStringLiteral(":/a.png")), QStringLiteral(":/a.png"));
  QCOMPARE(capture.Count(1, kResPathLine), 1);
}

void tst_QtUiCustomThemeHelper::noManager_everyOperationFallsBackWithItsLine_data() {
  QTest::addColumn<int>("row");
  for (size_t i = 0; i < FallbackRows().size(); ++i) {
    QTest::newRow(FallbackRows()[i].name) << int(i);
  }
}

void tst_QtUiCustomThemeHelper::noManager_everyOperationFallsBackWithItsLine() {
  QFETCH(int, row);
  const FallbackRow& fallback = FallbackRows()[size_t(row)];
  QTUICustomThemeHelper* helper = Helper();  // the alloc line stays out of the capture
  LogCapture capture(6);
  QVERIFY(fallback.returns_fallback(helper));
  const auto records = capture.Records();
  QCOMPARE(int(records.size()), 1);
  QCOMPARE(records[0].level, 1);
  QCOMPARE(QString::fromStdString(records[0].text), QString::fromUtf8(fallback.text));
  QCOMPARE(QString::fromStdString(records[0].function), QString::fromUtf8(fallback.name));
}

void tst_QtUiCustomThemeHelper::noManager_belowFailureLevel_fallsBackWithoutALine_data() {
  noManager_everyOperationFallsBackWithItsLine_data();
}

void tst_QtUiCustomThemeHelper::noManager_belowFailureLevel_fallsBackWithoutALine() {
  QFETCH(int, row);
  const FallbackRow& fallback = FallbackRows()[size_t(row)];
  QTUICustomThemeHelper* helper = Helper();
  LogCapture capture(0);
  QVERIFY(fallback.returns_fallback(helper));
  QCOMPARE(int(capture.Size()), 0);
}

void tst_QtUiCustomThemeHelper::noManager_lineNamesThisSourceFile() {
  QTUICustomThemeHelper* helper = Helper();
  LogCapture capture(6);
  helper->IsCurrentDarkType();
  const auto records = capture.Records();
  QCOMPARE(int(records.size()), 1);
  QCOMPARE(QString::fromStdString(records[0].file),
           QStringLiteral("qt_ui_custom_theme_helper.cpp"));
  QVERIFY(records[0].line > 0);
}

void tst_QtUiCustomThemeHelper::manager_receivesEveryCallWithItsArguments() {
  auto record = std::make_shared<ManagerRecord>();
  InstallFake(record);
  QTUICustomThemeHelper* helper = Helper();
  QObject object;
  object.setObjectName(QStringLiteral("panel"));
  QWidget widget;
  widget.setObjectName(QStringLiteral("button"));

  helper->CurrentThemeType();
  helper->GetThemeColorStr("color.text");
  helper->GetThemeColor("color.fill");
  helper->GetThemeColorWithReplaceAlpha("color.line", "0x80");
  helper->InstallAppThemeEventFilter(&object);
  helper->GetThemeQColor("color.icon");
  helper->GetCurrentThemeResPath(QStringLiteral(":/light/a.png"));
  helper->IsCurrentDarkType();
  helper->CheckThemeColorTokenValid(QStringLiteral("color.bogus"));
  helper->CheckSetupQss(&widget, QStringLiteral("QPushButton{}"));

  QCOMPARE(record->calls,
           (QStringList{
               "CurrentThemeType()", "GetThemeColorStr(color.text)", "GetThemeColor(color.fill)",
               "GetThemeColorWithReplaceAlpha(color.line,0x80)",
               "InstallAppThemeEventFilter(panel)", "GetThemeQColor(color.icon)",
               "GetCurrentThemeResPath(:/light/a.png)", "IsCurrentDarkType()",
               "CheckThemeColorTokenValid(color.bogus)", "CheckSetupQss(button,QPushButton{})"}));
}

void tst_QtUiCustomThemeHelper::manager_resultsComeBackUnchanged() {
  auto record = std::make_shared<ManagerRecord>();
  InstallFake(record, /*dark=*/true);
  QTUICustomThemeHelper* helper = Helper();
  QObject object;
  QWidget widget;
  QCOMPARE(helper->CurrentThemeType(), 7);
  QCOMPARE(helper->GetThemeColorStr("t"), std::string("#12345678"));
  QCOMPARE(helper->GetThemeColor("t"), 0x11223344u);
  QCOMPARE(helper->GetThemeColorWithReplaceAlpha("t", "a"), 0x55667788u);
  QVERIFY(helper->InstallAppThemeEventFilter(&object));
  QCOMPARE(helper->GetThemeQColor("t"), QColor(10, 20, 30, 40));
  QCOMPARE(helper->GetCurrentThemeResPath(QStringLiteral("p")), QStringLiteral("themed:p"));
  QVERIFY(helper->IsCurrentDarkType());
  QVERIFY(helper->CheckThemeColorTokenValid(QStringLiteral("t")));
  QVERIFY(!helper->CheckSetupQss(&widget, QStringLiteral("s")));
}

void tst_QtUiCustomThemeHelper::manager_forwardingWritesNoLogLine() {
  InstallFake(std::make_shared<ManagerRecord>());
  LogCapture capture(6);
  Helper()->CurrentThemeType();
  Helper()->GetThemeColorStr("t");
  Helper()->GetCurrentThemeResPath(QStringLiteral("p"));
  Helper()->GenCurrentThemeQssPath(QStringLiteral("p"));
  QCOMPARE(int(capture.Size()), 0);
}

void tst_QtUiCustomThemeHelper::setThemeManager_secondManagerDeletesTheFirst() {
  auto first = std::make_shared<ManagerRecord>();
  auto second = std::make_shared<ManagerRecord>();
  QVERIFY(Helper()->SetThemeManager(std::make_unique<FakeThemeManager>(first)));
  QVERIFY(!first->deleted);
  QVERIFY(Helper()->SetThemeManager(std::make_unique<FakeThemeManager>(second)));
  QVERIFY(first->deleted);
  QVERIFY(!second->deleted);
  Helper()->CurrentThemeType();
  QVERIFY(first->calls.isEmpty());
  QCOMPARE(second->calls, QStringList{"CurrentThemeType()"});
}

void tst_QtUiCustomThemeHelper::setThemeManager_emptyRemovesTheManager() {
  auto record = std::make_shared<ManagerRecord>();
  InstallFake(record);
  QVERIFY(Helper()->SetThemeManager(nullptr));
  QVERIFY(record->deleted);
  LogCapture capture(6);
  QCOMPARE(Helper()->CurrentThemeType(), 1);
  QCOMPARE(capture.Count(1, kThemeTypeLine), 1);
}

void tst_QtUiCustomThemeHelper::genQssPath_darkWithTwin_givesTwin() {
  QTemporaryDir dir;
  const QString path = dir.filePath(QStringLiteral("x"));
  QVERIFY(Touch(path + QStringLiteral("_dark")));
  InstallFake(std::make_shared<ManagerRecord>(), /*dark=*/true);
  QCOMPARE(Helper()->GenCurrentThemeQssPath(path), path + QStringLiteral("_dark"));
}

void tst_QtUiCustomThemeHelper::genQssPath_darkWithoutTwin_givesPathWithoutLogLine() {
  QTemporaryDir dir;
  const QString path = dir.filePath(QStringLiteral("x"));
  InstallFake(std::make_shared<ManagerRecord>(), /*dark=*/true);
  LogCapture capture(6);
  QCOMPARE(Helper()->GenCurrentThemeQssPath(path), path);
  QCOMPARE(int(capture.Size()), 0);
}

void tst_QtUiCustomThemeHelper::genQssPath_darkTwinUnreadable_givesPath() {
  QTemporaryDir dir;
  const QString path = dir.filePath(QStringLiteral("x"));
  // A directory of the twin's name exists but cannot be opened as a file.
  QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("x_dark")));
  InstallFake(std::make_shared<ManagerRecord>(), /*dark=*/true);
  QCOMPARE(Helper()->GenCurrentThemeQssPath(path), path);
}

void tst_QtUiCustomThemeHelper::genQssPath_light_givesPathAndAsksOnlyTheTheme() {
  QTemporaryDir dir;
  const QString path = dir.filePath(QStringLiteral("x"));
  QVERIFY(Touch(path + QStringLiteral("_dark")));
  auto record = std::make_shared<ManagerRecord>();
  InstallFake(record, /*dark=*/false);
  QCOMPARE(Helper()->GenCurrentThemeQssPath(path), path);
  QCOMPARE(record->calls, QStringList{"IsCurrentDarkType()"});
}

void tst_QtUiCustomThemeHelper::genQssPath_suffixFollowsTheWholePath() {
  QTemporaryDir dir;
  const QString path = dir.filePath(QStringLiteral("main.qss"));
  QVERIFY(Touch(dir.filePath(QStringLiteral("main_dark.qss"))));
  QVERIFY(Touch(dir.filePath(QStringLiteral("main.qss_dark"))));
  InstallFake(std::make_shared<ManagerRecord>(), /*dark=*/true);
  QCOMPARE(Helper()->GenCurrentThemeQssPath(path), dir.filePath(QStringLiteral("main.qss_dark")));
}

void tst_QtUiCustomThemeHelper::sharedInstance_isStableAndLogsAllocOnce() {
  LogCapture capture(6);
  QTUICustomThemeHelper* first = Helper();
  QVERIFY(first);
  QCOMPARE(Helper(), first);
  QCOMPARE(capture.Count(6, "qt ui custom theme helper alloc"), 1);
  QVERIFY(!first->parent());
}

void tst_QtUiCustomThemeHelper::sharedInstance_eightThreads_oneHelperOneAllocLine() {
  LogCapture capture(6);
  constexpr int kThreads = 8;
  std::atomic<int> waiting{kThreads};
  std::vector<QTUICustomThemeHelper*> seen(kThreads, nullptr);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      // Every thread asks at once, once all of them are running.
      waiting.fetch_sub(1);
      while (waiting.load() > 0) std::this_thread::yield();
      seen[size_t(i)] = QTUICustomThemeHelper::SharedInstance();
    });
  }
  for (auto& thread : threads) thread.join();
  QVERIFY(seen[0]);
  QCOMPARE(int(std::set<QTUICustomThemeHelper*>(seen.begin(), seen.end()).size()), 1);
  QCOMPARE(Helper(), seen[0]);
  QCOMPARE(capture.Count(6, "qt ui custom theme helper alloc"), 1);
}

void tst_QtUiCustomThemeHelper::scopeEnd_logsDeallocAndDeletesTheManager() {
  auto record = std::make_shared<ManagerRecord>();
  InstallFake(record);
  LogCapture capture(6);
  base::EndSingletonScope();
  QVERIFY(record->deleted);
  QCOMPARE(capture.Count(6, "qt ui custom theme helper dealloc"), 1);
}

void tst_QtUiCustomThemeHelper::scopeEnd_nextSharedInstanceIsFreshWithoutManager() {
  InstallFake(std::make_shared<ManagerRecord>());
  QCOMPARE(Helper()->CurrentThemeType(), 7);
  base::EndSingletonScope();
  LogCapture capture(6);
  QCOMPARE(Helper()->CurrentThemeType(), 1);
  QCOMPARE(capture.Count(6, "qt ui custom theme helper alloc"), 1);
}

QTEST_MAIN(tst_QtUiCustomThemeHelper)
#include "tst_qt_ui_custom_theme_helper.moc"
