#include "qt_util/html_parser.h"

#include <QStringView>
#include <algorithm>
#include <vector>

#include "qt_util/html_blocks_p.h"
#include "qt_util/html_comment_remover_p.h"
#include "qt_util/html_tag_reader_p.h"
#include "qt_util/html_tag_table_p.h"
#include "qt_util/html_text_p.h"

// The conversion is one pass over the text, left to right. Comments go first
// (html_comment_remover); then text runs (html_text) and tags (html_tag_reader) take turns; a
// tag's name selects its handler in the tag table (html_tag_table), and the handlers below change
// the sink's formatting fields or call its operations. The scans are built from the block
// primitives of html_blocks.

using namespace qt_util::internal::html;

namespace {

const QString& SourceKey() {
  static const QString key = QStringLiteral("src");
  return key;
}

const QString& CenterAlignment() {
  static const QString alignment = QStringLiteral("Center");
  return alignment;
}

// Colour attributes are deliberately not honoured: chat text keeps the reader's colours.
QColor AttributeColor() {
  return QColor(Qt::black);
}

// The font attributes that a closing or opening "font" restores. Here rather than in the
// private class, so that its container's code stays out of the library's exports.
enum class FontAttribute : unsigned char { kBackgroundColor, kSize, kName, kColor };

}  // namespace

// The state of one conversion, and the main loop. The handlers are the public class's own
// members; the loop reaches them through `q_`.
class Q_DECL_HIDDEN CHTMLParser::Private {
 public:
  Private(CHTMLParser* q, CParserOut* out) : q_(q), output(out) {}

  void ProcessHTML(const QString& html);

  enum class TagResult : unsigned char {
    kDone,
    kDeferred,  // the attribute map was left for later
    kCut,       // the tag may go on behind the range; nothing was done
  };
  // One tag: read, split, dispatched. With `deferredArgs` set, the attribute map is left alone
  // unless the handler reads it (an image tag); the raw argument text is then left in
  // `deferredArgs` (null when the tag has none). Only the main loop defers: nothing but an image
  // handler reads the map during a conversion, and the loop fills the map of the last tag once
  // it is done. Unless `isWhole`, `html` is a range of a longer text, and a tag that runs into
  // its last character is left alone.
  TagResult ParseNextTag(const QString& html, int& pos, QStringView* deferredArgs, bool isWhole);
  void FillAttributes(QStringView rawArgs) { ParseAttributes(rawArgs, attributes); }
  void EmitText(QStringView text);
  // The sink while output is enabled, else null: every sink operation goes through here.
  CParserOut* EnabledOutput() const { return outputEnabled ? output : nullptr; }

  CHTMLParser* const q_;
  CParserOut* const output;
  std::vector<FontAttribute> fontAttributes;  // most recent last
  bool inUnorderedList = false;
  bool inOrderedList = false;
  bool keepAttributes = false;
  QMap<QString, QString> attributes;
  bool outputEnabled = true;
  // Holds each decoded text run while the sink reads it; keeps its capacity from run to run.
  QString text_;

 private:
  // The main loop over `html` from `pos`: text runs and tags. Unless `isWhole`, `html` is a
  // range of a longer text: the loop then stops, `pos` on it, at a tag or run that runs into the
  // range's last character and so may go on behind it.
  void ConvertRange(const QString& html, int& pos, bool isWhole, bool& deferred,
                    QStringView& deferredArgs);
  void RunHandler(Tag tag, const QString& args, bool isClose);
};

// ---------------------------------------------------------------------------------------------
// The main loop

void CHTMLParser::Private::ProcessHTML(const QString& html) {
  if (!output) return;
  inUnorderedList = false;
  inOrderedList = false;
  keepAttributes = false;
  attributes.clear();
  // The attribute map of the last tag whose map was not filled, filled at the end.
  bool deferred = false;
  QStringView deferredArgs;
  int pos = 0;
  // Both hold what deferredArgs may point to at the end.
  QString buffer;
  QString keptArgs;  // the deferred argument text, once the buffer has moved on
  CommentRemover remover(html.constData(), html.size());
  if (!remover.RemovesAnything()) {
    ConvertRange(html, pos, true, deferred, deferredArgs);
  } else {
    // The text without its comments goes through a buffer of a few pages that stays in the
    // cache: filled, converted as far as its last whole tag or run, its rest moved to the front,
    // filled again. It doubles when a single tag or run does not fit in half of it.
    buffer.resize(16 * 1024);
    int filled = 0;
    for (;;) {
      remover.Fill(buffer.data(), filled, buffer.size());
      const bool done = remover.Done();
      // Until the end, the last three characters may still be cut by a removal.
      const QString range =
          QString::fromRawData(buffer.constData(), done ? filled : std::max(filled - 3, 0));
      ConvertRange(range, pos, done, deferred, deferredArgs);
      if (done) break;
      const QChar* const begin = buffer.constData();
      if (deferred && deferredArgs.data() >= begin && deferredArgs.data() < begin + filled) {
        keptArgs = deferredArgs.toString();
        deferredArgs = keptArgs.isEmpty() ? QStringView(u"", 0) : QStringView(keptArgs);
      }
      std::copy(buffer.constData() + pos, buffer.constData() + filled, buffer.data());
      filled -= pos;
      pos = 0;
      if (filled * 2 > buffer.size()) buffer.resize(buffer.size() * 2);
    }
  }
  // The map ends as the last tag left it, as if every tag had filled it.
  if (deferred) {
    attributes.clear();
    if (!deferredArgs.isNull()) FillAttributes(deferredArgs);
  }
}

Q_ALWAYS_INLINE void CHTMLParser::Private::ConvertRange(const QString& html, int& pos, bool isWhole,
                                                        bool& deferred, QStringView& deferredArgs) {
  // Each run of text between two tags is emitted as soon as it is found: the original loop
  // collected it until the next "<" or the end of the text, which comes right after it. Only a
  // tag can change inScript, so one test per run is as good as one per character.
  const int size = html.size();
  const QChar* const data = html.constData();
  while (pos < size) {
    if (data[pos] != QLatin1Char('<')) {
      unsigned content = 0;
      const int next = int(ScanTextRun(data + pos, data + size, content) - data);
      if (next == size && !isWhole) return;  // the run may go on behind the range
      if (!output->inScript && outputEnabled &&
          PrepareTextRun(QStringView(data + pos, next - pos), content, text_)) {
        output->WriteText(text_);
      }
      pos = next;
    } else {
      const TagResult result = ParseNextTag(html, pos, &deferredArgs, isWhole);
      if (result == TagResult::kCut) return;
      deferred = result == TagResult::kDeferred;
    }
  }
}

Q_ALWAYS_INLINE CHTMLParser::Private::TagResult CHTMLParser::Private::ParseNextTag(
    const QString& html, int& pos, QStringView* deferredArgs, bool isWhole) {
  const QChar* const data = html.constData();
  TagParts parts;
  bool isClose = false;
  Tag tag = Tag::kNone;
  PackedKey packed;
  bool isPacked = false;
  if (ReadPlainTag(html, pos, parts.key, isClose, packed.low, isPacked)) {
    packed.length = int(parts.key.size());
    tag = isPacked ? FindPackedTag(packed) : FindUnpackedTag(parts.key);
  } else {
    const int begin = pos;
    const TagSpan raw = ReadTag(html, pos);
    // Running into the range's last character, the tag may go on behind it.
    if (!isWhole && raw.end >= html.size() - 1) {
      pos = begin;
      return TagResult::kCut;
    }
    // A closing tag loses its "<"; the "/" stays in front for the split to cut. Index 1 of a
    // one-character tag lies past its end, where a Qt string yields NUL: not a closing tag.
    const int skip = raw.end - raw.begin > 1 ? int(data[raw.begin + 1] == QLatin1Char('/')) : 0;
    isClose = skip != 0;
    const QStringView text(data + raw.begin + skip, raw.end - raw.begin - skip);
    // The reader found the first space behind the first character; only a direct call of
    // ParseTagFromHTML can start a tag on a space.
    int space = raw.space >= 0 ? raw.space - (raw.begin + skip) : int(text.size());
    if (!text.isEmpty() && text.front() == QLatin1Char(' ')) space = 0;
    parts = SplitTag(text, space);
    tag = FindTag(parts.key, data + html.size());
  }

  const bool defer = deferredArgs && !keepAttributes && tag != Tag::kImage;
  if (defer) {
    *deferredArgs = parts.hasArgs ? parts.rawArgs : QStringView();
    // A view of an empty argument text must still count as present.
    if (parts.hasArgs && deferredArgs->isNull()) *deferredArgs = QStringView(u"", 0);
  } else {
    if (!keepAttributes) attributes.clear();
    if (parts.hasArgs) FillAttributes(parts.rawArgs);
  }
  // Only the attribute-keyed entries read the argument text.
  const bool readsArgs = tag == Tag::kFontSize || tag == Tag::kFontName || tag == Tag::kDivAlign ||
                         tag == Tag::kTrCols;
  RunHandler(tag, readsArgs ? HandlerArgs(parts) : QString(), isClose);
  return defer ? TagResult::kDeferred : TagResult::kDone;
}

void CHTMLParser::Private::EmitText(QStringView text) {
  CParserOut* out = EnabledOutput();
  if (!out) return;
  unsigned content = 0;
  for (QChar c : text) content |= RunContentOf(c);
  if (PrepareTextRun(text, content, text_)) out->WriteText(text_);
}

// ---------------------------------------------------------------------------------------------
// The handlers

// Inlined into the main loop, which runs it once per tag. It holds no static object of its own,
// hence the literals' helpers above.
Q_ALWAYS_INLINE void CHTMLParser::Private::RunHandler(Tag tag, const QString& args, bool isClose) {
  // The formatting fields are written whether output is enabled or not, but a parser made
  // without a sink can still be handed tags one by one.
  auto flag = [this, isClose](bool CParserOut::*field) {
    if (output) output->*field = !isClose;
  };
  auto call = [this](void (CParserOut::*operation)()) {
    if (CParserOut* out = EnabledOutput()) (out->*operation)();
  };
  switch (tag) {
    case Tag::kNone:
    case Tag::kParam:
      break;
    case Tag::kFontBgcolor:
      if (output) output->backgroundColor = AttributeColor();
      fontAttributes.push_back(FontAttribute::kBackgroundColor);
      break;
    case Tag::kUl:
      q_->ProcessUl(isClose);
      break;
    case Tag::kOl:
      q_->ProcessOl(isClose);
      break;
    case Tag::kLi:
      q_->ProcessLi(isClose);
      break;
    case Tag::kBold:
      flag(&CParserOut::bold);
      break;
    case Tag::kFontSize:
      // A self-closing "font size" has no argument text, which reads as 0 without the call.
      if (output) output->fontSize = args.isEmpty() ? 0 : args.toInt(nullptr, 10);
      fontAttributes.push_back(FontAttribute::kSize);
      break;
    case Tag::kFontName:
      if (output) output->fontName = args;
      fontAttributes.push_back(FontAttribute::kName);
      break;
    case Tag::kFontColor:
      if (output) output->textColor = AttributeColor();
      fontAttributes.push_back(FontAttribute::kColor);
      break;
    case Tag::kImage: {
      const QString source = attributes[SourceKey()];
      if (CParserOut* out = EnabledOutput()) out->InsertImage(source, attributes);
      break;
    }
    case Tag::kItalic:
      flag(&CParserOut::italic);
      break;
    case Tag::kSmallCaps:
      flag(&CParserOut::smallCaps);
      break;
    case Tag::kStrike:
      flag(&CParserOut::strikeOut);
      break;
    case Tag::kDivAlign:
      q_->ProcessDivAlign(args);
      break;
    case Tag::kCenter:
      if (CParserOut* out = EnabledOutput()) out->SetAlignment(CenterAlignment());
      break;
    case Tag::kSub:
      flag(&CParserOut::subscript);
      break;
    case Tag::kSup:
      flag(&CParserOut::superscript);
      break;
    case Tag::kScript:
      flag(&CParserOut::inScript);
      break;
    case Tag::kUnderline:
      flag(&CParserOut::underline);
      break;
    case Tag::kDiv:
      q_->ProcessDiv(isClose);
      break;
    case Tag::kPard:
      call(&CParserOut::ResetParagraph);
      break;
    case Tag::kBr:
      call(&CParserOut::LineBreak);
      break;
    case Tag::kFont:
      q_->ProcessFont();
      break;
    case Tag::kTable:
      call(&CParserOut::NewParagraph);
      break;
    case Tag::kTrCols:
      q_->ProcessTrCols(isClose, args);
      break;
    case Tag::kTr:
      q_->ProcessTr(isClose);
      break;
    case Tag::kTd:
    // Objects are laid out as a table cell on purpose; ProcessObject stays out of the table.
    case Tag::kObject:
      q_->ProcessTd(isClose);
      break;
    case Tag::kHead:
      outputEnabled = false;
      break;
    case Tag::kBody:
      outputEnabled = !isClose;
      break;
  }
}

void CHTMLParser::ProcessUl(bool isClose) {
  if (CParserOut* out = d_->EnabledOutput()) {
    if (isClose) {
      out->EndBulletList();
    } else {
      out->BeginBulletList();
    }
  }
  d_->inUnorderedList = !isClose;
}

void CHTMLParser::ProcessOl(bool isClose) {
  if (isClose) {
    if (CParserOut* out = d_->EnabledOutput()) out->EndNumberedList();
  }
  d_->inOrderedList = !isClose;
}

void CHTMLParser::ProcessLi(bool isClose) {
  CParserOut* out = d_->EnabledOutput();
  if (!out) return;
  if (isClose) {
    out->NewParagraph();
  } else if (d_->inUnorderedList) {
    out->BulletItem();
  } else if (d_->inOrderedList) {
    out->NumberedItem(1);
  }
}

void CHTMLParser::ProcessDiv(bool isClose) {
  if (isClose) return;
  if (CParserOut* out = d_->EnabledOutput()) out->NewParagraph();
}

void CHTMLParser::ProcessDivAlign(const QString& value) {
  CParserOut* out = d_->EnabledOutput();
  if (!out) return;
  auto is = [&value](const char* name) {
    return value.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
  };
  if (is("right")) {
    out->SetAlignment(QStringLiteral("Right"));
  } else if (is("center")) {
    out->SetAlignment(CenterAlignment());
  } else if (is("justify")) {
    out->SetAlignment(QStringLiteral("Justify"));
  } else {
    out->SetAlignment(QStringLiteral("Left"));
  }
}

void CHTMLParser::ProcessFont() {
  if (d_->fontAttributes.empty()) return;
  const FontAttribute attribute = d_->fontAttributes.back();
  d_->fontAttributes.pop_back();
  if (!d_->output) return;
  switch (attribute) {
    case FontAttribute::kColor:
      d_->output->textColor = CParserOut::kDefaultTextColor;
      break;
    case FontAttribute::kBackgroundColor:
      d_->output->backgroundColor = CParserOut::kDefaultBackgroundColor;
      break;
    case FontAttribute::kSize:
      d_->output->fontSize = CParserOut::kDefaultFontSize;
      break;
    case FontAttribute::kName:
      d_->output->fontName = QLatin1String(CParserOut::kDefaultFontName);
      break;
  }
}

void CHTMLParser::ProcessTrCols(bool isClose, const QString& value) {
  if (isClose) return;
  CParserOut* out = d_->EnabledOutput();
  if (!out) return;
  out->BeginRow();
  const int columns = value.toInt(nullptr, 10);
  for (int i = 1; i <= columns; ++i) out->AddColumn(2000);
}

void CHTMLParser::ProcessTr(bool isClose) {
  if (!isClose) return;
  if (CParserOut* out = d_->EnabledOutput()) out->EndRow();
}

void CHTMLParser::ProcessTd(bool isClose) {
  CParserOut* out = d_->EnabledOutput();
  if (!out) return;
  if (isClose) {
    out->EndCell();
  } else {
    out->BeginCell(1);
  }
}

void CHTMLParser::ProcessObject(bool isClose) {
  d_->keepAttributes = !isClose;
  if (!isClose) return;
  const auto classIdIt = d_->attributes.constFind(QStringLiteral("classid"));
  if (classIdIt == d_->attributes.constEnd()) return;
  QString classId = *classIdIt;
  if (classId.startsWith(QLatin1String("clsid:"))) classId.remove(0, 6);
  if (CParserOut* out = d_->EnabledOutput()) out->InsertObject(classId, d_->attributes);
}

// ---------------------------------------------------------------------------------------------
// The conversion and its steps, one at a time

CHTMLParser::CHTMLParser(const QString& html, CParserOut* out)
    : d_(std::make_unique<Private>(this, out)) {
  d_->ProcessHTML(html);
}

CHTMLParser::~CHTMLParser() = default;

bool CHTMLParser::IsValidParser(const QString& html) {
  static const char* const kNeedles[] = {"<IMG",    "<img",    "<image", "<IMAGE",
                                         "<object", "<OBJECT", "<embed", "<EMBED"};
  for (const char* needle : kNeedles) {
    if (html.contains(QLatin1String(needle))) return true;
  }
  return false;
}

void CHTMLParser::ProcessHTML(const QString& html) {
  d_->ProcessHTML(html);
}

void CHTMLParser::SimplifyHTML(QString& html) {
  CommentRemover remover(html.constData(), html.size());
  if (!remover.RemovesAnything()) return;
  QString kept(html.size(), Qt::Uninitialized);
  int keptSize = 0;
  remover.Fill(kept.data(), keptSize, kept.size());
  kept.resize(keptSize);
  html.swap(kept);
}

void CHTMLParser::ParseTagFromHTML(QString& html, int& pos) {
  d_->ParseNextTag(html, pos, nullptr, true);
}

void CHTMLParser::GetTagFromHTML(QString& tag, const QString& html, int& pos) {
  const TagSpan raw = ReadTag(html, pos);
  tag.append(html.constData() + raw.begin, raw.end - raw.begin);
}

void CHTMLParser::ProcessArg(QString& args, QString& tag) {
  const TagParts parts = SplitTag(tag);
  if (parts.hasArgs) {
    d_->FillAttributes(parts.rawArgs);
    args = HandlerArgs(parts);
  }
  tag = parts.key.toString();
}

void CHTMLParser::WriteText(QString& text) {
  if (text.isEmpty()) return;
  d_->EmitText(text);
  text.clear();
}

QColor CHTMLParser::ParseColor(QString value) {
  Q_UNUSED(value);
  return AttributeColor();
}
