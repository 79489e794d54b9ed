// The RTF writer of examples/html2rtf: the document it makes of the example's sample page
// through CHTMLParser, and its own handling of calls that the parser cannot produce (other
// fonts and colours, column widths, out-of-order structure).
#include <sys/stat.h>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include "examples/html2rtf/rtf_writer.h"

using html2rtf::HtmlToRtf;
using html2rtf::RtfWriter;
using html2rtf::RtfWriterOptions;

namespace {

const QString kSampleDir = QStringLiteral(HTML2RTF_SAMPLE_DIR);

// True when every "{" has its "}" and the outermost group closes only at the very end.
// Backslash escapes ("\{", "\}", "\\") are skipped; control words are letters and never
// start with a brace, so skipping the one character after a backslash is enough.
bool BracesBalanced(const QByteArray& rtf) {
  int depth = 0;
  int lastClose = -1;
  for (int i = 0; i < rtf.size(); ++i) {
    const char c = rtf[i];
    if (c == '\\') {
      ++i;
    } else if (c == '{') {
      if (depth == 0 && i != 0) return false;  // a second top-level group
      ++depth;
    } else if (c == '}') {
      if (--depth < 0) return false;
      lastClose = i;
    }
  }
  return depth == 0 && lastClose >= 0 && rtf.mid(lastClose + 1).trimmed().isEmpty();
}

bool IsAscii(const QByteArray& bytes) {
  for (const char c : bytes) {
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  }
  return true;
}

QByteArray SampleRtf(bool loadImages = true) {
  QFile file(kSampleDir + QStringLiteral("/sample.html"));
  if (!file.open(QIODevice::ReadOnly)) return QByteArray();
  RtfWriterOptions options;
  options.baseDir = kSampleDir;
  options.loadImages = loadImages;
  return HtmlToRtf(QString::fromUtf8(file.readAll()), options);
}

QByteArray FileHex(const QString& name) {
  QFile file(kSampleDir + QLatin1Char('/') + name);
  if (!file.open(QIODevice::ReadOnly)) return QByteArray();
  return file.readAll().toHex();
}

// The picture's hex data with the line breaks the writer puts in taken out.
QByteArray PictureHex(const QByteArray& rtf, const QByteArray& header) {
  const int start = rtf.indexOf(header);
  if (start < 0) return QByteArray();
  const int dataStart = rtf.indexOf('\n', start) + 1;
  const int end = rtf.indexOf('}', dataStart);
  QByteArray hex = rtf.mid(dataStart, end - dataStart);
  hex.replace('\n', QByteArray());
  return hex;
}

}  // namespace

class tst_Html2Rtf : public QObject {
  Q_OBJECT

 private slots:
  void sample_isOneBalancedAsciiDocumentWithHeader() {
    const QByteArray rtf = SampleRtf();
    QVERIFY(rtf.startsWith("{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1\n"));
    QVERIFY(BracesBalanced(rtf));
    QVERIFY(IsAscii(rtf));
  }

  void sample_fontTableHoldsOnlyTheFaceUsed() {
    // The parser gives "font name" an empty argument, which the writer maps to its default
    // face, so the sample uses exactly one font.
    const QByteArray rtf = SampleRtf();
    QVERIFY(rtf.contains("{\\fonttbl{\\f0\\fnil\\fcharset0 Tahoma;}}\n"));
  }

  void sample_colourTableHoldsOnlyBlack() {
    // Every colour attribute parses as black: the table has the automatic entry and black,
    // and the "font bgcolor" background refers to that same entry.
    const QByteArray rtf = SampleRtf();
    QVERIFY(rtf.contains("{\\colortbl;\\red0\\green0\\blue0;}\n"));
    QVERIFY(rtf.contains("{\\f0\\fs18\\cf1\\highlight1  background}"));
  }

  void sample_characterFormatting_data() {
    QTest::addColumn<QByteArray>("run");
    QTest::newRow("bold") << QByteArray("{\\f0\\fs18\\cf1\\b bold}");
    QTest::newRow("italic") << QByteArray("{\\f0\\fs18\\cf1\\i italic}");
    QTest::newRow("underline") << QByteArray("{\\f0\\fs18\\cf1\\ul underline}");
    QTest::newRow("strike") << QByteArray("{\\f0\\fs18\\cf1\\strike strike-out}");
    QTest::newRow("small caps") << QByteArray("{\\f0\\fs18\\cf1\\scaps small caps}");
    QTest::newRow("subscript") << QByteArray("{\\f0\\fs18\\cf1\\sub 2}");
    QTest::newRow("superscript") << QByteArray("{\\f0\\fs18\\cf1\\super 2}");
    QTest::newRow("font size 0 is the default size") << QByteArray("{\\f0\\fs18\\cf1 size}");
    QTest::newRow("plain after the flags are off") << QByteArray("{\\f0\\fs18\\cf1 , H}");
  }
  void sample_characterFormatting() {
    QFETCH(QByteArray, run);
    QVERIFY2(SampleRtf().contains(run), run.constData());
  }

  void sample_textIsDecodedAndEscaped_data() {
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("entities, double decoding included")
        << QByteArray("Entities: & <tag> \"quoted\" 'single' a b, and < decoded twice.");
    QTest::newRow("latin") << QByteArray("caf\\u233?, na\\u239?ve");
    QTest::newRow("greek") << QByteArray(
        "\\u917?\\u955?\\u955?\\u951?\\u957?\\u953?\\u954?\\u940?");
    QTest::newRow("cjk") << QByteArray("\\u28450?\\u23383?");
    QTest::newRow("surrogate pair, signed") << QByteArray("emoji \\u-10179?\\u-8704?.");
    QTest::newRow("rtf specials") << QByteArray("RTF specials: \\\\ \\{ \\}}");
  }
  void sample_textIsDecodedAndEscaped() {
    QFETCH(QByteArray, text);
    QVERIFY2(SampleRtf().contains(text), text.constData());
  }

  void sample_droppedTextIsAbsent() {
    const QByteArray rtf = SampleRtf();
    QVERIFY(rtf.contains("html2rtf sample"));
    QVERIFY(!rtf.contains("title never"));      // inside <head>
    QVERIFY(!rtf.contains("Comments"));         // a comment
    QVERIFY(!rtf.contains("script text"));      // inside <script>
    QVERIFY(!rtf.contains("end of the body"));  // after </body>
  }

  void sample_paragraphStructure() {
    const QByteArray rtf = SampleRtf();
    // <center> centres the heading's paragraph; the next <div> ends it and <div align /> sets
    // Left for the paragraphs that follow.
    QVERIFY(
        rtf.contains("\\pard\\qc{\\f0\\fs18\\cf1\\b html2rtf sample}\\par\n"
                     "\\pard\\ql{\\f0\\fs18\\cf1 Text runs are trimmed"));
    QCOMPARE(rtf.count("\\qc"), 1);
    // <pard> resets the open paragraph's properties in place; <br> breaks the line.
    QVERIFY(
        rtf.contains("{\\f0\\fs18\\cf1 Before a paragraph reset.}\\pard\\ql"
                     "{\\f0\\fs18\\cf1 After it.}\\line\n"
                     "{\\f0\\fs18\\cf1 After a line break.}\\par\n"));
  }

  void sample_lists() {
    const QByteArray rtf = SampleRtf();
    QCOMPARE(rtf.count("{\\*\\pn\\pnlvlblt\\pnindent360{\\pntxtb\\u8226?}}{\\pntext\\u8226?\\tab}"),
             2);
    QVERIFY(rtf.contains("\\fi-360\\li720{\\*\\pn\\pnlvlblt"));
    QVERIFY(rtf.contains("{\\pntext\\u8226?\\tab}{\\f0\\fs18\\cf1 First bullet}\\par\n"));
    for (int n = 1; n <= 3; ++n) {
      const QByteArray number = QByteArray::number(n);
      QVERIFY2(rtf.contains("\\pndec\\pnstart" + number + "\\pnindent360{\\pntxta.}}{\\pntext " +
                            number + ".\\tab}"),
               number.constData());
    }
    QVERIFY(rtf.contains("{\\pntext 3.\\tab}{\\f0\\fs18\\cf1 Third step}\\par\n"));
  }

  void sample_tableRowAndCells() {
    const QByteArray rtf = SampleRtf();
    // <tr cols /> opens the row without columns: each cell gets the default width.
    QVERIFY(
        rtf.contains("\\trowd\\trgaph108\\trleft0\\cellx2000\\cellx4000\\cellx6000\n"
                     "\\pard\\intbl\\ql{\\f0\\fs18\\cf1 Cell one}\\cell\n"
                     "\\pard\\intbl\\ql{\\f0\\fs18\\cf1 Cell two}\\cell\n"
                     "\\pard\\intbl\\ql{\\f0\\fs18\\cf1 Cell three}\\cell\n"
                     "\\row\n"));
    // An <object> is handled as a table cell, so its text lands in a one-cell row.
    QVERIFY(
        rtf.contains("\\trowd\\trgaph108\\trleft0\\cellx2000\n"
                     "\\pard\\intbl\\ql{\\f0\\fs18\\cf1 An object is read as a table cell}"
                     "\\cell\n\\row\n"));
    QCOMPARE(rtf.count("\\row\n"), 2);
  }

  void sample_imagesAreEmbeddedOrReplaced() {
    const QByteArray rtf = SampleRtf();
    const QByteArray png = "{\\pict\\pngblip\\picw24\\pich16\\picwgoal720\\pichgoal480\n";
    const QByteArray jpeg = "{\\pict\\jpegblip\\picw24\\pich16\\picwgoal360\\pichgoal240\n";
    QVERIFY(rtf.contains(png));  // width=48 scales the 24x16 picture to 48x32
    QVERIFY(rtf.contains(jpeg));
    QCOMPARE(PictureHex(rtf, png), FileHex(QStringLiteral("sample.png")));
    QCOMPARE(PictureHex(rtf, jpeg), FileHex(QStringLiteral("sample.jpg")));
    QVERIFY(rtf.contains("{\\i [image: missing.png]}"));
  }

  void sample_withoutImageLoadingHasOnlyPlaceholders() {
    const QByteArray rtf = SampleRtf(false);
    QVERIFY(!rtf.contains("\\pict"));
    QVERIFY(rtf.contains("{\\i [image: sample.png]}"));
    QVERIFY(rtf.contains("{\\i [image: sample.jpg]}"));
    QVERIFY(BracesBalanced(rtf));
  }

  void writer_fontTableListsEachFaceOnce() {
    RtfWriter writer;
    writer.fontName = QStringLiteral("Times New Roman");
    writer.WriteText(QStringLiteral("a"));
    writer.fontName = QStringLiteral("times new roman");
    writer.WriteText(QStringLiteral("b"));
    writer.fontName = QStringLiteral("Courier");
    writer.WriteText(QStringLiteral("c"));
    writer.fontName = QString();
    writer.WriteText(QStringLiteral("d"));
    const QByteArray rtf = writer.Finish();
    QVERIFY(
        rtf.contains("{\\fonttbl{\\f0\\fnil\\fcharset0 Tahoma;}"
                     "{\\f1\\fnil\\fcharset0 Times New Roman;}"
                     "{\\f2\\fnil\\fcharset0 Courier;}}\n"));
    QVERIFY(
        rtf.contains("{\\f1\\fs18\\cf1 a}{\\f1\\fs18\\cf1 b}{\\f2\\fs18\\cf1 c}"
                     "{\\f0\\fs18\\cf1 d}"));
    QVERIFY(BracesBalanced(rtf));
  }

  void writer_fontNameIsEscapedInTheTable() {
    RtfWriter writer;
    writer.fontName = QStringLiteral("Odd;{Face}\\ \u00e9");
    writer.WriteText(QStringLiteral("x"));
    const QByteArray rtf = writer.Finish();
    QVERIFY(rtf.contains("{\\f1\\fnil\\fcharset0 Odd\\{Face\\}\\\\ \\u233?;}"));
    QVERIFY(BracesBalanced(rtf));
  }

  void writer_colourTableListsEachColourOnce() {
    RtfWriter writer;
    writer.textColor = QColor(Qt::red);
    writer.backgroundColor = QColor(Qt::yellow);
    writer.WriteText(QStringLiteral("a"));
    writer.textColor = QColor(Qt::yellow);
    writer.backgroundColor = QColor(Qt::white);  // white is no highlight at all
    writer.WriteText(QStringLiteral("b"));
    writer.textColor = QColor();  // invalid: the reader's automatic colour
    writer.WriteText(QStringLiteral("c"));
    const QByteArray rtf = writer.Finish();
    QVERIFY(rtf.contains("{\\colortbl;\\red255\\green0\\blue0;\\red255\\green255\\blue0;}\n"));
    QVERIFY(rtf.contains("{\\f0\\fs18\\cf1\\highlight2 a}{\\f0\\fs18\\cf2 b}{\\f0\\fs18\\cf0 c}"));
  }

  void writer_fontSize_data() {
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("control");
    QTest::newRow("14 pt") << 14 << QByteArray("\\fs28 ");
    QTest::newRow("1 pt") << 1 << QByteArray("\\fs2 ");
    QTest::newRow("0 is the default") << 0 << QByteArray("\\fs18 ");
    QTest::newRow("negative is the default") << -5 << QByteArray("\\fs18 ");
    QTest::newRow("huge is clamped") << INT_MAX << QByteArray("\\fs3276 ");
  }
  void writer_fontSize() {
    QFETCH(int, size);
    QFETCH(QByteArray, control);
    RtfWriter writer;
    writer.fontSize = size;
    writer.WriteText(QStringLiteral("x"));
    QVERIFY(writer.Finish().contains("{\\f0" + control.trimmed() + "\\cf1 x}"));
  }

  void writer_superscriptWinsOverSubscript() {
    RtfWriter writer;
    writer.superscript = true;
    writer.subscript = true;
    writer.WriteText(QStringLiteral("x"));
    const QByteArray rtf = writer.Finish();
    QVERIFY(rtf.contains("\\super x}"));
    QVERIFY(!rtf.contains("\\sub"));
  }

  void writer_alignment_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("control");
    QTest::newRow("Left") << QStringLiteral("Left") << QByteArray("\\ql");
    QTest::newRow("Right") << QStringLiteral("Right") << QByteArray("\\qr");
    QTest::newRow("Center") << QStringLiteral("Center") << QByteArray("\\qc");
    QTest::newRow("Justify") << QStringLiteral("Justify") << QByteArray("\\qj");
    QTest::newRow("unknown") << QStringLiteral("Diagonal") << QByteArray("\\ql");
  }
  void writer_alignment() {
    QFETCH(QString, name);
    QFETCH(QByteArray, control);
    RtfWriter writer;
    writer.SetAlignment(name);
    writer.WriteText(QStringLiteral("x"));
    QVERIFY(writer.Finish().contains("\\pard" + control + "{\\f0"));
  }

  void writer_alignmentInsideAParagraphAppliesToIt() {
    RtfWriter writer;
    writer.WriteText(QStringLiteral("x"));
    writer.SetAlignment(QStringLiteral("Right"));
    QVERIFY(writer.Finish().contains("\\pard\\ql{\\f0\\fs18\\cf1 x}\\qr"));
  }

  void writer_emptyParagraphsCollapse() {
    RtfWriter writer;
    writer.NewParagraph();
    writer.NewParagraph();
    writer.WriteText(QStringLiteral("x"));
    writer.NewParagraph();
    writer.NewParagraph();
    const QByteArray rtf = writer.Finish();
    QCOMPARE(rtf.count("\\par\n"), 1);
    QCOMPARE(rtf.count("\\pard"), 1);
  }

  void writer_columnWidthsAreCumulativeBoundaries() {
    RtfWriter writer;
    writer.BeginRow();
    writer.AddColumn(1500);
    writer.AddColumn(2500);
    writer.BeginCell(1);
    writer.WriteText(QStringLiteral("a"));
    writer.EndCell();
    writer.BeginCell(1);
    writer.WriteText(QStringLiteral("b"));
    writer.EndCell();
    writer.EndRow();
    const QByteArray rtf = writer.Finish();
    QVERIFY(
        rtf.contains("\\trowd\\trgaph108\\trleft0\\cellx1500\\cellx4000\n"
                     "\\pard\\intbl\\ql{\\f0\\fs18\\cf1 a}\\cell\n"
                     "\\pard\\intbl\\ql{\\f0\\fs18\\cf1 b}\\cell\n\\row\n"));
  }

  void writer_rowIsPaddedToItsColumns() {
    RtfWriter writer;
    writer.BeginRow();
    for (int i = 0; i < 3; ++i) writer.AddColumn(1000);
    writer.BeginCell(1);
    writer.WriteText(QStringLiteral("a"));
    writer.EndCell();
    writer.EndRow();
    const QByteArray rtf = writer.Finish();
    QVERIFY(rtf.contains("\\cellx1000\\cellx2000\\cellx3000\n"));
    QCOMPARE(rtf.count("\\cell\n"), 3);
  }

  void writer_extraCellsTakeTheLastWidth() {
    RtfWriter writer;
    writer.BeginRow();
    writer.AddColumn(700);
    for (int i = 0; i < 3; ++i) {
      writer.BeginCell(1);
      writer.EndCell();
    }
    writer.EndRow();
    QVERIFY(writer.Finish().contains("\\cellx700\\cellx1400\\cellx2100\n"));
  }

  void writer_outOfOrderTableCallsStayWellFormed() {
    RtfWriter writer;
    writer.EndRow();   // nothing open: ignored
    writer.EndCell();  // nothing open: ignored
    writer.WriteText(QStringLiteral("before"));
    writer.BeginCell(1);  // opens a row and ends the paragraph before it
    writer.WriteText(QStringLiteral("in"));
    writer.BeginCell(1);                        // closes the open cell first
    writer.BeginRow();                          // a row inside a row ends the first one
    writer.WriteText(QStringLiteral("loose"));  // text outside a cell gets its own cell
    const QByteArray rtf = writer.Finish();     // closes the open row
    QVERIFY(rtf.contains("{\\f0\\fs18\\cf1 before}\\par\n\\trowd"));
    QCOMPARE(rtf.count("\\trowd"), 2);
    QCOMPARE(rtf.count("\\row\n"), 2);
    QCOMPARE(rtf.count("\\cell\n"), 3);
    QVERIFY(rtf.contains("\\pard\\intbl\\ql{\\f0\\fs18\\cf1 loose}\\cell\n\\row\n"));
    QVERIFY(BracesBalanced(rtf));
  }

  void writer_numberingRestartsAfterTheList() {
    RtfWriter writer;
    writer.NumberedItem(1);
    writer.WriteText(QStringLiteral("a"));
    writer.NewParagraph();
    writer.NumberedItem(1);
    writer.WriteText(QStringLiteral("b"));
    writer.EndNumberedList();
    writer.NumberedItem(1);
    writer.WriteText(QStringLiteral("c"));
    const QByteArray rtf = writer.Finish();
    QVERIFY(rtf.contains("{\\pntext 1.\\tab}{\\f0\\fs18\\cf1 a}"));
    QVERIFY(rtf.contains("{\\pntext 2.\\tab}{\\f0\\fs18\\cf1 b}"));
    QVERIFY(rtf.contains("{\\pntext 1.\\tab}{\\f0\\fs18\\cf1 c}"));
  }

  void writer_nestedBulletsIndentDeeper() {
    RtfWriter writer;
    writer.BeginBulletList();
    writer.BulletItem();
    writer.BeginBulletList();
    writer.BulletItem();
    writer.WriteText(QStringLiteral("inner"));
    writer.EndBulletList();
    writer.EndBulletList();
    writer.EndBulletList();  // one too many: ignored
    writer.BulletItem();     // outside any list: the outermost level
    const QByteArray rtf = writer.Finish();
    QVERIFY(rtf.contains("\\fi-360\\li1440{\\*\\pn\\pnlvlblt"));
    QCOMPARE(rtf.count("\\li720{"), 2);
    QVERIFY(BracesBalanced(rtf));
  }

  void writer_objectAndUnreadableImagesArePlaceholders() {
    RtfWriterOptions options;
    options.baseDir = kSampleDir;
    RtfWriter writer(options);
    writer.InsertObject(QStringLiteral("1234-abcd"), {});
    writer.InsertObject(QString(), {});
    writer.InsertImage(QString(), {{QStringLiteral("src"), QString()}});
    writer.InsertImage(QStringLiteral("/dev/zero"), {});    // not a regular file
    writer.InsertImage(QStringLiteral("sample.html"), {});  // neither PNG nor JPEG
    const QByteArray rtf = writer.Finish();
    QVERIFY(
        rtf.contains("{\\i [object: 1234-abcd]}{\\i [object]}{\\i [image]}"
                     "{\\i [image: /dev/zero]}{\\i [image: sample.html]}"));
    QVERIFY(!rtf.contains("\\pict"));
  }

  void writer_imageByAbsolutePathAndFileUrl() {
    RtfWriterOptions options;
    options.baseDir = kSampleDir;
    RtfWriter writer(options);
    writer.InsertImage(kSampleDir + QStringLiteral("/sample.png"),
                       {{QStringLiteral("height"), QStringLiteral("8")}});
    writer.InsertImage(QUrl::fromLocalFile(kSampleDir + QStringLiteral("/sample.jpg")).toString(),
                       {{QStringLiteral("width"), QStringLiteral("junk")}});
    writer.InsertImage(QStringLiteral("file:sample.png"), {});  // relative to the base directory
    const QByteArray rtf = writer.Finish();
    // height=8 alone keeps the 3:2 aspect ratio; a width that is not a number is ignored.
    QVERIFY(rtf.contains("{\\pict\\pngblip\\picw24\\pich16\\picwgoal180\\pichgoal120\n"));
    QVERIFY(rtf.contains("{\\pict\\jpegblip\\picw24\\pich16\\picwgoal360\\pichgoal240\n"));
    QVERIFY(rtf.contains("{\\pict\\pngblip\\picw24\\pich16\\picwgoal360\\pichgoal240\n"));
  }

  void writer_imageSizeLimitIsInclusive() {
    // sample.png is 139 bytes.
    const QString png = kSampleDir + QStringLiteral("/sample.png");
    RtfWriterOptions options;
    options.maxImageBytes = 138;
    RtfWriter tooSmall(options);
    tooSmall.InsertImage(png, {});
    QVERIFY(!tooSmall.Finish().contains("\\pict"));
    options.maxImageBytes = 139;
    RtfWriter exact(options);
    exact.InsertImage(png, {});
    QVERIFY(exact.Finish().contains("{\\pict\\pngblip"));
  }

  void writer_imageContentNotNameDecides() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    auto write = [&dir](const char* name, const QByteArray& bytes) {
      QFile file(dir.filePath(QLatin1String(name)));
      return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
    };
    QFile png(kSampleDir + QStringLiteral("/sample.png"));
    QVERIFY(png.open(QIODevice::ReadOnly));
    const QByteArray pngBytes = png.readAll();
    QVERIFY(write("text.png", "not a picture"));
    QVERIFY(write("truncated.png", pngBytes.left(12)));  // the signature, then nothing usable
    QVERIFY(write("png-named.jpg", pngBytes));
    QVERIFY(write("empty.png", QByteArray()));
    QVERIFY(::mkfifo(QFile::encodeName(dir.filePath(QStringLiteral("fifo.png"))).constData(),
                     0600) == 0);  // opening it for reading would block

    RtfWriterOptions options;
    options.baseDir = dir.path();
    RtfWriter writer(options);
    for (const char* name : {"text.png", "truncated.png", "empty.png", "fifo.png"}) {
      writer.InsertImage(QLatin1String(name), {});
    }
    writer.InsertImage(QStringLiteral("png-named.jpg"), {});
    const QByteArray rtf = writer.Finish();
    QVERIFY(
        rtf.contains("{\\i [image: text.png]}{\\i [image: truncated.png]}"
                     "{\\i [image: empty.png]}{\\i [image: fifo.png]}{\\pict\\pngblip\\picw24"));
    QCOMPARE(rtf.count("\\pict"), 1);
  }

  void writer_pictureGoalIsClamped() {
    // A picture 1 pixel wide and 30000 high: its own height, or one scaled from a width, would
    // give goal sizes that readers' 32-bit twip fields cannot hold.
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QImage tall(1, 30000, QImage::Format_RGB32);
    tall.fill(Qt::black);
    QVERIFY(tall.save(dir.filePath(QStringLiteral("tall.png")), "PNG"));
    RtfWriterOptions options;
    options.baseDir = dir.path();
    RtfWriter writer(options);
    writer.InsertImage(QStringLiteral("tall.png"), {});
    writer.InsertImage(QStringLiteral("tall.png"),
                       {{QStringLiteral("width"), QStringLiteral("20000")}});
    const QByteArray rtf = writer.Finish();
    QCOMPARE(rtf.count("\\picw1\\pich30000\\picwgoal15\\pichgoal300000\n"), 1);
    QCOMPARE(rtf.count("\\picw1\\pich30000\\picwgoal300000\\pichgoal300000\n"), 1);
  }

  void escapeText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("escaped");
    QTest::newRow("plain") << QStringLiteral("a b") << QByteArray("a b");
    QTest::newRow("specials") << QStringLiteral("\\{}") << QByteArray("\\\\\\{\\}");
    QTest::newRow("tab") << QStringLiteral("a\tb") << QByteArray("a\\tab b");
    QTest::newRow("controls dropped")
        << QString::fromUtf16(u"a\u0001\u001fb\u007f") << QByteArray("ab");
    QTest::newRow("latin-1") << QStringLiteral("\u00fc") << QByteArray("\\u252?");
    QTest::newRow("last positive") << QString(QChar(0x7fff)) << QByteArray("\\u32767?");
    QTest::newRow("first negative") << QString(QChar(0x8000)) << QByteArray("\\u-32768?");
    QTest::newRow("U+FFFD") << QString(QChar(0xfffd)) << QByteArray("\\u-3?");
    QTest::newRow("digit after escape") << QStringLiteral("\u00e91") << QByteArray("\\u233?1");
  }
  void escapeText() {
    QFETCH(QString, text);
    QFETCH(QByteArray, escaped);
    QCOMPARE(RtfWriter::EscapeText(text), escaped);
  }

#ifdef HTML2RTF_COMMAND
  void command_readsStdinWhenGivenNoFile() {
    QProcess process;
    process.start(QStringLiteral(HTML2RTF_COMMAND), QStringList());
    QVERIFY(process.waitForStarted());
    process.write("<b>caf\xc3\xa9</b>");
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
    const QByteArray rtf = process.readAllStandardOutput();
    QVERIFY(rtf.startsWith("{\\rtf1\\ansi"));
    QVERIFY(rtf.contains("{\\f0\\fs18\\cf1\\b caf\\u233?}"));
    QVERIFY(process.readAllStandardError().isEmpty());
  }

  void command_convertsAFileWithImagesBesideIt() {
    QProcess process;
    process.setWorkingDirectory(QDir::tempPath());  // images are found next to the input
    process.start(QStringLiteral(HTML2RTF_COMMAND), {kSampleDir + QStringLiteral("/sample.html")});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    const QByteArray rtf = process.readAllStandardOutput();
    QVERIFY(BracesBalanced(rtf));
    QVERIFY(rtf.contains("{\\pict\\pngblip"));
    QVERIFY(rtf.contains("{\\pict\\jpegblip"));
  }

  void command_reportsInputItCannotRead_data() {
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("standardInput");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("message");
    const QString missing = QDir::temp().filePath(QStringLiteral("html2rtf-no-such-file.html"));
    QTest::newRow("missing file") << QStringList{missing} << QString() << 1
                                  << ("html2rtf: cannot open " + missing.toUtf8() + ": ");
    QTest::newRow("directory") << QStringList{kSampleDir} << QString() << 1
                               << ("html2rtf: cannot open " + kSampleDir.toUtf8() + ": ");
    // A directory opens as stdin but cannot be read: that must not pass for empty input.
    QTest::newRow("unreadable stdin")
        << QStringList() << kSampleDir << 1 << QByteArray("html2rtf: cannot read stdin: ");
    QTest::newRow("two files") << QStringList{missing, missing} << QString() << 2
                               << QByteArray("html2rtf: at most one input file\n");
  }
  void command_reportsInputItCannotRead() {
    QFETCH(QStringList, arguments);
    QFETCH(QString, standardInput);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, message);
    QProcess process;
    if (!standardInput.isEmpty()) process.setStandardInputFile(standardInput);
    process.start(QStringLiteral(HTML2RTF_COMMAND), arguments);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), exitCode);
    QVERIFY(process.readAllStandardOutput().isEmpty());
    const QByteArray error = process.readAllStandardError();
    QVERIFY2(error.startsWith(message), error.constData());
  }
#endif

  void emptyInput_isAnEmptyButCompleteDocument() {
    const QByteArray rtf = HtmlToRtf(QString());
    QCOMPARE(rtf, QByteArray("{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1\n"
                             "{\\fonttbl{\\f0\\fnil\\fcharset0 Tahoma;}}\n"
                             "{\\colortbl;}\n"
                             "{\\*\\generator qt_util html2rtf;}\\viewkind4\\uc1\n"
                             "}\n"));
  }
};

QTEST_MAIN(tst_Html2Rtf)
#include "tst_html2rtf.moc"
