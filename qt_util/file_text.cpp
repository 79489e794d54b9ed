#include "qt_util/file_text_p.h"

#include <QByteArray>
#include <QFile>
#include <QTextCodec>

namespace qt_util::internal {

std::optional<QString> ReadFileText(const QString& path, FileTextDecoding decoding) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
  const QByteArray bytes = file.readAll();
  if (decoding == FileTextDecoding::kUtf8UpToNul) return QString::fromUtf8(bytes);

  // A QTextStream picks its codec from the first bytes and decodes with a state that keeps an
  // unfinished sequence for more input; at the end of the file that remainder is lost. The same
  // codec choice and state give the same text without the stream.
  QTextCodec* codec = QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName("utf8"));
  QTextCodec::ConverterState state;
  return codec->toUnicode(bytes.constData(), bytes.size(), &state);
}

}  // namespace qt_util::internal
