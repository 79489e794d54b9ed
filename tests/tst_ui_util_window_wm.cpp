// Window behaviour as a real window manager carries it out (xvfb with openbox, label x11): a
// window raised or lowered with BringToFront changes places in the X server's stacking order
// at once, not only when some later request happens to send Qt's buffered ones along.
//
// The order is read on a connection of the test's own and the Qt event loop does not run while
// the test waits for it, since either a request on Qt's connection or an event-loop pass
// would send the buffered request and hide the fault this suite is about.
#include <xcb/xcb.h>

#include <QDeadlineTimer>
#include <QThread>
#include <QWidget>
#include <QWindow>
#include <QtTest>
#include <cstdlib>
#include <memory>

#include "qt_util/ui_util.h"
#include "support/window_manager.h"
#include "support/x11_watch.h"

namespace {

// The X window that is on screen for `widget`.
xcb_window_t LiveId(const QWidget& widget) {
  return static_cast<xcb_window_t>(widget.windowHandle()->winId());
}

// The server's stacking order of top-level windows, read on a connection of its own.
class StackingReader {
 public:
  StackingReader() : connection_(xcb_connect(nullptr, nullptr), &xcb_disconnect) {
    if (xcb_connection_has_error(connection_.get())) return;
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
  }
  bool IsValid() const { return root_ != XCB_WINDOW_NONE; }

  // The child of the root that holds `window`: the window manager's frame round it, or the
  // window itself while it is not framed. None when the window is gone.
  xcb_window_t TopLevel(xcb_window_t window) const {
    for (int depth = 0; depth < 16; ++depth) {
      std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> tree(
          xcb_query_tree_reply(connection_.get(), xcb_query_tree(connection_.get(), window),
                               nullptr),
          &std::free);
      if (!tree) return XCB_WINDOW_NONE;
      if (tree->parent == root_) return window;
      window = tree->parent;
    }
    return XCB_WINDOW_NONE;
  }

  bool IsFramed(xcb_window_t window) const {
    const xcb_window_t top = TopLevel(window);
    return top != XCB_WINDOW_NONE && top != window;
  }

  // Whether `upper` is stacked above `lower` (the root's children come bottom to top).
  bool IsAbove(xcb_window_t upper, xcb_window_t lower) const {
    const xcb_window_t upper_top = TopLevel(upper);
    const xcb_window_t lower_top = TopLevel(lower);
    std::unique_ptr<xcb_query_tree_reply_t, decltype(&std::free)> tree(
        xcb_query_tree_reply(connection_.get(), xcb_query_tree(connection_.get(), root_), nullptr),
        &std::free);
    if (!tree) return false;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    int upper_index = -1;
    int lower_index = -1;
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
      if (children[i] == upper_top) upper_index = i;
      if (children[i] == lower_top) lower_index = i;
    }
    return upper_index >= 0 && lower_index >= 0 && upper_index > lower_index;
  }

  // Waits, without running Qt's event loop, until `upper` is above `lower`.
  bool WaitUntilAbove(xcb_window_t upper, xcb_window_t lower, int timeout_ms = 2000) const {
    const QDeadlineTimer deadline(timeout_ms);
    while (!IsAbove(upper, lower)) {
      if (deadline.hasExpired()) return false;
      QThread::msleep(10);
    }
    return true;
  }

 private:
  std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
  xcb_window_t root_ = XCB_WINDOW_NONE;
};

}  // namespace

class tst_UiUtilWindowWm : public QObject {
  Q_OBJECT

 private slots:
  void initTestCase();

  void bringToFront_reachesTheWindowManagerAtOnce_data();
  void bringToFront_reachesTheWindowManagerAtOnce();

 private:
  // Shows two overlapping windows, waits until the window manager framed both and has
  // settled, and tells which one ended up below.
  bool ShowOverlapping(QWidget& first, QWidget& second, QWidget** lower, QWidget** upper);

  test_support::WindowManager window_manager_;
  StackingReader stacking_;
};

void tst_UiUtilWindowWm::initTestCase() {
  QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
  QVERIFY(stacking_.IsValid());
  QVERIFY2(window_manager_.Start(), qPrintable(window_manager_.Error()));
}

bool tst_UiUtilWindowWm::ShowOverlapping(QWidget& first, QWidget& second, QWidget** lower,
                                         QWidget** upper) {
  first.setGeometry(100, 100, 300, 200);
  second.setGeometry(200, 150, 300, 200);
  first.show();
  second.show();
  if (!QTest::qWaitForWindowExposed(&first) || !QTest::qWaitForWindowExposed(&second)) {
    return false;
  }
  if (!QTest::qWaitFor(
          [&] { return stacking_.IsFramed(LiveId(first)) && stacking_.IsFramed(LiveId(second)); },
          5000)) {
    return false;
  }
  // Whatever the window manager still does about the new windows (focus, placement) is done
  // once the order holds for a while with everything of Qt's handled and sent.
  bool first_below = false;
  for (int settled = 0; settled < 5;) {
    QCoreApplication::processEvents();
    test_support::InputFocus();  // a round trip: Qt's connection has nothing left to send
    const bool now_below = stacking_.IsAbove(LiveId(second), LiveId(first));
    settled = (now_below == first_below) ? settled + 1 : 0;
    first_below = now_below;
    QThread::msleep(40);
  }
  *lower = first_below ? &first : &second;
  *upper = first_below ? &second : &first;
  return stacking_.IsAbove(LiveId(**upper), LiveId(**lower));
}

void tst_UiUtilWindowWm::bringToFront_reachesTheWindowManagerAtOnce_data() {
  QTest::addColumn<bool>("front");
  QTest::newRow("raise the lower window") << true;
  QTest::newRow("lower the upper window") << false;
}

void tst_UiUtilWindowWm::bringToFront_reachesTheWindowManagerAtOnce() {
  QFETCH(bool, front);
  QWidget first;
  QWidget second;
  QWidget* lower = nullptr;
  QWidget* upper = nullptr;
  QVERIFY(ShowOverlapping(first, second, &lower, &upper));

  VxQtUiUtil::BringToFront(front ? lower : upper, front);
  // Either way the two windows swap places.
  QVERIFY2(stacking_.WaitUntilAbove(LiveId(*lower), LiveId(*upper)),
           "the windows are stacked as they were");
}

QTEST_MAIN(tst_UiUtilWindowWm)
#include "tst_ui_util_window_wm.moc"
