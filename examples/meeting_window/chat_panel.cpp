#include "chat_panel.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTextList>
#include <QUrl>
#include <QVBoxLayout>

#include "qt_util/event_handler/event_observer.h"
#include "qt_util/string_utils.h"
#include "qt_util/ui_util.h"

namespace meeting {

namespace {

// The parser's defaults: a field still holding one was not set by the message.
constexpr int kParserDefaultSize = 9;
const QString kParserDefaultFont = QStringLiteral("Tahoma");

bool StartsWithClosingPunctuation(const QString& text) {
  return !text.isEmpty() && QStringLiteral(".,;:!?)]").contains(text.at(0));
}

}  // namespace

RichTextSink::RichTextSink(QTextDocument* document, const QColor& text_color)
    : cursor_(document), text_color_(text_color) {
  cursor_.movePosition(QTextCursor::End);
}

void RichTextSink::StartBlock() {
  if (cursor_.block().length() > 1) cursor_.insertBlock(QTextBlockFormat(), QTextCharFormat());
  // An empty block may still belong to the list of the item before it.
  if (QTextList* list = cursor_.currentList()) list->remove(cursor_.block());
  cursor_.setBlockFormat(QTextBlockFormat());
}

void RichTextSink::ListItem(QTextListFormat::Style style) {
  StartBlock();
  if (list_ && list_->format().style() == style) {
    list_->add(cursor_.block());
  } else {
    list_ = cursor_.createList(style);
  }
}

void RichTextSink::BeginBulletList() {
  list_ = nullptr;
}

void RichTextSink::EndBulletList() {
  list_ = nullptr;
  StartBlock();
}

void RichTextSink::BulletItem() {
  ListItem(QTextListFormat::ListDisc);
}

// The parser always passes 1; the list numbers its own items.
void RichTextSink::NumberedItem(int) {
  ListItem(QTextListFormat::ListDecimal);
}

void RichTextSink::EndNumberedList() {
  list_ = nullptr;
  StartBlock();
}

void RichTextSink::SetAlignment(const QString& alignment) {
  QTextBlockFormat format = cursor_.blockFormat();
  if (alignment == QLatin1String("Right")) {
    format.setAlignment(Qt::AlignRight);
  } else if (alignment == QLatin1String("Center")) {
    format.setAlignment(Qt::AlignHCenter);
  } else if (alignment == QLatin1String("Justify")) {
    format.setAlignment(Qt::AlignJustify);
  } else {
    format.setAlignment(Qt::AlignLeft);
  }
  cursor_.setBlockFormat(format);
}

void RichTextSink::NewParagraph() {
  StartBlock();
}

void RichTextSink::ResetParagraph() {
  cursor_.setBlockFormat(QTextBlockFormat());
}

void RichTextSink::LineBreak() {
  cursor_.insertText(QString(QChar::LineSeparator));
}

void RichTextSink::BeginRow() {
  StartBlock();
  first_cell_ = true;
}

void RichTextSink::EndRow() {
  StartBlock();
}

// Cells of a row become tab-separated runs of one line: a chat line has no room for a table.
void RichTextSink::BeginCell(int) {
  if (!first_cell_) cursor_.insertText(QStringLiteral("\t"));
  first_cell_ = false;
}

void RichTextSink::EndCell() {}

void RichTextSink::AddColumn(int) {}

void RichTextSink::WriteText(const QString& text) {
  QTextCharFormat format;
  format.setFontWeight(bold ? QFont::Bold : QFont::Normal);
  format.setFontItalic(italic);
  format.setFontUnderline(underline);
  format.setFontStrikeOut(strikeOut);
  format.setFontCapitalization(smallCaps ? QFont::SmallCaps : QFont::MixedCase);
  if (superscript) format.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
  if (subscript) format.setVerticalAlignment(QTextCharFormat::AlignSubScript);
  if (fontSize != kParserDefaultSize && fontSize > 0) format.setFontPointSize(fontSize);
  if (fontName != kParserDefaultFont) format.setFontFamilies({fontName});
  format.setForeground(text_color_);
  InsertRun(text, format);
  ++text_runs_;
}

void RichTextSink::InsertRun(const QString& text, const QTextCharFormat& format) {
  // The parser trims every run, so the blank between two runs of one line is gone: put one
  // back, except before closing punctuation.
  const QString block_text = cursor_.block().text();
  const bool needs_blank = !block_text.isEmpty() && !block_text.back().isSpace() &&
                           block_text.back() != QChar::LineSeparator &&
                           !StartsWithClosingPunctuation(text);
  if (needs_blank) {
    // The blank belongs to neither run: no underline or strike-out across it.
    QTextCharFormat blank;
    blank.setForeground(text_color_);
    cursor_.insertText(QStringLiteral(" "), blank);
  }
  cursor_.insertText(text, format);
}

void RichTextSink::InsertImage(const QString& source, const QMap<QString, QString>&) {
  QTextDocument* document = cursor_.document();
  if (!source.isEmpty() &&
      document->resource(QTextDocument::ImageResource, QUrl(source)).isValid()) {
    InsertRun(QString(), QTextCharFormat());
    cursor_.insertImage(source);
  } else {
    qWarning("chat: no image \"%s\"", qUtf8Printable(source));
    InsertRun(QStringLiteral("[image %1]").arg(source), QTextCharFormat());
  }
}

void RichTextSink::InsertObject(const QString& classId, const QMap<QString, QString>&) {
  cursor_.insertText(QStringLiteral("[object %1]").arg(classId));
}

ChatPanel::ChatPanel(QWidget* parent)
    : QWidget(parent), view_(new QTextBrowser(this)), input_(new QLineEdit(this)) {
  setObjectName(QStringLiteral("chat_panel"));
  view_->setObjectName(QStringLiteral("chat_view"));
  view_->setAccessibleName(tr("Chat messages"));
  view_->setOpenLinks(false);
  input_->setObjectName(QStringLiteral("chat_input"));
  input_->setPlaceholderText(tr("Type a message"));
  VxQtUiUtil::SetAccessibleKey(input_, QString());
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(view_, 1);
  layout->addWidget(input_);
  connect(input_, &QLineEdit::returnPressed, this, [this] {
    const QString typed = input_->text();
    if (typed.trimmed().isEmpty()) return;
    input_->clear();
    QString html = typed;
    QTStringUtils::HtmlEncode(html);
    ReceiveMessage(tr("Me"), html);
    emit MessageTyped(typed);
  });
  // Escape drops a half-typed message. The input is a stock line edit, so the panel listens to
  // its events rather than subclassing it; the listening ends when either of them goes.
  QtEventObserver::ListenEvent(input_, this, [this](QObject*, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return false;
    if (static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape || input_->text().isEmpty()) {
      return false;
    }
    input_->clear();
    return true;
  });
}

void ChatPanel::ReceiveMessage(const QString& sender, const QString& html) {
  QTextDocument* document = view_->document();
  RichTextSink sink(document, text_color_);
  if (!document->isEmpty()) sink.NewParagraph();
  sink.bold = true;
  sink.WriteText(sender + QLatin1Char(':'));
  sink.bold = false;
  sink.NewParagraph();
  CHTMLParser(html, &sink);
  ++messages_;
  view_->verticalScrollBar()->setValue(view_->verticalScrollBar()->maximum());
}

void ChatPanel::AddImage(const QString& name, const QImage& image) {
  view_->document()->addResource(QTextDocument::ImageResource, QUrl(name), image);
}

void ChatPanel::SetTextColor(const QColor& color) {
  text_color_ = color;
  QTextCursor all(view_->document());
  all.select(QTextCursor::Document);
  QTextCharFormat format;
  format.setForeground(color);
  all.mergeCharFormat(format);
}

QTextDocument* ChatPanel::Document() const {
  return view_->document();
}

}  // namespace meeting
