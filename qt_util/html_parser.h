#pragma once

/// @file
/// CHTMLParser, rich-text HTML into calls on a CParserOut sink.

#include <QColor>
#include <QMap>
#include <QString>
#include <memory>

#include "qt_util/qt_util_export.h"

/// The formatting sink that CHTMLParser writes into. The parser sets the public formatting
/// fields directly as it meets formatting tags and calls the operations for structure, text,
/// images and objects; the sink reads the fields when WriteText is called. Implemented by the
/// client; the library ships no implementation. Operations are only called while the parser's
/// output is enabled: \<head>, \</head> and \</body> turn it off until the next opening \<body>.
/// The fields are written either way.
class QT_UTIL_EXPORT CParserOut {
 public:
  /// Sinks are deleted through this interface.
  virtual ~CParserOut() = default;

  /// The background colour a sink starts with and a closing \</font> restores.
  static constexpr Qt::GlobalColor kDefaultBackgroundColor = Qt::white;
  /// The font size a sink starts with and a closing \</font> restores.
  static constexpr int kDefaultFontSize = 9;
  /// The font name a sink starts with and a closing \</font> restores.
  static constexpr const char* kDefaultFontName = "Tahoma";
  /// The text colour a sink starts with and a closing \</font> restores.
  static constexpr Qt::GlobalColor kDefaultTextColor = Qt::black;

  // Formatting state at the next WriteText.
  /// Set by a "bgcolor" font attribute (always to black), kDefaultBackgroundColor again after its
  /// \</font>.
  QColor backgroundColor{kDefaultBackgroundColor};
  /// Inside \<b>.
  bool bold = false;
  /// Inside \<i>.
  bool italic = false;
  /// Inside \<sc>.
  bool smallCaps = false;
  /// Inside \<strike>.
  bool strikeOut = false;
  /// Inside \<sup>.
  bool superscript = false;
  /// Inside \<sub>.
  bool subscript = false;
  /// Inside \<script>.
  bool inScript = false;  // text inside <script> is dropped by the parser while set
  /// Inside \<u>.
  bool underline = false;
  /// Set by a "size" font attribute (decimal, 0 when not a number), kDefaultFontSize again after
  /// its \</font>.
  int fontSize = kDefaultFontSize;
  /// Set by a "name" font attribute, kDefaultFontName again after its \</font>.
  QString fontName{QLatin1String(kDefaultFontName)};
  /// Set by a "color" font attribute (always to black), kDefaultTextColor again after its
  /// \</font>.
  QColor textColor{kDefaultTextColor};

  /// An opening \<ul>.
  virtual void BeginBulletList() = 0;
  /// A closing \</ul>.
  virtual void EndBulletList() = 0;
  /// An opening \<li> inside a \<ul>.
  virtual void BulletItem() = 0;
  /// `number` is always 1: the sink keeps its own count.
  virtual void NumberedItem(int number) = 0;
  /// A closing \</ol>; an opening \<ol> has no call of its own.
  virtual void EndNumberedList() = 0;
  /// `alignment` is one of "Left", "Right", "Center", "Justify".
  virtual void SetAlignment(const QString& alignment) = 0;
  /// A closing \</li>, an opening \<div>, and \<table> or \</table>.
  virtual void NewParagraph() = 0;
  /// A \<pard> tag, opening or closing.
  virtual void ResetParagraph() = 0;
  /// A \<br> tag.
  virtual void LineBreak() = 0;
  /// An opening "tr cols" tag (see CHTMLParser::ProcessTrCols), before its AddColumn calls.
  virtual void BeginRow() = 0;
  /// A closing \</tr>.
  virtual void EndRow() = 0;
  /// `span` is always 1.
  virtual void BeginCell(int span) = 0;
  /// A closing \</td> (or \</object>, laid out as a cell).
  virtual void EndCell() = 0;
  /// Called once per column right after BeginRow; `width` is always 2000.
  virtual void AddColumn(int width) = 0;
  /// Never called by the parser; it holds its place between AddColumn and WriteText so that the
  /// order of the operations stays fixed. Does nothing unless a sink gives it a meaning.
  virtual void Reserved() {}
  /// `text` is never empty and holds no "\r" or "\n". Surrounding white space is trimmed before
  /// the few entities are decoded, so a decoded "&nbsp;" can still stand at either end.
  virtual void WriteText(const QString& text) = 0;
  /// `source` is the lower-cased "src" attribute (empty when absent); `attributes` holds every
  /// attribute of the tag, keys and values lower-cased, and always a "src" entry.
  virtual void InsertImage(const QString& source, const QMap<QString, QString>& attributes) = 0;
  /// `classId` is the "classid" attribute without its "clsid:" prefix. Only a direct call of
  /// CHTMLParser::ProcessObject leads here: a conversion lays objects out as table cells.
  virtual void InsertObject(const QString& classId, const QMap<QString, QString>& attributes) = 0;
};

/// Converts a fragment of rich-text HTML into calls on a CParserOut. Constructing the parser is
/// the whole conversion; the object has no use afterwards. It is a flat, single-pass tag walker,
/// not a DOM parser: unknown tags are ignored, unmatched and truncated tags are absorbed, and
/// nothing is ever reported as an error. A null sink makes the conversion a no-op.
/// Runs in time linear in the length of the input.
class QT_UTIL_EXPORT CHTMLParser {
 public:
  /// Runs ProcessHTML(html) into `out` (not owned; must outlive the parser).
  CHTMLParser(const QString& html, CParserOut* out);
  /// Leaves the sink alone.
  ~CHTMLParser();
  /// Not copyable: the object is one conversion's state (formatting stack, list flags, attribute
  /// map), which a second owner has no use for.
  CHTMLParser(const CHTMLParser&) = delete;
  /// Not copyable, like the copy constructor.
  CHTMLParser& operator=(const CHTMLParser&) = delete;

  /// True when `html` holds an image, embed or object tag ("<img", "<IMG", "<image", "<IMAGE",
  /// "<object", "<OBJECT", "<embed", "<EMBED", case-sensitive), i.e. when it is worth parsing
  /// for more than its text.
  static bool IsValidParser(const QString& html);

  /// The main loop: comments out, then text runs and tags left to right. Nothing when the sink
  /// is null.
  void ProcessHTML(const QString& html);
  /// Removes "<!-- ... -->" comments in place, each up to the first "-->" of the text. Stops,
  /// leaving the rest untouched, once that "-->" does not come after the first "<!--" (or either
  /// is missing).
  void SimplifyHTML(QString& html);
  /// Reads the tag at `pos` (which stands on "<"), dispatches it, and leaves `pos` behind it.
  void ParseTagFromHTML(QString& html, int& pos);
  /// Appends the raw tag at `pos` to `tag`: "<" and its text without the closing ">". A ">"
  /// inside quotes does not end it. A tag that runs to the end of the text loses its last
  /// character. A `pos` outside the text appends nothing and moves `pos` to the end.
  void GetTagFromHTML(QString& tag, const QString& html, int& pos);
  /// Splits a raw tag into its table key (left in `tag`) and its argument text (left in `args`),
  /// and parses the attributes into the attribute map.
  void ProcessArg(QString& args, QString& tag);
  /// Decodes and emits one text run, then empties it.
  void WriteText(QString& text);

  /// Always black, whatever `value` holds.
  QColor ParseColor(QString value);
  /// \<ul>: BeginBulletList, and bullets for the items that follow; \</ul>: EndBulletList.
  void ProcessUl(bool isClose);
  /// \<ol>: numbers for the items that follow (no call); \</ol>: EndNumberedList.
  void ProcessOl(bool isClose);
  /// \<li>: BulletItem in a bullet list, else NumberedItem(1) in a numbered list, else nothing;
  /// \</li>: NewParagraph.
  void ProcessLi(bool isClose);
  /// \<div>: NewParagraph; \</div>: nothing.
  void ProcessDiv(bool isClose);
  /// SetAlignment with "Right", "Center" or "Justify" when `value` names one (any case), else
  /// "Left".
  void ProcessDivAlign(const QString& value);
  /// Restores the most recently set font attribute to its default.
  void ProcessFont();
  /// Opening: BeginRow, then AddColumn(2000) once per column counted by `value` (decimal, 0 when
  /// not a number). A conversion only ever passes an empty `value`.
  void ProcessTrCols(bool isClose, const QString& value);
  /// \</tr>: EndRow; an opening \<tr> calls nothing (only a "tr cols" tag begins a row).
  void ProcessTr(bool isClose);
  /// \<td>: BeginCell(1); \</td>: EndCell.
  void ProcessTd(bool isClose);
  /// Not reachable from a conversion: the tag table routes "object" to ProcessTd.
  void ProcessObject(bool isClose);

 private:
  class Private;
  // The state lives behind this pointer so that the conversion can change without changing
  // this header.
  std::unique_ptr<Private> d_;
};
