// qt_util_meeting: one meeting window built from the library's pieces.
//
//   qt_util_meeting                       interactive, on the desktop
//   qt_util_meeting --script --out DIR    the fixed scenario, headless; exit status 1 when any
//                                         observation differs from the expected one
#include <QAccessible>
#include <QApplication>
#include <QCommandLineParser>
#include <cstdio>
#include <memory>

#include "base/singleton/scope_singleton.h"
#include "json_theme_manager.h"
#include "meeting_window.h"
#include "qt_util/accessibility/list_widget_accessible.h"
#include "qt_util/custom_event_util.h"
#include "qt_util/event_handler/event_hooker.h"
#include "qt_util/qt_log_hooker.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/ui_util.h"
#include "scenario.h"

namespace {

// What a client does once its QApplication exists. Returns the injected theme engine (owned by
// the theme helper), or null when its theme file cannot be read.
example_theme::JsonThemeManager* StartLibrary() {
  CustomEventUtils::InitCustomEventHandler();
  EventHooker::InitGlobalEventHooker();
  qInstallMessageHandler(&QtLogHooker::HandleGlobalMessage);
  QAccessible::installFactory(QTAccessibleUtils::ListWidgetAccessibleFactory);
  VxQtUiUtil::InitUIUtil();

  example_theme::LoadResources();
  QString error;
  auto manager = example_theme::JsonThemeManager::FromFile(
      QStringLiteral(":/example_theme/theme.json"), &error);
  if (!manager) {
    std::fprintf(stderr, "qt_util_meeting: %s\n", qUtf8Printable(error));
    return nullptr;
  }
  example_theme::JsonThemeManager* engine = manager.get();
  QTUICustomThemeHelper::SharedInstance()->SetThemeManager(std::move(manager));
  return engine;
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

int Run(QApplication& app, bool script, const QString& out_dir) {
  // In a scenario the log is recorded from the start, so that the library's start-up lines
  // are checked too; level 6 keeps the hooker's click records.
  std::unique_ptr<meeting::LogRecorder> log;
  if (script) log = std::make_unique<meeting::LogRecorder>(base::log::kLevelInfo);

  example_theme::JsonThemeManager* engine = StartLibrary();
  if (!engine) return 2;
  meeting::MeetingWindow window;
  QObject::connect(&window, &meeting::MeetingWindow::ThemeSwitchRequested, &window,
                   [engine](bool dark) {
                     engine->SetTheme(dark ? QStringLiteral("dark") : QStringLiteral("light"));
                   });

  if (script) {
    meeting::Scenario scenario(window, out_dir, *log);
    return scenario.Run() == 0 ? 0 : 1;
  }
  JoinDemoMeeting(window);
  QObject::connect(&window, &meeting::MeetingWindow::LeaveRequested, &app, &QApplication::quit);
  window.show();
  return app.exec();
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

  const int status = Run(app, parser.isSet(script_option), parser.value(out_option));
  // The helper singletons (theme, monitor) go before the application, as a client ends them.
  base::EndSingletonScope();
  return status;
}
