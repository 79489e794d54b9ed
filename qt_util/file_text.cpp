#include "qt_util/file_text_p.h"

#include <QByteArray>
#include <QFile>
#include <QtGlobal>
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
#include <QStringDecoder>
#else
#include <QTextCodec>
#endif

namespace qt_util::internal {

namespace {

// What a QTextStream reading the whole file returns: the encoding comes from a leading
// byte-order mark (UTF-8 without one), and the decoder keeps an unfinished sequence as state
// waiting for more input, so at the end of the file it is lost.
QString DecodeAsTextStream(const QByteArray& bytes) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
  // Qt 6: QStringDecoder replaces QTextCodec; a stateful decoder keeps the same remainder and
  // skips the same initial byte-order mark.
  QStringDecoder decoder(QStringConverter::encodingForData(bytes).value_or(QStringConverter::Utf8));
  return decoder.decode(bytes);
#else
  QTextCodec* codec = QTextCodec::codecForUtfText(bytes, QTextCodec::codecForName("utf8"));
  QTextCodec::ConverterState state;
  return codec->toUnicode(bytes.constData(), bytes.size(), &state);
#endif
}

}  // namespace

std::optional<QString> ReadFileText(const QString& path, FileTextDecoding decoding) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
  const QByteArray bytes = file.readAll();
  if (decoding == FileTextDecoding::kUtf8UpToNul) {
    // Up to the first NUL, spelled out: Qt 5's QString::fromUtf8(QByteArray) stopped there, Qt
    // 6's reads the whole array.
    return QString::fromUtf8(bytes.constData(), qstrnlen(bytes.constData(), bytes.size()));
  }
  return DecodeAsTextStream(bytes);
}

bool WriteFileText(const QString& path, const QString& text, bool append) {
  QFile file(path);
  const QIODevice::OpenMode mode =
      QIODevice::WriteOnly | (append ? QIODevice::Append : QIODevice::Truncate);
  if (!file.open(mode)) return false;
  // What Qt 5's UTF-8 text stream wrote, spelled out: Qt 6's writes U+FFFD for a lone surrogate
  // where Qt 5's wrote '?' (as toUtf8 does on both), and a high surrogate at the very end was
  // kept waiting for its pair and so never written.
  QStringView whole(text);
  if (!whole.isEmpty() && whole.back().isHighSurrogate()) whole.chop(1);
  file.write(whole.toUtf8());
  return true;
}

}  // namespace qt_util::internal
