// html2rtf: converts an HTML fragment (a file, or stdin when none is named) to RTF on stdout,
// through CHTMLParser and the RTF writer. Relative image sources are looked up next to the
// input file (in the current directory for stdin).
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdio>

#include "rtf_writer.h"

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("html2rtf"));
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Converts rich-text HTML to RTF on stdout."));
  parser.addHelpOption();
  parser.addPositionalArgument(QStringLiteral("input.html"),
                               QStringLiteral("HTML file to convert (default: stdin)."),
                               QStringLiteral("[input.html]"));
  parser.process(app);
  const QStringList inputs = parser.positionalArguments();
  if (inputs.size() > 1) {
    std::fprintf(stderr, "html2rtf: at most one input file\n");
    return 2;
  }

  html2rtf::RtfWriterOptions options;
  QFile input;
  const QString inputName = inputs.isEmpty() ? QStringLiteral("stdin") : inputs.first();
  if (inputs.isEmpty()) {
    if (!input.open(stdin, QIODevice::ReadOnly)) {
      std::fprintf(stderr, "html2rtf: cannot read stdin: %s\n", qPrintable(input.errorString()));
      return 1;
    }
    options.baseDir = QDir::currentPath();
  } else {
    input.setFileName(inputName);
    if (!input.open(QIODevice::ReadOnly)) {
      std::fprintf(stderr, "html2rtf: cannot open %s: %s\n", qPrintable(inputName),
                   qPrintable(input.errorString()));
      return 1;
    }
    options.baseDir = QFileInfo(input).absolutePath();
  }
  // Chat HTML is UTF-8; a byte-order mark is not part of the text.
  QByteArray bytes = input.readAll();
  // A failed read (a directory or a closed descriptor as stdin, an I/O error) looks like empty
  // input to readAll; converting that would pass off an empty document as the result.
  if (input.error() != QFileDevice::NoError) {
    std::fprintf(stderr, "html2rtf: cannot read %s: %s\n", qPrintable(inputName),
                 qPrintable(input.errorString()));
    return 1;
  }
  if (bytes.startsWith("\xef\xbb\xbf")) bytes.remove(0, 3);

  const QByteArray rtf = html2rtf::HtmlToRtf(QString::fromUtf8(bytes), options);
  if (std::fwrite(rtf.constData(), 1, size_t(rtf.size()), stdout) != size_t(rtf.size()) ||
      std::fflush(stdout) != 0) {
    std::fprintf(stderr, "html2rtf: write error\n");
    return 1;
  }
  return 0;
}
