#pragma once

// A CParserOut that records every call as a string, so that tests compare whole call sequences:
//
//   RecordingSink sink;
//   CHTMLParser parser("<ul><li>a</li></ul>", &sink);
//   QCOMPARE(sink.calls, QStringList({"BeginBulletList", "BulletItem", "WriteText(\"a\")",
//                                     "NewParagraph", "EndBulletList"}));
//
// A WriteText entry carries the formatting fields as they were at the call, written as the
// fields that differ from their defaults in declaration order, e.g.
// `WriteText("x") [bold size=0 color=#000000]`; a plain run has no brackets. Image and object
// entries list the attribute map in key order: `InsertImage("a.png", {alt=x, src=a.png})`.

#include <QStringList>
#include <functional>

#include "qt_util/html_parser.h"

class RecordingSink : public CParserOut {
 public:
  QStringList calls;
  // Runs after each WriteText has been recorded; lets a test change the fields mid-conversion.
  std::function<void(RecordingSink&)> afterWriteText;

  // The fields that differ from the defaults of a fresh sink, in declaration order.
  QString FormatFields() const {
    const RecordingSink fresh;
    QStringList parts;
    auto color = [](const QColor& c) { return c.name(QColor::HexArgb); };
    if (backgroundColor != fresh.backgroundColor) parts << "bg=" + color(backgroundColor);
    if (bold) parts << "bold";
    if (italic) parts << "italic";
    if (smallCaps) parts << "smallcaps";
    if (strikeOut) parts << "strike";
    if (superscript) parts << "sup";
    if (subscript) parts << "sub";
    if (inScript) parts << "script";
    if (underline) parts << "underline";
    if (fontSize != fresh.fontSize) parts << "size=" + QString::number(fontSize);
    if (fontName != fresh.fontName) parts << "name=" + fontName;
    if (textColor != fresh.textColor) parts << "color=" + color(textColor);
    return parts.join(' ');
  }

  static QString Map(const QMap<QString, QString>& map) {
    QStringList entries;
    for (auto it = map.cbegin(); it != map.cend(); ++it) entries << it.key() + "=" + it.value();
    return "{" + entries.join(", ") + "}";
  }

  void BeginBulletList() override { calls << "BeginBulletList"; }
  void EndBulletList() override { calls << "EndBulletList"; }
  void BulletItem() override { calls << "BulletItem"; }
  void NumberedItem(int number) override { calls << QString("NumberedItem(%1)").arg(number); }
  void EndNumberedList() override { calls << "EndNumberedList"; }
  void SetAlignment(const QString& alignment) override {
    calls << QString("SetAlignment(%1)").arg(alignment);
  }
  void NewParagraph() override { calls << "NewParagraph"; }
  void ResetParagraph() override { calls << "ResetParagraph"; }
  void LineBreak() override { calls << "LineBreak"; }
  void BeginRow() override { calls << "BeginRow"; }
  void EndRow() override { calls << "EndRow"; }
  void BeginCell(int span) override { calls << QString("BeginCell(%1)").arg(span); }
  void EndCell() override { calls << "EndCell"; }
  void AddColumn(int width) override { calls << QString("AddColumn(%1)").arg(width); }
  void Reserved() override { calls << "Reserved"; }
  void WriteText(const QString& text) override {
    const QString format = FormatFields();
    calls << "WriteText(\"" + text + "\")" + (format.isEmpty() ? QString() : " [" + format + "]");
    if (afterWriteText) afterWriteText(*this);
  }
  void InsertImage(const QString& source, const QMap<QString, QString>& attributes) override {
    calls << "InsertImage(\"" + source + "\", " + Map(attributes) + ")";
  }
  void InsertObject(const QString& classId, const QMap<QString, QString>& attributes) override {
    calls << "InsertObject(\"" + classId + "\", " + Map(attributes) + ")";
  }
};
