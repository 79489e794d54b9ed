#include "qt_util/string_utils.h"

#include <QByteArray>
#include <codecvt>
#include <locale>

#include "qt_util/file_text_p.h"

namespace {

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
  // One pass into a new string, so that a text of several megabytes costs one copy whatever
  // its content. A "\r\n" pair is one line break.
  QString encoded;
  encoded.reserve(text.size() + text.size() / 8);
  const QChar* const begin = text.constData();
  const QChar* const end = begin + text.size();
  for (const QChar* at = begin; at != end; ++at) {
    switch (at->unicode()) {
      case u'&':
        encoded += QLatin1String("&amp;");
        break;
      case u' ':
        encoded += QLatin1String("&nbsp;");
        break;
      case u'<':
        encoded += QLatin1String("&lt;");
        break;
      case u'>':
        encoded += QLatin1String("&gt;");
        break;
      case u'"':
        encoded += QLatin1String("&quot;");
        break;
      case u'\'':
        encoded += QLatin1String("&#39;");
        break;
      case u'\r':
        if (at + 1 != end && at[1] == QLatin1Char('\n')) ++at;
        encoded += QLatin1String("<br>");
        break;
      case u'\n':
      case u'\v':
        encoded += QLatin1String("<br>");
        break;
      default:
        encoded += *at;
    }
  }
  text = std::move(encoded);
}

QString QFTextStreamLoader::GetFileStream(const QString& path) {
  using qt_util::internal::FileTextDecoding;
  return qt_util::internal::ReadFileText(path, FileTextDecoding::kTextStream).value_or(QString());
}

bool QFTextStreamLoader::SaveFileStream(const QString& path, const QString& content, bool append) {
  return qt_util::internal::WriteFileText(path, content, append);
}
