// A contact list whose rows are item widgets, seen through the list accessibility factory;
// an object event observer keeping digits out of a line edit; the screen observer wired to the
// application's screens; and the session, monitor and window-status hooks a platform layer
// drives.
#include <QAccessible>
#include <QApplication>
#include <QEventLoop>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMetaEnum>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <memory>

#include "gallery.h"
#include "qt_util/accessibility/list_widget_accessible.h"
#include "qt_util/event_handler/event_observer.h"
#include "qt_util/event_handler/monitor_event_observer.h"
#include "qt_util/event_handler/screen_observer.h"
#include "qt_util/event_handler/session_event_observer.h"
#include "qt_util/event_handler/window_status_extend.h"

namespace {

QWidget* ContactRow(const QString& name) {
  auto* row = new QWidget;
  row->setAccessibleName(QStringLiteral("%1's row").arg(name));
  auto* layout = new QHBoxLayout(row);
  layout->setContentsMargins(6, 2, 6, 2);
  auto* label = new QLabel(name);
  auto* mute = new QPushButton(QStringLiteral("Mute"));
  mute->setAccessibleName(QStringLiteral("Mute %1").arg(name));
  layout->addWidget(label, 1);
  layout->addWidget(mute);
  return row;
}

// Prints an accessible subtree; returns the number of interfaces printed.
int PrintTree(QAccessibleInterface* iface, int depth) {
  const QString indent(depth * 2, QLatin1Char(' '));
  if (!iface) {
    gallery::Say(indent + QStringLiteral("(null child)"));
    return 0;
  }
  static const QMetaEnum roles = QMetaEnum::fromType<QAccessible::Role>();
  gallery::Say(QStringLiteral("%1%2 \"%3\" (%4)")
                   .arg(indent, QString::fromLatin1(roles.valueToKey(iface->role())),
                        iface->text(QAccessible::Name),
                        QString::fromLatin1(iface->object()->metaObject()->className())));
  int printed = 1;
  for (int i = 0; i < iface->childCount(); ++i) printed += PrintTree(iface->child(i), depth + 1);
  return printed;
}

void SendKey(QWidget* widget, int key, const QString& text) {
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
  QApplication::sendEvent(widget, &press);
}

int RunObservers(QApplication&, const QString& out_dir) {
  int failures = 0;

  gallery::Say("A contact list filled with item widgets, its accessible tree with the factory:");
  QAccessible::installFactory(QTAccessibleUtils::ListWidgetAccessibleFactory);
  QListWidget list;
  list.setAccessibleName(QStringLiteral("Participants"));
  list.resize(320, 200);
  for (const QString& name : {QStringLiteral("Ada"), QStringLiteral("Grace")}) {
    auto* item = new QListWidgetItem(&list);
    item->setSizeHint(QSize(300, 40));
    list.setItemWidget(item, ContactRow(name));
  }
  new QListWidgetItem(QStringLiteral("(waiting room: no item widget)"), &list);
  list.show();
  QAccessibleInterface* root = QAccessible::queryAccessibleInterface(&list);
  const int printed = PrintTree(root, 1);
  // The list, two rows of (row, label, button), and a null third child.
  if (root->childCount() != 3 || printed != 7 || root->child(2)) ++failures;

  QWidget* grace = list.itemWidget(list.item(1));
  const QPoint on_grace = grace->mapToGlobal(grace->rect().center());
  QAccessibleInterface* hit = root->childAt(on_grace.x(), on_grace.y());
  gallery::Say(QStringLiteral("  childAt the centre of row 2 -> %1")
                   .arg(hit && hit->object() == grace ? "Grace's row widget" : "something else"));
  if (!hit || hit->object() != grace) ++failures;
  list.grab().save(out_dir + QStringLiteral("/observers_list.png"));

  gallery::Say("An object event observer keeps digits out of a name field while its owner lives:");
  QLineEdit name_field;
  auto owner = std::make_unique<QObject>();
  QtEventObserver::ListenEvent(&name_field, owner.get(), [](QObject*, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return false;
    const QString text = static_cast<QKeyEvent*>(event)->text();
    return !text.isEmpty() && text.at(0).isDigit();
  });
  const QString typed = QStringLiteral("Ada4 L0vel4ce");
  for (const QChar c : typed) SendKey(&name_field, c.unicode(), QString(c));
  gallery::Say(QStringLiteral("  typed \"%1\", field holds \"%2\"").arg(typed, name_field.text()));
  const QString filtered = name_field.text();
  owner.reset();
  SendKey(&name_field, Qt::Key_7, QStringLiteral("7"));
  gallery::Say(
      QStringLiteral("  owner gone, typed \"7\": field holds \"%1\"").arg(name_field.text()));
  if (filtered != QStringLiteral("Ada Lvelce") || !name_field.text().endsWith('7')) ++failures;

  gallery::Say("Screens now (a screen observer prints any change while the section runs):");
  for (QScreen* screen : QGuiApplication::screens()) {
    gallery::Say(QStringLiteral("  %1 geometry %2 work area %3 ratio %4%5")
                     .arg(screen->name().isEmpty() ? QStringLiteral("(unnamed)") : screen->name(),
                          gallery::RectText(screen->geometry()),
                          gallery::RectText(screen->availableGeometry()))
                     .arg(screen->devicePixelRatio())
                     .arg(screen == QGuiApplication::primaryScreen() ? " (primary)" : ""));
  }
  QtScreenObserver screen_observer;
  QObject::connect(&screen_observer, &QtScreenObserver::OnScreenListChanged, [] {
    gallery::Say(QStringLiteral("  screen list changed: %1 screen(s)")
                     .arg(QGuiApplication::screens().size()));
  });
  QObject::connect(&screen_observer, &QtScreenObserver::OnPrimaryScreenChanged,
                   [](QScreen* screen) {
                     gallery::Say(QStringLiteral("  primary screen is now %1").arg(screen->name()));
                   });
  QObject::connect(&screen_observer, &QtScreenObserver::OnScreenGeometryChanged,
                   [](QScreen* screen, const QRect& work_area) {
                     gallery::Say(QStringLiteral("  work area of %1 is now %2")
                                      .arg(screen->name(), gallery::RectText(work_area)));
                   });
  QEventLoop loop;
  QTimer::singleShot(300, &loop, &QEventLoop::quit);
  loop.exec();
  gallery::Say("  (watched for 300 ms; on a desktop, plugging a monitor in shows up here)");

  gallery::Say("Session lock and unlock, as the platform layer announces them:");
  QObject session_owner;
  int session_calls = 0;
  SessionEventObserver::Instance()->ConnectSessionChangeEvent(&session_owner, [&](bool locked) {
    ++session_calls;
    gallery::Say(QStringLiteral("  session %1").arg(locked ? "locked" : "unlocked"));
  });
  emit SessionEventObserver::Instance()->NotifySessionChange(true);
  emit SessionEventObserver::Instance()->NotifySessionChange(false);
  SessionEventObserver::Instance()->DisconnectSessionChangeEvent(&session_owner);
  emit SessionEventObserver::Instance()->NotifySessionChange(true);
  gallery::Say(
      QStringLiteral("  after disconnecting, the handler ran %1 times in all").arg(session_calls));
  if (session_calls != 2) ++failures;

  MonitorEventObserver monitor;
  monitor.EnableAsyn(true, 200);
  gallery::Say(QStringLiteral("Monitor observer: platform layer asked to announce %1, delay %2")
                   .arg(monitor.IsAsync() ? "asynchronously" : "at once")
                   .arg(monitor.Delay()));

  auto status = std::make_shared<WindowStatusExtend>();
  status->SetObserverWidget(&list);
  list.showFullScreen();
  gallery::Say(QStringLiteral("Window status: list shown full screen, native full screen %1")
                   .arg(status->IsFullScreen() ? "yes" : "no (no native source here)"));
  if (status->IsFullScreen()) ++failures;

  QAccessible::removeFactory(QTAccessibleUtils::ListWidgetAccessibleFactory);
  return failures;
}

}  // namespace

GALLERY_SECTION("observers", RunObservers);
