#include "qt_util/string_utils.h"

#include <QByteArray>
#include <QFile>
#include <QTextCodec>
#include <QTextStream>
#include <codecvt>
#include <locale>

namespace {

QTextCodec* Utf8Codec() {
  return QTextCodec::codecForName("utf8");
}

// The buffers behind the char-array conversions. One per function and thread, so that a
// result never changes under a caller on another thread, or under a caller that mixes the
// UTF-8 and the local 8-bit form in one expression.
QByteArray& Utf8Buffer() {
  thread_local QByteArray buffer;
  return buffer;
}

QByteArray& Local8BitBuffer() {
  thread_local QByteArray buffer;
  return buffer;
}

}  // namespace

std::string QTStringUtils::QStr2StdStr(const QString& text) {
  const QByteArray utf8 = text.toUtf8();
  return std::string(utf8.constData());
}

std::wstring QTStringUtils::QStr2StdWStr(const QString& text) {
  const QByteArray utf8 = text.toUtf8();
  // The UTF-16 layout in a 32-bit wchar_t is what callers expect; see the header.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  std::wstring_convert<std::codecvt_utf8_utf16<wchar_t>> converter;
  return converter.from_bytes(utf8.constData(), utf8.constData() + utf8.size());
#pragma GCC diagnostic pop
}

const char* QTStringUtils::QStr2CharArray(const QString& text) {
  QByteArray& buffer = Utf8Buffer();
  buffer = text.toUtf8();
  return buffer.constData();
}

const char* QTStringUtils::QStr2LocalCharArray(const QString& text) {
  QByteArray& buffer = Local8BitBuffer();
  buffer = text.toLocal8Bit();
  return buffer.constData();
}

QString QTStringUtils::StdStr2QStr(const std::string& text) {
  return QString::fromUtf8(text.c_str(), -1);
}

void QTStringUtils::HtmlEncode(QString& text) {
  // "&" first so that the entities made below are not escaped twice; line breaks last so
  // that the "<br>" they produce is not escaped either.
  text.replace(QLatin1Char('&'), QLatin1String("&amp;"));
  text.replace(QLatin1Char(' '), QLatin1String("&nbsp;"));
  text.replace(QLatin1Char('<'), QLatin1String("&lt;"));
  text.replace(QLatin1Char('>'), QLatin1String("&gt;"));
  text.replace(QLatin1Char('"'), QLatin1String("&quot;"));
  text.replace(QLatin1Char('\''), QLatin1String("&#39;"));
  text.replace(QLatin1String("\r\n"), QLatin1String("\r"));
  text.replace(QLatin1Char('\r'), QLatin1String("<br>"));
  text.replace(QLatin1Char('\n'), QLatin1String("<br>"));
  text.replace(QLatin1Char('\v'), QLatin1String("<br>"));
}

QString QFTextStreamLoader::GetFileStream(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return QString();
  QTextStream stream(&file);
  stream.setCodec(Utf8Codec());
  return stream.readAll();
}

bool QFTextStreamLoader::SaveFileStream(const QString& path, const QString& content, bool append) {
  QFile file(path);
  const QIODevice::OpenMode mode =
      QIODevice::WriteOnly | (append ? QIODevice::Append : QIODevice::Truncate);
  if (!file.open(mode)) return false;
  QTextStream stream(&file);
  stream.setCodec(Utf8Codec());
  stream << content;
  stream.flush();
  file.close();
  return true;
}
