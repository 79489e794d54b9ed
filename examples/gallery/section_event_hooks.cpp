// Installs the global event hooker and the Qt message hook, then drives a small window with
// synthetic clicks and prints the log records they produce: which button was clicked,
// where the press happened, and Qt's own messages relayed into the log.
#include <QApplication>
#include <QContextMenuEvent>
#include <QCursor>
#include <QLabel>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <utility>

#include "base/common/include/logger.h"
#include "base/log/log.h"
#include "gallery.h"
#include "qt_util/event_handler/event_hooker.h"
#include "qt_util/qt_log_hooker.h"

namespace {

void SendMouse(QWidget* widget, QEvent::Type type, Qt::MouseButton button, const QPoint& pos) {
  const QPoint global = widget->mapToGlobal(pos);
  QCursor::setPos(global);
  const Qt::MouseButtons held = type == QEvent::MouseButtonPress ? button : Qt::NoButton;
  QMouseEvent event(type, pos, global, button, held, Qt::NoModifier);
  QApplication::sendEvent(widget, &event);
}

void Click(QWidget* widget, Qt::MouseButton button = Qt::LeftButton) {
  const QPoint center = widget->rect().center();
  SendMouse(widget, QEvent::MouseButtonPress, button, center);
  SendMouse(widget, QEvent::MouseButtonRelease, button, center);
}

int RunEventHooks(QApplication& app, const QString& out_dir) {
  const int previous_level = base::log::GetLogLevel();
  base::log::SetLogLevel(base::log::kLevelInfo);
  // Qt's platform plugin may add messages of its own; only ours are counted.
  int click_lines = 0;
  int stack_lines = 0;
  int relayed_lines = 0;
  base::log::LogSink previous_sink = base::log::SetLogSink([&](const base::log::LogRecord& record) {
    const QString text = QString::fromStdString(record.text);
    click_lines += text.startsWith("button ") && text.endsWith(" clicked");
    stack_lines += text.startsWith("Click Widget Stack ");
    relayed_lines += text.contains("(section_event_hooks.cpp:");
    gallery::Say(QStringLiteral("  [log %1] %2:%3 %4| %5")
                     .arg(record.level)
                     .arg(QString::fromStdString(record.file))
                     .arg(record.line)
                     .arg(QString::fromStdString(record.function))
                     .arg(QString::fromStdString(record.text)));
  });
  const QtMessageHandler previous_handler =
      qInstallMessageHandler(&QtLogHooker::HandleGlobalMessage);
  EventHooker::InitGlobalEventHooker();

  QWidget window;
  window.setObjectName("meetingToolbar");
  window.setWindowTitle("Event hooks");
  auto* layout = new QVBoxLayout(&window);
  layout->addWidget(new QLabel("Clicks below are logged by the global event hooker."));
  auto* join = new QPushButton("Join meeting");
  join->setObjectName("joinButton");
  auto* mute = new QToolButton;  // no text: the object name labels it
  mute->setObjectName("muteButton");
  mute->setFixedSize(120, 28);
  auto* share = new QToolButton;  // no text, no object name: the accessible name does
  share->setAccessibleName("Share screen");
  share->setFixedSize(120, 28);
  auto* bar = new QScrollBar(Qt::Horizontal);
  for (QWidget* widget : {static_cast<QWidget*>(join), static_cast<QWidget*>(mute),
                          static_cast<QWidget*>(share), static_cast<QWidget*>(bar)}) {
    layout->addWidget(widget);
  }
  int clicks = 0;
  for (QAbstractButton* button :
       {static_cast<QAbstractButton*>(join), static_cast<QAbstractButton*>(mute),
        static_cast<QAbstractButton*>(share)}) {
    QObject::connect(button, &QAbstractButton::clicked, [&clicks] { ++clicks; });
  }

  gallery::Say(
      "Showing the window: its \"Widget Show\" Qt debug message reaches the hook, "
      "which drops debug messages.");
  window.show();
  app.processEvents();

  gallery::Say("Left clicks on three buttons (label from text, object name, accessible name):");
  Click(join);
  Click(mute);
  Click(share);

  gallery::Say("A right click and a press dragged off the button: no click line.");
  Click(join, Qt::RightButton);
  SendMouse(mute, QEvent::MouseButtonPress, Qt::LeftButton, mute->rect().center());
  SendMouse(mute, QEvent::MouseButtonRelease, Qt::LeftButton, QPoint(-20, -20));

  QContextMenuEvent menu(QContextMenuEvent::Mouse, bar->rect().center(),
                         bar->mapToGlobal(bar->rect().center()));
  const bool swallowed = QApplication::sendEvent(bar, &menu);
  gallery::Say(
      QStringLiteral("Context menu on the scroll bar swallowed: %1").arg(swallowed ? "yes" : "no"));

  gallery::Say("Qt messages relayed into the log (the debug one is dropped):");
  // Logging rules (QT_LOGGING_RULES, qtlogging.ini) may silence a type before Qt calls any
  // handler; only the messages Qt actually hands over can be relayed.
  const QLoggingCategory* category = QLoggingCategory::defaultCategory();
  int relayable = 0;
  const std::pair<QtMsgType, const char*> types[] = {
      {QtInfoMsg, "info"}, {QtWarningMsg, "warning"}, {QtCriticalMsg, "critical"}};
  for (const auto& [type, name] : types) {
    if (category && category->isEnabled(type)) {
      ++relayable;
    } else {
      gallery::Say(QStringLiteral("  (%1 messages are disabled by the logging rules)").arg(name));
    }
  }
  QMessageLogger(__FILE__, __LINE__, Q_FUNC_INFO).info("toolbar ready");
  QMessageLogger(__FILE__, __LINE__, Q_FUNC_INFO).warning("camera %d not found", 2);
  QMessageLogger(__FILE__, __LINE__, Q_FUNC_INFO).critical("audio device lost");
  QMessageLogger(__FILE__, __LINE__, Q_FUNC_INFO).debug("never shown");

  const QString shot = out_dir + "/event_hooks.png";
  const bool saved = window.grab().save(shot, "PNG");
  gallery::Say(QStringLiteral("Screenshot: %1 (%2)").arg(shot, saved ? "saved" : "not saved"));

  qInstallMessageHandler(previous_handler);
  base::log::SetLogSink(std::move(previous_sink));
  base::log::SetLogLevel(previous_level);

  gallery::Say(QStringLiteral("%1 buttons clicked; log lines: %2 clicks, %3 press stacks, %4 "
                              "relayed Qt messages")
                   .arg(clicks)
                   .arg(click_lines)
                   .arg(stack_lines)
                   .arg(relayed_lines));
  // The right press gives no stack line, the drag no click line, the debug message nothing.
  const bool expected = clicks == 3 && swallowed && click_lines == 3 && stack_lines == 4 &&
                        relayed_lines == relayable;
  if (!expected) {
    gallery::Say(QStringLiteral("Expected 3 buttons clicked, the scroll-bar menu swallowed, "
                                "3 clicks, 4 press stacks and %1 relayed Qt messages")
                     .arg(relayable));
  }
  return expected ? 0 : 1;
}

}  // namespace

GALLERY_SECTION("event_hooks", RunEventHooks);
