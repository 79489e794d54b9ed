#pragma once

// The one place the library reads or writes a whole text file: the style-sheet functions of
// VxQtUiUtil and QFTextStreamLoader both come here. They have always decoded the same bytes
// differently and clients rely on each, so the caller names its decoding. Qt 5 and Qt 6 decode
// and encode through different classes (Qt 6 moved QTextCodec out of QtCore); the difference
// stays in this file pair.

#include <QString>
#include <optional>

namespace qt_util::internal {

/// How a file's bytes become text.
enum class FileTextDecoding {
  /// QString::fromUtf8 of the bytes: a leading UTF-8 BOM is skipped, the text ends at the first
  /// NUL byte, and every malformed sequence (an incomplete one at the end too) becomes U+FFFD.
  kUtf8UpToNul,
  /// What a QTextStream with the UTF-8 codec reads: a leading UTF-16 or UTF-32 BOM switches to
  /// that encoding, a UTF-8 BOM is skipped, NUL bytes are kept, malformed sequences become
  /// U+FFFD, but an incomplete sequence at the very end is dropped.
  kTextStream,
};

/// The whole text of the file at `path`, opened read-only through QFile; nullopt when it cannot
/// be opened (missing, a directory, no permission). Logs nothing: each caller decides whether a
/// file that cannot be opened is worth a line.
std::optional<QString> ReadFileText(const QString& path, FileTextDecoding decoding);

/// Writes `text` as UTF-8 without a byte-order mark to `path`, replacing the file's contents
/// or appending to them; false when the file cannot be opened for writing (true otherwise, even
/// if the disk takes fewer bytes). A lone surrogate is written as '?', except a high surrogate
/// at the very end, which is left out.
bool WriteFileText(const QString& path, const QString& text, bool append);

}  // namespace qt_util::internal
