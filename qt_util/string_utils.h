#pragma once

/// @file
/// QTStringUtils string conversions and QFTextStreamLoader text files.

#include <QString>
#include <string>

#include "qt_util/qt_util_export.h"

/// Conversions between QString and standard strings or raw character buffers, and an HTML
/// escaper for plain text. Every function is safe on any thread.
class QT_UTIL_EXPORT QTStringUtils {
 public:
  /// The UTF-8 bytes of `text`, up to (not including) the first U+0000.
  static std::string QStr2StdStr(const QString& text);

  /// The text as UTF-16 code units, one per wchar_t: a character beyond U+FFFF becomes a
  /// surrogate pair of two elements even though wchar_t is 32 bits wide here. Clients that
  /// hand the result to UTF-16 based interfaces rely on that layout.
  static std::wstring QStr2StdWStr(const QString& text);

  /// NUL-terminated UTF-8 bytes of `text`. Never null.
  /// The bytes live in a buffer owned by the calling thread: the pointer stays valid until
  /// the next QStr2CharArray call on the same thread (or the thread's end), so keep one
  /// result per expression and copy it if it must outlive the next call.
  static const char* QStr2CharArray(const QString& text);

  /// NUL-terminated local 8-bit bytes of `text` (QString::toLocal8Bit). Never null.
  /// Same lifetime rule as QStr2CharArray, with a buffer of its own: a result of one of the
  /// two functions survives calls of the other.
  static const char* QStr2LocalCharArray(const QString& text);

  /// QString::fromUtf8 of `text` up to its first NUL byte.
  static QString StdStr2QStr(const std::string& text);

  /// Escapes `text` in place for rich-text display: "&", space, "<", ">", '"' and "'"
  /// become entities ("&nbsp;" for every space, so runs of blanks survive layout), and each
  /// line break ("\r\n", "\r", "\n" or a vertical tab) becomes one "<br>".
  static void HtmlEncode(QString& text);
};

/// Whole-file text reading and writing in UTF-8.
class QT_UTIL_EXPORT QFTextStreamLoader {
 public:
  /// The file's whole content decoded as UTF-8, a leading byte-order mark skipped (a UTF-16 or
  /// UTF-32 one switches to that encoding). Malformed bytes become U+FFFD, except an incomplete
  /// sequence at the very end, which is dropped; NUL bytes are kept. An empty string when the
  /// file cannot be opened; a missing file and an empty one look the same.
  static QString GetFileStream(const QString& path);

  /// Writes `content` as UTF-8 without a byte-order mark, appending to the file when
  /// `append` is true and replacing its content otherwise. The directory must exist. A lone
  /// surrogate is written as '?', except a high surrogate at the very end, which is left out.
  /// Returns false when the file cannot be opened for writing.
  static bool SaveFileStream(const QString& path, const QString& content, bool append);
};
