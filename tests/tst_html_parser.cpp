#include <QRandomGenerator>
#include <QtTest>

#include "qt_util/html_parser.h"
#include "support/literal_html_parser.h"
#include "support/recording_sink.h"

namespace {

QStringList Convert(const QString& html) {
  RecordingSink sink;
  CHTMLParser parser(html, &sink);
  return sink.calls;
}

QString Text(const QString& text, const QString& format = QString()) {
  return "WriteText(\"" + text + "\")" + (format.isEmpty() ? QString() : " [" + format + "]");
}

const QString kBlack = QColor(Qt::black).name(QColor::HexArgb);
const QString kRed = QColor(Qt::red).name(QColor::HexArgb);

QString Simplify(const QString& html) {
  CHTMLParser parser(QString(), nullptr);
  QString copy = html;
  parser.SimplifyHTML(copy);
  return copy;
}

// Random text from pieces that make tags, attributes, quotes, entities, comments and their
// broken forms frequent: loose pieces mixed with tags built from a name of the table (or not),
// attribute pieces and an optional self-closing end.
QString GeneratedHtml(QRandomGenerator& random, int maxPieces) {
  static const QStringList loose = {
      "<",    ">",      "/",     " ",      "  ",
      "\"",   "'",      "=",     "\r\n",   "\n",
      "\t",   "&amp;",  "&lt;",  "&nbsp;", "&",
      "lt;",  "amp;",   "nbsp;", "#39;",   "<!--",
      "-->",  "a",      "Z",     "x y",    QString::fromUtf8("\xc3\x84\xc4\xb0"),
      "&gt;", "&quot;", "&#39;", "gt;",    "quot;"};
  static const QStringList names = {
      "b",      "I",   "u",       "sc",         "strike",      "sub",       "sup",
      "script", "ul",  "ol",      "li",         "div",         "div align", "center",
      "pard",   "br",  "font",    "font color", "font size",   "font name", "FONT BGCOLOR",
      "table",  "tr",  "tr cols", "td",         "object",      "param",     "head",
      "body",   "IMG", "image",   "embed",      "v:imagedata", "x-tag",     ""};
  static const QStringList attributes = {" ",
                                         "  ",
                                         "\r\n",
                                         " /",
                                         "/",
                                         " src=a.png",
                                         " SRC='A.png'",
                                         " src=\"x y\"",
                                         " alt=\"a'b\"",
                                         " a=\"1\"",
                                         " cols=3",
                                         " align=right",
                                         " face=Times New",
                                         " x",
                                         "=",
                                         "\"",
                                         "'",
                                         ">"};
  const int count = random.bounded(0, maxPieces);
  QString html;
  for (int i = 0; i < count; ++i) {
    if (random.bounded(2)) {
      html += loose.at(random.bounded(loose.size()));
      continue;
    }
    html += random.bounded(3) ? "<" : "</";
    html += names.at(random.bounded(names.size()));
    for (int a = random.bounded(0, 4); a > 0; --a)
      html += attributes.at(random.bounded(attributes.size()));
    if (random.bounded(3) == 0) html += " /";
    if (random.bounded(6)) html += ">";
  }
  return html;
}

}  // namespace

class tst_HtmlParser : public QObject {
  Q_OBJECT

 private slots:
  // Text decoding
  void text_ampersandLt_isDecodedTwice();
  void text_entities_decodeInFixedOrder_data();
  void text_entities_decodeInFixedOrder();
  void text_whitespaceOnlyRun_emitsNothing_data();
  void text_whitespaceOnlyRun_emitsNothing();
  void text_lineBreaksDroppedInnerSpacesKept();
  void text_strayGreaterThan_isText();
  void text_isTrimmedAroundEveryTag();
  void writeText_emptiesTextEvenWithoutSink();

  // Comments
  void comment_isRemovedBeforeParsing();
  void comment_endBeforeStart_stopsRemoval_data();
  void comment_endBeforeStart_stopsRemoval();
  void comment_markersJoinedByRemoval_areRemovedToo();
  void comment_megabyteOfComments_finishes();
  void simplify_matchesRepeatedSearch_onGeneratedInputs();

  // Tag reading
  void tagName_isLowerCased();
  void tag_quotedGreaterThan_doesNotEndTag();
  void tag_nestedQuotes_innerMustCloseFirst();
  void tag_deepQuoteNesting_closesInReverseOrder();
  void tag_unterminatedAtEnd_losesLastCharacter();
  void tag_loneLessThanAtEnd_readsNul();
  void tag_crlfInsideTag();
  void tag_unknown_emitsNothingAndKeepsState();
  void tag_slashWithoutSpace_isUnknown();
  void getTagFromHtml_data();
  void getTagFromHtml();
  void processArg_data();
  void processArg();

  // Attributes
  void attributes_unquotedValue_joinsFollowingPieces();
  void attributes_quotedValueWithSpaces_staysWhole();
  void attributes_keysAndValuesLowerCased();
  void attributes_laterDuplicateOverwrites();
  void attributes_withoutEquals_isIgnored();
  void attributes_leadingDoubleSpace_endsParsing();
  void attributes_valueKeepsInnerEquals();

  // Handlers
  void flags_setOnOpenClearOnClose_data();
  void flags_setOnOpenClearOnClose();
  void flags_haveNoNestingCount();
  void orderedList_numberedItemsWithoutOpeningCall();
  void unorderedList_bulletItems();
  void listItem_outsideList_onlyClosingCall();
  void listItem_inBothLists_bulletWins();
  void fontColorSelfClosing_setsBlackAndPushes();
  void fontColor_closeRestoresBlack();
  void twoFontAttributes_oneCloseRestoresTheLater();
  void fontAttributeStack_popsInReverseOrder();
  void fontSizeAndName_selfClosing();
  void font_closeWithEmptyStack_changesNothing();
  void sink_startsAtTheDefaultsThatFontRestores();
  void divAlignSelfClosing_alignsLeft();
  void divWithAlignAttribute_isPlainDiv();
  void processDivAlign_data();
  void processDivAlign();
  void centerPardBrTable_openAndClose();
  void selfClosingBr_isLineBreak();
  void trColsSelfClosing_beginsRowWithoutColumns();
  void trColsWithValue_isPlainTr();
  void processTrCols_addsOneColumnPerCount();
  void tableRowsAndCells();
  void imgSingleQuotedSource_isLowerCased();
  void imageAliases_allInsertImages_data();
  void imageAliases_allInsertImages();
  void image_withoutSource_passesEmptySource();
  void script_textIsDropped();
  void script_lessThanInside_swallowsClosingTag();
  void object_isHandledAsCell();
  void processObject_collectsParamAttributes();
  void processObject_withoutClassId_insertsNothing();
  void parseColor_isAlwaysBlack();

  // Output switch
  void head_suppressesTitleText();
  void head_suppressesSinkCallsButListFlagsChange();
  void headClose_doesNotReenableOutput();
  void bodyClose_disablesOutput();
  void processHtmlAgain_resetsListFlagsButNotOutput();

  // Whole conversions
  void isValidParser_data();
  void isValidParser();
  void nullSink_doesNothing();
  void chatMessage_fullSequence();
  void deepNestingAndManyUnknownTags();
  void conversion_matchesLiteralSteps_onGeneratedInputs();
  void conversion_matchesLiteralSteps_onBlockLongInputs();
  void conversion_matchesLiteralSteps_onLongCommentedInputs();
  void tagReading_matchesLiteralSteps_onGeneratedInputs();
};

// ---------------------------------------------------------------------------------------------
// Text decoding

void tst_HtmlParser::text_ampersandLt_isDecodedTwice() {
  QCOMPARE(Convert("a &amp;lt; b"), QStringList{Text("a < b")});
}

void tst_HtmlParser::text_entities_decodeInFixedOrder_data() {
  QTest::addColumn<QString>("html");
  QTest::addColumn<QString>("text");
  QTest::newRow("nbsp") << "a&nbsp;&nbsp;b"
                        << "a  b";
  QTest::newRow("nbsp alone is not trimmed away") << "&nbsp;"
                                                  << " ";
  QTest::newRow("all six") << "&lt;&gt;&quot;&#39;&amp;"
                           << "<>\"'&";
  QTest::newRow("amp then quot") << "&amp;quot;"
                                 << "\"";
  QTest::newRow("amp then #39") << "&amp;#39;"
                                << "'";
  QTest::newRow("amp then gt") << "&amp;gt;"
                               << ">";
  QTest::newRow("nbsp is decoded before amp") << "&amp;nbsp;"
                                              << "&nbsp;";
  QTest::newRow("amp is not rescanned") << "&amp;amp;"
                                        << "&amp;";
  QTest::newRow("markup as text") << "&lt;b&gt;x&lt;/b&gt;"
                                  << "<b>x</b>";
  QTest::newRow("other entities stay") << "&copy; &#60; &apos; &AMP;"
                                       << "&copy; &#60; &apos; &AMP;";
  QTest::newRow("unterminated") << "&amp &lt"
                                << "&amp &lt";
  QTest::newRow("amp then amp then lt") << "&amp;amp;lt;"
                                        << "&amp;lt;";
  QTest::newRow("decoded amp before an entity") << "&amp;&lt;&amp;&amp;gt;"
                                                << "&<&>";
  QTest::newRow("decoded amp before nbsp") << "&amp;&nbsp;"
                                           << "& ";
  QTest::newRow("entity joined by a removed line break") << "&am\r\np;l\nt;"
                                                         << "<";
  QTest::newRow("ampersand runs") << "&&&amp;&&lt;&"
                                  << "&&&&<&";
}

void tst_HtmlParser::text_entities_decodeInFixedOrder() {
  QFETCH(QString, html);
  QFETCH(QString, text);
  QCOMPARE(Convert(html), QStringList{Text(text)});
}

void tst_HtmlParser::text_whitespaceOnlyRun_emitsNothing_data() {
  QTest::addColumn<QString>("html");
  QTest::addColumn<QStringList>("calls");
  QTest::newRow("spaces") << "    " << QStringList();
  QTest::newRow("line breaks") << "\r\n\n\r" << QStringList();
  QTest::newRow("tabs and breaks") << " \t\r\n \t" << QStringList();
  QTest::newRow("around a tag") << "  \n<br>\r\n  " << QStringList{"LineBreak"};
}

void tst_HtmlParser::text_whitespaceOnlyRun_emitsNothing() {
  QFETCH(QString, html);
  QFETCH(QStringList, calls);
  QCOMPARE(Convert(html), calls);
}

void tst_HtmlParser::text_lineBreaksDroppedInnerSpacesKept() {
  QCOMPARE(Convert(" a  \t b\r\nc\nd\re  "), QStringList{Text("a  \t bcde")});
}

void tst_HtmlParser::text_strayGreaterThan_isText() {
  QCOMPARE(Convert("a > b >"), QStringList{Text("a > b >")});
}

void tst_HtmlParser::text_isTrimmedAroundEveryTag() {
  QCOMPARE(Convert("one <br> two <unknown> three"),
           QStringList({Text("one"), "LineBreak", Text("two"), Text("three")}));
}

void tst_HtmlParser::writeText_emptiesTextEvenWithoutSink() {
  RecordingSink sink;
  CHTMLParser parser("<head>", &sink);
  QString text = " &amp; ";
  parser.WriteText(text);
  QVERIFY(text.isEmpty());
  QVERIFY(sink.calls.isEmpty());

  CHTMLParser detached(QString(), nullptr);
  text = "x";
  detached.WriteText(text);
  QVERIFY(text.isEmpty());
}

// ---------------------------------------------------------------------------------------------
// Comments

void tst_HtmlParser::comment_isRemovedBeforeParsing() {
  QCOMPARE(Convert("x<!-- c -->y"), QStringList{Text("xy")});
  QCOMPARE(Convert("x<!-- <b> -->y"), QStringList{Text("xy")});
}

void tst_HtmlParser::comment_endBeforeStart_stopsRemoval_data() {
  QTest::addColumn<QString>("html");
  QTest::addColumn<QString>("simplified");
  QTest::addColumn<QStringList>("calls");
  QTest::newRow("end marker first")
      << "a --> b <!-- c --> d"
      << "a --> b <!-- c --> d" << QStringList({Text("a --> b"), Text("d")});
  QTest::newRow("first removed, then end first")
      << "x<!--1-->y-->z<!--2-->w"
      << "xy-->z<!--2-->w" << QStringList({Text("xy-->z"), Text("w")});
  QTest::newRow("unterminated second") << "x<!-- a -->y<!-- b"
                                       << "xy<!-- b" << QStringList{Text("xy")};
  QTest::newRow("markers overlap") << "a<!-->b-->c"
                                   << "a<!-->b-->c" << QStringList({Text("a"), Text("b-->c")});
  QTest::newRow("shortest comment") << "a<!---->b"
                                    << "ab" << QStringList{Text("ab")};
}

void tst_HtmlParser::comment_endBeforeStart_stopsRemoval() {
  QFETCH(QString, html);
  QFETCH(QString, simplified);
  QFETCH(QStringList, calls);
  QCOMPARE(Simplify(html), simplified);
  QCOMPARE(ReferenceSimplify(html), simplified);
  QCOMPARE(Convert(html), calls);
}

void tst_HtmlParser::comment_markersJoinedByRemoval_areRemovedToo() {
  // Removing the inner comment joins "<!" and "--" into a new start marker.
  QCOMPARE(Simplify("a<!<!--x-->--b-->c"), QString("ac"));
  // A removal that joins "-" and "->" makes an end marker in front of the next comment, which
  // then stops the removal.
  QCOMPARE(Simplify("a-<!--x-->->b<!--y-->c"), QString("a-->b<!--y-->c"));
}

void tst_HtmlParser::comment_megabyteOfComments_finishes() {
  QString html;
  html.reserve(1000000);
  for (int i = 0; i < 100000; ++i) html += "<!--ab-->x";
  QCOMPARE(html.size(), 1000000);
  QCOMPARE(Convert(html), QStringList{Text(QString(100000, 'x'))});
}

void tst_HtmlParser::simplify_matchesRepeatedSearch_onGeneratedInputs() {
  QRandomGenerator random(20240611);
  int withRemovals = 0;
  // `rounds` texts of fewer than `maxCount` pieces each, compared with the reference.
  auto compareOn = [&](const QStringList& pieces, int rounds, int maxCount) {
    for (int round = 0; round < rounds; ++round) {
      const int count = random.bounded(0, maxCount);
      QString html;
      for (int i = 0; i < count; ++i) html += pieces.at(random.bounded(pieces.size()));
      const QString expected = ReferenceSimplify(html);
      withRemovals += expected != html;
      QCOMPARE(Simplify(html), expected);
    }
  };
  // A small alphabet makes markers, partial markers and joins across removals frequent.
  compareOn({"<", "!", "-", ">", "a"}, 50000, 48);
  if (QTest::currentTestFailed()) return;
  // Built from whole markers, so that long chains of removals happen.
  compareOn({"<!--", "-->", "<!", "--", "->", "-", "a", "<", ">"}, 20000, 30);
  if (QTest::currentTestFailed()) return;
  // The same with runs of plain text between them, read a block at a time, and markers cut by
  // the blocks' edges.
  compareOn({"<!--", "-->", "<!", "--", "-", "<", ">", "plain text ", "!", "0123456789abcdef"},
            20000, 40);
  if (QTest::currentTestFailed()) return;
  QVERIFY2(withRemovals > 1000, qPrintable(QString::number(withRemovals)));
}

// ---------------------------------------------------------------------------------------------
// Tag reading

void tst_HtmlParser::tagName_isLowerCased() {
  RecordingSink sink;
  CHTMLParser parser("<b>bold</B>after", &sink);
  QCOMPARE(sink.calls, QStringList({Text("bold", "bold"), Text("after")}));
  QVERIFY(!sink.bold);
  QCOMPARE(Convert("<I>x</i><BR>"), QStringList({Text("x", "italic"), "LineBreak"}));
}

void tst_HtmlParser::tag_quotedGreaterThan_doesNotEndTag() {
  QCOMPARE(Convert("<img src=\"a>b.png\" alt='x>y'>t"),
           QStringList({"InsertImage(\"a>b.png\", {alt=x>y, src=a>b.png})", Text("t")}));
}

void tst_HtmlParser::tag_nestedQuotes_innerMustCloseFirst() {
  // "'" inside a double-quoted value pushes; the closing double quote then pushes too, so the
  // tag runs on to the end of the text and loses its last character.
  QCOMPARE(Convert("<img alt=\"a'b\">text"),
           QStringList{"InsertImage(\"\", {alt=a'b\">tex, src=})"});
  // Matched inner quotes close first and the tag ends where expected.
  QCOMPARE(Convert("<img alt=\"a'b'\" src=x.png>y"),
           QStringList({"InsertImage(\"x.png\", {alt=a'b, src=x.png})", Text("y")}));
}

void tst_HtmlParser::tag_deepQuoteNesting_closesInReverseOrder() {
  // 300 alternating quotes all push; only the mirror sequence closes them again.
  const QString open = QString("\"'").repeated(150);
  const QString close = QString("'\"").repeated(150);
  QCOMPARE(Convert("<img alt=" + open + close + " src=x>y"),
           QStringList({"InsertImage(\"x\", {alt=, src=x})", Text("y")}));
  // One quote short, the tag runs to the end of the text (and loses the final "z").
  QCOMPARE(Convert("<img alt=" + open + close.mid(1) + " src=x>y<br>z"),
           QStringList{"InsertImage(\"x>y<br>\", {alt=, src=x>y<br>})"});
}

void tst_HtmlParser::tag_unterminatedAtEnd_losesLastCharacter() {
  // "<br" loses its "r" and becomes "<b".
  RecordingSink sink;
  CHTMLParser parser("x<br", &sink);
  QCOMPARE(sink.calls, QStringList{Text("x")});
  QVERIFY(sink.bold);
  QCOMPARE(Convert("x<img src=a.png"),
           QStringList({Text("x"), "InsertImage(\"a.pn\", {src=a.pn})"}));
  QCOMPARE(Convert("x<b"), QStringList{Text("x")});
}

void tst_HtmlParser::tag_loneLessThanAtEnd_readsNul() {
  QCOMPARE(Convert("abc<"), QStringList{Text("abc")});
  QCOMPARE(Convert("<"), QStringList());
  QCOMPARE(Convert("<<<"), QStringList());
  QCOMPARE(Convert("a<</"), QStringList{Text("a")});
}

void tst_HtmlParser::tag_crlfInsideTag() {
  // Between attributes, CRLF counts as a space.
  QCOMPARE(Convert("<img src=\"a.png\"\r\nalt=\"x\">"),
           QStringList{"InsertImage(\"a.png\", {alt=x, src=a.png})"});
  // Right after the name it is part of the name: not a known tag.
  QCOMPARE(Convert("<img\r\nsrc=\"a.png\">t"), QStringList{Text("t")});
  // A lone LF is not replaced: one piece, whose inner quote stays in the value.
  QCOMPARE(Convert("<img src=a\nalt=\"x\">"),
           QStringList{"InsertImage(\"a\nalt=\"x\", {src=a\nalt=\"x})"});
}

void tst_HtmlParser::tag_unknown_emitsNothingAndKeepsState() {
  QCOMPARE(Convert("<unknown>"), QStringList());
  QCOMPARE(Convert("</unknown>"), QStringList());
  QCOMPARE(Convert("<ul><b>a<unknown attr=\"1\">b</unknown><li>c"),
           QStringList({"BeginBulletList", Text("a", "bold"), Text("b", "bold"), "BulletItem",
                        Text("c", "bold")}));
}

void tst_HtmlParser::tag_slashWithoutSpace_isUnknown() {
  QCOMPARE(Convert("a<br/>b"), QStringList({Text("a"), Text("b")}));
}

void tst_HtmlParser::getTagFromHtml_data() {
  QTest::addColumn<QString>("html");
  QTest::addColumn<int>("start");
  QTest::addColumn<QString>("tag");
  QTest::addColumn<int>("end");
  QTest::newRow("simple") << "<b>x" << 0 << "<b" << 3;
  QTest::newRow("from the middle") << "ab<i>" << 2 << "<i" << 5;
  QTest::newRow("quoted >") << "<a t='>'>" << 0 << "<a t='>'" << 9;
  QTest::newRow("to the end") << "<abc" << 0 << "<ab" << 4;
  QTest::newRow("lone <") << "<" << 0 << "<" << 2;
  QTest::newRow("empty tag") << "<>" << 0 << "<" << 2;
  QTest::newRow("open quote") << "<a \"b>c" << 0 << "<a \"b>" << 7;
  QTest::newRow("outside") << "<b>" << 3 << "" << 3;
  QTest::newRow("negative") << "<b>" << -1 << "" << 3;
}

void tst_HtmlParser::getTagFromHtml() {
  QFETCH(QString, html);
  QFETCH(int, start);
  QFETCH(QString, tag);
  QFETCH(int, end);
  CHTMLParser parser(QString(), nullptr);
  QString raw;
  int pos = start;
  parser.GetTagFromHTML(raw, html, pos);
  QCOMPARE(raw, tag);
  QCOMPARE(pos, end);
}

void tst_HtmlParser::processArg_data() {
  QTest::addColumn<QString>("raw");
  QTest::addColumn<QString>("tag");
  QTest::addColumn<QString>("args");
  QTest::newRow("bare") << "<b"
                        << "b"
                        << "";
  QTest::newRow("closing") << "/b"
                           << "b"
                           << "";
  QTest::newRow("self-closing") << "<br /"
                                << "br"
                                << "";
  QTest::newRow("self-closing keyed") << "<font color /"
                                      << "font color"
                                      << "";
  QTest::newRow("self-closing with value") << "<tr cols=3 /"
                                           << "tr cols=3"
                                           << "";
  QTest::newRow("quoted is not self-closing") << "<img src=\"a\" /"
                                              << "img"
                                              << "src=";
  QTest::newRow("unquoted") << "<div align=right"
                            << "div"
                            << "align=right";
  QTest::newRow("closing with args") << "/font color"
                                     << "font"
                                     << "color";
  QTest::newRow("crlf in args") << "<a b=1\r\nc=2"
                                << "a"
                                << "b=1 c=2";
}

void tst_HtmlParser::processArg() {
  QFETCH(QString, raw);
  QFETCH(QString, tag);
  QFETCH(QString, args);
  CHTMLParser parser(QString(), nullptr);
  QString outArgs;
  QString outTag = raw;
  parser.ProcessArg(outArgs, outTag);
  QCOMPARE(outTag, tag);
  QCOMPARE(outArgs, args);
}

// ---------------------------------------------------------------------------------------------
// Attributes

void tst_HtmlParser::attributes_unquotedValue_joinsFollowingPieces() {
  QCOMPARE(Convert("<img face=Times New Roman>"),
           QStringList{"InsertImage(\"\", {face=times new roman, src=})"});
  // The same on the font tag itself. The attribute map only shows at an image or object call;
  // with keepAttributes set, the font tag's attributes are still there at the following image.
  RecordingSink sink;
  CHTMLParser parser(QString(), &sink);
  parser.ProcessObject(false);
  QString html = "<font face=Times New Roman><img>";
  int pos = 0;
  while (pos < html.size()) parser.ParseTagFromHTML(html, pos);
  QCOMPARE(sink.calls, QStringList{"InsertImage(\"\", {face=times new roman, src=})"});
}

void tst_HtmlParser::attributes_quotedValueWithSpaces_staysWhole() {
  QCOMPARE(Convert("<img alt=\"a b  c\" src='x y.png'>"),
           QStringList{"InsertImage(\"x y.png\", {alt=a b  c, src=x y.png})"});
  // A quote at the end of a piece ends the value even when it opened it.
  QCOMPARE(Convert("<img src=\" a.png \">"), QStringList{"InsertImage(\"\", {src=})"});
}

void tst_HtmlParser::attributes_keysAndValuesLowerCased() {
  QCOMPARE(Convert("<IMG SRC=\"Dir/A.PNG\" Alt='Hello'>"),
           QStringList{"InsertImage(\"dir/a.png\", {alt=hello, src=dir/a.png})"});
  // Beyond ASCII too.
  QCOMPARE(Convert(QString::fromUtf8("<img src=\"\xc3\x84rger \xc3\x89T\xc3\x89.PNG\">")),
           QStringList{QString::fromUtf8(
               "InsertImage(\"\xc3\xa4rger \xc3\xa9t\xc3\xa9.png\", {src=\xc3\xa4rger "
               "\xc3\xa9t\xc3\xa9.png})")});
}

void tst_HtmlParser::attributes_laterDuplicateOverwrites() {
  QCOMPARE(Convert("<img src=\"a\" SRC=\"b\">"), QStringList{"InsertImage(\"b\", {src=b})"});
  // Unquoted, the first value swallows the second.
  QCOMPARE(Convert("<img src=a src=b>"), QStringList{"InsertImage(\"a src=b\", {src=a src=b})"});
}

void tst_HtmlParser::attributes_withoutEquals_isIgnored() {
  QCOMPARE(Convert("<img src=\"x\" alt>"), QStringList{"InsertImage(\"x\", {src=x})"});
  // Before a key, a bare word joins it.
  QCOMPARE(Convert("<img alt src=\"x\">"), QStringList{"InsertImage(\"\", {alt src=x, src=})"});
}

void tst_HtmlParser::attributes_leadingDoubleSpace_endsParsing() {
  QCOMPARE(Convert("<img  src=\"x\">"), QStringList{"InsertImage(\"\", {src=})"});
  // Elsewhere an empty piece is absorbed by the join.
  QCOMPARE(Convert("<img alt=\"a\"  src=\"x\">"),
           QStringList{"InsertImage(\"x\", {alt=a, src=x})"});
}

void tst_HtmlParser::attributes_valueKeepsInnerEquals() {
  QCOMPARE(Convert("<img src=\"a.png?w=1\" =\"e\">"),
           QStringList{"InsertImage(\"a.png?w=1\", {=e, src=a.png?w=1})"});
}

// ---------------------------------------------------------------------------------------------
// Handlers

void tst_HtmlParser::flags_setOnOpenClearOnClose_data() {
  QTest::addColumn<QString>("tag");
  QTest::addColumn<QString>("format");
  QTest::newRow("b") << "b"
                     << "bold";
  QTest::newRow("i") << "i"
                     << "italic";
  QTest::newRow("sc") << "sc"
                      << "smallcaps";
  QTest::newRow("strike") << "strike"
                          << "strike";
  QTest::newRow("sup") << "sup"
                       << "sup";
  QTest::newRow("sub") << "sub"
                       << "sub";
  QTest::newRow("u") << "u"
                     << "underline";
}

void tst_HtmlParser::flags_setOnOpenClearOnClose() {
  QFETCH(QString, tag);
  QFETCH(QString, format);
  QCOMPARE(Convert(QString("a<%1>b</%1>c").arg(tag)),
           QStringList({Text("a"), Text("b", format), Text("c")}));
}

void tst_HtmlParser::flags_haveNoNestingCount() {
  QCOMPARE(Convert("<b><b>x</b>y</b>"), QStringList({Text("x", "bold"), Text("y")}));
  QCOMPARE(Convert("<b><i>x</b>y</i>z"),
           QStringList({Text("x", "bold italic"), Text("y", "italic"), Text("z")}));
}

void tst_HtmlParser::orderedList_numberedItemsWithoutOpeningCall() {
  QCOMPARE(Convert("<ol><li>a</li></ol>"),
           QStringList({"NumberedItem(1)", Text("a"), "NewParagraph", "EndNumberedList"}));
  QCOMPARE(
      Convert("<ol><li>a<li>b</ol>"),
      QStringList({"NumberedItem(1)", Text("a"), "NumberedItem(1)", Text("b"), "EndNumberedList"}));
}

void tst_HtmlParser::unorderedList_bulletItems() {
  QCOMPARE(Convert("<ul><li>a</li></ul>"), QStringList({"BeginBulletList", "BulletItem", Text("a"),
                                                        "NewParagraph", "EndBulletList"}));
}

void tst_HtmlParser::listItem_outsideList_onlyClosingCall() {
  QCOMPARE(Convert("<li>a</li>"), QStringList({Text("a"), "NewParagraph"}));
  QCOMPARE(Convert("<ul></ul><li>a"), QStringList({"BeginBulletList", "EndBulletList", Text("a")}));
}

void tst_HtmlParser::listItem_inBothLists_bulletWins() {
  QCOMPARE(Convert("<ol><ul><li>a</ul><li>b"),
           QStringList({"BeginBulletList", "BulletItem", Text("a"), "EndBulletList",
                        "NumberedItem(1)", Text("b")}));
}

void tst_HtmlParser::fontColorSelfClosing_setsBlackAndPushes() {
  RecordingSink sink;
  sink.textColor = Qt::red;
  // color is pushed after size, so the first </font> restores color and size stays 0.
  CHTMLParser parser("a<font size /><font color />b</font>c</font>d", &sink);
  QCOMPARE(sink.calls, QStringList({Text("a", "color=" + kRed), Text("b", "size=0"),
                                    Text("c", "size=0"), Text("d")}));
  QCOMPARE(sink.textColor, QColor(Qt::black));
}

void tst_HtmlParser::fontColor_closeRestoresBlack() {
  RecordingSink sink;
  sink.afterWriteText = [](RecordingSink& s) { s.textColor = Qt::red; };
  CHTMLParser parser("<font color />a</font>b", &sink);
  QCOMPARE(sink.calls, QStringList({Text("a"), Text("b")}));
}

void tst_HtmlParser::twoFontAttributes_oneCloseRestoresTheLater() {
  RecordingSink sink;
  sink.fontName = "Arial";
  CHTMLParser parser("<font bgcolor /><font size />a</font>b", &sink);
  const QString bg = "bg=" + kBlack;
  QCOMPARE(sink.calls,
           QStringList({Text("a", bg + " size=0 name=Arial"), Text("b", bg + " name=Arial")}));
}

void tst_HtmlParser::fontAttributeStack_popsInReverseOrder() {
  RecordingSink sink;
  sink.afterWriteText = [](RecordingSink& s) { s.textColor = Qt::red; };
  CHTMLParser parser(
      "<font bgcolor /><font size /><font name /><font color />a</font>b</font>c</font>d</font>"
      "e</font>f",
      &sink);
  const QString bg = "bg=" + kBlack;
  const QString red = "color=" + kRed;
  QCOMPARE(sink.calls,
           QStringList({Text("a", bg + " size=0 name="), Text("b", bg + " size=0 name="),
                        Text("c", bg + " size=0 " + red), Text("d", bg + " " + red), Text("e", red),
                        Text("f", red)}));
}

void tst_HtmlParser::fontSizeAndName_selfClosing() {
  // Only the self-closing form reaches these entries, always with empty argument text.
  QCOMPARE(Convert("<font size />a<font name />b"),
           QStringList({Text("a", "size=0"), Text("b", "size=0 name=")}));
  // With a value the tag is a plain font tag.
  QCOMPARE(Convert("<font size=12>a"), QStringList{Text("a")});
}

void tst_HtmlParser::font_closeWithEmptyStack_changesNothing() {
  RecordingSink sink;
  sink.fontSize = 20;
  CHTMLParser parser("<font>a</font>b", &sink);
  QCOMPARE(sink.calls, QStringList({Text("a", "size=20"), Text("b", "size=20")}));
}

void tst_HtmlParser::sink_startsAtTheDefaultsThatFontRestores() {
  RecordingSink fresh;
  QCOMPARE(fresh.backgroundColor, QColor(Qt::white));
  QCOMPARE(fresh.fontSize, 9);
  QCOMPARE(fresh.fontName, QString("Tahoma"));
  QCOMPARE(fresh.textColor, QColor(Qt::black));
  QVERIFY(!fresh.bold && !fresh.italic && !fresh.smallCaps && !fresh.strikeOut &&
          !fresh.superscript && !fresh.subscript && !fresh.inScript && !fresh.underline);
  // Set and restored again, every attribute is back where a fresh sink starts.
  QCOMPARE(Convert("<font bgcolor /><font size /><font name /><font color />a"
                   "</font></font></font></font>b"),
           QStringList({Text("a", "bg=" + kBlack + " size=0 name="), Text("b")}));
}

void tst_HtmlParser::divAlignSelfClosing_alignsLeft() {
  QCOMPARE(Convert("<div align />a"), QStringList({"SetAlignment(Left)", Text("a")}));
  QCOMPARE(Convert("</div align />"), QStringList{"SetAlignment(Left)"});
}

void tst_HtmlParser::divWithAlignAttribute_isPlainDiv() {
  QCOMPARE(Convert("<div align=\"right\">a</div>b"),
           QStringList({"NewParagraph", Text("a"), Text("b")}));
}

void tst_HtmlParser::processDivAlign_data() {
  QTest::addColumn<QString>("value");
  QTest::addColumn<QString>("alignment");
  QTest::newRow("right") << "right"
                         << "Right";
  QTest::newRow("RIGHT") << "RIGHT"
                         << "Right";
  QTest::newRow("center") << "Center"
                          << "Center";
  QTest::newRow("justify") << "jUsTiFy"
                           << "Justify";
  QTest::newRow("left") << "left"
                        << "Left";
  QTest::newRow("empty") << ""
                         << "Left";
  QTest::newRow("other") << "middle"
                         << "Left";
  QTest::newRow("padded") << " right"
                          << "Left";
}

void tst_HtmlParser::processDivAlign() {
  QFETCH(QString, value);
  QFETCH(QString, alignment);
  RecordingSink sink;
  CHTMLParser parser(QString(), &sink);
  parser.ProcessDivAlign(value);
  QCOMPARE(sink.calls, QStringList{"SetAlignment(" + alignment + ")"});
}

void tst_HtmlParser::centerPardBrTable_openAndClose() {
  QCOMPARE(
      Convert("<center></center><pard></pard><br></br><table></table>"),
      QStringList({"SetAlignment(Center)", "SetAlignment(Center)", "ResetParagraph",
                   "ResetParagraph", "LineBreak", "LineBreak", "NewParagraph", "NewParagraph"}));
}

void tst_HtmlParser::selfClosingBr_isLineBreak() {
  QCOMPARE(Convert("a<br />b<BR />"),
           QStringList({Text("a"), "LineBreak", Text("b"), "LineBreak"}));
}

void tst_HtmlParser::trColsSelfClosing_beginsRowWithoutColumns() {
  QCOMPARE(Convert("<tr cols />"), QStringList{"BeginRow"});
  QCOMPARE(Convert("</tr cols />"), QStringList());
}

void tst_HtmlParser::trColsWithValue_isPlainTr() {
  QCOMPARE(Convert("<tr cols=3>"), QStringList());
  QCOMPARE(Convert("<tr cols=3></tr>"), QStringList{"EndRow"});
  QCOMPARE(Convert("<tr cols=3 />"), QStringList());
}

void tst_HtmlParser::processTrCols_addsOneColumnPerCount() {
  RecordingSink sink;
  CHTMLParser parser(QString(), &sink);
  parser.ProcessTrCols(false, "3");
  parser.ProcessTrCols(false, "x");
  parser.ProcessTrCols(true, "2");
  QCOMPARE(sink.calls, QStringList({"BeginRow", "AddColumn(2000)", "AddColumn(2000)",
                                    "AddColumn(2000)", "BeginRow"}));
}

void tst_HtmlParser::tableRowsAndCells() {
  QCOMPARE(Convert("<table><tr><td>a</td><td>b</td></tr></table>"),
           QStringList({"NewParagraph", "BeginCell(1)", Text("a"), "EndCell", "BeginCell(1)",
                        Text("b"), "EndCell", "EndRow", "NewParagraph"}));
}

void tst_HtmlParser::imgSingleQuotedSource_isLowerCased() {
  QCOMPARE(Convert("<img src='A.png'>"), QStringList{"InsertImage(\"a.png\", {src=a.png})"});
}

void tst_HtmlParser::imageAliases_allInsertImages_data() {
  QTest::addColumn<QString>("tag");
  QTest::newRow("img") << "img";
  QTest::newRow("image") << "IMAGE";
  QTest::newRow("embed") << "embed";
  QTest::newRow("v:imagedata") << "v:imagedata";
}

void tst_HtmlParser::imageAliases_allInsertImages() {
  QFETCH(QString, tag);
  QCOMPARE(Convert(QString("<%1 src=\"p.png\" width=\"10\">").arg(tag)),
           QStringList{"InsertImage(\"p.png\", {src=p.png, width=10})"});
  // A closing tag inserts as well.
  QCOMPARE(Convert(QString("</%1>").arg(tag)), QStringList{"InsertImage(\"\", {src=})"});
}

void tst_HtmlParser::image_withoutSource_passesEmptySource() {
  QCOMPARE(Convert("<img alt=\"x\">"), QStringList{"InsertImage(\"\", {alt=x, src=})"});
}

void tst_HtmlParser::script_textIsDropped() {
  RecordingSink sink;
  CHTMLParser parser("a<script>var x = 1;</script>b<SCRIPT>c</SCRIPT>d", &sink);
  QCOMPARE(sink.calls, QStringList({Text("a"), Text("b"), Text("d")}));
  QVERIFY(!sink.inScript);
}

void tst_HtmlParser::script_lessThanInside_swallowsClosingTag() {
  // "< y) ...</script" is read as one unknown tag, so the script never closes.
  RecordingSink sink;
  CHTMLParser parser("a<script>if (x < y) f()</script>b<br>c", &sink);
  QCOMPARE(sink.calls, QStringList({Text("a"), "LineBreak"}));
  QVERIFY(sink.inScript);
}

void tst_HtmlParser::object_isHandledAsCell() {
  QCOMPARE(Convert("<object classid=\"clsid:ABC\"><param name=\"movie\" value=\"x.swf\">"
                   "</object>after"),
           QStringList({"BeginCell(1)", "EndCell", Text("after")}));
}

void tst_HtmlParser::processObject_collectsParamAttributes() {
  RecordingSink sink;
  CHTMLParser parser(QString(), &sink);
  QString html =
      "<object classid=\"clsid:D27CDB6E\" width=\"10\"><param name=\"movie\" value=\"A.swf\">"
      "<param name=\"quality\" value=\"high\">";
  // The object tag's own attributes stay in the map once keepAttributes is set; later params
  // overwrite earlier ones.
  parser.ProcessObject(false);
  int pos = 0;
  while (pos < html.size()) parser.ParseTagFromHTML(html, pos);
  parser.ProcessObject(true);
  QCOMPARE(sink.calls,
           QStringList({"BeginCell(1)",
                        "InsertObject(\"d27cdb6e\", {classid=clsid:d27cdb6e, name=quality, "
                        "value=high, width=10})"}));
}

void tst_HtmlParser::processObject_withoutClassId_insertsNothing() {
  RecordingSink sink;
  CHTMLParser parser(QString(), &sink);
  parser.ProcessObject(false);
  QString html = "<param name=\"a\" value=\"b\">";
  int pos = 0;
  parser.ParseTagFromHTML(html, pos);
  parser.ProcessObject(true);
  // keepAttributes is off again: the next tag starts from an empty map.
  html = "<img>";
  pos = 0;
  parser.ParseTagFromHTML(html, pos);
  QCOMPARE(sink.calls, QStringList{"InsertImage(\"\", {src=})"});
}

void tst_HtmlParser::parseColor_isAlwaysBlack() {
  CHTMLParser parser(QString(), nullptr);
  QCOMPARE(parser.ParseColor("#ff0000"), QColor(Qt::black));
  QCOMPARE(parser.ParseColor("white"), QColor(Qt::black));
  QCOMPARE(parser.ParseColor(QString()), QColor(Qt::black));
}

// ---------------------------------------------------------------------------------------------
// Output switch

void tst_HtmlParser::head_suppressesTitleText() {
  QCOMPARE(Convert("<head><title>t</title></head><body>x</body>"), QStringList{Text("x")});
}

void tst_HtmlParser::head_suppressesSinkCallsButListFlagsChange() {
  QCOMPARE(Convert("<head><ul><li>a</li></ul><br><img src=x><tr cols /><td>b</td><center>"
                   "<ol></head><body><li>c"),
           QStringList({"NumberedItem(1)", Text("c")}));
  QCOMPARE(Convert("<head><ul></head><body><li>c"), QStringList({"BulletItem", Text("c")}));
  // Formatting fields are state, not calls: they change too.
  QCOMPARE(Convert("<head><b></head><body>c"), QStringList{Text("c", "bold")});
}

void tst_HtmlParser::headClose_doesNotReenableOutput() {
  QCOMPARE(Convert("a<head></head>b<br>"), QStringList{Text("a")});
  QCOMPARE(Convert("</head>b"), QStringList());
}

void tst_HtmlParser::bodyClose_disablesOutput() {
  QCOMPARE(Convert("<body>a</body>b<br><body>c"), QStringList({Text("a"), Text("c")}));
}

void tst_HtmlParser::processHtmlAgain_resetsListFlagsButNotOutput() {
  RecordingSink sink;
  CHTMLParser parser("<ul><ol>", &sink);
  parser.ProcessHTML("<li>a");
  QCOMPARE(sink.calls, QStringList({"BeginBulletList", Text("a")}));
  parser.ProcessHTML("<head>");
  parser.ProcessHTML("b<br>");
  QCOMPARE(sink.calls, QStringList({"BeginBulletList", Text("a")}));
}

// ---------------------------------------------------------------------------------------------
// Whole conversions

void tst_HtmlParser::isValidParser_data() {
  QTest::addColumn<QString>("html");
  QTest::addColumn<bool>("valid");
  for (const char* needle :
       {"<IMG", "<img", "<image", "<IMAGE", "<object", "<OBJECT", "<embed", "<EMBED"}) {
    QTest::newRow(needle) << QString("text %1 src=x>").arg(needle) << true;
  }
  QTest::newRow("none") << "<b>plain</b> text" << false;
  QTest::newRow("empty") << "" << false;
  QTest::newRow("mixed case") << "<Img src=x><Object><Embed><iMAGE" << false;
  QTest::newRow("without <") << "img object embed" << false;
  QTest::newRow("closing only") << "</img>" << false;
}

void tst_HtmlParser::isValidParser() {
  QFETCH(QString, html);
  QFETCH(bool, valid);
  QCOMPARE(CHTMLParser::IsValidParser(html), valid);
}

void tst_HtmlParser::nullSink_doesNothing() {
  CHTMLParser parser("<head><ul><li>a<b>b<font size />c<img src=x><object>", nullptr);
  // Handlers called directly on a parser without a sink are no-ops too.
  QString html = "<b><font color /><img src=x></font><object>";
  int pos = 0;
  while (pos < html.size()) parser.ParseTagFromHTML(html, pos);
  QCOMPARE(pos, html.size());
  parser.ProcessObject(false);
  parser.ProcessObject(true);
  parser.ProcessUl(false);
  parser.ProcessLi(false);
  parser.ProcessDivAlign("right");
  parser.ProcessTrCols(false, "2");
  parser.ProcessFont();
  parser.ProcessFont();
  // The conversion still reads nothing: a sink set afterwards sees no leftover state.
  RecordingSink sink;
  CHTMLParser fresh("<li>x", &sink);
  QCOMPARE(sink.calls, QStringList{Text("x")});
}

void tst_HtmlParser::chatMessage_fullSequence() {
  RecordingSink sink;
  CHTMLParser parser(
      "<html><head><style>p{}</style></head><body>\r\n"
      "<!-- from the chat panel -->"
      "<div align />Hi <b>team</b>,<br />\r\n"
      "<ul><li>agenda &amp; notes</li><li><i>Q&amp;A</i></li></ul>"
      "<table><tr cols /><td>1</td><td>2</td></tr></table>"
      "<img src=\"Smile.PNG\" width=\"16\"><font size />big</font> end\r\n"
      "</body></html>",
      &sink);
  QCOMPARE(sink.calls, QStringList({"SetAlignment(Left)",
                                    Text("Hi"),
                                    Text("team", "bold"),
                                    Text(","),
                                    "LineBreak",
                                    "BeginBulletList",
                                    "BulletItem",
                                    Text("agenda & notes"),
                                    "NewParagraph",
                                    "BulletItem",
                                    Text("Q&A", "italic"),
                                    "NewParagraph",
                                    "EndBulletList",
                                    "NewParagraph",
                                    "BeginRow",
                                    "BeginCell(1)",
                                    Text("1"),
                                    "EndCell",
                                    "BeginCell(1)",
                                    Text("2"),
                                    "EndCell",
                                    "EndRow",
                                    "NewParagraph",
                                    "InsertImage(\"smile.png\", {src=smile.png, width=16})",
                                    Text("big", "size=0"),
                                    Text("end")}));
  QVERIFY(!sink.calls.contains("Reserved"));
}

void tst_HtmlParser::deepNestingAndManyUnknownTags() {
  const int depth = 100000;
  QString html;
  for (int i = 0; i < depth; ++i) html += "<ul><x-tag a=\"1\"><font size />";
  html += "deep";
  for (int i = 0; i < depth; ++i) html += "</font></ul>";
  RecordingSink sink;
  CHTMLParser parser(html, &sink);
  QCOMPARE(sink.calls.size(), 2 * depth + 1);
  QCOMPARE(sink.calls.at(depth - 1), QString("BeginBulletList"));
  QCOMPARE(sink.calls.at(depth), Text("deep", "size=0"));
  QCOMPARE(sink.calls.last(), QString("EndBulletList"));
  QCOMPARE(sink.fontSize, 9);
}

namespace {

// Converts `html` with the parser and with the literal steps; empty when both make the same
// calls and leave the same fields, else a report of both. `calls` grows by the number of calls.
QString LiteralMismatch(const QString& html, int& calls) {
  RecordingSink expected;
  LiteralParser(&expected).Convert(html);
  RecordingSink actual;
  CHTMLParser parser(html, &actual);
  calls += expected.calls.size();
  if (actual.calls == expected.calls && actual.FormatFields() == expected.FormatFields())
    return QString();
  return "input: " + html + "\nexpected: " + expected.calls.join(" | ") + " [" +
         expected.FormatFields() + "]\nactual: " + actual.calls.join(" | ") + " [" +
         actual.FormatFields() + "]";
}

}  // namespace

void tst_HtmlParser::conversion_matchesLiteralSteps_onGeneratedInputs() {
  // 200,000 short texts of up to 12 pieces (the fuzz harness compares long ones): about two
  // seconds of CPU time here and a quarter of a minute with the sanitizers.
  QRandomGenerator random(8);
  int calls = 0;
  for (int round = 0; round < 200000; ++round) {
    const QString mismatch = LiteralMismatch(GeneratedHtml(random, 12), calls);
    if (!mismatch.isEmpty()) QFAIL(qPrintable(mismatch));
  }
  // The inputs must reach the sink often enough for the comparison to mean something.
  QVERIFY2(calls > 200000, qPrintable(QString::number(calls)));
}

void tst_HtmlParser::conversion_matchesLiteralSteps_onBlockLongInputs() {
  // The parser reads text, tags and names eight characters at a time. These texts make the
  // block edges matter: quote runs of both kinds far deeper than a block, long text runs full of
  // entities and line breaks (decoded in place), names of eight to twelve characters, and tags
  // and runs that end on or next to the last character.
  static const QStringList pieces = {"\"",
                                     "'",
                                     "\"'",
                                     "''\"",
                                     ">",
                                     "<img alt=",
                                     "<b ",
                                     " ",
                                     "&amp;",
                                     "&lt;",
                                     "&nbsp;",
                                     "&#39;",
                                     "\r\n",
                                     "\n",
                                     "plain words ",
                                     "<",
                                     "</",
                                     "<font size />",
                                     "<FONT BGCOLOR />",
                                     "<v:imagedata src=x>",
                                     "<div align />",
                                     "<tr cols />",
                                     "<br>",
                                     "</font>",
                                     "x",
                                     QString::fromUtf8("\xc3\x84")};
  QRandomGenerator random(10);
  int calls = 0;
  for (int round = 0; round < 20000; ++round) {
    QString html;
    for (int i = random.bounded(1, 60); i > 0; --i)
      html += pieces.at(random.bounded(pieces.size()));
    const QString mismatch = LiteralMismatch(html, calls);
    if (!mismatch.isEmpty()) QFAIL(qPrintable(mismatch));
  }
  // Tags whose quotes nest deep and then unwind to nothing, so that the ">" behind them ends
  // the tag exactly when the depth is counted right. A quote pops the top when it equals it and
  // is pushed otherwise; closing with the top each time empties the stack.
  for (int round = 0; round < 5000; ++round) {
    QString html = "<b a=";
    QString stack;
    for (int i = random.bounded(1, 60); i > 0; --i) {
      const QChar quote = random.bounded(2) ? QChar('"') : QChar('\'');
      html += quote;
      if (!stack.isEmpty() && stack.back() == quote) {
        stack.chop(1);
      } else {
        stack += quote;
      }
      if (random.bounded(8) == 0) html += random.bounded(2) ? ">" : " x";
    }
    while (!stack.isEmpty()) {
      html += stack.back();
      stack.chop(1);
    }
    html += "> text <i>";
    for (int i = random.bounded(0, 4); i > 0; --i) html += pieces.at(random.bounded(pieces.size()));
    const QString mismatch = LiteralMismatch(html, calls);
    if (!mismatch.isEmpty()) QFAIL(qPrintable(mismatch));
  }
  QVERIFY2(calls > 100000, qPrintable(QString::number(calls)));
}

void tst_HtmlParser::conversion_matchesLiteralSteps_onLongCommentedInputs() {
  // Text with comments is converted through a buffer of a few pages, filled again and again:
  // these texts are many times its size, with tags, runs and comments across its edges, a tag
  // and a run each longer than the buffer, and attribute maps left for the end.
  const QString longTag = "<img alt=\"" + QString(20000, 'a') + " b\" src=x>";
  const QString longRun = QString(20000, 'w') + " &amp; ";
  const QStringList pieces = {"<!-- note -->",
                              "<!---->",
                              "<!--x",
                              "-->",
                              "<!",
                              "--",
                              "<img src=\"a.png\" alt=\"x y\">",
                              "<b>",
                              "</b>",
                              "<font size=3>",
                              "</font>",
                              "<div align=right>",
                              "<br>",
                              "text run ",
                              "&amp;",
                              "&l",
                              "t;",
                              "\r\n",
                              "<",
                              "x=\"1\" ",
                              "'",
                              ">"};
  QRandomGenerator random(11);
  int calls = 0;
  int removed = 0;
  int withObject = 0;
  for (int round = 0; round < 24; ++round) {
    QString html;
    const int length = random.bounded(30000, 120000);
    while (html.size() < length) {
      const int pick = random.bounded(1000);
      if (pick == 0) {
        html += longTag;
      } else if (pick == 1) {
        html += longRun;
      } else {
        const QString& piece = pieces.at(random.bounded(pieces.size()));
        // A "-->" in front of the next "<!--" stops every later removal: keep it rare.
        if (piece == "-->" && random.bounded(50) != 0) continue;
        html += piece;
      }
    }
    // The last tag's attribute map is filled at the end from its argument text, which the
    // buffer has long left behind; an object's closing shows the map. Every other round leads up
    // to that tag with whole tags and comments only, so that nothing before can swallow it.
    if (round % 2 == 0) {
      html.clear();
      const QStringList whole = {"<!-- note -->",
                                 "<b>",
                                 "</b>",
                                 "text run ",
                                 "&amp;",
                                 "\r\n",
                                 "<img src=\"a.png\" alt=\"x y\">",
                                 "<font size=3>"};
      while (html.size() < length) html += whole.at(random.bounded(whole.size()));
    }
    html += "<b classid=\"clsid:last\" round=" + QString::number(round) + "><!-- c -->" + longRun;
    removed += Simplify(html) != html;
    QCOMPARE(Simplify(html), ReferenceSimplify(html));
    const QString mismatch = LiteralMismatch(html, calls);
    if (!mismatch.isEmpty()) QFAIL(qPrintable(mismatch.left(2000)));
    // (An earlier unclosed "<!--" can take the tag away with it, and the map is then another.)
    RecordingSink expected;
    LiteralParser literal(&expected);
    literal.Convert(html);
    if (literal.Attributes().contains("classid")) {
      expected.InsertObject("last", literal.Attributes());
      ++withObject;
    }
    RecordingSink actual;
    CHTMLParser parser(html, &actual);
    parser.ProcessObject(true);
    QCOMPARE(actual.calls.last(), expected.calls.last());
  }
  QVERIFY2(removed > 12, qPrintable(QString::number(removed)));
  QVERIFY2(withObject > 6, qPrintable(QString::number(withObject)));
  // A "<!--" cut by the edge of the buffer (16K characters) as it is first filled: the run in
  // front of it must wait for the removal, which joins it with the run behind the comment. (The
  // first comment is removed before anything is kept; the second is met while filling.)
  for (int at = 16370; at <= 16400; ++at) {
    QString body;
    while (body.size() + 9 <= at - 2) body += "<i>ab</i>";
    body += QString(at - 2 - body.size(), 'a');
    const QString html = "<!-- first -->" + body + "zz<!-- c -->yy<b>t</b>";
    const QString mismatch = LiteralMismatch(html, calls);
    if (!mismatch.isEmpty()) QFAIL(qPrintable(mismatch.right(300)));
  }
}

void tst_HtmlParser::tagReading_matchesLiteralSteps_onGeneratedInputs() {
  QRandomGenerator random(9);
  CHTMLParser parser(QString(), nullptr);
  LiteralParser literal(nullptr);
  for (int round = 0; round < 20000; ++round) {
    const QString html = GeneratedHtml(random, 12);
    // The raw reader from every position inside the text, whatever stands there.
    for (int start = 0; start < html.size(); ++start) {
      QString tag = "kept ";
      int pos = start;
      parser.GetTagFromHTML(tag, html, pos);
      QString expectedTag = "kept ";
      int expectedPos = start;
      LiteralParser::GetTag(expectedTag, html, expectedPos);
      QCOMPARE(tag, expectedTag);
      QCOMPARE(pos, expectedPos);
    }
    // The name and attribute split on any text, including names that start with their space.
    // The attribute map shows at an image tag read while keepAttributes is set.
    RecordingSink sink;
    CHTMLParser splitter(QString(), &sink);
    splitter.ProcessObject(false);
    QString args = "stale";
    QString tag = html;
    splitter.ProcessArg(args, tag);
    QString image = "<img>";
    int pos = 0;
    splitter.ParseTagFromHTML(image, pos);
    literal.attributes_.clear();
    QString expectedArgs = "stale";
    QString expectedTag = html;
    literal.ProcessArg(expectedArgs, expectedTag);
    const QString source = literal.attributes_["src"];
    QCOMPARE(tag, expectedTag);
    QCOMPARE(args, expectedArgs);
    QCOMPARE(sink.calls, QStringList{"InsertImage(\"" + source + "\", " +
                                     RecordingSink::Map(literal.attributes_) + ")"});
  }
}

QTEST_MAIN(tst_HtmlParser)
#include "tst_html_parser.moc"
