#pragma once

// The scripted scenario of `qt_util_meeting --script`: drives the meeting window through a
// fixed sequence of steps, prints what the library reported at each one, saves a screenshot per
// step and counts every observation that differs from the expected one.

#include <QString>
#include <QStringList>
#include <functional>
#include <mutex>
#include <vector>

#include "base/common/include/logger.h"
#include "base/log/log.h"

class QPoint;
class QRect;
class QWidget;

namespace meeting {

class MeetingWindow;

/// Collects the library's log records (and prints each one) while it lives, at the given log
/// level; the previous level and sink come back when it goes away.
class LogRecorder {
 public:
  explicit LogRecorder(int level);
  ~LogRecorder();
  LogRecorder(const LogRecorder&) = delete;
  LogRecorder& operator=(const LogRecorder&) = delete;

  /// Position to ask from: records written from now on.
  size_t Mark() const;
  /// Records since `mark` with this level whose text starts with `prefix`.
  int CountSince(size_t mark, int level, const QString& prefix) const;
  /// Texts of the records since `mark` with this level.
  QStringList TextsSince(size_t mark, int level) const;
  /// Forgets the records so far (marks start from 0 again), so that a long run does not grow.
  void Clear();

 private:
  int previous_level_;
  base::log::LogSink previous_sink_;
  // Records may come from any thread (Qt messages relayed by the message hook).
  mutable std::mutex mutex_;
  std::vector<base::log::LogRecord> records_;
};

class Scenario {
 public:
  /// `round` counts from 1: later rounds of one process save no screenshots and expect the
  /// start-up records only of the first.
  Scenario(MeetingWindow& window, const QString& out_dir, LogRecorder& log, int round = 1);
  virtual ~Scenario();
  Scenario(const Scenario&) = delete;
  Scenario& operator=(const Scenario&) = delete;

  /// On Wayland: the compositor has no seat, so it gives no window the keyboard focus and no
  /// window is ever active (a desktop session's compositor has one and activates each window
  /// it maps). Elsewhere it changes nothing.
  void SetSeatless(bool seatless) { seatless_ = seatless; }

  /// Runs every step; returns the number of mismatches.
  int Run();

 protected:
  // What a harness with more than a client's means adds (the test tree plugs screens in and
  // out and watches the X server as a second client): each runs inside its step.
  virtual void Screens();
  virtual void BeforeMinimise() {}
  virtual void CheckMiniWindow(QWidget* mini) { static_cast<void>(mini); }

  MeetingWindow& Window() const { return window_; }
  void Expect(bool ok, const QString& what);
  void Say(const QString& text) const;

 private:
  void Step(const QString& name, const std::function<void()>& body);
  void ExpectLogged(size_t mark, const QString& prefix);
  void ExpectQtMessage(size_t mark, const QString& text);
  // Expects `window` active (waiting for the window system) or, where `active` is false, still
  // inactive once it is exposed and the window system had its time to activate it.
  void ExpectActive(QWidget* window, bool active, const QString& what);
  // Whether the window system activates the windows it maps: everywhere but on a Wayland
  // compositor without a seat.
  bool Activates() const { return !(wayland_ && seatless_); }
  // Compares every tile's last report with what Qt says about the tile and its window, once
  // the reports have settled, and expects `visible` tiles reported visible.
  void CheckTiles(int visible);
  // The current theme on the window and the panels given: style sheet, colours and icons.
  void CheckTheme(const QList<QWidget*>& panels);
  // Every button below `root` (and the list's rows) carries its accessibility keys.
  void CheckKeys(QWidget* root);
  void Shoot(QWidget* widget, const QString& name);

  void Join();
  void Mute();
  void Share();
  void Chat();
  void Notice();
  void Dark();
  void StopShare();
  void TileClicks();
  void Move();
  void Minimise();
  void Dialog();
  void Leave();

  MeetingWindow& window_;
  QString out_dir_;
  LogRecorder& log_;
  int round_;
  // Qt runs on Wayland: the compositor, not the client, places and activates windows.
  bool wayland_;
  bool seatless_ = false;
  int step_ = 0;
  QString step_name_;
  int mismatches_ = 0;
};

/// Qt's own notation of a rectangle: "QRect(x,y wxh)".
QString RectText(const QRect& rect);

/// Processes events until `done` answers true or `timeout_ms` have passed; returns `done()`.
bool WaitUntil(const std::function<bool()>& done, int timeout_ms = 2000);

/// A left click as the window system delivers it: press and release at `pos` of `widget`.
void Click(QWidget* widget, const QPoint& pos);
void Click(QWidget* widget);

}  // namespace meeting
