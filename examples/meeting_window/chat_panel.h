#pragma once

// The chat panel: messages arrive as rich-text HTML and are converted with CHTMLParser into a
// sink that writes them into the panel's document.

#include <QColor>
#include <QTextCursor>
#include <QTextFormat>
#include <QWidget>

#include "qt_util/html_parser.h"

class QLineEdit;
class QTextBrowser;
class QTextDocument;
class QTextList;

namespace meeting {

/// Writes the parser's calls into a QTextDocument at a cursor: text runs with the sink's
/// formatting fields, paragraphs, alignment, bullet and numbered lists, line breaks, table rows
/// as tab-separated lines, and images the document knows as resources.
class RichTextSink : public CParserOut {
 public:
  RichTextSink(QTextDocument* document, const QColor& text_color);

  void BeginBulletList() override;
  void EndBulletList() override;
  void BulletItem() override;
  void NumberedItem(int number) override;
  void EndNumberedList() override;
  void SetAlignment(const QString& alignment) override;
  void NewParagraph() override;
  void ResetParagraph() override;
  void LineBreak() override;
  void BeginRow() override;
  void EndRow() override;
  void BeginCell(int span) override;
  void EndCell() override;
  void AddColumn(int width) override;
  void WriteText(const QString& text) override;
  void InsertImage(const QString& source, const QMap<QString, QString>& attributes) override;
  void InsertObject(const QString& classId, const QMap<QString, QString>& attributes) override;

  /// Text runs written so far.
  int TextRuns() const { return text_runs_; }

 private:
  // A fresh paragraph outside any list, unless the current one is still empty.
  void StartBlock();
  void ListItem(QTextListFormat::Style style);
  // Inserts a run, with a blank before it where the parser's trimming removed one.
  void InsertRun(const QString& text, const QTextCharFormat& format);

  QTextCursor cursor_;
  QColor text_color_;
  QTextList* list_ = nullptr;
  bool first_cell_ = true;
  int text_runs_ = 0;
};

/// The chat panel: the conversation and an input line. Every message, received or typed, is
/// HTML and goes through the parser. Escape in the input line drops what was typed.
class ChatPanel : public QWidget {
  Q_OBJECT

 public:
  explicit ChatPanel(QWidget* parent = nullptr);

  /// Appends a message: the sender's name in bold, then the converted HTML.
  void ReceiveMessage(const QString& sender, const QString& html);
  /// Sets the colour of all message text, past and future. The parser reports every colour as
  /// black, so the panel takes it from the theme instead.
  void SetTextColor(const QColor& color);
  /// Registers an image that messages may show with <img src="name">; names are lower case,
  /// as the parser hands sources on lower-cased.
  void AddImage(const QString& name, const QImage& image);

  QTextDocument* Document() const;
  QLineEdit* Input() const { return input_; }
  int Messages() const { return messages_; }

 signals:
  /// The user typed a message (plain text, already sent to the panel as HTML).
  void MessageTyped(const QString& text);

 private:
  QTextBrowser* view_;
  QLineEdit* input_;
  QColor text_color_{Qt::black};
  int messages_ = 0;
};

}  // namespace meeting
