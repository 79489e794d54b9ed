#pragma once

// A real window manager (openbox, from Debian's packages) on the test's X server, for x11 tests
// whose subject is what a window manager does with the requests (stacking, framing):
//
//   test_support::WindowManager wm;        // in initTestCase, as a member of the suite
//   QVERIFY2(wm.Start(), qPrintable(wm.Error()));
//
// Start() returns once the window manager has taken over the screen (it announces itself with
// _NET_SUPPORTING_WM_CHECK on the root), so windows shown after it are framed and stacked by
// it. The process is stopped when the object goes away; should the test die first, the window
// manager goes with the X server that xvfb-run ends. The window manager reads no user
// configuration (the tests' XDG_CONFIG_HOME is a scratch directory) and writes its log into a
// temporary directory.
//
// Link xcb.

#include <xcb/xcb.h>

#include <QDeadlineTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>
#include <QThread>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace test_support {

class WindowManager {
 public:
  WindowManager() = default;
  WindowManager(const WindowManager&) = delete;
  WindowManager& operator=(const WindowManager&) = delete;
  ~WindowManager() { Stop(); }

  // Starts openbox and waits up to `timeout_ms` until it manages the screen. False, with
  // Error() saying why, when it is not installed, exits, or does not take over in time.
  bool Start(int timeout_ms = 10000) {
    const QString program = QStandardPaths::findExecutable(QStringLiteral("openbox"));
    if (program.isEmpty()) {
      error_ = QStringLiteral("openbox is not installed (scripts/install-deps installs it)");
      return false;
    }
    if (IsRunning()) {
      error_ = QStringLiteral("another window manager already runs on this display");
      return false;
    }
    // Its log goes to a scratch cache directory rather than the user's.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), cache_.path());
    process_.setProcessEnvironment(environment);
    process_.setProgram(program);
    process_.setArguments({QStringLiteral("--sm-disable")});
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.setStandardOutputFile(QProcess::nullDevice());
    process_.start();
    if (!process_.waitForStarted(timeout_ms)) {
      error_ = QStringLiteral("openbox did not start: ") + process_.errorString();
      return false;
    }
    const QDeadlineTimer deadline(timeout_ms);
    while (!IsRunning()) {
      if (process_.state() != QProcess::Running || deadline.hasExpired()) {
        error_ = process_.state() == QProcess::Running
                     ? QStringLiteral("openbox did not take over the screen in time")
                     : QStringLiteral("openbox exited at start");
        Stop();
        return false;
      }
      QThread::msleep(20);
    }
    return true;
  }

  void Stop() {
    if (process_.state() == QProcess::NotRunning) return;
    process_.terminate();
    if (!process_.waitForFinished(3000)) {
      process_.kill();
      process_.waitForFinished(3000);
    }
  }

  QString Error() const { return error_; }

  // Whether a window manager announces itself on the root window of the default screen
  // (EWMH _NET_SUPPORTING_WM_CHECK: the root and the child window it names both carry it).
  static bool IsRunning() {
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get())) return false;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
    const char name[] = "_NET_SUPPORTING_WM_CHECK";
    std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        xcb_intern_atom_reply(connection.get(),
                              xcb_intern_atom(connection.get(), 1, std::strlen(name), name),
                              nullptr),
        &std::free);
    if (!atom || atom->atom == XCB_ATOM_NONE) return false;
    const xcb_window_t check = CheckWindow(connection.get(), root, atom->atom);
    return check != XCB_WINDOW_NONE && CheckWindow(connection.get(), check, atom->atom) == check;
  }

 private:
  static xcb_window_t CheckWindow(xcb_connection_t* connection, xcb_window_t window,
                                  xcb_atom_t atom) {
    std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
        xcb_get_property_reply(connection,
                               xcb_get_property(connection, 0, window, atom, XCB_ATOM_WINDOW, 0, 1),
                               nullptr),
        &std::free);
    if (!reply || xcb_get_property_value_length(reply.get()) != 4) return XCB_WINDOW_NONE;
    return *static_cast<xcb_window_t*>(xcb_get_property_value(reply.get()));
  }

  QTemporaryDir cache_;
  QProcess process_;
  QString error_;
};

}  // namespace test_support
