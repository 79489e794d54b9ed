#include "rtf_writer.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QUrl>
#include <algorithm>
#include <climits>

namespace html2rtf {

namespace {

// The largest point size that common readers accept (\fs counts half-points).
constexpr int kMaxFontSize = 1638;
constexpr int kDefaultColumnWidth = 2000;
constexpr int kMaxColumnWidth = 31680;
constexpr int kMaxListLevel = 9;
constexpr int kIndentPerLevel = 720;
constexpr int kTwipsPerPixel = 15;  // at 96 dpi
constexpr int kMaxPictureGoalPixels = 20000;
// Whatever the options say: the hex text is twice the file and must fit in one QByteArray.
constexpr qint64 kMaxImageBytesCap = 256 * 1024 * 1024;
constexpr int kHexLineLength = 128;

QByteArray Number(qint64 value) {
  return QByteArray::number(value);
}

// The image's goal size in pixels: the tag's width and height where they are positive numbers
// (one alone keeps the aspect ratio), else the image's own size.
QSize GoalSize(const QSize& natural, const QMap<QString, QString>& attributes) {
  bool widthOk = false;
  bool heightOk = false;
  int width = attributes.value(QStringLiteral("width")).toInt(&widthOk);
  int height = attributes.value(QStringLiteral("height")).toInt(&heightOk);
  widthOk = widthOk && width > 0;
  heightOk = heightOk && height > 0;
  width = std::min(width, kMaxPictureGoalPixels);
  height = std::min(height, kMaxPictureGoalPixels);
  // A scaled side is clamped too: a 1x100000 picture given width=20000 must not overflow.
  auto scaled = [](qint64 side, int by, int of) {
    return int(std::clamp<qint64>(side * by / of, 1, kMaxPictureGoalPixels));
  };
  if (widthOk && heightOk) return QSize(width, height);
  if (widthOk) return QSize(width, scaled(natural.height(), width, natural.width()));
  if (heightOk) return QSize(scaled(natural.width(), height, natural.height()), height);
  return natural.boundedTo(QSize(kMaxPictureGoalPixels, kMaxPictureGoalPixels));
}

// Reads the whole file into `data` unless it holds more than `limit` bytes. The size that stat
// reported is not trusted: a file may grow after it, and some (under /proc) report 0.
bool ReadBounded(QFile& file, qint64 limit, QByteArray& data) {
  constexpr qint64 kChunk = 64 * 1024;
  data.clear();
  while (data.size() <= limit) {
    const QByteArray chunk = file.read(std::min(kChunk, limit + 1 - data.size()));
    if (chunk.isEmpty()) return file.error() == QFileDevice::NoError;
    data += chunk;
  }
  return false;
}

QByteArray HexLines(const QByteArray& data) {
  const QByteArray hex = data.toHex();
  QByteArray out;
  out.reserve(hex.size() + hex.size() / kHexLineLength + 1);
  for (int i = 0; i < hex.size(); i += kHexLineLength) {
    out += hex.mid(i, kHexLineLength);
    out += '\n';
  }
  return out;
}

QString ResolveImagePath(const QString& source, const QString& baseDir) {
  const QString path =
      source.startsWith(QLatin1String("file:")) ? QUrl(source).toLocalFile() : source;
  if (path.isEmpty() || QDir::isAbsolutePath(path)) return path;
  return QDir(baseDir.isEmpty() ? QDir::currentPath() : baseDir).filePath(path);
}

}  // namespace

RtfWriter::RtfWriter(RtfWriterOptions options) : options_(std::move(options)) {
  // The first font is the document default (\deff0): the face a closing </font> restores.
  fonts_ << QLatin1String(kDefaultFontName);
}

QByteArray RtfWriter::EscapeText(const QString& text) {
  QByteArray out;
  out.reserve(text.size());
  for (const QChar ch : text) {
    const ushort u = ch.unicode();
    switch (u) {
      case '\\':
        out += "\\\\";
        break;
      case '{':
        out += "\\{";
        break;
      case '}':
        out += "\\}";
        break;
      case '\t':
        out += "\\tab ";
        break;
      default:
        if (u < 0x20 || u == 0x7f) break;  // no meaning in running text
        if (u < 0x80) {
          out += char(u);
        } else {
          // \u takes a signed 16-bit value; the "?" is the fallback that \uc1 skips.
          out += "\\u";
          out += Number(u > 0x7fff ? int(u) - 0x10000 : int(u));
          out += '?';
        }
    }
  }
  return out;
}

QByteArray& RtfWriter::Out() {
  if (inRow_ && !inCell_) {
    // Content between cells of a row has nowhere else to go: it gets a cell of its own.
    cells_.append(Cell());
    inCell_ = true;
    paragraphStarted_ = false;
  }
  return inCell_ ? cells_.last().content : body_;
}

void RtfWriter::StartParagraphIfNeeded() {
  QByteArray& out = Out();
  if (paragraphStarted_) return;
  paragraphStarted_ = true;
  out += "\\pard";
  if (inCell_) out += "\\intbl";
  out += alignment_;
  if (pendingItem_ == ItemKind::None) return;
  out += "\\fi-360\\li";
  out += Number(kIndentPerLevel * itemLevel_);
  if (pendingItem_ == ItemKind::Bullet) {
    out += "{\\*\\pn\\pnlvlblt\\pnindent360{\\pntxtb\\u8226?}}{\\pntext\\u8226?\\tab}";
  } else {
    const QByteArray number = Number(numberedCount_);
    out += "{\\*\\pn\\pnlvlbody\\pndec\\pnstart" + number + "\\pnindent360{\\pntxta.}}";
    out += "{\\pntext " + number + ".\\tab}";
  }
}

void RtfWriter::EndParagraph() {
  if (paragraphStarted_) {
    Out() += "\\par\n";
    paragraphStarted_ = false;
  }
  pendingItem_ = ItemKind::None;
}

void RtfWriter::BeginBulletList() {
  EndParagraph();
  bulletDepth_ = std::min(bulletDepth_ + 1, kMaxListLevel);
}

void RtfWriter::EndBulletList() {
  EndParagraph();
  bulletDepth_ = std::max(bulletDepth_ - 1, 0);
}

void RtfWriter::BulletItem() {
  EndParagraph();
  pendingItem_ = ItemKind::Bullet;
  itemLevel_ = std::max(bulletDepth_, 1);
  StartParagraphIfNeeded();
}

void RtfWriter::NumberedItem(int number) {
  EndParagraph();
  pendingItem_ = ItemKind::Numbered;
  itemLevel_ = std::clamp(number, 1, kMaxListLevel);
  if (numberedCount_ < INT_MAX) ++numberedCount_;
  StartParagraphIfNeeded();
}

void RtfWriter::EndNumberedList() {
  EndParagraph();
  numberedCount_ = 0;
}

void RtfWriter::SetAlignment(const QString& alignment) {
  const QByteArray previous = alignment_;
  if (alignment.compare(QLatin1String("Right"), Qt::CaseInsensitive) == 0) {
    alignment_ = "\\qr";
  } else if (alignment.compare(QLatin1String("Center"), Qt::CaseInsensitive) == 0) {
    alignment_ = "\\qc";
  } else if (alignment.compare(QLatin1String("Justify"), Qt::CaseInsensitive) == 0) {
    alignment_ = "\\qj";
  } else {
    alignment_ = "\\ql";
  }
  // Paragraph properties may come anywhere in the paragraph and apply to all of it.
  if (paragraphStarted_ && alignment_ != previous) Out() += alignment_;
}

void RtfWriter::NewParagraph() {
  EndParagraph();
}

void RtfWriter::ResetParagraph() {
  alignment_ = "\\ql";
  if (paragraphStarted_) {
    QByteArray& out = Out();
    out += "\\pard";
    if (inCell_) out += "\\intbl";
    out += alignment_;
  }
  pendingItem_ = ItemKind::None;
}

void RtfWriter::LineBreak() {
  StartParagraphIfNeeded();
  Out() += "\\line\n";
}

void RtfWriter::BeginRow() {
  if (inRow_) {
    EndRow();  // nested rows are flattened into one table
  } else {
    EndParagraph();
  }
  inRow_ = true;
  inCell_ = false;
  columnWidths_.clear();
  cells_.clear();
}

void RtfWriter::AddColumn(int width) {
  if (!inRow_) BeginRow();
  columnWidths_.append(std::clamp(width, 1, kMaxColumnWidth));
}

void RtfWriter::BeginCell(int /*span*/) {
  if (!inRow_) BeginRow();
  if (inCell_) CloseCell();
  cells_.append(Cell());
  inCell_ = true;
  paragraphStarted_ = false;
}

void RtfWriter::CloseCell() {
  QByteArray& out = cells_.last().content;
  if (!paragraphStarted_) out += "\\pard\\intbl" + alignment_;
  out += "\\cell\n";
  inCell_ = false;
  paragraphStarted_ = false;
  pendingItem_ = ItemKind::None;
}

void RtfWriter::EndCell() {
  if (inCell_) CloseCell();
}

void RtfWriter::EndRow() {
  if (!inRow_) return;
  if (inCell_) CloseCell();
  const int count = std::max(columnWidths_.size(), cells_.size());
  if (count > 0) {
    body_ += "\\trowd\\trgaph108\\trleft0";
    qint64 right = 0;
    for (int i = 0; i < count; ++i) {
      int width = kDefaultColumnWidth;
      if (i < columnWidths_.size()) {
        width = columnWidths_[i];
      } else if (!columnWidths_.isEmpty()) {
        width = columnWidths_.last();
      }
      right += width;
      body_ += "\\cellx" + Number(right);
    }
    body_ += '\n';
    for (int i = 0; i < count; ++i) {
      body_ += i < cells_.size() ? cells_[i].content : QByteArray("\\pard\\intbl\\ql\\cell\n");
    }
    body_ += "\\row\n";
  }
  inRow_ = false;
  columnWidths_.clear();
  cells_.clear();
  paragraphStarted_ = false;
}

int RtfWriter::FontIndex(const QString& name) {
  const QString face = name.trimmed();
  if (face.isEmpty()) return 0;
  for (int i = 0; i < fonts_.size(); ++i) {
    if (fonts_[i].compare(face, Qt::CaseInsensitive) == 0) return i;
  }
  fonts_.append(face);
  return fonts_.size() - 1;
}

int RtfWriter::ColorIndex(const QColor& color) {
  if (!color.isValid()) return 0;  // entry 0 is the reader's automatic colour
  const QRgb rgb = color.rgb();
  for (int i = 0; i < colors_.size(); ++i) {
    if (colors_[i].rgb() == rgb) return i + 1;
  }
  colors_.append(QColor(rgb));
  return colors_.size();
}

QByteArray RtfWriter::CharacterFormat() {
  const int size = fontSize < 1 ? kDefaultFontSize : std::min(fontSize, kMaxFontSize);
  QByteArray out = "\\f" + Number(FontIndex(fontName)) + "\\fs" + Number(2 * size);
  out += "\\cf" + Number(ColorIndex(textColor));
  if (backgroundColor.isValid() && backgroundColor.rgb() != QColor(kDefaultBackgroundColor).rgb()) {
    out += "\\highlight" + Number(ColorIndex(backgroundColor));
  }
  if (bold) out += "\\b";
  if (italic) out += "\\i";
  if (underline) out += "\\ul";
  if (strikeOut) out += "\\strike";
  if (smallCaps) out += "\\scaps";
  // RTF has one vertical position; superscript wins when a sink has both set.
  if (superscript) {
    out += "\\super";
  } else if (subscript) {
    out += "\\sub";
  }
  out += ' ';
  return out;
}

void RtfWriter::WriteText(const QString& text) {
  StartParagraphIfNeeded();
  QByteArray& out = Out();
  out += '{';
  out += CharacterFormat();
  out += EscapeText(text);
  out += '}';
}

void RtfWriter::WritePlaceholder(const QString& text) {
  StartParagraphIfNeeded();
  Out() += "{\\i " + EscapeText(text) + '}';
}

bool RtfWriter::WritePicture(const QString& source, const QMap<QString, QString>& attributes) {
  if (!options_.loadImages || source.isEmpty()) return false;
  const QFileInfo info(ResolveImagePath(source, options_.baseDir));
  const qint64 limit = std::clamp<qint64>(options_.maxImageBytes, 0, kMaxImageBytesCap);
  // Only regular files: a device or a pipe named as a source must not be read.
  if (!info.isFile() || !info.isReadable() || info.size() > limit) return false;
  QFile file(info.filePath());
  if (!file.open(QIODevice::ReadOnly)) return false;
  QByteArray data;
  if (!ReadBounded(file, limit, data)) return false;

  const char* blip = nullptr;
  QByteArray format;
  if (data.startsWith("\x89PNG\r\n\x1a\n")) {
    blip = "\\pngblip";
    format = "png";
  } else if (data.startsWith("\xff\xd8\xff")) {
    blip = "\\jpegblip";
    format = "jpeg";
  } else {
    return false;
  }
  QBuffer buffer(&data);
  QImageReader reader(&buffer, format);
  const QSize natural = reader.size();
  if (!natural.isValid() || natural.isEmpty()) return false;
  const QSize goal = GoalSize(natural, attributes);

  StartParagraphIfNeeded();
  QByteArray& out = Out();
  out += "{\\pict";
  out += blip;
  out += "\\picw" + Number(natural.width()) + "\\pich" + Number(natural.height());
  out += "\\picwgoal" + Number(qint64(goal.width()) * kTwipsPerPixel);
  out += "\\pichgoal" + Number(qint64(goal.height()) * kTwipsPerPixel);
  out += '\n';
  out += HexLines(data);
  out += '}';
  return true;
}

void RtfWriter::InsertImage(const QString& source, const QMap<QString, QString>& attributes) {
  if (WritePicture(source, attributes)) return;
  WritePlaceholder(source.isEmpty() ? QStringLiteral("[image]")
                                    : QStringLiteral("[image: %1]").arg(source));
}

void RtfWriter::InsertObject(const QString& classId, const QMap<QString, QString>&) {
  WritePlaceholder(classId.isEmpty() ? QStringLiteral("[object]")
                                     : QStringLiteral("[object: %1]").arg(classId));
}

QByteArray RtfWriter::Finish() {
  EndRow();
  QByteArray rtf = "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1\n{\\fonttbl";
  for (int i = 0; i < fonts_.size(); ++i) {
    // A ";" ends the entry, so it cannot be part of a face name.
    QString face = fonts_[i];
    face.remove(QLatin1Char(';'));
    rtf += "{\\f" + Number(i) + "\\fnil\\fcharset0 " + EscapeText(face) + ";}";
  }
  rtf += "}\n{\\colortbl;";
  for (const QColor& color : colors_) {
    rtf += "\\red" + Number(color.red()) + "\\green" + Number(color.green()) + "\\blue" +
           Number(color.blue()) + ';';
  }
  rtf += "}\n{\\*\\generator qt_util html2rtf;}\\viewkind4\\uc1\n";
  rtf += body_;
  rtf += "}\n";
  return rtf;
}

QByteArray HtmlToRtf(const QString& html, const RtfWriterOptions& options) {
  RtfWriter writer(options);
  CHTMLParser parser(html, &writer);
  return writer.Finish();
}

}  // namespace html2rtf
