#include <QFile>
#include <QListWidgetItem>
#include <QTemporaryDir>
#include <QWidget>
#include <QtTest>
#include <memory>

#include "base/singleton/scope_singleton.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/ui_util.h"
#include "support/log_capture.h"
#include "support/stub_theme_manager.h"
#include "support/unopenable_path.h"

namespace {

const QString kPanelQss = QStringLiteral(QT_UTIL_TEST_DATA_DIR "/theme/panel.qss");

// A theme engine that answers the style-sheet veto with `allow` and records what it was asked.
class VetoThemeManager : public test_support::StubThemeManager {
 public:
  VetoThemeManager(bool allow, QStringList* asked) : allow_(allow), asked_(asked) {}
  bool CheckSetupQss(QWidget* widget, const QString& qss) override {
    *asked_ << widget->objectName() + "|" + qss;
    return allow_;
  }

 private:
  bool allow_;
  QStringList* asked_;
};

// Every record of the capture as "<level> <function>: <text>". The records name the facility's
// file, ui_util.cpp, at a real line; a record that does not reads "<file>:<line>" in front.
QStringList Lines(const LogCapture& capture) {
  QStringList lines;
  for (const auto& record : capture.Records()) {
    const QString where =
        record.file == "ui_util.cpp" && record.line > 0
            ? QString()
            : QStringLiteral("%1:%2 ").arg(QString::fromStdString(record.file)).arg(record.line);
    lines << where + QStringLiteral("%1 %2: %3")
                         .arg(record.level)
                         .arg(QString::fromStdString(record.function),
                              QString::fromStdString(record.text));
  }
  return lines;
}

bool WriteBytes(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QString FileText(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

}  // namespace

class tst_UiUtilStyle : public QObject {
  Q_OBJECT

 private slots:
  void cleanup();

  // Style sheets
  void setupQss_appliesTheFileAndMarksTheWidget();
  void setupQss_vetoed_setsNeitherSheetNorProperty();
  void setupQss_checkTheme_asksWithWidgetAndPath();
  void setupQss_noCheck_neverAsksTheTheme();
  void setupQss_checkThemeWithoutManager_applies();
  void setupQss_missingFile_logsKeepsSheetAndStillMarks();
  void setupQss_nullWidget_doesNothing();
  void setupQss_readsUtf8();
  void getQss_isTheFileText();
  void styleSheetText_decoding_data();
  void styleSheetText_decoding();
  void styleSheetFile_cannotBeOpened_data();
  void styleSheetFile_cannotBeOpened();

  // Accessibility keys
  void widgetKey_setsNameAndDescription();
  void widgetKey_emptyKey_takesTheObjectName();
  void widgetKey_noKeyNoObjectName_logsAndSetsNothing();
  void widgetKey_nullWidget_doesNothing();
  void itemKey_setsBothRoles();
  void itemKey_emptyKey_logsTheWidgetTextAndSetsNothing();
  void itemKey_nullItem_doesNothing();
  void keyOfRes_isTheLastPathComponent_data();
  void keyOfRes_isTheLastPathComponent();
  void keyOfRes_empty_logsAndIsEmpty();
  void accessibleInfo_setsNameThenDescription();
  void accessibleSetters_nullWidget_doNothing();
};

void tst_UiUtilStyle::cleanup() {
  base::EndSingletonScope();
}

void tst_UiUtilStyle::setupQss_appliesTheFileAndMarksTheWidget() {
  QWidget widget;
  VxQtUiUtil::SetupQss(&widget, kPanelQss, false);
  QCOMPARE(widget.styleSheet(), FileText(kPanelQss));
  QVERIFY(!widget.styleSheet().isEmpty());
  QCOMPARE(widget.property("widget-config"), QVariant(QStringLiteral("widget__config--main")));
}

void tst_UiUtilStyle::setupQss_vetoed_setsNeitherSheetNorProperty() {
  QStringList asked;
  QTUICustomThemeHelper::SharedInstance()->SetThemeManager(
      std::make_unique<VetoThemeManager>(false, &asked));
  QWidget widget;
  widget.setStyleSheet(QStringLiteral("QWidget { color: red; }"));
  LogCapture capture(6);
  VxQtUiUtil::SetupQss(&widget, kPanelQss, true);
  QCOMPARE(widget.styleSheet(), QStringLiteral("QWidget { color: red; }"));
  QVERIFY(!widget.property("widget-config").isValid());
  QCOMPARE(int(capture.Size()), 0);
}

void tst_UiUtilStyle::setupQss_checkTheme_asksWithWidgetAndPath() {
  QStringList asked;
  QTUICustomThemeHelper::SharedInstance()->SetThemeManager(
      std::make_unique<VetoThemeManager>(true, &asked));
  QWidget widget;
  widget.setObjectName(QStringLiteral("panel"));
  VxQtUiUtil::SetupQss(&widget, kPanelQss, true);
  QCOMPARE(asked, QStringList{"panel|" + kPanelQss});
  QCOMPARE(widget.styleSheet(), FileText(kPanelQss));
}

void tst_UiUtilStyle::setupQss_noCheck_neverAsksTheTheme() {
  QStringList asked;
  QTUICustomThemeHelper::SharedInstance()->SetThemeManager(
      std::make_unique<VetoThemeManager>(false, &asked));
  QWidget widget;
  VxQtUiUtil::SetupQss(&widget, kPanelQss, false);
  QVERIFY(asked.isEmpty());
  QCOMPARE(widget.styleSheet(), FileText(kPanelQss));
}

void tst_UiUtilStyle::setupQss_checkThemeWithoutManager_applies() {
  QWidget widget;
  LogCapture capture(6);
  VxQtUiUtil::SetupQss(&widget, kPanelQss, true);
  QCOMPARE(widget.styleSheet(), FileText(kPanelQss));
  QCOMPARE(capture.Count(1, "qt ui custom theme helper, check setup qss failed!"), 1);
}

void tst_UiUtilStyle::setupQss_missingFile_logsKeepsSheetAndStillMarks() {
  QTemporaryDir dir;
  QWidget widget;
  widget.setStyleSheet(QStringLiteral("QWidget { color: red; }"));
  LogCapture capture(6);
  VxQtUiUtil::SetupQss(&widget, dir.filePath("missing.qss"), false);
  QCOMPARE(Lines(capture), QStringList{"1 SetupQss: qss not found"});
  QCOMPARE(widget.styleSheet(), QStringLiteral("QWidget { color: red; }"));
  QCOMPARE(widget.property("widget-config"), QVariant(QStringLiteral("widget__config--main")));
}

void tst_UiUtilStyle::setupQss_nullWidget_doesNothing() {
  LogCapture capture(6);
  VxQtUiUtil::SetupQss(nullptr, kPanelQss, true);
  QCOMPARE(int(capture.Size()), 0);
}

void tst_UiUtilStyle::setupQss_readsUtf8() {
  QTemporaryDir dir;
  const QString path = dir.filePath("utf8.qss");
  QFile file(path);
  QVERIFY(file.open(QIODevice::WriteOnly));
  file.write("QLabel { qproperty-text: \"Gr\xC3\xBC\xC3\x9F\x65\"; }");
  file.close();
  QWidget widget;
  VxQtUiUtil::SetupQss(&widget, path, false);
  QCOMPARE(widget.styleSheet(), QString::fromUtf8("QLabel { qproperty-text: \"Grüße\"; }"));
  QCOMPARE(VxQtUiUtil::GetQss(path), widget.styleSheet());
}

void tst_UiUtilStyle::getQss_isTheFileText() {
  QCOMPARE(VxQtUiUtil::GetQss(kPanelQss),
           QStringLiteral("QWidget#panel { background-color: #F7F8FA; color: #1F2329; }\n"));
}

// What a style sheet file's bytes read as: its bytes as UTF-8 up to the first NUL, a leading
// UTF-8 BOM skipped, nothing else detected. QFTextStreamLoader reads the same files differently
// (tst_string_utils).
void tst_UiUtilStyle::styleSheetText_decoding_data() {
  QTest::addColumn<QByteArray>("bytes");
  QTest::addColumn<QString>("text");
  QTest::newRow("UTF-8 BOM skipped") << QByteArray("\xEF\xBB\xBFQLabel{}") << "QLabel{}";
  QTest::newRow("only the first BOM skipped")
      << QByteArray("\xEF\xBB\xBF\xEF\xBB\xBFQLabel{}") << QStringLiteral("\uFEFFQLabel{}");
  QTest::newRow("UTF-16 BOM not detected, NUL ends the text")
      << QByteArray("\xFF\xFEQ\0L\0", 6) << QStringLiteral("\uFFFD\uFFFDQ");
  QTest::newRow("stray byte is U+FFFD") << QByteArray(
                                               "a\xFF"
                                               "b")
                                        << QStringLiteral("a\uFFFDb");
  QTest::newRow("incomplete sequence at the end is U+FFFD")
      << QByteArray("ab\xC3") << QStringLiteral("ab\uFFFD");
  QTest::newRow("NUL ends the text") << QByteArray("QLabel{}\0QWidget{}", 18) << "QLabel{}";
}

void tst_UiUtilStyle::styleSheetText_decoding() {
  QFETCH(QByteArray, bytes);
  QFETCH(QString, text);
  QTemporaryDir dir;
  const QString path = dir.filePath("sheet.qss");
  QVERIFY(WriteBytes(path, bytes));
  QCOMPARE(VxQtUiUtil::GetQss(path), text);
  QWidget widget;
  VxQtUiUtil::SetupQss(&widget, path, false);
  QCOMPARE(widget.styleSheet(), text);
}

// Every path that cannot be opened: GetQss is silently empty, SetupQss logs, keeps the sheet and
// still marks the widget.
void tst_UiUtilStyle::styleSheetFile_cannotBeOpened_data() {
  test_support::AddUnopenablePathRows();
}

void tst_UiUtilStyle::styleSheetFile_cannotBeOpened() {
  QTemporaryDir dir;
  const QString path = test_support::UnopenablePath(dir);
  QVERIFY(!path.isEmpty());
  LogCapture capture(6);
  const QString text = VxQtUiUtil::GetQss(path);
  QVERIFY(text.isEmpty());
  QCOMPARE(int(capture.Size()), 0);
  QWidget widget;
  widget.setStyleSheet(QStringLiteral("QWidget { color: red; }"));
  VxQtUiUtil::SetupQss(&widget, path, false);
  QCOMPARE(Lines(capture), QStringList{"1 SetupQss: qss not found"});
  QCOMPARE(widget.styleSheet(), QStringLiteral("QWidget { color: red; }"));
  QCOMPARE(widget.property("widget-config"), QVariant(QStringLiteral("widget__config--main")));
}

void tst_UiUtilStyle::widgetKey_setsNameAndDescription() {
  QWidget widget;
  widget.setObjectName(QStringLiteral("ignored"));
  VxQtUiUtil::SetAccessibleKey(&widget, QStringLiteral("join"));
  QCOMPARE(widget.accessibleName(), QStringLiteral("atg__join__name"));
  QCOMPARE(widget.accessibleDescription(), QStringLiteral("atg__join"));
}

void tst_UiUtilStyle::widgetKey_emptyKey_takesTheObjectName() {
  QWidget widget;
  widget.setObjectName(QStringLiteral("okButton"));
  VxQtUiUtil::SetAccessibleKey(&widget, QString());
  QCOMPARE(widget.accessibleName(), QStringLiteral("atg__okButton__name"));
  QCOMPARE(widget.accessibleDescription(), QStringLiteral("atg__okButton"));
}

void tst_UiUtilStyle::widgetKey_noKeyNoObjectName_logsAndSetsNothing() {
  QWidget widget;
  widget.setAccessibleName(QStringLiteral("before"));
  LogCapture capture(6);
  VxQtUiUtil::SetAccessibleKey(&widget, QString());
  QCOMPARE(Lines(capture), QStringList{"1 SetAccessibleKey: key & objectName is empty"});
  QCOMPARE(widget.accessibleName(), QStringLiteral("before"));
  QCOMPARE(widget.accessibleDescription(), QString());
}

void tst_UiUtilStyle::widgetKey_nullWidget_doesNothing() {
  LogCapture capture(6);
  VxQtUiUtil::SetAccessibleKey(static_cast<QWidget*>(nullptr), QString());
  QCOMPARE(int(capture.Size()), 0);
}

void tst_UiUtilStyle::itemKey_setsBothRoles() {
  QListWidgetItem item;
  VxQtUiUtil::SetAccessibleKey(&item, QStringLiteral("row1"));
  QCOMPARE(item.data(11), QVariant(QStringLiteral("atg__row1")));
  QCOMPARE(item.data(256), QVariant(QStringLiteral("atg__row1__name")));
  QCOMPARE(item.data(Qt::AccessibleTextRole).userType(), int(QMetaType::QString));
}

void tst_UiUtilStyle::itemKey_emptyKey_logsTheWidgetTextAndSetsNothing() {
  QListWidgetItem item;
  LogCapture capture(6);
  VxQtUiUtil::SetAccessibleKey(&item, QString());
  QCOMPARE(Lines(capture), QStringList{"1 SetAccessibleKey: key & objectName is empty"});
  QVERIFY(!item.data(Qt::AccessibleTextRole).isValid());
  QVERIFY(!item.data(Qt::UserRole).isValid());
}

void tst_UiUtilStyle::itemKey_nullItem_doesNothing() {
  LogCapture capture(6);
  VxQtUiUtil::SetAccessibleKey(static_cast<QListWidgetItem*>(nullptr), QStringLiteral("k"));
  QCOMPARE(int(capture.Size()), 0);
}

void tst_UiUtilStyle::keyOfRes_isTheLastPathComponent_data() {
  QTest::addColumn<QString>("res");
  QTest::addColumn<QString>("key");
  QTest::newRow("resource path") << ":/image/close.png"
                                 << "close.png";
  QTest::newRow("trailing slash") << "a/b/"
                                  << "";
  QTest::newRow("no slash") << "icon"
                            << "icon";
  QTest::newRow("backslash is no separator") << "a\\b"
                                             << "a\\b";
  QTest::newRow("root") << "/"
                        << "";
}

void tst_UiUtilStyle::keyOfRes_isTheLastPathComponent() {
  QFETCH(QString, res);
  QFETCH(QString, key);
  LogCapture capture(6);
  QCOMPARE(VxQtUiUtil::AccessibleKeyOfRes(res), key);
  QCOMPARE(int(capture.Size()), 0);
}

void tst_UiUtilStyle::keyOfRes_empty_logsAndIsEmpty() {
  LogCapture capture(6);
  QCOMPARE(VxQtUiUtil::AccessibleKeyOfRes(QString()), QString());
  QCOMPARE(Lines(capture), QStringList{"1 AccessibleKeyOfRes: res is empty"});
}

void tst_UiUtilStyle::accessibleInfo_setsNameThenDescription() {
  QWidget widget;
  VxQtUiUtil::SetAccessibleInfo(&widget, QStringLiteral("Mute"), QStringLiteral("Mutes you"));
  QCOMPARE(widget.accessibleName(), QStringLiteral("Mute"));
  QCOMPARE(widget.accessibleDescription(), QStringLiteral("Mutes you"));
  VxQtUiUtil::SetAccessibleName(&widget, QStringLiteral("Unmute"));
  VxQtUiUtil::SetAccessibleDesc(&widget, QStringLiteral("Unmutes you"));
  QCOMPARE(widget.accessibleName(), QStringLiteral("Unmute"));
  QCOMPARE(widget.accessibleDescription(), QStringLiteral("Unmutes you"));
}

void tst_UiUtilStyle::accessibleSetters_nullWidget_doNothing() {
  LogCapture capture(6);
  VxQtUiUtil::SetAccessibleName(nullptr, QStringLiteral("n"));
  VxQtUiUtil::SetAccessibleDesc(nullptr, QStringLiteral("d"));
  VxQtUiUtil::SetAccessibleInfo(nullptr, QStringLiteral("n"), QStringLiteral("d"));
  QCOMPARE(int(capture.Size()), 0);
}

QTEST_MAIN(tst_UiUtilStyle)
#include "tst_ui_util_style.moc"
