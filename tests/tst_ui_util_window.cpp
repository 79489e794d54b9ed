// Window behaviour of VxQtUiUtil on the offscreen platform, and every operation that does
// nothing on Linux. What needs a real X server (input focus, the window manager's stay-on-top
// request) is in tst_ui_util_window_x11.
#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QImage>
#include <QLocale>
#include <QMetaType>
#include <QPixmap>
#include <QUrl>
#include <QWidget>
#include <QtTest>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>

#include "base/common/include/logger.h"
#include "base/variant/variant.h"
#include "qt_util/scheme_controller.h"
#include "qt_util/ui_util.h"
#include "support/log_capture.h"

using base::variant::Variant;
using UpdateRecord = std::shared_ptr<Variant>;

namespace {

constexpr char kUpdateProperty[] = "widget-update-data-Ha6z6e";

constexpr char kUpdateRecordTypeName[] = "std::shared_ptr<framework::Variant>";

// The meta type id of a type name. Qt 6 looks names up with QMetaType::fromName, Qt 5 with
// QMetaType::type, which Qt 6 deprecates.
int TypeIdNamed(const char* name) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
  return QMetaType::fromName(name).id();
#else
  return QMetaType::type(name);
#endif
}

// The record IsWidgetNeedUpdate keeps on a widget; empty when there is none of its type.
UpdateRecord RecordOf(const QWidget& widget) {
  const QVariant value = widget.property(kUpdateProperty);
  if (value.userType() != TypeIdNamed(kUpdateRecordTypeName)) return {};
  return *static_cast<const UpdateRecord*>(value.constData());
}

// Everything about a widget that a window operation could change.
QString StateOf(const QWidget& widget) {
  QStringList attributes;
  for (int a = 0; a < Qt::WA_AttributeCount; ++a) {
    if (widget.testAttribute(Qt::WidgetAttribute(a))) attributes << QString::number(a);
  }
  QStringList properties;
  for (const QByteArray& name : widget.dynamicPropertyNames()) properties << name;
  QStringList children;
  for (const QObject* child : widget.children()) children << child->objectName();
  return QStringLiteral(
             "flags %1 state %2 visible %3 geometry %4,%5 %6x%7 parent %8 "
             "attributes %9 properties %10 children %11 opacity %12 title %13")
      .arg(int(widget.windowFlags()))
      .arg(int(widget.windowState()))
      .arg(widget.isVisible())
      .arg(widget.x())
      .arg(widget.y())
      .arg(widget.width())
      .arg(widget.height())
      .arg(widget.parentWidget() ? widget.parentWidget()->objectName() : QStringLiteral("-"))
      .arg(attributes.join(','), properties.join(','), children.join(','))
      .arg(widget.windowOpacity())
      .arg(widget.windowTitle());
}

// One row of the table of operations that do nothing here: the call, on `widget` and `other`
// where it takes widgets, and its fixed result (an invalid QVariant for operations returning
// nothing).
struct NoOpRow {
  const char* name;
  std::function<QVariant(QWidget* widget, QWidget* other)> call;
  QVariant expected;
};

template <typename F>
std::function<QVariant(QWidget*, QWidget*)> Void(F f) {
  return [f](QWidget* widget, QWidget* other) {
    f(widget, other);
    return QVariant();
  };
}

std::vector<NoOpRow> NoOpRows() {
  namespace U = VxQtUiUtil;
  const Variant info("info");
  const auto controller = std::make_shared<framework::Controller>();
  const int native = 0;
  return {
      {"ActivateCurrentApp", Void([](QWidget*, QWidget*) { U::ActivateCurrentApp(); }), {}},
      {"SupportAutoSplitScreen",
       Void([](QWidget* w, QWidget*) { U::SupportAutoSplitScreen(w, true); }),
       {}},
      {"SetWidgetOwnerShip",
       Void([](QWidget* w, QWidget* o) { U::SetWidgetOwnerShip(w, o, true); }),
       {}},
      {"SetFixedPositonProp",
       Void([](QWidget* w, QWidget*) { U::SetFixedPositonProp(w, true); }),
       {}},
      {"BeginSheet", Void([](QWidget* w, QWidget* o) { U::BeginSheet(w, o); }), {}},
      {"EndSheet", Void([](QWidget* w, QWidget*) { U::EndSheet(w); }), {}},
      {"EndAllSheet", Void([](QWidget* w, QWidget*) { U::EndAllSheet(w); }), {}},
      {"ClearWindowBackground",
       Void([](QWidget* w, QWidget*) { U::ClearWindowBackground(w); }),
       {}},
      {"TitleBarFullSizeContentView",
       Void([](QWidget* w, QWidget*) { U::TitleBarFullSizeContentView(w, true); }),
       {}},
      {"SetWindowShowShadow",
       Void([](QWidget* w, QWidget*) { U::SetWindowShowShadow(w, false); }),
       {}},
      {"SetDisableVisualEffect",
       Void([](QWidget* w, QWidget*) { U::SetDisableVisualEffect(w, true); }),
       {}},
      {"ShowMediaNotAccessible",
       Void([info](QWidget* w, QWidget*) { U::ShowMediaNotAccessible(w, &info); }),
       {}},
      {"OpenSystemPreference",
       Void([info](QWidget*, QWidget*) { U::OpenSystemPreference(&info); }),
       {}},
      {"SetTitleVisible", Void([](QWidget* w, QWidget*) { U::SetTitleVisible(w, false); }), {}},
      {"SetTitleBarVisible",
       Void([](QWidget* w, QWidget*) { U::SetTitleBarVisible(w, false); }),
       {}},
      {"WidgetAppearOnlyOneSpace",
       Void([](QWidget* w, QWidget*) { U::WidgetAppearOnlyOneSpace(w); }),
       {}},
      {"WidgetShowAllWorkSapceWithoutFullScreen",
       Void([](QWidget* w, QWidget*) { U::WidgetShowAllWorkSapceWithoutFullScreen(w); }),
       {}},
      {"RelativeToTrackWindow",
       Void([](QWidget* w, QWidget*) { U::RelativeToTrackWindow(w, 42ul); }),
       {}},
      {"AddNSPanelMask", Void([](QWidget* w, QWidget*) { U::AddNSPanelMask(w, true); }), {}},
      {"MinimizeWindow", Void([](QWidget* w, QWidget*) { U::MinimizeWindow(w); }), {}},
      {"DeminimizeWindow", Void([](QWidget* w, QWidget*) { U::DeminimizeWindow(w); }), {}},
      {"SetWindowResizable",
       Void([](QWidget* w, QWidget*) { U::SetWindowResizable(w, false); }),
       {}},
      {"SetWindowMovable", Void([](QWidget* w, QWidget*) { U::SetWindowMovable(w, false); }), {}},
      {"SetWindowFullScreenState",
       Void([](QWidget* w, QWidget*) { U::SetWindowFullScreenState(w); }),
       {}},
      {"SetWindowNoFullScreenMode",
       Void([](QWidget* w, QWidget*) { U::SetWindowNoFullScreenMode(w); }),
       {}},
      {"NativeWindowToggleFullScreen",
       Void([](QWidget* w, QWidget*) { U::NativeWindowToggleFullScreen(w); }),
       {}},
      {"SetTitleBarMinBtnVisible",
       Void([](QWidget* w, QWidget*) { U::SetTitleBarMinBtnVisible(w, false); }),
       {}},
      {"SetTitleBarZoomBtnVisible",
       Void([](QWidget* w, QWidget*) { U::SetTitleBarZoomBtnVisible(w, false); }),
       {}},
      {"SetTitleBarCloseBtnVisible",
       Void([](QWidget* w, QWidget*) { U::SetTitleBarCloseBtnVisible(w, false); }),
       {}},
      {"SetupTitleBarStyle", Void([](QWidget* w, QWidget*) { U::SetupTitleBarStyle(w); }), {}},
      {"SetupTitleBarOnlyCloseStyle",
       Void([](QWidget* w, QWidget*) { U::SetupTitleBarOnlyCloseStyle(w); }),
       {}},
      {"SetupTitleBarCloseAndMinStyle",
       Void([](QWidget* w, QWidget*) { U::SetupTitleBarCloseAndMinStyle(w); }),
       {}},
      {"SetupTitleBarBackgroundColor",
       Void([](QWidget* w, QWidget*) { U::SetupTitleBarBackgroundColor(w, 0xff0000u); }),
       {}},
      {"SetupTitleBarTitleColor",
       Void([](QWidget* w, QWidget*) { U::SetupTitleBarTitleColor(w, 0x00ff00u); }),
       {}},
      {"SetupTitleBarTitleSize",
       Void([](QWidget* w, QWidget*) { U::SetupTitleBarTitleSize(w, 18); }),
       {}},
      {"SetupWndNormalLevel", Void([](QWidget* w, QWidget*) { U::SetupWndNormalLevel(w); }), {}},
      {"SetupWndMediumLevel", Void([](QWidget* w, QWidget*) { U::SetupWndMediumLevel(w); }), {}},
      {"SetupWndHeightLevel", Void([](QWidget* w, QWidget*) { U::SetupWndHeightLevel(w); }), {}},
      {"SetupWndDockLevel", Void([](QWidget* w, QWidget*) { U::SetupWndDockLevel(w); }), {}},
      {"MakeKeyAndOrderFront", Void([](QWidget* w, QWidget*) { U::MakeKeyAndOrderFront(w); }), {}},
      {"MakeFirstResponder", Void([](QWidget* w, QWidget*) { U::MakeFirstResponder(w); }), {}},
      {"NativeWindowOrderOut", Void([](QWidget* w, QWidget*) { U::NativeWindowOrderOut(w); }), {}},
      {"UpdateTrackingArea",
       Void([](QWidget* w, QWidget*) { U::UpdateTrackingArea(w, QRect(1, 2, 3, 4)); }),
       {}},
      {"RemoveAllTrackingArea",
       Void([](QWidget* w, QWidget*) { U::RemoveAllTrackingArea(w); }),
       {}},
      {"WidgetAddAccessibleParent",
       Void([](QWidget* w, QWidget*) { U::WidgetAddAccessibleParent(w, 7ull); }),
       {}},
      {"WidgetRemoveAccessibleParent",
       Void([](QWidget*, QWidget*) { U::WidgetRemoveAccessibleParent(7ull); }),
       {}},
      {"ChildWidgetAddSubView",
       Void([](QWidget* w, QWidget* o) { U::ChildWidgetAddSubView(w, o, true); }),
       {}},
      {"RemoveWidgetFromQTWindow",
       Void([](QWidget* w, QWidget* o) { U::RemoveWidgetFromQTWindow(w, o); }),
       {}},
      {"AddWidgetToNativeWindow (native window)",
       Void([native](QWidget* w, QWidget*) { U::AddWidgetToNativeWindow(&native, w, true); }),
       {}},
      {"RemoveWidgetFromNativeWindow (native window)",
       Void([native](QWidget* w, QWidget*) { U::RemoveWidgetFromNativeWindow(&native, w); }),
       {}},
      {"updateSupportWindowShareIfNeeded",
       Void([](QWidget*, QWidget*) { U::updateSupportWindowShareIfNeeded(7ull, true); }),
       {}},
      {"MakeNativeWindowKeyAndOrderFront",
       Void([](QWidget*, QWidget*) { U::MakeNativeWindowKeyAndOrderFront("main"); }),
       {}},
      {"ChangeAppIconWithTitle",
       Void([](QWidget*, QWidget*) { U::ChangeAppIconWithTitle("title"); }),
       {}},
      {"BindSchemeTopCenter",
       Void([controller](QWidget*, QWidget*) {
         U::BindSchemeTopCenter(controller, controller, 1, "a", "b");
       }),
       {}},
      {"SetSchemeTopCenter",
       Void([controller](QWidget*, QWidget*) {
         U::SetSchemeTopCenter(controller, controller, 1, "a", "b");
       }),
       {}},
      {"UnBindSchemeTopCenter",
       Void([controller](QWidget*, QWidget*) {
         U::UnBindSchemeTopCenter(controller, controller, "a", "b");
       }),
       {}},
      {"SetOwnerShipByScheme",
       Void([controller](QWidget*, QWidget*) {
         U::SetOwnerShipByScheme(controller, controller, "a", "b");
       }),
       {}},
      {"IsCalendarApplicationInstalled",
       [](QWidget*, QWidget*) { return QVariant(U::IsCalendarApplicationInstalled("calendar")); },
       QVariant(false)},
      {"IsNativePointInWindow",
       [](QWidget* w, QWidget*) {
         return QVariant(U::IsNativePointInWindow(QPoint(1, 1), w->effectiveWinId()));
       },
       QVariant(false)},
      {"IsFullSizeContent", [](QWidget* w, QWidget*) { return QVariant(U::IsFullSizeContent(w)); },
       QVariant(false)},
      {"IsWindowOutOfScreenWithOffset",
       [](QWidget* w, QWidget*) {
         return QVariant(U::IsWindowOutOfScreenWithOffset(w, 5000, 5000));
       },
       QVariant(false)},
      {"RefreshWindowAppearance",
       [](QWidget* w, QWidget*) { return QVariant(U::RefreshWindowAppearance(w, true)); },
       QVariant(false)},
      {"AddWidgetToQTWindow",
       [](QWidget* w, QWidget* o) { return QVariant(U::AddWidgetToQTWindow(w, o, true)); },
       QVariant(false)},
      {"AddWidgetToQTWindowWithCheckWinId",
       [](QWidget* w, QWidget* o) {
         return QVariant(U::AddWidgetToQTWindowWithCheckWinId(w, o, true, true));
       },
       QVariant(false)},
      {"AddWidgetToNativeWindow (by key)",
       [](QWidget* w, QWidget*) {
         return QVariant(U::AddWidgetToNativeWindow(std::string("main"), w));
       },
       QVariant(true)},
      {"RemoveWidgetFromNativeWindow (by key)",
       [](QWidget* w, QWidget*) {
         return QVariant(U::RemoveWidgetFromNativeWindow(std::string("main"), w));
       },
       QVariant(true)},
      {"GetTitlebarHeight", [](QWidget* w, QWidget*) { return QVariant(U::GetTitlebarHeight(w)); },
       QVariant(0)},
      {"GetPositionWndId",
       [](QWidget*, QWidget*) { return QVariant(qulonglong(U::GetPositionWndId(7ull))); },
       QVariant(qulonglong(0))},
      {"GetAppResourceImage (null)",
       [](QWidget*, QWidget*) { return QVariant(U::GetAppResourceImage("AppIcon").isNull()); },
       QVariant(true)},
      {"GetTitleBarCloseButtonRect",
       [](QWidget* w, QWidget*) { return QVariant(U::GetTitleBarCloseButtonRect(w)); },
       QVariant(QRect(0, 0, 0, 0))},
      {"CurrentThreadCallStackSymbols",
       [](QWidget*, QWidget*) { return QVariant(U::CurrentThreadCallStackSymbols()); },
       QVariant(QString())},
      {"IsOutlookReady",
       [](QWidget*, QWidget*) { return QVariant(qt_util::device::IsOutlookReady()); },
       QVariant(false)},
      {"ShowPermissionAlert",
       [info](QWidget*, QWidget*) {
         return QVariant(VxQtPermissionUtil::ShowPermissionAlert(&info));
       },
       QVariant(0)},
      {"GoToSystemSettingForMicPermission",
       Void([](QWidget*, QWidget*) { VxQtPermissionUtil::GoToSystemSettingForMicPermission(); }),
       {}},
      {"GoToSystemSetting",
       Void([](QWidget*, QWidget*) {
         VxQtPermissionUtil::GoToSystemSetting(QStringLiteral("camera"));
       }),
       {}},
      {"RequestPPTAnnotationPermission",
       [](QWidget*, QWidget*) {
         return QVariant(VxQtPermissionUtil::RequestPPTAnnotationPermission());
       },
       QVariant(false)},
      {"RebootAudioDriver",
       Void([](QWidget*, QWidget*) { VxQtCmdUtil::RebootAudioDriver("driver"); }),
       {}},
  };
}

// Receives the URLs QDesktopServices hands to the handler registered for a scheme.
class UrlRecorder : public QObject {
  Q_OBJECT
 public slots:
  void handle(const QUrl& url) { urls.append(url); }

 public:
  QList<QUrl> urls;
};

// Counts the paint events a widget gets.
class PaintCounter : public QObject {
 public:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++paints;
    return false;
  }
  int paints = 0;
};

}  // namespace

class tst_UiUtilWindow : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();

  void showWindow_minimisedAfterMaximised_showsMaximized();
  void showWindow_minimisedOnly_showsNormal();
  void showWindow_notMinimised_showsInItsState();
  void showWindow_activate_raisesAndActivates();
  void setupToolWindow_replacesTheFlags();
  void setupTopMost_setsTheHintAndShowsOnRequest();
  void bringToFront_raisesOrLowers();
  void updateWidgetWindow_withoutNativeWindow_onlyLogs();
  void updateWidgetWindow_withNativeWindow_repaints();
  void updateWidgetVisible_showsAndHides();
  void isWidgetNeedUpdate_trueOncePerChange();
  void isWidgetNeedUpdate_nullData_alwaysTrueAndRecordsNothing();
  void isWidgetNeedUpdate_recordIsASharedVariantUnderItsName();
  void updateRecordType_isKnownBeforeTheFirstRecord();
  void saveImageToClipBoard_realPng_putsAnEqualImage();
  void saveImageToClipBoard_notAnImage_leavesTheClipboard();
  void formatTimeStamp_inTwoLocales();
  void formatTimeStamp_zeroOrNullFormat_isEmpty();
  void formatTimeStamp_narrowsTo32Bits();
  void openUrl_reachesTheRegisteredHandler();
  void makeWidgetAbove_changesNothing();
  void noOps_changeNothingAndGiveTheirFixedResult_data();
  void noOps_changeNothingAndGiveTheirFixedResult();
};

void tst_UiUtilWindow::initTestCase() {
  // Time stamps below are written for UTC.
  qputenv("TZ", "UTC");
  tzset();
}

void tst_UiUtilWindow::showWindow_minimisedAfterMaximised_showsMaximized() {
  QWidget window;
  window.setWindowState(Qt::WindowMinimized | Qt::WindowMaximized);
  VxQtUiUtil::ShowWindow(&window, false);
  QVERIFY(window.isVisible());
  QCOMPARE(window.windowState(), Qt::WindowStates(Qt::WindowMaximized));
}

void tst_UiUtilWindow::showWindow_minimisedOnly_showsNormal() {
  QWidget window;
  window.setWindowState(Qt::WindowMinimized);
  VxQtUiUtil::ShowWindow(&window, false);
  QVERIFY(window.isVisible());
  QCOMPARE(window.windowState(), Qt::WindowStates(Qt::WindowNoState));
  VxQtUiUtil::ShowWindow(nullptr, true);
}

void tst_UiUtilWindow::showWindow_notMinimised_showsInItsState() {
  // Plain show(): a full-screen window stays full screen, where showNormal() would end it.
  QWidget window;
  window.setWindowState(Qt::WindowFullScreen);
  VxQtUiUtil::ShowWindow(&window, false);
  QVERIFY(window.isVisible());
  QCOMPARE(window.windowState(), Qt::WindowStates(Qt::WindowFullScreen));
}

void tst_UiUtilWindow::showWindow_activate_raisesAndActivates() {
  QWidget other;
  other.setGeometry(400, 100, 100, 100);
  other.show();
  other.activateWindow();
  QTRY_COMPARE(QApplication::activeWindow(), &other);

  QWidget window;
  window.setGeometry(100, 100, 300, 200);
  QWidget* back = new QWidget(&window);
  back->setObjectName("back");
  QWidget* front = new QWidget(&window);
  front->setObjectName("front");
  back->hide();
  window.show();
  QVERIFY(QTest::qWaitForWindowExposed(&window));
  QCOMPARE(window.children().last(), front);

  VxQtUiUtil::ShowWindow(back, true);
  QVERIFY(back->isVisible());
  QCOMPARE(window.children().last(), back);  // raised above its sibling
  QTRY_COMPARE(QApplication::activeWindow(), &window);
}

void tst_UiUtilWindow::setupToolWindow_replacesTheFlags() {
  QWidget window;
  window.setWindowFlags(Qt::Dialog | Qt::WindowDoesNotAcceptFocus);
  VxQtUiUtil::SetupToolWindow(&window);
  QCOMPARE(window.windowFlags(),
           Qt::WindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint | Qt::Tool |
                           Qt::X11BypassWindowManagerHint));
  QVERIFY(window.testAttribute(Qt::WA_AlwaysStackOnTop));
  QVERIFY(window.testAttribute(Qt::WA_TranslucentBackground));
  VxQtUiUtil::SetupToolWindow(nullptr);
}

void tst_UiUtilWindow::setupTopMost_setsTheHintAndShowsOnRequest() {
  QWidget window;
  VxQtUiUtil::SetupTopMost(&window, true, false);
  QVERIFY(window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  QVERIFY(!window.isVisible());
  VxQtUiUtil::SetupTopMost(&window, true, true);
  QVERIFY(window.isVisible());
  VxQtUiUtil::SetupTopMost(&window, false, true);
  QVERIFY(!window.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  QVERIFY(window.isVisible());
  VxQtUiUtil::SetupTopMost(nullptr, true, true);
}

void tst_UiUtilWindow::bringToFront_raisesOrLowers() {
  QWidget parent;
  QWidget* first = new QWidget(&parent);
  QWidget* second = new QWidget(&parent);
  VxQtUiUtil::BringToFront(first, true);
  QCOMPARE(parent.children().last(), first);
  VxQtUiUtil::BringToFront(first, false);
  QCOMPARE(parent.children().first(), first);
  QCOMPARE(parent.children().last(), second);
  VxQtUiUtil::BringToFront(nullptr, true);
}

void tst_UiUtilWindow::updateWidgetWindow_withoutNativeWindow_onlyLogs() {
  LogCapture capture(base::log::kLevelInfo);
  QWidget widget;
  PaintCounter counter;
  widget.installEventFilter(&counter);
  VxQtUiUtil::UpdateWidgetWindow(&widget);
  VxQtUiUtil::UpdateWidgetWindow(nullptr);
  QCOMPARE(capture.Count(base::log::kLevelWarning, "update widget window should has a winId"), 2);
  for (const auto& record : capture.Records()) {
    QCOMPARE(record.function, std::string("UpdateWidgetWindow"));
    QCOMPARE(record.file, std::string("ui_util.cpp"));  // the facility's, not the unit's
    QVERIFY(record.line > 0);
  }
  QCOMPARE(widget.internalWinId(), WId(0));  // no native window was made for it
  QCoreApplication::processEvents();
  QCOMPARE(counter.paints, 0);
}

void tst_UiUtilWindow::updateWidgetWindow_withNativeWindow_repaints() {
  QWidget widget;
  widget.resize(100, 100);
  widget.show();
  QVERIFY(QTest::qWaitForWindowExposed(&widget));
  PaintCounter counter;
  widget.installEventFilter(&counter);
  QCoreApplication::processEvents();
  counter.paints = 0;
  LogCapture capture(base::log::kLevelInfo);
  QVERIFY(widget.internalWinId() != 0);
  VxQtUiUtil::UpdateWidgetWindow(&widget);
  QTRY_VERIFY(counter.paints > 0);
  QCOMPARE(capture.Size(), size_t(0));
}

void tst_UiUtilWindow::updateWidgetVisible_showsAndHides() {
  QWidget widget;
  VxQtUiUtil::UpdateWidgetVisible(&widget, true);
  QVERIFY(widget.isVisible());
  VxQtUiUtil::UpdateWidgetVisible(&widget, false);
  QVERIFY(widget.isHidden());
  VxQtUiUtil::UpdateWidgetVisible(nullptr, true);
}

void tst_UiUtilWindow::isWidgetNeedUpdate_trueOncePerChange() {
  QWidget widget;
  Variant data(base::variant::kMap);
  data.Set("title", Variant("Weekly sync"));
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&widget, &data));
  Variant same(base::variant::kMap);
  same.Set("title", Variant("Weekly sync"));
  QVERIFY(!VxQtUiUtil::IsWidgetNeedUpdate(&widget, &same));
  QVERIFY(!VxQtUiUtil::IsWidgetNeedUpdate(&widget, &data));
  data.Set("title", Variant("Weekly sync (moved)"));
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&widget, &data));
  QVERIFY(!VxQtUiUtil::IsWidgetNeedUpdate(&widget, &data));
  // Each widget keeps its own record.
  QWidget other;
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&other, &data));
}

void tst_UiUtilWindow::isWidgetNeedUpdate_nullData_alwaysTrueAndRecordsNothing() {
  QWidget widget;
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&widget, nullptr));
  QVERIFY(!widget.property(kUpdateProperty).isValid());
  const Variant data("shown");
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&widget, &data));
  const UpdateRecord before = RecordOf(widget);
  QVERIFY(before);
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&widget, nullptr));
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&widget, nullptr));
  QCOMPARE(RecordOf(widget).get(), before.get());
  QVERIFY(!VxQtUiUtil::IsWidgetNeedUpdate(&widget, &data));
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(nullptr, &data));
}

void tst_UiUtilWindow::isWidgetNeedUpdate_recordIsASharedVariantUnderItsName() {
  QWidget widget;
  Variant data(uint64_t{7});
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&widget, &data));
  const QVariant value = widget.property(kUpdateProperty);
  // The record's type is registered under the client's name. Qt 5 reports that name as the
  // type's own; Qt 6 keeps the compiler's spelling of the type as its name and the client's as
  // an alias that finds the same type.
  QCOMPARE(value.userType(), TypeIdNamed(kUpdateRecordTypeName));
  QCOMPARE(QByteArray(value.typeName()),
           QByteArray(QT_VERSION_MAJOR >= 6 ? "std::shared_ptr<base::variant::Variant>"
                                            : kUpdateRecordTypeName));
  const UpdateRecord record = RecordOf(widget);
  QVERIFY(record);
  QCOMPARE(*record, data);
  QVERIFY(record.get() != &data);  // a copy, not the caller's value
  data = Variant(uint64_t{8});
  QCOMPARE(*record, Variant(uint64_t{7}));
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&widget, &data));
  QVERIFY(RecordOf(widget).get() != record.get());  // replaced, not edited

  // A property of another type is not a record: the data counts as new and replaces it.
  QWidget foreign;
  foreign.setProperty(kUpdateProperty, QStringLiteral("7"));
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&foreign, &data));
  QCOMPARE(*RecordOf(foreign), data);
}

void tst_UiUtilWindow::updateRecordType_isKnownBeforeTheFirstRecord() {
  // Run alone, nothing has called IsWidgetNeedUpdate yet: loading the library is enough.
  const int id = TypeIdNamed(kUpdateRecordTypeName);
  QVERIFY(id != QMetaType::UnknownType);
  QWidget widget;
  const Variant data("x");
  QVERIFY(VxQtUiUtil::IsWidgetNeedUpdate(&widget, &data));
  QCOMPARE(widget.property(kUpdateProperty).userType(), id);
}

void tst_UiUtilWindow::saveImageToClipBoard_realPng_putsAnEqualImage() {
  // A 4x3 RGB picture written by a few lines of Python (struct + zlib), not by Qt.
  QFile file(QStringLiteral(QT_UTIL_TEST_DATA_DIR "/ui_util_clipboard.png"));
  QVERIFY(file.open(QIODevice::ReadOnly));
  const QByteArray png = file.readAll();
  const QImage expected = QImage::fromData(png);
  QCOMPARE(expected.size(), QSize(4, 3));
  QGuiApplication::clipboard()->setText(QStringLiteral("before"));

  QVERIFY(VxQtUiUtil::SaveImageToClipBoard(png.toBase64().toStdString()));
  const QImage copied = QGuiApplication::clipboard()->image(QClipboard::Clipboard);
  QCOMPARE(copied.size(), expected.size());
  QCOMPARE(copied.convertToFormat(QImage::Format_RGB32),
           expected.convertToFormat(QImage::Format_RGB32));
  QCOMPARE(copied.pixel(0, 0), qRgb(255, 0, 0));
}

void tst_UiUtilWindow::saveImageToClipBoard_notAnImage_leavesTheClipboard() {
  QGuiApplication::clipboard()->setText(QStringLiteral("keep me"));
  QVERIFY(!VxQtUiUtil::SaveImageToClipBoard(QByteArray("plain words").toBase64().toStdString()));
  QVERIFY(!VxQtUiUtil::SaveImageToClipBoard("%%% not base64 %%%"));
  QVERIFY(!VxQtUiUtil::SaveImageToClipBoard(std::string()));
  QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("keep me"));
  QVERIFY(QGuiApplication::clipboard()->image().isNull());
}

void tst_UiUtilWindow::formatTimeStamp_inTwoLocales() {
  // 1700000000 is Tuesday 14 November 2023, 22:13:20 UTC.
  const char* format = "dddd d MMMM yyyy, HH:mm:ss";
  QCOMPARE(VxQtUiUtil::FormatTimeStamp(1700000000ul, format, QLocale(QLocale::English)),
           QStringLiteral("Tuesday 14 November 2023, 22:13:20"));
  QCOMPARE(VxQtUiUtil::FormatTimeStamp(1700000000ul, format, QLocale(QLocale::German)),
           QStringLiteral("Dienstag 14 November 2023, 22:13:20"));
  QCOMPARE(VxQtUiUtil::FormatTimeStamp(1700000000ul, "d MMM '\xe2\x80\x93' HH:mm",
                                       QLocale(QLocale::French)),
           QString::fromUtf8("14 nov. \xe2\x80\x93 22:13"));
}

void tst_UiUtilWindow::formatTimeStamp_zeroOrNullFormat_isEmpty() {
  QVERIFY(VxQtUiUtil::FormatTimeStamp(0ul, "yyyy", QLocale::c()).isEmpty());
  QVERIFY(VxQtUiUtil::FormatTimeStamp(0ul, "'epoch'", QLocale::c()).isEmpty());
  QVERIFY(VxQtUiUtil::FormatTimeStamp(1700000000ul, nullptr, QLocale::c()).isEmpty());
  QCOMPARE(VxQtUiUtil::FormatTimeStamp(1ul, "yyyy-MM-dd HH:mm:ss", QLocale::c()),
           QStringLiteral("1970-01-01 00:00:01"));
}

void tst_UiUtilWindow::formatTimeStamp_narrowsTo32Bits() {
  const unsigned long wide = (1ul << 32) + 1700000000ul;
  QCOMPARE(VxQtUiUtil::FormatTimeStamp(wide, "yyyy-MM-dd HH:mm", QLocale::c()),
           QStringLiteral("2023-11-14 22:13"));
  // Exactly 2^32 narrows to 0 seconds, which is formatted, not treated as missing.
  QCOMPARE(VxQtUiUtil::FormatTimeStamp(1ul << 32, "yyyy", QLocale::c()), QStringLiteral("1970"));
}

void tst_UiUtilWindow::openUrl_reachesTheRegisteredHandler() {
  UrlRecorder recorder;
  QDesktopServices::setUrlHandler(QStringLiteral("vxtest"), &recorder, "handle");
  QVERIFY(VxQtUiUtil::OpenURL(QStringLiteral("vxtest://meeting/join now?id=42")));
  QDesktopServices::unsetUrlHandler(QStringLiteral("vxtest"));
  QCOMPARE(recorder.urls.size(), 1);
  // Read in tolerant mode: the space is taken as meant and encoded.
  QCOMPARE(recorder.urls[0].toEncoded(), QByteArray("vxtest://meeting/join%20now?id=42"));
}

void tst_UiUtilWindow::makeWidgetAbove_changesNothing() {
  QWidget widget;
  widget.setObjectName("widget");
  widget.setGeometry(10, 10, 100, 100);
  QWidget above;
  above.setObjectName("above");
  above.setGeometry(50, 50, 100, 100);
  widget.show();
  above.show();
  const QString widget_before = StateOf(widget);
  const QString above_before = StateOf(above);
  VxQtUiUtil::MakeWidgetAbove(&widget, &above);
  VxQtUiUtil::MakeWidgetAbove(nullptr, nullptr);
  QCOMPARE(StateOf(widget), widget_before);
  QCOMPARE(StateOf(above), above_before);
  QCOMPARE(above.parentWidget(), static_cast<QWidget*>(nullptr));
}

void tst_UiUtilWindow::noOps_changeNothingAndGiveTheirFixedResult_data() {
  QTest::addColumn<int>("row");
  const auto rows = NoOpRows();
  for (int i = 0; i < int(rows.size()); ++i) QTest::newRow(rows[i].name) << i;
}

void tst_UiUtilWindow::noOps_changeNothingAndGiveTheirFixedResult() {
  QFETCH(int, row);
  const NoOpRow data = NoOpRows()[row];
  QWidget window;
  window.setObjectName("window");
  window.setWindowTitle(QStringLiteral("Meeting"));
  window.setGeometry(100, 100, 300, 200);
  QWidget* child = new QWidget(&window);
  child->setObjectName("child");
  window.show();
  QVERIFY(QTest::qWaitForWindowExposed(&window));
  const QString window_before = StateOf(window);
  const QString child_before = StateOf(*child);

  const QVariant result = data.call(&window, child);
  QCoreApplication::processEvents();

  QCOMPARE(result.userType(), data.expected.userType());
  QCOMPARE(result, data.expected);
  QCOMPARE(StateOf(window), window_before);
  QCOMPARE(StateOf(*child), child_before);
}

QTEST_MAIN(tst_UiUtilWindow)
#include "tst_ui_util_window.moc"
