// The home window through the framework's controller registry and home-page settings, and the
// positions handed to the companion application. Offscreen: the platform's screen is
// (0, 0, 800, 600) and primary.
#include <QScreen>
#include <QWidget>
#include <QtTest>
#include <memory>
#include <string>

#include "base/variant/variant.h"
#include "qt_util/scheme_controller.h"
#include "qt_util/ui_util.h"
#include "scheme/controller_manager.h"
#include "support/virtual_screen.h"
#include "talvex_common/utils/home_page.h"

using base::variant::Variant;

namespace {

constexpr char kHostScheme[] = "talvex://page/nxui/host";
constexpr char kHomeScheme[] = "talvex://page/home";

// A page controller that answers every CallHasResult with a copy of `answer` (nothing when it
// is empty) and remembers what it was asked.
class RecordingController : public framework::Controller {
 public:
  std::unique_ptr<Variant> CallHasResult(const std::string& method,
                                         std::unique_ptr<Variant> params) override {
    methods.push_back(method);
    last_params = std::move(params);
    return answer ? std::make_unique<Variant>(*answer) : nullptr;
  }

  std::unique_ptr<Variant> answer;
  std::vector<std::string> methods;
  std::unique_ptr<Variant> last_params;
};

std::shared_ptr<RecordingController> RegisterController(const char* scheme) {
  auto controller = std::make_shared<RecordingController>();
  ControllerManager::Instance()->IocRegister(scheme, controller);
  return controller;
}

Variant HomeViewInfo(std::initializer_list<std::pair<const char*, int>> values) {
  Variant info(base::variant::kMap);
  for (const auto& [key, value] : values) info.Set(key, Variant(value));
  return info;
}

struct CompanionRow {
  const char* name;
  QRect geometry;  // of a top-level window, so its position counts twice
  QPoint expected;
};

// Panel width 320; the primary screen is 800 wide and 600 high.
const CompanionRow kCompanionRows[] = {
    {"fits on the right", QRect(100, 50, 200, 100), QPoint(400, 500)},
    {"ends exactly at the screen edge", QRect(140, 10, 200, 100), QPoint(480, 580)},
    {"one pixel over flips left", QRect(141, 10, 200, 100), QPoint(282 - 320, 580)},
    {"flips left", QRect(250, 0, 200, 100), QPoint(180, 600)},
    {"starts left of 0, ends on screen", QRect(-50, 0, 200, 100), QPoint(-420, 600)},
    {"left of 0, panel reaches the screen", QRect(-210, 0, 101, 100), QPoint(-740, 600)},
    {"left of 0, panel short of the screen", QRect(-210, 0, 100, 100), QPoint(-320, 600)},
    {"beyond the primary screen", QRect(500, 0, 200, 100), QPoint(1200, 600)},
    {"below the primary screen", QRect(10, 400, 100, 100), QPoint(120, -200)},
};

}  // namespace

class tst_UiUtilHome : public QObject {
  Q_OBJECT

 private slots:
  void init();
  void cleanup();

  void newHomePage_withoutHost_givesAnEmptyRect();
  void classicHomePage_endPointIsInclusive();
  void classicHomePage_withoutStartX_givesAnEmptyRect();
  void classicHomePage_missingOtherKeys_readAsZero();
  void newHomePage_nonPointerAnswer_givesAnEmptyRect();
  void newHomePage_nullPointerAnswer_givesAnEmptyRect();
  void newHomePage_hostWithALiveWidget_givesItsGeometryAndScreen();
  void closedRegistry_givesAnEmptyRect();
  void homeWindowHandle_newHomePage_asksTheHost();
  void homeWindowHandle_classicHomePage_asksTheHomePage();
  void homeWindowHandle_withoutController_isEmpty();
  void commonPos_countsAWindowsPositionTwice();
  void realPos_placesThePanelBesideTheWindow_data();
  void realPos_placesThePanelBesideTheWindow();
  void companionPositions_ofAChild_mapThroughTheChild();
};

void tst_UiUtilHome::init() {
  talvex_common::utils::SetNxHomePage(false);
  talvex_common::utils::SetHomeViewInfo(Variant());
}

void tst_UiUtilHome::cleanup() {
  ControllerManager::Instance()->IocUnregister(kHostScheme);
  ControllerManager::Instance()->IocUnregister(kHomeScheme);
  ControllerManager::Instance()->SetClosed(false);
  talvex_common::utils::SetNxHomePage(false);
  talvex_common::utils::SetHomeViewInfo(Variant());
}

void tst_UiUtilHome::newHomePage_withoutHost_givesAnEmptyRect() {
  talvex_common::utils::SetNxHomePage(true);
  // Classic information present as well: the new home page must not fall back to it.
  talvex_common::utils::SetHomeViewInfo(
      HomeViewInfo({{"start_x", 1}, {"start_y", 2}, {"end_x", 3}, {"end_y", 4}}));
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(0, 0, 0, 0));
  QCOMPARE(VxQtUiUtil::GetHomeScreenRect(), QRect(0, 0, 0, 0));
}

void tst_UiUtilHome::classicHomePage_endPointIsInclusive() {
  talvex_common::utils::SetHomeViewInfo(
      HomeViewInfo({{"start_x", 10}, {"start_y", 20}, {"end_x", 109}, {"end_y", 219}}));
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(10, 20, 100, 200));
  QCOMPARE(VxQtUiUtil::GetHomeScreenRect(), QRect(10, 20, 100, 200));
}

void tst_UiUtilHome::classicHomePage_withoutStartX_givesAnEmptyRect() {
  talvex_common::utils::SetHomeViewInfo(
      HomeViewInfo({{"start_y", 20}, {"end_x", 109}, {"end_y", 219}}));
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(0, 0, 0, 0));
  QCOMPARE(VxQtUiUtil::GetHomeScreenRect(), QRect(0, 0, 0, 0));
  // No information at all.
  talvex_common::utils::SetHomeViewInfo(Variant());
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(0, 0, 0, 0));
}

void tst_UiUtilHome::classicHomePage_missingOtherKeys_readAsZero() {
  talvex_common::utils::SetHomeViewInfo(HomeViewInfo({{"start_x", 10}, {"end_x", 109}}));
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(QPoint(10, 0), QPoint(109, 0)));
}

void tst_UiUtilHome::newHomePage_nonPointerAnswer_givesAnEmptyRect() {
  talvex_common::utils::SetNxHomePage(true);
  auto host = RegisterController(kHostScheme);
  QWidget home;
  home.setGeometry(10, 10, 100, 100);
  // The widget's address as a number is not a pointer variant.
  host->answer =
      std::make_unique<Variant>(static_cast<uint64_t>(reinterpret_cast<uintptr_t>(&home)));
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(0, 0, 0, 0));
  QCOMPARE(VxQtUiUtil::GetHomeScreenRect(), QRect(0, 0, 0, 0));
  host->answer = std::make_unique<Variant>("home");
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(0, 0, 0, 0));
  QCOMPARE(host->methods.size(), size_t(3));
}

void tst_UiUtilHome::newHomePage_nullPointerAnswer_givesAnEmptyRect() {
  talvex_common::utils::SetNxHomePage(true);
  auto host = RegisterController(kHostScheme);
  host->answer = std::make_unique<Variant>(static_cast<void*>(nullptr));
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(0, 0, 0, 0));
  QCOMPARE(VxQtUiUtil::GetHomeScreenRect(), QRect(0, 0, 0, 0));
  host->answer.reset();  // no answer at all
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(0, 0, 0, 0));
}

void tst_UiUtilHome::newHomePage_hostWithALiveWidget_givesItsGeometryAndScreen() {
  QScreen* screen = test_support::AddVirtualScreen(QRect(1920, 0, 1280, 1024), 1.0);
  test_support::SetVirtualScreenAvailableGeometry(screen, QRect(1920, 0, 1280, 990));
  talvex_common::utils::SetNxHomePage(true);
  auto host = RegisterController(kHostScheme);
  QWidget home;
  home.setGeometry(2000, 100, 640, 480);
  host->answer = std::make_unique<Variant>(static_cast<void*>(&home));

  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(2000, 100, 640, 480));
  QCOMPARE(host->methods, std::vector<std::string>{"get_qt_window"});
  QVERIFY(host->last_params);
  QCOMPARE(host->last_params->GetType(), base::variant::kMap);
  QCOMPARE(host->last_params->AsMap().size(), size_t(1));
  QCOMPARE(QString((*host->last_params)["scheme"].AsCStr()), QString(kHomeScheme));

  QCOMPARE(VxQtUiUtil::GetHomeScreenRect(), QRect(1920, 0, 1280, 990));
  home.move(100, 100);  // onto the platform's own screen
  QCOMPARE(VxQtUiUtil::GetHomeScreenRect(), QGuiApplication::primaryScreen()->availableGeometry());
  test_support::RemoveVirtualScreen(screen);
}

void tst_UiUtilHome::closedRegistry_givesAnEmptyRect() {
  talvex_common::utils::SetNxHomePage(true);
  auto host = RegisterController(kHostScheme);
  QWidget home;
  home.setGeometry(10, 20, 30, 40);
  host->answer = std::make_unique<Variant>(static_cast<void*>(&home));
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(10, 20, 30, 40));
  ControllerManager::Instance()->SetClosed(true);
  QCOMPARE(VxQtUiUtil::GetHomeWindowRect(), QRect(0, 0, 0, 0));
}

void tst_UiUtilHome::homeWindowHandle_newHomePage_asksTheHost() {
  talvex_common::utils::SetNxHomePage(true);
  auto host = RegisterController(kHostScheme);
  auto classic = RegisterController(kHomeScheme);
  host->answer = std::make_unique<Variant>(uint64_t{0x2a00007});
  const auto handle = VxQtUiUtil::GetHomeWindowHandle();
  QVERIFY(handle);
  QCOMPARE(*handle, Variant(uint64_t{0x2a00007}));
  QCOMPARE(host->methods, std::vector<std::string>{"get_qt_window_handle"});
  QCOMPARE(QString((*host->last_params)["scheme"].AsCStr()), QString(kHomeScheme));
  QVERIFY(classic->methods.empty());
  // A wrong-typed handle is passed on as it comes.
  host->answer = std::make_unique<Variant>("not a handle");
  QCOMPARE(*VxQtUiUtil::GetHomeWindowHandle(), Variant("not a handle"));
}

void tst_UiUtilHome::homeWindowHandle_classicHomePage_asksTheHomePage() {
  auto host = RegisterController(kHostScheme);
  auto classic = RegisterController(kHomeScheme);
  classic->answer = std::make_unique<Variant>(uint64_t{0x1c00003});
  const auto handle = VxQtUiUtil::GetHomeWindowHandle();
  QVERIFY(handle);
  QCOMPARE(*handle, Variant(uint64_t{0x1c00003}));
  QCOMPARE(classic->methods, std::vector<std::string>{"get_window_handle"});
  QVERIFY(classic->last_params);
  QCOMPARE(classic->last_params->GetType(), base::variant::kNull);
  QVERIFY(host->methods.empty());
}

void tst_UiUtilHome::homeWindowHandle_withoutController_isEmpty() {
  QVERIFY(!VxQtUiUtil::GetHomeWindowHandle());
  talvex_common::utils::SetNxHomePage(true);
  QVERIFY(!VxQtUiUtil::GetHomeWindowHandle());
}

void tst_UiUtilHome::commonPos_countsAWindowsPositionTwice() {
  QWidget window;
  window.setGeometry(100, 50, 201, 101);
  // (100, 50) mapped through the window at (100, 50) is (200, 100); plus the halves 100 and 50.
  QCOMPARE(VxTransQtUiUtil::GetCommonPosToDravik(&window), QPoint(300, 150));
  QCOMPARE(VxTransQtUiUtil::GetCommonPosToDravik(nullptr), QPoint(0, 0));
}

void tst_UiUtilHome::realPos_placesThePanelBesideTheWindow_data() {
  QTest::addColumn<int>("row");
  for (int i = 0; i < int(std::size(kCompanionRows)); ++i) {
    QTest::newRow(kCompanionRows[i].name) << i;
  }
}

void tst_UiUtilHome::realPos_placesThePanelBesideTheWindow() {
  QFETCH(int, row);
  const CompanionRow& data = kCompanionRows[row];
  QWidget window;
  window.setGeometry(data.geometry);
  QCOMPARE(VxTransQtUiUtil::GetRealPosToDravik(&window), data.expected);
}

void tst_UiUtilHome::companionPositions_ofAChild_mapThroughTheChild() {
  QWidget window;
  window.setGeometry(100, 50, 400, 300);
  QWidget* child = new QWidget(&window);
  child->setGeometry(10, 20, 60, 40);
  // The child's origin (10, 20) mapped through the child: 100 + 10 + 10, 50 + 20 + 20.
  QCOMPARE(VxTransQtUiUtil::GetCommonPosToDravik(child), QPoint(120 + 30, 90 + 20));
  QCOMPARE(VxTransQtUiUtil::GetRealPosToDravik(child), QPoint(120 + 60, 600 - 90));
  QCOMPARE(VxTransQtUiUtil::GetRealPosToDravik(nullptr), QPoint(0, 0));
}

QTEST_MAIN(tst_UiUtilHome)
#include "tst_ui_util_home.moc"
