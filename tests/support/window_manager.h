#pragma once

// A real window manager (openbox, from Debian's packages) on the test's X server, for x11 tests
// whose subject is what a window manager does with the requests (stacking, framing):
//
//   test_support::WindowManager wm;        // in initTestCase, as a member of the suite
//   QVERIFY2(wm.Start(), qPrintable(wm.Error()));
//
// Start() returns once the window manager has taken over the screen (it announces itself with
// _NET_SUPPORTING_WM_CHECK on the root and frames a window of its own), so windows shown after
// it are framed and stacked by it. The process is stopped when the object goes away; should the
// test die first, the window manager goes with the X server that xvfb-run ends. The window manager
// reads no user configuration (the tests' XDG_CONFIG_HOME is a scratch directory) and writes its
// log into a temporary directory.
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
    // Announcing itself is not yet managing: a window mapped shortly after openbox sets the
    // check window is never framed (and, on Qt 6's xcb platform, never exposed). A window of
    // our own that it frames shows it is past that point.
    if (!FramesANewWindow(deadline)) {
      error_ = QStringLiteral("openbox did not frame a window in time");
      Stop();
      return false;
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

  // Maps small windows on a connection of its own until the window manager reparents one into
  // a frame: a window mapped while it is still starting is never managed, so each try gets a
  // quarter of a second and then a new window. The windows go again either way.
  static bool FramesANewWindow(const QDeadlineTimer& deadline) {
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(nullptr, nullptr), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get())) return false;
    xcb_connection_t* c = connection.get();
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(c)).data;
    bool framed = false;
    while (!framed && !deadline.hasExpired()) {
      const xcb_window_t window = xcb_generate_id(c);
      xcb_create_window(c, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 10, 10, 0,
                        XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
      xcb_map_window(c, window);
      xcb_flush(c);
      const QDeadlineTimer try_deadline(250);
      while (!framed && !try_deadline.hasExpired()) {
        std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> tree(
            xcb_query_tree_reply(c, xcb_query_tree(c, window), nullptr), &std::free);
        framed = tree && tree->parent != screen->root;
        if (!framed) QThread::msleep(20);
      }
      xcb_destroy_window(c, window);
      xcb_flush(c);
    }
    return framed;
  }

  QTemporaryDir cache_;
  QProcess process_;
  QString error_;
};

}  // namespace test_support
