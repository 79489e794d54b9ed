// The window utilities at work on the screens of this session: a pop-up kept on screen by
// CorrectRect, a dialog centred on a main window, the nearest screen of points off every screen,
// the home window found through a registered host controller with the companion panel beside
// it, time stamps in three locales, and the update record that skips redundant refreshes. The
// geometry is drawn to windows_geometry.png.
#include <QApplication>
#include <QCursor>
#include <QLocale>
#include <QPainter>
#include <QScreen>
#include <QWidget>
#include <memory>
#include <vector>

#include "base/variant/variant.h"
#include "gallery.h"
#include "qt_util/scheme_controller.h"
#include "qt_util/ui_util.h"
#include "scheme/controller_manager.h"
#include "talvex_common/utils/home_page.h"

namespace {

constexpr char kHostScheme[] = "talvex://page/nxui/host";

// Screen names can be empty (the offscreen platform gives none); the list position then stands in.
QString ScreenName(const QScreen* screen) {
  if (!screen->name().isEmpty()) return screen->name();
  return QStringLiteral("screen %1")
      .arg(QGuiApplication::screens().indexOf(const_cast<QScreen*>(screen)));
}

QString PointText(const QPoint& point) {
  return QStringLiteral("(%1, %2)").arg(point.x()).arg(point.y());
}

// The new home page's host as the client registers it: it hands out its home widget.
class HomeHost : public framework::Controller {
 public:
  explicit HomeHost(QWidget* home) : home_(home) {}
  std::unique_ptr<base::variant::Variant> CallHasResult(
      const std::string& method, std::unique_ptr<base::variant::Variant> params) override {
    gallery::Say(QStringLiteral("  host asked \"%1\" for scheme \"%2\"")
                     .arg(QString::fromStdString(method),
                          QString::fromUtf8(params ? (*params)["scheme"].AsCStr() : "")));
    if (method != "get_qt_window") return {};
    return std::make_unique<base::variant::Variant>(static_cast<void*>(home_));
  }

 private:
  QWidget* home_;
};

struct Shape {
  QRect rect;
  QColor color;
  QString label;
  bool filled = false;
};

// Draws the screens and the shapes scaled to fit, screen coordinates mapped linearly.
class GeometryMap : public QWidget {
 public:
  GeometryMap(QRect world, std::vector<Shape> shapes) : world_(world), shapes_(std::move(shapes)) {
    resize(720, int(720.0 * world_.height() / world_.width()) + 1);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(250, 250, 250));
    const qreal scale = qreal(width() - 1) / world_.width();
    painter.setFont(QFont(font().family(), 8));
    for (const Shape& shape : shapes_) {
      const QRectF r((shape.rect.x() - world_.x()) * scale, (shape.rect.y() - world_.y()) * scale,
                     shape.rect.width() * scale, shape.rect.height() * scale);
      QColor fill = shape.color;
      fill.setAlpha(shape.filled ? 60 : 0);
      painter.setBrush(fill);
      painter.setPen(QPen(shape.color, 2));
      painter.drawRect(r);
      painter.drawText(r.topLeft() + QPointF(4, 12), shape.label);
    }
  }

 private:
  QRect world_;
  std::vector<Shape> shapes_;
};

int RunWindows(QApplication&, const QString& out_dir) {
  int failures = 0;
  auto check = [&failures](bool ok, const QString& what) {
    if (!ok) {
      gallery::Say(QStringLiteral("  !! unexpected: %1").arg(what));
      ++failures;
    }
  };
  std::vector<Shape> shapes;
  QRect world;

  gallery::Say("Screens:");
  for (QScreen* screen : QGuiApplication::screens()) {
    gallery::Say(QStringLiteral("  %1 geometry %2 work area %3 ratio %4")
                     .arg(ScreenName(screen), gallery::RectText(screen->geometry()),
                          gallery::RectText(screen->availableGeometry()))
                     .arg(screen->devicePixelRatio()));
    shapes.push_back({screen->geometry(), Qt::gray, ScreenName(screen)});
    world |= screen->geometry();
  }

  gallery::Say(
      "A pop-up opened near the bottom right corner, kept on screen with 8-pixel margins:");
  QScreen* cursor_screen = QGuiApplication::screenAt(QCursor::pos());
  if (!cursor_screen) cursor_screen = QGuiApplication::primaryScreen();
  const QRect area = cursor_screen->availableGeometry();
  const QRect popup(area.right() - 120, area.bottom() - 60, 300, 200);
  const QMargins margins(8, 8, 8, 8);
  const QRect corrected = VxQtUiUtil::CorrectRect(popup, margins);
  gallery::Say(
      QStringLiteral("  cursor at %1 on %2, area %3")
          .arg(PointText(QCursor::pos()), ScreenName(cursor_screen), gallery::RectText(area)));
  gallery::Say(QStringLiteral("  CorrectRect(%1) -> %2")
                   .arg(gallery::RectText(popup), gallery::RectText(corrected)));
  gallery::Say(QStringLiteral("  with zero margins it stays at %1")
                   .arg(gallery::RectText(VxQtUiUtil::CorrectRect(popup, QMargins()))));
  check(area.marginsRemoved(margins).contains(corrected), "corrected pop-up off the area");
  shapes.push_back({popup, Qt::red, QStringLiteral("pop-up asked")});
  shapes.push_back({corrected, QColor(0, 150, 0), QStringLiteral("pop-up shown"), true});

  gallery::Say("A dialog centred on the main window:");
  QWidget main_window;
  main_window.setGeometry(area.x() + 40, area.y() + 40, area.width() / 2, area.height() / 2);
  QWidget dialog;
  dialog.resize(240, 120);
  VxQtUiUtil::CenterToWidget(&dialog, &main_window);
  gallery::Say(
      QStringLiteral("  main window %1, dialog now at %2")
          .arg(gallery::RectText(main_window.geometry()), gallery::RectText(dialog.geometry())));
  check(qAbs(dialog.geometry().center().x() - main_window.geometry().center().x()) <= 1,
        "dialog not centred");
  shapes.push_back({main_window.geometry(), Qt::blue, QStringLiteral("main window")});
  shapes.push_back({dialog.geometry(), Qt::blue, QStringLiteral("dialog"), true});

  gallery::Say("The nearest screen of points off every screen:");
  const QRect desktop = world;
  for (const QPoint& point : {QPoint(desktop.left() - 500, desktop.center().y()),
                              QPoint(desktop.right() + 300, desktop.top() - 200),
                              QPoint(desktop.center().x(), desktop.bottom() + 1000)}) {
    const QScreen* nearest = VxQtUiUtil::GetPointNearestScreen(point);
    check(nearest != nullptr, "no nearest screen");
    if (!nearest) continue;
    gallery::Say(QStringLiteral("  %1 -> %2").arg(PointText(point), ScreenName(nearest)));
    shapes.push_back({QRect(point - QPoint(6, 6), QSize(13, 13)), Qt::magenta,
                      QStringLiteral("-> %1").arg(ScreenName(nearest)), true});
    world |= QRect(point - QPoint(30, 30), QSize(200, 60));
  }

  gallery::Say("The home window through the host controller of the new home page:");
  QWidget home;
  home.setGeometry(area.x() + area.width() / 3, area.y() + area.height() / 3, 360, 240);
  ControllerManager::Instance()->IocRegister(kHostScheme, std::make_shared<HomeHost>(&home));
  const bool was_nx = talvex_common::utils::IsNxHomePage();
  talvex_common::utils::SetNxHomePage(true);
  const QRect home_rect = VxQtUiUtil::GetHomeWindowRect();
  const QRect home_screen = VxQtUiUtil::GetHomeScreenRect();
  gallery::Say(QStringLiteral("  GetHomeWindowRect() = %1, GetHomeScreenRect() = %2")
                   .arg(gallery::RectText(home_rect), gallery::RectText(home_screen)));
  check(home_rect == home.geometry(), "home rect is not the home widget's");
  const QPoint common = VxTransQtUiUtil::GetCommonPosToDravik(&home);
  const QPoint panel = VxTransQtUiUtil::GetRealPosToDravik(&home);
  const int primary_height = QGuiApplication::primaryScreen()->geometry().height();
  gallery::Say(QStringLiteral("  companion centre %1, panel at x %2, %3 up from the bottom of the "
                              "primary screen (the window's position counts twice)")
                   .arg(PointText(common))
                   .arg(panel.x())
                   .arg(panel.y()));
  shapes.push_back({home_rect, QColor(200, 120, 0), QStringLiteral("home"), true});
  shapes.push_back({QRect(panel.x(), primary_height - panel.y(), 320, home.height()),
                    QColor(120, 60, 0), QStringLiteral("companion panel")});
  talvex_common::utils::SetNxHomePage(was_nx);
  ControllerManager::Instance()->IocUnregister(kHostScheme);
  gallery::Say(QStringLiteral("  host gone: GetHomeWindowRect() = %1")
                   .arg(gallery::RectText(VxQtUiUtil::GetHomeWindowRect())));

  gallery::Say("A meeting's start time in three locales, each in its own long format:");
  const unsigned long start = 1700000000ul;
  for (const QLocale& locale : {QLocale(QLocale::English, QLocale::UnitedStates),
                                QLocale(QLocale::German), QLocale(QLocale::Japanese)}) {
    const QByteArray format = locale.dateTimeFormat(QLocale::LongFormat).toUtf8();
    const QString text = VxQtUiUtil::FormatTimeStamp(start, format.constData(), locale);
    gallery::Say(QStringLiteral("  %1: %2").arg(locale.name(), text));
    check(!text.isEmpty(), "empty time stamp");
  }
  gallery::Say(QStringLiteral("  0 seconds: \"%1\"")
                   .arg(VxQtUiUtil::FormatTimeStamp(0ul, "yyyy", QLocale::c())));

  gallery::Say("A participant tile refreshed only when its data changes:");
  QWidget tile;
  base::variant::Variant data(base::variant::kMap);
  data.Set("name", base::variant::Variant("Ada"));
  data.Set("muted", base::variant::Variant(false));
  std::vector<bool> answers;
  answers.push_back(VxQtUiUtil::IsWidgetNeedUpdate(&tile, &data));
  answers.push_back(VxQtUiUtil::IsWidgetNeedUpdate(&tile, &data));
  data.Set("muted", base::variant::Variant(true));
  answers.push_back(VxQtUiUtil::IsWidgetNeedUpdate(&tile, &data));
  answers.push_back(VxQtUiUtil::IsWidgetNeedUpdate(&tile, &data));
  answers.push_back(VxQtUiUtil::IsWidgetNeedUpdate(&tile, nullptr));
  const char* steps[] = {"first data", "same data", "muted changed", "same again", "no data"};
  for (size_t i = 0; i < answers.size(); ++i) {
    gallery::Say(QStringLiteral("  %1 -> %2").arg(steps[i], answers[i] ? "update" : "skip"));
  }
  check(answers == std::vector<bool>{true, false, true, false, true}, "update sequence");

  GeometryMap map(world.marginsAdded(QMargins(40, 40, 40, 40)), shapes);
  const QString file = out_dir + QStringLiteral("/windows_geometry.png");
  check(map.grab().save(file), "screenshot not saved");
  gallery::Say(QStringLiteral("  drawn to %1").arg(file));
  return failures;
}

}  // namespace

GALLERY_SECTION("windows", RunWindows);
