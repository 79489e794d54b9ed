#pragma once

// An RTF 1.9 writer behind the CParserOut sink: feed it to CHTMLParser, then call Finish() for
// the whole document. The output is 7-bit ASCII; every other character goes out as \uN.

#include <QByteArray>
#include <QColor>
#include <QList>
#include <QString>
#include <QStringList>

#include "qt_util/html_parser.h"

namespace html2rtf {

struct RtfWriterOptions {
  // Relative image sources are looked up here; empty means the current directory.
  QString baseDir;
  // When false every image becomes its placeholder text and no file is opened (the fuzzer
  // uses this so that arbitrary input cannot make it read the file system).
  bool loadImages = true;
  // Larger image files are not embedded: the RTF would carry twice their size in hex. Values
  // above 256 MiB count as 256 MiB.
  qint64 maxImageBytes = 16 * 1024 * 1024;
};

/// Writes the calls it receives as an RTF document. Calls that arrive out of order (a cell
/// without a row, an item without a list, an end without a begin) still give well-formed RTF:
/// a missing row is opened, a stray end is ignored, and cells and columns are padded so that
/// every row has as many cells as boundaries.
class RtfWriter : public CParserOut {
 public:
  explicit RtfWriter(RtfWriterOptions options = {});

  void BeginBulletList() override;
  void EndBulletList() override;
  void BulletItem() override;
  /// `number` is taken as the nesting level (1 = outermost); items are counted by the writer
  /// and the count starts again after EndNumberedList.
  void NumberedItem(int number) override;
  void EndNumberedList() override;
  /// Unknown names give left alignment.
  void SetAlignment(const QString& alignment) override;
  void NewParagraph() override;
  void ResetParagraph() override;
  void LineBreak() override;
  void BeginRow() override;
  void EndRow() override;
  /// Cells span one column; `span` is not represented.
  void BeginCell(int span) override;
  void EndCell() override;
  /// `width` in twips; values outside 1..31680 (22 inches) are clamped.
  void AddColumn(int width) override;
  void WriteText(const QString& text) override;
  void InsertImage(const QString& source, const QMap<QString, QString>& attributes) override;
  void InsertObject(const QString& classId, const QMap<QString, QString>& attributes) override;

  /// Closes an open row and returns the complete document: header, font and colour tables
  /// (only the fonts and colours that the document uses) and the body.
  QByteArray Finish();

  /// Escapes `text` for an RTF text destination: "\", "{" and "}" are escaped, tabs become
  /// \tab, other control characters are dropped and everything outside ASCII becomes \uN?.
  static QByteArray EscapeText(const QString& text);

 private:
  enum class ItemKind { None, Bullet, Numbered };
  struct Cell {
    QByteArray content;
  };

  QByteArray& Out();
  void StartParagraphIfNeeded();
  void EndParagraph();
  void CloseCell();
  void WritePlaceholder(const QString& text);
  int FontIndex(const QString& name);
  int ColorIndex(const QColor& color);
  QByteArray CharacterFormat();
  bool WritePicture(const QString& source, const QMap<QString, QString>& attributes);

  RtfWriterOptions options_;
  QByteArray body_;
  QStringList fonts_;
  QList<QColor> colors_;

  // Paragraph state. A paragraph's properties are written when its first content arrives, so
  // that a paragraph boundary without content leaves no empty paragraph behind.
  QByteArray alignment_ = "\\ql";
  bool paragraphStarted_ = false;
  ItemKind pendingItem_ = ItemKind::None;
  int itemLevel_ = 1;
  int bulletDepth_ = 0;
  int numberedCount_ = 0;

  // Table state: the row is collected and written at EndRow, because RTF wants every cell
  // boundary before the first cell's text.
  bool inRow_ = false;
  bool inCell_ = false;
  QList<int> columnWidths_;
  QList<Cell> cells_;
};

/// Converts `html` with CHTMLParser into a complete RTF document.
QByteArray HtmlToRtf(const QString& html, const RtfWriterOptions& options = {});

}  // namespace html2rtf
