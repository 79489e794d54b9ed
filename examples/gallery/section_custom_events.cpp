// Defers a deletion, a window activation and two actions to the event loop, then lets the loop
// run and shows which of them happened, and when.
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QPointer>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include "gallery.h"
#include "qt_util/custom_event_util.h"

namespace {

QString YesNo(bool value) {
  return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString ActiveTitle() {
  QWidget* active = QApplication::activeWindow();
  return active ? active->windowTitle() : QStringLiteral("(none)");
}

int RunCustomEvents(QApplication&, const QString& out_dir) {
  gallery::Say(QStringLiteral("InitCustomEventHandler() -> %1")
                   .arg(YesNo(CustomEventUtils::InitCustomEventHandler())));
  QStringList story;
  auto tell = [&story](const QString& line) {
    gallery::Say(line);
    story << line;
  };

  // Two windows, the second one active, settled before anything is deferred.
  QWidget first;
  QWidget second;
  first.setWindowTitle("first window");
  second.setWindowTitle("second window");
  first.setGeometry(40, 40, 240, 120);
  second.setGeometry(320, 40, 240, 120);
  first.show();
  second.show();
  second.activateWindow();
  QElapsedTimer settle;
  settle.start();
  while (!second.isActiveWindow() && settle.elapsed() < 2000) QCoreApplication::processEvents();

  // A deletion, asked for twice.
  int destructions = 0;
  auto* doomed = new QObject;
  doomed->setObjectName("doomed");
  QObject::connect(doomed, &QObject::destroyed, [&] {
    ++destructions;
    tell(QStringLiteral("  [loop] object 'doomed' destroyed"));
  });
  const QPointer<QObject> doomed_watch = doomed;
  CustomEventUtils::DeleteObjectLater(doomed);
  CustomEventUtils::DeleteObjectLater(doomed);
  tell(QStringLiteral("DeleteObjectLater(doomed) twice: still alive: %1, pending deletions: %2")
           .arg(YesNo(!doomed_watch.isNull()))
           .arg(CustomEventUtils::PendingDeleteListInstance()->size()));

  // An activation of the first window.
  CustomEventUtils::ActivateWidgetLater(&first);
  tell(QStringLiteral("ActivateWidgetLater(first window): active window now: %1")
           .arg(ActiveTitle()));

  // Two delayed actions; the second one's context is gone before the loop runs.
  QObject context;
  bool ran = false;
  bool orphan_ran = false;
  CustomEventUtils::DelayAction(&context, [&] {
    ran = true;
    tell(QStringLiteral("  [loop] delayed action runs"));
  });
  auto* short_lived = new QObject;
  CustomEventUtils::DelayAction(short_lived, [&] { orphan_ran = true; });
  delete short_lived;
  tell(QStringLiteral("DelayAction twice, the second context destroyed at once: ran yet: %1")
           .arg(YesNo(ran)));

  // Posted last, so it runs once everything above has been handled.
  tell(QStringLiteral("Running the event loop..."));
  QEventLoop loop;
  CustomEventUtils::DelayAction(&loop, [&loop] { loop.quit(); });
  QTimer::singleShot(5000, &loop, &QEventLoop::quit);
  loop.exec();
  // The window system reports the activation a little after the request.
  settle.restart();
  while (!first.isActiveWindow() && settle.elapsed() < 2000) QCoreApplication::processEvents();

  tell(
      QStringLiteral("After the loop: still alive: %1, destroyed %2 time(s), pending deletions: %3")
          .arg(YesNo(!doomed_watch.isNull()))
          .arg(destructions)
          .arg(CustomEventUtils::PendingDeleteListInstance()->size()));
  tell(QStringLiteral("After the loop: active window: %1").arg(ActiveTitle()));
  tell(QStringLiteral("After the loop: delayed action ran: %1, the orphaned one ran: %2")
           .arg(YesNo(ran), YesNo(orphan_ran)));

  QWidget panel;
  panel.setWindowTitle("custom events");
  auto* layout = new QVBoxLayout(&panel);
  auto* label = new QLabel(story.join('\n'), &panel);
  label->setTextInteractionFlags(Qt::NoTextInteraction);
  layout->addWidget(label);
  panel.adjustSize();
  panel.grab().save(out_dir + "/custom_events.png");

  return destructions == 1 && doomed_watch.isNull() && ran && !orphan_ran && first.isActiveWindow()
             ? 0
             : 1;
}

}  // namespace

GALLERY_SECTION("custom_events", RunCustomEvents);
