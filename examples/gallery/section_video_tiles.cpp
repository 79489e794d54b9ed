// A small meeting window: three video tiles tracked by paint-rect helpers with different rules,
// and a toolbar and a raise-hand button registered with the UI monitor helper. The window is
// moved, hidden in part, clicked, minimised, popped out and deactivated while every report of
// the helpers is printed; then the hit-test map of the meeting area is drawn over a screenshot.
#include <QApplication>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QMap>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QThread>
#include <functional>
#include <memory>

#include "gallery.h"
#include "qt_util/custom_event_util.h"
#include "qt_util/paint_rect_helper.h"
#include "qt_util/qt_ui_monitor_helper.h"

namespace {

struct Report {
  bool visible = false;
  QRect rect;
};

// Runs the event loop until `done` holds or `timeout_ms` pass; returns `done()`.
bool RunUntil(const std::function<bool()>& done, int timeout_ms) {
  QElapsedTimer clock;
  clock.start();
  while (!done() && clock.elapsed() < timeout_ms) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    QThread::msleep(5);
  }
  return done();
}

void RunFor(int ms) {
  RunUntil([] { return false; }, ms);
}

QLabel* Tile(const QString& name, const QColor& colour, QWidget* parent) {
  auto* tile = new QLabel(name, parent);
  tile->setObjectName(name);
  tile->setAlignment(Qt::AlignCenter);
  tile->setAutoFillBackground(true);
  QPalette palette = tile->palette();
  palette.setColor(QPalette::Window, colour);
  palette.setColor(QPalette::WindowText, Qt::white);
  tile->setPalette(palette);
  return tile;
}

void PressOn(QWidget* widget) {
  const QPoint centre = widget->rect().center();
  QMouseEvent press(QEvent::MouseButtonPress, centre, widget->mapToGlobal(centre), Qt::LeftButton,
                    Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(widget, &press);
}

bool Activate(QWidget* window) {
  QApplication::setActiveWindow(window);
  return RunUntil([window] { return window->isActiveWindow(); }, 2000);
}

int RunVideoTiles(QApplication&, const QString& out_dir) {
  int failures = 0;
  const auto expect = [&failures](bool holds, const QString& what) {
    if (holds) return;
    gallery::Say(QStringLiteral("  !! expected: %1").arg(what));
    ++failures;
  };

  QWidget window;
  window.setObjectName(QStringLiteral("meeting"));
  window.setWindowTitle(QStringLiteral("Meeting"));
  window.setGeometry(60, 60, 640, 400);
  auto* strip = new QWidget(&window);  // the gallery strip of small tiles
  strip->setGeometry(10, 10, 180, 330);
  auto* stage = new QWidget(&window);  // the active speaker
  stage->setGeometry(200, 10, 430, 330);
  QLabel* tile_a = Tile(QStringLiteral("tile A"), QColor(40, 90, 160), strip);
  tile_a->setGeometry(10, 10, 160, 90);
  QLabel* tile_b = Tile(QStringLiteral("tile B"), QColor(60, 130, 70), strip);
  tile_b->setGeometry(10, 110, 160, 90);
  QLabel* tile_c = Tile(QStringLiteral("tile C"), QColor(150, 70, 50), stage);
  tile_c->setGeometry(0, 0, 430, 330);
  auto* toolbar = new QWidget(&window);
  toolbar->setGeometry(0, 350, 640, 50);
  auto* toolbar_layout = new QHBoxLayout(toolbar);
  for (const char* label : {"Mute", "Video", "Share", "Leave"}) {
    toolbar_layout->addWidget(new QPushButton(QString::fromLatin1(label), toolbar));
  }
  // Floats over the speaker's video, so it too is UI over the meeting area.
  auto* raise_hand = new QPushButton(QStringLiteral("Raise hand"), stage);
  raise_hand->setGeometry(320, 280, 100, 40);

  QTUIMonitorHelper* monitor = QTUIMonitorHelper::SharedInstance();
  monitor->AddMonitorRectWidget(toolbar);
  monitor->AddMonitorRectWidget(raise_hand);

  QMap<QWidget*, Report> last;
  const auto print = [&last](QWidget* tile, bool visible, QRect rect) {
    last[tile] = {visible, rect};
    gallery::Say(
        QStringLiteral("  %1: %2 %3")
            .arg(tile->objectName(), visible ? "visible" : "hidden", gallery::RectText(rect)));
  };
  using Type = QTPaintRectHelper::BindType;
  const Type default_rules =
      Type(QTPaintRectHelper::CheckParentVisible | QTPaintRectHelper::CheckTopWindowState);
  QTPaintRectHelper helper_a;
  QTPaintRectHelper helper_b;
  QTPaintRectHelper helper_c;

  gallery::Say("Tile A follows its parents and the window (3), tile B its parents only (1),");
  gallery::Say("tile C also hides on any click in the window (7). Show and activate:");
  window.show();
  expect(Activate(&window), "the meeting window becomes active");
  helper_a.BindWidget(tile_a, print, default_rules);
  helper_b.BindWidget(tile_b, print, QTPaintRectHelper::CheckParentVisible);
  helper_c.BindWidget(tile_c, print, default_rules | QTPaintRectHelper::HideOnMousePress);
  expect(last[tile_a].visible && last[tile_b].visible && last[tile_c].visible,
         "three visible tiles");
  expect(last[tile_a].rect == QRect(tile_a->mapToGlobal(QPoint(0, 0)), tile_a->size()),
         "tile A's global rectangle");

  gallery::Say("Move the window 40 right and 20 down:");
  const QRect a_before = last[tile_a].rect;
  window.move(window.pos() + QPoint(40, 20));
  RunUntil([&] { return last[tile_a].rect == a_before.translated(40, 20); }, 2000);
  expect(last[tile_a].rect == a_before.translated(40, 20), "tile A follows the window");

  gallery::Say("Hide the gallery strip, then show it again:");
  strip->hide();
  expect(!last[tile_a].visible && !last[tile_b].visible, "tiles A and B hidden with the strip");
  strip->show();
  expect(last[tile_a].visible && last[tile_b].visible, "tiles A and B back");

  gallery::Say("Click the toolbar (tile C hides until something moves), then nudge the stage:");
  PressOn(toolbar->findChild<QPushButton*>());
  expect(!last[tile_c].visible, "tile C hidden by the click");
  stage->move(stage->pos() + QPoint(0, 1));
  expect(last[tile_c].visible, "tile C back after the move");

  gallery::Say("Minimise the window, then restore it:");
  window.showMinimized();
  RunUntil([&] { return !last[tile_a].visible; }, 2000);
  expect(!last[tile_a].visible && !last[tile_c].visible, "tiles A and C hidden while minimised");
  expect(last[tile_b].visible, "tile B, which follows its parents only, still visible");
  window.showNormal();
  Activate(&window);
  RunUntil([&] { return last[tile_a].visible && last[tile_c].visible; }, 2000);
  expect(last[tile_a].visible && last[tile_c].visible, "tiles A and C back");

  gallery::Say("Pop tile B out into its own window (showing the new window takes the activation");
  gallery::Say("for a moment, so tiles A and C blink):");
  QWidget popout;
  popout.setObjectName(QStringLiteral("pop-out"));
  popout.setGeometry(760, 60, 200, 130);
  popout.show();
  tile_b->setParent(&popout);
  tile_b->move(20, 20);
  tile_b->show();
  expect(last[tile_b].rect == QRect(tile_b->mapToGlobal(QPoint(0, 0)), tile_b->size()),
         "tile B reported in the pop-out window");
  Activate(&window);

  gallery::Say("The application is deactivated (looks after 100 and 200 ms):");
  QEvent deactivation(ApplicationDeactiveEvent::QEventType());
  QCoreApplication::sendEvent(QCoreApplication::instance(), &deactivation);
  gallery::Say("  (no report at once)");
  RunFor(300);
  expect(!last[tile_a].visible && !last[tile_c].visible,
         "tiles A and C hidden: no native point is inside a window on Linux");

  gallery::Say("Hit-test map of the meeting area (red: a click there is left to the Qt UI):");
  Activate(&window);
  QImage shot = window.grab().toImage().convertToFormat(QImage::Format_ARGB32);
  int hits = 0;
  int points = 0;
  {
    QPainter painter(&shot);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 0, 0, 150));
    for (int y = 2; y < window.height(); y += 8) {
      for (int x = 2; x < window.width(); x += 8) {
        ++points;
        if (!monitor->IsInUIRectInMeeting(QPoint(x, y))) continue;
        ++hits;
        painter.drawRect(x - 2, y - 2, 4, 4);
      }
    }
  }
  gallery::Say(
      QStringLiteral("  %1 of %2 sampled points fall on registered UI").arg(hits).arg(points));
  expect(monitor->IsInUIRectInMeeting(QPoint(5, 360)), "the toolbar is hit");
  expect(!monitor->IsInUIRectInMeeting(tile_a->mapTo(&window, QPoint(5, 5))),
         "tile A's video is not");
  const QString map_path = out_dir + QStringLiteral("/video_tiles_hit_map.png");
  shot.save(map_path);
  gallery::Say(QStringLiteral("  saved %1").arg(map_path));

  helper_a.UnbindWidget();
  helper_b.UnbindWidget();
  helper_c.UnbindWidget();
  return failures;
}

}  // namespace

GALLERY_SECTION("video tiles", RunVideoTiles);
