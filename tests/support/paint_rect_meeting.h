#pragma once

// For the paint-rect helper's suites: a recorder of every report a helper makes, and a meeting
// window with a panel holding one video tile (window > panel > tile).

#include <QRect>
#include <QWidget>
#include <memory>
#include <vector>

#include "qt_util/paint_rect_helper.h"

namespace test_support {

struct PaintReport {
  QWidget* widget;
  bool visible;
  QRect rect;
};

// Every report a helper makes, in order.
struct PaintRecorder {
  std::vector<PaintReport> reports;

  QTPaintRectHelper::Callback Callback() {
    return [this](QWidget* widget, bool visible, QRect rect) {
      reports.push_back({widget, visible, rect});
    };
  }
  int Count() const { return int(reports.size()); }
  const PaintReport& Last() const { return reports.back(); }
};

// The window at (100, 80), 640x480; the panel at (20, 30) in it, 400x300; the tile at (5, 6) in
// the panel, 160x90. Not shown.
struct MeetingTile {
  std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
  QWidget* panel;
  QWidget* tile;

  MeetingTile() : panel(new QWidget(window.get())), tile(new QWidget(panel)) {
    window->setGeometry(100, 80, 640, 480);
    panel->setGeometry(20, 30, 400, 300);
    tile->setGeometry(5, 6, 160, 90);
  }
};

}  // namespace test_support
