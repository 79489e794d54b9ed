// qt_util_meeting: one meeting window built from the library's pieces.
//
//   qt_util_meeting                       interactive, on the desktop
//   qt_util_meeting --script --out DIR    the fixed scenario, headless; exit status 1 when any
//                                         observation differs from the expected one
#include <QAccessible>
#include <QApplication>
#include <QCommandLineParser>
#include <QTimer>
#include <cstdio>

#include "meeting_window.h"
#include "qt_util/accessibility/list_widget_accessible.h"
#include "qt_util/custom_event_util.h"
#include "qt_util/event_handler/event_hooker.h"
#include "qt_util/qt_log_hooker.h"
#include "qt_util/ui_util.h"
#include "scenario.h"

namespace {

// What a client does once its QApplication exists.
void StartLibrary() {
  CustomEventUtils::InitCustomEventHandler();
  EventHooker::InitGlobalEventHooker();
  qInstallMessageHandler(&QtLogHooker::HandleGlobalMessage);
  QAccessible::installFactory(QTAccessibleUtils::ListWidgetAccessibleFactory);
  VxQtUiUtil::InitUIUtil();
}

void JoinDemoMeeting(meeting::MeetingWindow& window) {
  window.Join(QStringLiteral("Weekly design review"), QStringLiteral("Ada Lovelace"),
              {{QStringLiteral("grace"), QStringLiteral("Grace Hopper")},
               {QStringLiteral("alan"), QStringLiteral("Alan Turing")},
               {QStringLiteral("max"), QStringLiteral("Maximiliana Fernández-Oyelaran")}});
  window.ReceiveChat(QStringLiteral("Grace Hopper"),
                     QStringLiteral("<b>Welcome!</b> Agenda:<ul><li>budget review</li>"
                                    "<li>road map</li></ul>"));
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("qt_util_meeting"));
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("A meeting window built from qt_util."));
  parser.addHelpOption();
  const QCommandLineOption script_option(
      QStringLiteral("script"), QStringLiteral("Run the fixed scenario headless and exit."));
  const QCommandLineOption out_option(
      QStringLiteral("out"), QStringLiteral("Directory for the scenario's screenshots."),
      QStringLiteral("dir"), QStringLiteral("gallery-output/meeting"));
  parser.addOption(script_option);
  parser.addOption(out_option);
  parser.process(app);

  StartLibrary();
  meeting::MeetingWindow window;

  if (parser.isSet(script_option)) {
    // Level 6: the scenario checks the click records of the global hooker.
    meeting::LogRecorder log(base::log::kLevelInfo);
    meeting::Scenario scenario(window, parser.value(out_option), log);
    const int mismatches = scenario.Run();
    return mismatches == 0 ? 0 : 1;
  }

  JoinDemoMeeting(window);
  QObject::connect(&window, &meeting::MeetingWindow::LeaveRequested, &app, &QApplication::quit);
  window.show();
  return app.exec();
}
