#pragma once

// The HTML conversion of CHTMLParser written down step by step with plain QString operations,
// deliberately straightforward and as slow as it likes (quadratic in places). It is the
// reference that the optimised parser is compared with, call for call, in tst_html_parser and
// in the HTML fuzz harness:
//
//   RecordingSink expected;
//   LiteralParser(&expected).Convert(html);
//   RecordingSink actual;
//   CHTMLParser parser(html, &actual);
//   // actual.calls == expected.calls, actual.FormatFields() == expected.FormatFields()
//
// Keep it obvious rather than fast: a change here should read like the rule it follows.

#include <QColor>
#include <QMap>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include "qt_util/html_parser.h"

// The straightforward form of comment removal: search both markers from the start again after
// every removal. Quadratic, but obviously right, so it serves as the reference.
inline QString ReferenceSimplify(QString html) {
  int s = html.indexOf("<!--");
  int e = html.indexOf("-->");
  while (s != -1 && e != -1 && e > s + 3) {
    html.remove(s, e - s + 3);
    s = html.indexOf("<!--");
    e = html.indexOf("-->");
  }
  return html;
}

// The conversion written down step by step with plain QString operations, as slow as it likes:
// the parser's spans, in-place cuts, hashed table and packed quote stack must give exactly the
// calls and field values this gives. Reading past the end yields NUL, as a Qt string does.
class LiteralParser {
 public:
  explicit LiteralParser(CParserOut* out) : out_(out) {}

  // The attribute map as the conversion left it.
  const QMap<QString, QString>& Attributes() const { return attributes_; }

  void Convert(const QString& html) {
    if (!out_) return;
    const QString copy = ReferenceSimplify(html);
    inUnorderedList_ = inOrderedList_ = keepAttributes_ = false;
    attributes_.clear();
    QString text;
    int pos = 0;
    while (pos < copy.size()) {
      if (copy.at(pos) != '<') {
        if (!out_->inScript) text += copy.at(pos);
        ++pos;
      } else {
        WriteText(text);
        ParseTag(copy, pos);
      }
    }
    WriteText(text);
  }

  static void GetTag(QString& tag, const QString& html, int& pos) {
    QChar c = At(html, pos++);
    QString quotes;
    for (;;) {
      if (c == '"' || c == '\'') {
        if (!quotes.isEmpty() && quotes.back() == c) {
          quotes.chop(1);
        } else {
          quotes += c;
        }
      }
      tag += c;
      c = At(html, pos++);
      if (quotes.isEmpty() && c == '>') break;
      if (pos >= html.size()) break;
    }
  }

  void ProcessArg(QString& args, QString& tag) {
    if (!tag.contains(' ')) {
      tag = tag.mid(1);
      return;
    }
    args = tag.mid(tag.indexOf(' ') + 1);
    args.replace("\r\n", " ");
    ParseAttributes(args);
    if (!args.contains('"') && !args.isEmpty() && args.endsWith('/')) {
      args.clear();
      tag = tag.mid(1, tag.size() - 3);
    } else {
      args = args.left(args.indexOf('"'));
      tag = tag.mid(1, tag.indexOf(' ') - 1);
    }
  }

  QMap<QString, QString> attributes_;

 private:
  static QChar At(const QString& text, int i) {
    return i >= 0 && i < text.size() ? text.at(i) : QChar();
  }

  static QString NextPiece(const QString& args, int& p) {
    if (p < 0 || p >= args.size()) {
      p = -1;
      return QString();
    }
    const int space = args.indexOf(' ', p);
    const QString piece = space < 0 ? args.mid(p) : args.mid(p, space - p);
    p = space < 0 ? -1 : space + 1;
    return piece;
  }

  void ParseAttributes(const QString& args) {
    static const QRegularExpression leadingQuotes("^[\"']+");
    static const QRegularExpression trailingQuotes("[\"']+$");
    int p = 0;
    QString token;
    do {
      token = NextPiece(args, p);
      while (p > 1 && args.at(p - 2) != '"' && args.at(p - 2) != '\'') {
        token += ' ' + NextPiece(args, p);
      }
      const int equals = token.indexOf('=');
      if (equals >= 0) {
        QString value = token.mid(equals + 1).trimmed();
        value.remove(leadingQuotes);
        value.remove(trailingQuotes);
        attributes_[token.left(equals).trimmed().toLower()] = value.toLower();
      }
    } while (!token.isEmpty() && p >= 0);
  }

  void ParseTag(const QString& html, int& pos) {
    if (!keepAttributes_) attributes_.clear();
    QString raw;
    GetTag(raw, html, pos);
    QString tag = raw;
    const bool isClose = At(tag, 1) == '/';
    if (isClose) tag = tag.mid(1);
    QString args;
    ProcessArg(args, tag);
    Dispatch(tag.toLower(), args, isClose);
  }

  void WriteText(QString& text) {
    if (text.isEmpty()) return;
    QString decoded = text.trimmed();
    decoded.remove('\r');
    decoded.remove('\n');
    decoded.replace("&nbsp;", " ");
    decoded.replace("&amp;", "&");
    decoded.replace("&lt;", "<");
    decoded.replace("&gt;", ">");
    decoded.replace("&quot;", "\"");
    decoded.replace("&#39;", "'");
    if (!decoded.isEmpty() && out_ && enabled_) out_->WriteText(decoded);
    text.clear();
  }

  void Dispatch(const QString& tag, const QString& args, bool isClose) {
    CParserOut* on = enabled_ ? out_ : nullptr;
    const bool open = !isClose;
    if (tag == "font bgcolor") {
      out_->backgroundColor = QColor("black");
      fontStack_ << "bgcolor";
    } else if (tag == "ul") {
      if (on) open ? on->BeginBulletList() : on->EndBulletList();
      inUnorderedList_ = open;
    } else if (tag == "ol") {
      if (on && isClose) on->EndNumberedList();
      inOrderedList_ = open;
    } else if (tag == "li") {
      if (on && isClose) on->NewParagraph();
      if (on && open && inUnorderedList_) on->BulletItem();
      if (on && open && !inUnorderedList_ && inOrderedList_) on->NumberedItem(1);
    } else if (tag == "b") {
      out_->bold = open;
    } else if (tag == "font size") {
      out_->fontSize = args.toInt();
      fontStack_ << "size";
    } else if (tag == "font name") {
      out_->fontName = args;
      fontStack_ << "name";
    } else if (tag == "font color") {
      out_->textColor = QColor("black");
      fontStack_ << "color";
    } else if (tag == "img" || tag == "image" || tag == "embed" || tag == "v:imagedata") {
      const QString source = attributes_["src"];
      if (on) on->InsertImage(source, attributes_);
    } else if (tag == "i") {
      out_->italic = open;
    } else if (tag == "sc") {
      out_->smallCaps = open;
    } else if (tag == "strike") {
      out_->strikeOut = open;
    } else if (tag == "div align") {
      const QString value = args.toLower();
      if (on) {
        on->SetAlignment(value == "right"     ? "Right"
                         : value == "center"  ? "Center"
                         : value == "justify" ? "Justify"
                                              : "Left");
      }
    } else if (tag == "center") {
      if (on) on->SetAlignment("Center");
    } else if (tag == "sub") {
      out_->subscript = open;
    } else if (tag == "sup") {
      out_->superscript = open;
    } else if (tag == "script") {
      out_->inScript = open;
    } else if (tag == "u") {
      out_->underline = open;
    } else if (tag == "div") {
      if (on && open) on->NewParagraph();
    } else if (tag == "pard") {
      if (on) on->ResetParagraph();
    } else if (tag == "br") {
      if (on) on->LineBreak();
    } else if (tag == "font") {
      if (fontStack_.isEmpty()) return;
      const QString name = fontStack_.takeLast();
      if (name == "color") out_->textColor = QColor("black");
      if (name == "bgcolor") out_->backgroundColor = QColor("white");
      if (name == "size") out_->fontSize = 9;
      if (name == "name") out_->fontName = "Tahoma";
    } else if (tag == "table") {
      if (on) on->NewParagraph();
    } else if (tag == "tr cols") {
      if (on && open) {
        on->BeginRow();
        for (int i = 1; i <= args.toInt(); ++i) on->AddColumn(2000);
      }
    } else if (tag == "tr") {
      if (on && isClose) on->EndRow();
    } else if (tag == "td" || tag == "object") {
      if (on) open ? on->BeginCell(1) : on->EndCell();
    } else if (tag == "head") {
      enabled_ = false;
    } else if (tag == "body") {
      enabled_ = open;
    }
  }

  CParserOut* out_;
  QStringList fontStack_;
  bool inUnorderedList_ = false;
  bool inOrderedList_ = false;
  // Only an opening object would set it, and the table sends objects to the cell handler.
  bool keepAttributes_ = false;
  bool enabled_ = true;
};
