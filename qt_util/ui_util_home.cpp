// The client's home window, found through the scheme controllers of whichever home page is in
// use, and the positions handed to the companion desktop application.
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include "base/variant/variant.h"
#include "qt_util/scheme_controller.h"
#include "qt_util/ui_util_home.h"
#include "qt_util/ui_util_screen.h"
#include "scheme/controller_manager.h"
#include "talvex_common/utils/home_page.h"

namespace {

constexpr char kHostScheme[] = "talvex://page/nxui/host";
constexpr char kHomeScheme[] = "talvex://page/home";

// Width of the companion application's panel; process-wide, and never changed here.
int g_companion_panel_width = 320;

// The arguments that ask the host about the classic home page's window.
std::unique_ptr<base::variant::Variant> HomeSchemeArguments() {
  auto arguments = std::make_unique<base::variant::Variant>();
  arguments->Set("scheme", base::variant::Variant(kHomeScheme));
  return arguments;
}

// The new home page's widget as its host reports it; null when there is no host or the answer
// is not a non-null pointer.
QWidget* NxHomeWidget() {
  const auto host = ControllerManager::Instance()->IocFind(kHostScheme);
  if (!host) return nullptr;
  const auto result = host->CallHasResult("get_qt_window", HomeSchemeArguments());
  if (!result || result->GetType() != base::variant::kPointer) return nullptr;
  return static_cast<QWidget*>(result->AsPtr());
}

// The classic home view's rectangle, end point included; QRect(0, 0, 0, 0) without "start_x".
QRect ClassicHomeRect() {
  base::variant::Variant info(base::variant::kMap);
  talvex_common::utils::GetHomeViewInfo(info);
  if (!info.Has("start_x")) return QRect(0, 0, 0, 0);
  return QRect(QPoint(info.GetInt32("start_x", 0), info.GetInt32("start_y", 0)),
               QPoint(info.GetInt32("end_x", 0), info.GetInt32("end_y", 0)));
}

// The companion application's reference point: the widget's geometry origin mapped through the
// widget itself, which counts a window's position twice. The companion application was built
// against this point, so it stays.
QPoint CompanionReferencePoint(QWidget* widget) {
  return widget->mapToGlobal(widget->geometry().topLeft());
}

}  // namespace

namespace VxQtUiUtil {

QRect GetHomeWindowRect() {
  if (!talvex_common::utils::IsNxHomePage()) return ClassicHomeRect();
  if (const QWidget* home = NxHomeWidget()) return home->geometry();
  return QRect(0, 0, 0, 0);
}

QRect GetHomeScreenRect() {
  if (!talvex_common::utils::IsNxHomePage()) return ClassicHomeRect();
  if (const QWidget* home = NxHomeWidget()) {
    if (const QScreen* screen = home->screen()) return screen->availableGeometry();
  }
  return QRect(0, 0, 0, 0);
}

std::unique_ptr<base::variant::Variant> GetHomeWindowHandle() {
  if (talvex_common::utils::IsNxHomePage()) {
    const auto host = ControllerManager::Instance()->IocFind(kHostScheme);
    if (!host) return {};
    return host->CallHasResult("get_qt_window_handle", HomeSchemeArguments());
  }
  return ControllerManager::Instance()
      ->IocFind(kHomeScheme)
      ->CallHasResult("get_window_handle", std::make_unique<base::variant::Variant>());
}

}  // namespace VxQtUiUtil

namespace VxTransQtUiUtil {

QPoint GetCommonPosToDravik(QWidget* widget) {
  if (!widget) return QPoint(0, 0);
  const QPoint p = CompanionReferencePoint(widget);
  return QPoint(p.x() + widget->width() / 2, p.y() + widget->height() / 2);
}

QPoint GetRealPosToDravik(QWidget* widget) {
  if (!widget) return QPoint(0, 0);
  const QPoint p = CompanionReferencePoint(widget);
  const int panel = g_companion_panel_width;
  const int right = p.x() + widget->width();
  bool flip = right + panel > VxQtUiUtil::GetScreenRect(widget).width();
  if (p.x() < 0) flip = right < 0 ? (panel + right >= 1) : true;
  const QScreen* primary = QGuiApplication::primaryScreen();
  const QRect primary_rect = primary ? primary->geometry() : QRect();
  if (p.x() > primary_rect.width()) flip = false;
  const int x = flip ? p.x() - panel : right;
  // Measured upward from the bottom of the primary screen.
  const int y = primary_rect.height() - p.y();
  return QPoint(x, y);
}

}  // namespace VxTransQtUiUtil
