// The qt_util gallery: runs every section (or the ones named on the command line) and
// prints what each facility does. Screenshots go to the directory given with --out.
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <cstdio>

#include "gallery.h"

namespace gallery {

std::vector<Section>& Sections() {
  static std::vector<Section> sections;
  return sections;
}

void Say(const QString& text) {
  std::printf("%s\n", text.toUtf8().constData());
  std::fflush(stdout);
}

QString RectText(const QRect& rect) {
  return QStringLiteral("%1x%2+%3+%4")
      .arg(rect.width())
      .arg(rect.height())
      .arg(rect.x())
      .arg(rect.y());
}

}  // namespace gallery

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QCommandLineParser parser;
  parser.setApplicationDescription("Shows the qt_util facilities at work.");
  parser.addHelpOption();
  QCommandLineOption out_option("out", "Directory for screenshots.", "dir", "gallery-output");
  parser.addOption(out_option);
  parser.addPositionalArgument("sections", "Sections to run (default: all).");
  parser.process(app);

  const QString out_dir = parser.value(out_option);
  QDir().mkpath(out_dir);
  const QStringList wanted = parser.positionalArguments();

  int failures = 0;
  for (const gallery::Section& section : gallery::Sections()) {
    if (!wanted.isEmpty() && !wanted.contains(QString::fromUtf8(section.name))) continue;
    gallery::Say(QStringLiteral("== %1 ==").arg(QString::fromUtf8(section.name)));
    const int rc = section.run(app, out_dir);
    if (rc != 0) {
      gallery::Say(QStringLiteral("!! section %1 failed (%2)").arg(section.name).arg(rc));
      ++failures;
    }
  }
  return failures == 0 ? 0 : 1;
}
