// The qt_util gallery: runs every section (or the ones named on the command line) and
// prints what each facility does. Screenshots go to the directory given with --out; --list
// prints the section names.
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <algorithm>
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
  QCommandLineOption list_option("list", "Print the section names, one a line, and exit.");
  parser.addOption(list_option);
  parser.addPositionalArgument("sections", "Sections to run (default: all).");
  parser.process(app);

  if (parser.isSet(list_option)) {
    for (const gallery::Section& section : gallery::Sections()) gallery::Say(section.name);
    return 0;
  }
  const QStringList wanted = parser.positionalArguments();
  // A misspelt (or since renamed) section must not pass for a section that ran.
  int unknown = 0;
  for (const QString& name : wanted) {
    const auto& sections = gallery::Sections();
    const bool known = std::any_of(sections.begin(), sections.end(), [&](const auto& section) {
      return name == QString::fromUtf8(section.name);
    });
    if (!known) {
      std::fprintf(stderr, "qt_util_gallery: no section named \"%s\" (see --list)\n",
                   name.toUtf8().constData());
      ++unknown;
    }
  }
  if (unknown != 0) return 2;

  const QString out_dir = parser.value(out_option);
  QDir().mkpath(out_dir);

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
