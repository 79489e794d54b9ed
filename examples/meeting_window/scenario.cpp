#include "scenario.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QCursor>
#include <QDebug>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextImageFormat>
#include <QTextList>
#include <QThread>
#include <QWindow>
#include <QtMath>
#include <cstdio>
#include <memory>

#include "accessibility_keys.h"
#include "chat_panel.h"
#include "meeting_area.h"
#include "meeting_window.h"
#include "notice_banner.h"
#include "participant_list.h"
#include "qt_util/custom_event_util.h"
#include "qt_util/event_handler/event_observer.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/qt_ui_monitor_helper.h"
#include "qt_util/ui_util.h"

namespace meeting {

namespace {

const QString kLongName = QStringLiteral("Maximiliana Fernández-Oyelaran de la Cruz y Villanueva");

// How long a window system that activates the windows it maps is given to do it, before a
// window is taken to stay inactive.
constexpr int kActivationMs = 500;

bool OnWayland() {
  return QGuiApplication::platformName() == QLatin1String("wayland");
}

void SendMouse(QWidget* widget, QEvent::Type type, const QPoint& pos) {
  const QPoint global = widget->mapToGlobal(pos);
  // Wayland lets no client move the pointer: Qt would only warn on every click.
  if (!OnWayland()) QCursor::setPos(global);
  const Qt::MouseButtons held = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
  QMouseEvent event(type, pos, global, Qt::LeftButton, held, Qt::NoModifier);
  QApplication::sendEvent(widget, &event);
}

// The block of the document that holds `text`, or an invalid block.
QTextBlock BlockWith(QTextDocument* document, const QString& text) {
  for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
    if (block.text().contains(text)) return block;
  }
  return {};
}

// The character format at the middle of the first occurrence of `text`.
QTextCharFormat FormatOf(QTextDocument* document, const QString& text) {
  const QTextCursor found = document->find(text);
  if (found.isNull()) return {};
  QTextCursor at(document);
  at.setPosition(found.selectionStart() + 1);
  return at.charFormat();
}

}  // namespace

QString RectText(const QRect& rect) {
  QString text;
  QDebug(&text).nospace() << rect;
  return text;
}

LogRecorder::LogRecorder(int level) : previous_level_(base::log::GetLogLevel()) {
  base::log::SetLogLevel(level);
  previous_sink_ = base::log::SetLogSink([this](const base::log::LogRecord& record) {
    std::lock_guard<std::mutex> lock(mutex_);
    records_.push_back(record);
    std::printf("    [log %d] %s\n", record.level, record.text.c_str());
    std::fflush(stdout);
  });
}

LogRecorder::~LogRecorder() {
  base::log::SetLogSink(std::move(previous_sink_));
  base::log::SetLogLevel(previous_level_);
}

void LogRecorder::Clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  records_.clear();
}

size_t LogRecorder::Mark() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return records_.size();
}

QStringList LogRecorder::TextsSince(size_t mark, int level) const {
  std::lock_guard<std::mutex> lock(mutex_);
  QStringList texts;
  for (size_t i = mark; i < records_.size(); ++i) {
    if (records_[i].level == level) texts.append(QString::fromStdString(records_[i].text));
  }
  return texts;
}

int LogRecorder::CountSince(size_t mark, int level, const QString& prefix) const {
  std::lock_guard<std::mutex> lock(mutex_);
  int count = 0;
  for (size_t i = mark; i < records_.size(); ++i) {
    count +=
        records_[i].level == level && QString::fromStdString(records_[i].text).startsWith(prefix);
  }
  return count;
}

bool WaitUntil(const std::function<bool()>& done, int timeout_ms) {
  QElapsedTimer timer;
  timer.start();
  while (!done()) {
    if (timer.elapsed() > timeout_ms) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    QThread::msleep(2);
  }
  return true;
}

void Click(QWidget* widget, const QPoint& pos) {
  SendMouse(widget, QEvent::MouseButtonPress, pos);
  SendMouse(widget, QEvent::MouseButtonRelease, pos);
}

void Click(QWidget* widget) {
  Click(widget, widget->rect().center());
}

Scenario::Scenario(MeetingWindow& window, const QString& out_dir, LogRecorder& log, int round)
    : window_(window), out_dir_(out_dir), log_(log), round_(round), wayland_(OnWayland()) {}

Scenario::~Scenario() = default;

void Scenario::Say(const QString& text) const {
  std::printf("%s\n", text.toUtf8().constData());
  std::fflush(stdout);
}

void Scenario::Expect(bool ok, const QString& what) {
  Say(QStringLiteral("  %1 %2").arg(ok ? QStringLiteral("ok      ") : QStringLiteral("MISMATCH"),
                                    what));
  if (!ok) ++mismatches_;
}

void Scenario::ExpectLogged(size_t mark, const QString& prefix) {
  Expect(log_.CountSince(mark, base::log::kLevelInfo, prefix) == 1,
         QStringLiteral("logged once at level 6: \"%1...\"").arg(prefix));
}

void Scenario::ExpectQtMessage(size_t mark, const QString& text) {
  // The message hook writes "<type>(<file>:<line>) <message>"; file and line are "unknown:0"
  // in builds without message context.
  int found = 0;
  for (const QString& record : log_.TextsSince(mark, base::log::kLevelWarning)) {
    found += record.startsWith(QLatin1String("QWarningMsg(")) &&
             record.endsWith(QLatin1String(") ") + text);
  }
  Expect(found == 1, QStringLiteral("Qt warning relayed once at level 4: \"%1\"").arg(text));
}

void Scenario::ExpectActive(QWidget* window, bool active, const QString& what) {
  if (active) {
    Expect(WaitUntil([window] { return window->isActiveWindow(); }), what);
    return;
  }
  // Given the time to activate it wrongly, then to take back an activation Qt still remembers
  // (the compositor's word that a window lost the focus may come late).
  WaitUntil([window] { return window->windowHandle() && window->windowHandle()->isExposed(); });
  WaitUntil([window] { return window->isActiveWindow(); }, kActivationMs);
  Expect(WaitUntil([window] { return !window->isActiveWindow(); }), what);
}

void Scenario::CheckTiles(int visible) {
  const QList<VideoTile*> tiles = window_.Area()->Tiles();
  // Where the window system activates no window, the meeting window is never active and an
  // inactive window's tiles may not paint (see below): none may.
  if (!Activates()) visible = 0;
  // What the helper should say: a tile may be painted while it and its ancestors are shown and
  // its window is neither minimised nor inactive (on Linux no native point is inside a window,
  // so an inactive window hides its tiles), at the tile's place on the screen.
  auto expected_visible = [this](const VideoTile* tile) {
    return tile->isVisible() && !window_.isMinimized() && window_.isActiveWindow();
  };
  auto agrees = [&](const VideoTile* tile) {
    if (tile->PaintVisible() != expected_visible(tile)) return false;
    return !tile->PaintVisible() ||
           tile->PaintRect() == QRect(tile->mapToGlobal(QPoint(0, 0)), tile->size());
  };
  WaitUntil([&] {
    for (const VideoTile* tile : tiles) {
      if (!agrees(tile)) return false;
    }
    return true;
  });
  int reported_visible = 0;
  for (const VideoTile* tile : tiles) {
    reported_visible += tile->PaintVisible();
    Expect(agrees(tile),
           QStringLiteral("tile %1 reported %2 at %3 (%4 report(s) so far)")
               .arg(tile->Id(),
                    tile->PaintVisible() ? QStringLiteral("visible") : QStringLiteral("hidden"),
                    RectText(tile->PaintRect()))
               .arg(tile->PaintReports()));
  }
  Expect(reported_visible == visible,
         QStringLiteral("%1 of %2 tiles may paint").arg(reported_visible).arg(tiles.size()));
}

void Scenario::CheckTheme(const QList<QWidget*>& panels) {
  QTUICustomThemeHelper* theme = QTUICustomThemeHelper::SharedInstance();
  const bool dark = theme->IsCurrentDarkType();
  const QString sheet = VxQtUiUtil::GetQss(MeetingWindow::StyleSheetPath() +
                                           (dark ? QStringLiteral("_dark") : QString()));
  for (QWidget* panel : panels) {
    Expect(!sheet.isEmpty() && panel->styleSheet() == sheet &&
               panel->property("widget-config").toString() == QLatin1String("widget__config--main"),
           QStringLiteral("%1 wears the %2 style sheet and the widget-config marker")
               .arg(panel->objectName(), dark ? QStringLiteral("dark") : QStringLiteral("light")));
  }
  // Every run of the chat, received before or after the switch, in the theme's text colour.
  const QColor text = theme->GetThemeQColor("color.text");
  bool chat_colour = true;
  for (QTextBlock block = window_.Chat()->Document()->begin(); block.isValid();
       block = block.next()) {
    for (auto it = block.begin(); !it.atEnd(); ++it) {
      const QTextCharFormat format = it.fragment().charFormat();
      if (!format.isImageFormat()) chat_colour &= format.foreground().color() == text;
    }
  }
  const QColor frame = theme->GetThemeQColor("color.success");
  bool frames = true;
  for (const VideoTile* tile : window_.Area()->Tiles()) frames &= tile->FrameColor() == frame;
  Expect(chat_colour && frames, QStringLiteral("chat text in %1 and tile frames in %2, as the "
                                               "theme's tokens say")
                                    .arg(text.name(), frame.name()));
  // The icon comes from the theme's folder at the window's scale step (2 or 3), so its centre
  // has the theme's accent colour and its device pixel ratio is the step.
  const QPixmap icon = window_.Area()->Toolbar()->MuteIcon();
  const int step = qBound(2, qCeil(window_.devicePixelRatioF()), 3);
  const QImage image = icon.toImage();
  const QColor centre =
      image.isNull() ? QColor() : image.pixelColor(image.width() / 2, image.height() / 2);
  Expect(!icon.isNull() && qFuzzyCompare(icon.devicePixelRatio(), qreal(step)) &&
             centre.rgb() == theme->GetThemeQColor("color.accent").rgb(),
         QStringLiteral("the mute icon: %1x%2 px at ratio %3, centre %4")
             .arg(image.width())
             .arg(image.height())
             .arg(icon.devicePixelRatio())
             .arg(centre.name()));
  Expect(window_.DarkButton()->isChecked() == dark, "the theme button shows the theme");
}

void Scenario::CheckKeys(QWidget* root) {
  QStringList missing;
  for (QAbstractButton* button : root->findChildren<QAbstractButton*>()) {
    if (!HasKeys(button)) missing << button->objectName();
  }
  Expect(missing.isEmpty(),
         QStringLiteral("every button of %1 has its accessibility keys%2")
             .arg(root->objectName(),
                  missing.isEmpty() ? QString()
                                    : QStringLiteral(" (missing: %1)").arg(missing.join(", "))));
}

void Scenario::Shoot(QWidget* widget, const QString& name) {
  // A long run would only overwrite the first round's pictures.
  if (round_ > 1) return;
  const QString path =
      QStringLiteral("%1/%2-%3.png").arg(out_dir_).arg(step_, 2, 10, QLatin1Char('0')).arg(name);
  Expect(widget->grab().save(path), QStringLiteral("screenshot %1").arg(QDir::cleanPath(path)));
}

void Scenario::Step(const QString& name, const std::function<void()>& body) {
  ++step_;
  step_name_ = name;
  Say(QStringLiteral("== step %1: %2 ==").arg(step_).arg(name));
  const int before = mismatches_;
  body();
  QCoreApplication::processEvents();
  Shoot(&window_, name);
  if (mismatches_ != before) {
    Say(QStringLiteral("!! step %1 (%2): %3 mismatch(es)")
            .arg(step_)
            .arg(name)
            .arg(mismatches_ - before));
  }
}

int Scenario::Run() {
  // A fresh directory is made, parents and all.
  QDir().mkpath(out_dir_);
  QDir out(out_dir_);
  // Screenshots of an earlier run would pass for this run's.
  if (round_ == 1) {
    for (const QString& old : out.entryList({QStringLiteral("[0-9][0-9]-*.png")}, QDir::Files)) {
      out.remove(old);
    }
  }
  // The scenario, in order: each step acts, then checks what it observed.
  const struct {
    const char* name;
    void (Scenario::*run)();
  } steps[] = {
      {"join", &Scenario::Join},
      {"mute", &Scenario::Mute},
      {"share", &Scenario::Share},
      {"chat", &Scenario::Chat},
      {"notice", &Scenario::Notice},
      {"dark", &Scenario::Dark},
      {"stop-share", &Scenario::StopShare},
      {"tile-clicks", &Scenario::TileClicks},
      {"move", &Scenario::Move},
      {"minimise", &Scenario::Minimise},
      {"dialog", &Scenario::Dialog},
      {"screens", &Scenario::Screens},
      {"leave", &Scenario::Leave},
  };
  for (const auto& step : steps) Step(QString::fromLatin1(step.name), [&] { (this->*step.run)(); });
  Say(mismatches_ == 0
          ? QStringLiteral("scenario: %1 steps, every observation as expected").arg(step_)
          : QStringLiteral("scenario: %1 steps, %2 mismatch(es)").arg(step_).arg(mismatches_));
  return mismatches_;
}

void Scenario::Join() {
  window_.Join(QStringLiteral("Weekly design review"), QStringLiteral("Ada Lovelace"),
               {{QStringLiteral("grace"), QStringLiteral("Grace Hopper")},
                {QStringLiteral("max"), kLongName},
                {QStringLiteral("alan"), QStringLiteral("Alan Turing")}});
  window_.show();
  window_.activateWindow();
  // A Wayland compositor without a seat gives no window the keyboard focus, and a client cannot
  // take it: activateWindow() changes nothing there.
  ExpectActive(&window_, Activates(),
               Activates() ? QStringLiteral("the window is active")
                           : QStringLiteral("the window stays inactive: the compositor has no "
                                            "seat to give it the focus"));
  // The record starts with the process in the first round and is cleared before each later one.
  const int allocs =
      log_.CountSince(0, base::log::kLevelInfo, QStringLiteral("qt ui custom theme helper alloc"));
  Expect(allocs == (round_ == 1 ? 1 : 0), "the theme helper was made once, at start-up");
  CheckTheme({&window_});
  CheckTiles(4);

  ParticipantList* list = window_.Participants();
  const QList<ParticipantRow*> rows = list->Rows();
  Expect(rows.size() == 4, QStringLiteral("%1 participant rows").arg(rows.size()));

  // The list as assistive technology sees it: the rows' item widgets are its children.
  QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(list);
  const int children = iface ? iface->childCount() : -1;
  Say(QStringLiteral("  accessible list \"%1\" has %2 children")
          .arg(iface ? iface->text(QAccessible::Name) : QString())
          .arg(children));
  bool rows_exposed = children == rows.size();
  for (int i = 0; rows_exposed && i < children; ++i) {
    QAccessibleInterface* child = iface->child(i);
    rows_exposed = child && child->object() == rows.at(i);
    if (child)
      Say(QStringLiteral("    child %1: \"%2\"").arg(i).arg(child->text(QAccessible::Name)));
  }
  Expect(rows_exposed, "each accessible child of the list is its row's item widget");
  bool keyed = true;
  for (int i = 0; i < rows.size(); ++i) {
    const QListWidgetItem* item = list->item(i);
    const QString key = rows.at(i)->objectName();
    keyed &= HasKeys(rows.at(i)) &&
             item->data(Qt::AccessibleTextRole).toString() == QStringLiteral("atg__%1").arg(key) &&
             item->data(Qt::UserRole).toString() == QStringLiteral("atg__%1__name").arg(key);
  }
  Expect(keyed, "rows and their list items carry the accessibility keys of the participants");
  CheckKeys(&window_);

  bool round = true;
  for (ParticipantRow* row : rows) {
    const QImage avatar = row->Avatar()->pixmap(Qt::ReturnByValue).toImage();
    round &= !avatar.isNull() && qAlpha(avatar.pixel(0, 0)) == 0 &&
             qAlpha(avatar.pixel(avatar.width() / 2, avatar.height() / 2)) == 255;
  }
  Expect(round, "every avatar is round: clear corners, opaque centre");

  // Names elided in place, to the label's width.
  for (ParticipantRow* row : rows) {
    ElidedNameLabel* label = row->NameLabel();
    const bool fits =
        QFontMetrics(label->font()).horizontalAdvance(label->text()) <= label->width();
    const bool elided = label->text() != label->FullText();
    Say(QStringLiteral("  name label %1 px: \"%2\"").arg(label->width()).arg(label->text()));
    if (label->FullText() == kLongName) {
      Expect(elided && label->text().endsWith(QChar(0x2026)) && fits,
             "the long name is elided at its right end and fits its label");
    } else {
      Expect(!elided && fits, QStringLiteral("\"%1\" is shown whole").arg(label->FullText()));
    }
  }
}

void Scenario::Mute() {
  size_t mark = log_.Mark();
  Click(window_.Area()->Toolbar()->MuteButton());
  Expect(window_.Muted(QStringLiteral("me")), "the local user is muted after the toolbar click");
  ExpectLogged(mark, QStringLiteral("button Mute clicked"));
  ExpectLogged(
      mark,
      QStringLiteral("Click Widget Stack toolbar_mute ,accessibleName:atg__toolbar_mute__name"));
  Expect(window_.Area()->Toolbar()->MuteButton()->text() == QLatin1String("Unmute"),
         "the toolbar offers Unmute");

  mark = log_.Mark();
  ParticipantRow* grace = window_.Participants()->Row(QStringLiteral("grace"));
  Click(grace->MuteButton());
  Expect(grace->Muted() && window_.Area()->Tile(QStringLiteral("grace"))->Muted(),
         "Grace is muted from her row, in the list and on her tile");
  ExpectLogged(mark, QStringLiteral("button Mute clicked"));
}

void Scenario::Share() {
  const size_t mark = log_.Mark();
  Click(window_.Area()->Toolbar()->ShareButton());
  QWidget* banner = window_.Area()->ShareBanner();
  Expect(window_.Sharing() && banner && banner->isVisible(),
         "sharing started and its banner is shown");
  ExpectLogged(mark, QStringLiteral("button Share clicked"));
}

void Scenario::Chat() {
  const size_t mark = log_.Mark();
  ChatPanel* chat = window_.Chat();
  chat->AddImage(QStringLiteral("thumbs_up.png"),
                 ParticipantList::InitialsPixmap(QStringLiteral("+ 1"), 18).toImage());
  window_.ReceiveChat(QStringLiteral("Grace Hopper"),
                      QStringLiteral("<b>Agenda</b> for today:<ul><li>budget review</li>"
                                     "<li>road map</li></ul>"));
  window_.ReceiveChat(
      QStringLiteral("Alan Turing"),
      QStringLiteral("<div><center><i>Slides</i> are up <img src=\"THUMBS_UP.png\"></center></div>"
                     "<div>Notes: <img src=\"minutes.gif\"></div>"));
  window_.ReceiveChat(QStringLiteral("Grace Hopper"),
                      QStringLiteral("<html><head><title>draft</title></head><body>Thanks "
                                     "<u>all</u>,<br>see you <strike>Monday</strike> Tuesday"
                                     "</body></html>"));
  // A typed message is plain text: escaped into HTML, then converted like any other, so its
  // markup characters come back as they were typed.
  const QString typed = QStringLiteral("2 < 3 & <b>not bold</b>  twice");
  chat->Input()->setText(typed);
  QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"));
  QApplication::sendEvent(chat->Input(), &enter);
  QTextDocument* document = chat->Document();
  for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
    Say(QStringLiteral("  chat paragraph: \"%1\"")
            .arg(block.text().replace(QChar::LineSeparator, QStringLiteral(" <br> "))));
  }
  Expect(chat->Messages() == 4, QStringLiteral("%1 messages in the panel").arg(chat->Messages()));
  const QTextBlock last = document->lastBlock();
  Expect(last.text() == typed &&
             FormatOf(document, QStringLiteral("not bold")).fontWeight() != QFont::Bold,
         "the typed message shows exactly as typed, markup and double blank included");
  // Escape reaches the panel's listener before the line edit, which would ignore it.
  chat->Input()->setText(QStringLiteral("never mind"));
  QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
  QApplication::sendEvent(chat->Input(), &escape);
  Expect(chat->Input()->text().isEmpty() && chat->Messages() == 4,
         "Escape drops a half-typed message and sends nothing");
  Expect(QtEventObserver::ObserverCount() == 1,
         QStringLiteral("the library's observer registry holds the panel's listener alone (%1)")
             .arg(QtEventObserver::ObserverCount()));
  Expect(FormatOf(document, QStringLiteral("Agenda")).fontWeight() == QFont::Bold,
         "\"Agenda\" is bold");
  const QTextBlock budget = BlockWith(document, QStringLiteral("budget review"));
  const QTextBlock road_map = BlockWith(document, QStringLiteral("road map"));
  Expect(budget.textList() && budget.textList() == road_map.textList() &&
             budget.textList()->count() == 2 &&
             budget.textList()->format().style() == QTextListFormat::ListDisc,
         "the two agenda items form one bullet list");
  const QTextBlock slides = BlockWith(document, QStringLiteral("Slides are up"));
  bool has_image = false;
  for (auto it = slides.begin(); !it.atEnd(); ++it) {
    const QTextCharFormat format = it.fragment().charFormat();
    has_image |=
        format.isImageFormat() && format.toImageFormat().name() == QLatin1String("thumbs_up.png");
  }
  Expect(slides.isValid() && slides.blockFormat().alignment() == Qt::AlignHCenter && has_image,
         "the centred line carries the image, its source lower-cased by the parser");
  Expect(FormatOf(document, QStringLiteral("Slides")).fontItalic(), "\"Slides\" is italic");
  Expect(BlockWith(document, QStringLiteral("Notes:")).text() ==
             QLatin1String("Notes: [image minutes.gif]"),
         "an image the panel does not have is named in its place");
  ExpectQtMessage(mark, QStringLiteral("chat: no image \"minutes.gif\""));
  Expect(!document->toPlainText().contains(QStringLiteral("draft")),
         "nothing of the message's <head> reached the panel");
  Expect(FormatOf(document, QStringLiteral("all")).fontUnderline() &&
             FormatOf(document, QStringLiteral("Monday")).fontStrikeOut() &&
             !FormatOf(document, QStringLiteral("Tuesday")).fontStrikeOut(),
         "underline and strike-out end with their closing tags");
  Expect(BlockWith(document, QStringLiteral("Thanks"))
             .text()
             .endsWith(QStringLiteral("Thanks all,") + QChar(QChar::LineSeparator) +
                       QStringLiteral("see you Monday Tuesday")),
         "text runs are joined with single blanks and the <br> breaks the line");
}

void Scenario::Notice() {
  NoticeBanner* notice = window_.Notice();
  auto report = [this, notice] {
    for (int i = 0; i < notice->Lines().size(); ++i) {
      Say(QStringLiteral("  line %1 %2: \"%3\"")
              .arg(i)
              .arg(RectText(notice->LineRects().at(static_cast<size_t>(i))))
              .arg(notice->Lines().at(i)));
    }
    // The first line starts after the marker with that much less room; the others start at
    // the left of the text area, one line height and spacing apart.
    bool fits = notice->LineRects().size() == static_cast<size_t>(notice->Lines().size());
    const QFontMetrics fm(notice->font());
    for (int i = 0; fits && i < notice->Lines().size(); ++i) {
      const QRect& rect = notice->LineRects().at(static_cast<size_t>(i));
      const int left = i == 0 ? NoticeBanner::FirstLineLeft() : NoticeBanner::LineLeft();
      fits = rect.left() == left && rect.top() == NoticeBanner::LineTop(i, fm.height()) &&
             left + fm.horizontalAdvance(notice->Lines().at(i)) <= notice->TextRight();
    }
    Expect(fits, QStringLiteral("each line starts where it should and its text ends by x %1")
                     .arg(notice->TextRight()));
  };
  Say(QStringLiteral("  the join notice, %1 px wide:").arg(notice->width()));
  report();
  Expect(notice->Lines().size() == NoticeBanner::MaxLines() && notice->Elided() &&
             notice->Lines().constLast().endsWith(QChar(0x2026)),
         "the long join notice stops at the line limit, its last line elided");

  window_.ShowNotice(QStringLiteral("Recording paused."));
  QCoreApplication::processEvents();
  report();
  Expect(notice->Lines().size() == 1 && !notice->Elided() &&
             notice->Lines().constFirst() == QLatin1String("Recording paused."),
         "a short notice takes one line, whole");
}

void Scenario::Dark() {
  const size_t mark = log_.Mark();
  Click(window_.DarkButton());
  ExpectLogged(mark, QStringLiteral("button Dark clicked"));
  Expect(QTUICustomThemeHelper::SharedInstance()->IsCurrentDarkType() &&
             QTUICustomThemeHelper::SharedInstance()->CurrentThemeType() == 2,
         "the engine switched to its dark theme (type 2)");
  CheckTheme({&window_});
  CheckKeys(window_.Area()->ShareBanner());
}

void Scenario::StopShare() {
  QPointer<QWidget> banner = window_.Area()->ShareBanner();
  if (!banner) {
    Expect(false, "a sharing banner to stop");
    return;
  }
  const size_t mark = log_.Mark();
  Click(banner->findChild<QPushButton*>(QStringLiteral("share_stop")));
  ExpectLogged(mark, QStringLiteral("button Stop sharing clicked"));
  // The capture source reports the end of sharing as well: a second request for the same
  // banner before the event loop ran.
  window_.StopShare();
  const std::set<QObject*>* pending = CustomEventUtils::PendingDeleteListInstance();
  Expect(banner && pending->count(banner.data()) == 1 && !banner->isVisible(),
         "the banner is hidden and its deletion is pending, not done under the click");
  Expect(WaitUntil([&] { return banner.isNull(); }), "the event loop deleted the banner");
  const int destructions = window_.PanelDestructions().value(QStringLiteral("share_banner"));
  Say(QStringLiteral("  share_banner destroyed %1 time(s)").arg(destructions));
  Expect(destructions == 1, "asked twice, deleted once");
  Expect(!window_.Sharing() && !window_.Area()->ShareBanner(), "sharing has ended");
}

void Scenario::TileClicks() {
  MeetingArea* area = window_.Area();
  QWidget* toolbar = area->Toolbar();
  QTUIMonitorHelper* monitor = QTUIMonitorHelper::SharedInstance();
  // The toolbar in window coordinates; its last column and row still belong to it.
  const QRect bar(toolbar->mapTo(&window_, QPoint(0, 0)), toolbar->size());
  const bool corners = monitor->IsInUIRectInMeeting(bar.topLeft()) &&
                       monitor->IsInUIRectInMeeting(bar.bottomRight()) &&
                       !monitor->IsInUIRectInMeeting(bar.bottomRight() + QPoint(1, 0)) &&
                       !monitor->IsInUIRectInMeeting(bar.topLeft() - QPoint(0, 1));
  Say(QStringLiteral("  toolbar at %1 in the window").arg(RectText(bar)));
  Expect(corners, "the hit test covers the toolbar, edges included, and nothing beside it");

  // A click that the video surface under the toolbar receives belongs to the toolbar.
  QPoint on_bar;
  VideoTile* under_bar = nullptr;
  for (VideoTile* tile : area->Tiles()) {
    const QRect overlap = QRect(tile->mapTo(&window_, QPoint(0, 0)), tile->size()) & bar;
    if (!under_bar && !overlap.isEmpty()) {
      under_bar = tile;
      on_bar = overlap.center();
    }
  }
  if (!under_bar) {
    Expect(false, "a tile under the toolbar");
    return;
  }
  const int left_before = area->ClicksLeftToPanels();
  Click(under_bar, under_bar->mapFrom(&window_, on_bar));
  Expect(area->ClicksLeftToPanels() == left_before + 1 && !under_bar->Spotlight(),
         QStringLiteral("a click on tile %1 under the toolbar is left to the toolbar")
             .arg(under_bar->Id()));

  VideoTile* grace = area->Tile(QStringLiteral("grace"));
  const int acted_before = area->ClicksActedOn();
  Click(grace);
  Expect(area->ClicksActedOn() == acted_before + 1 && grace->Spotlight(),
         "a click in the open puts Grace's tile in the spotlight");
  CheckTiles(1);
  Shoot(&window_, QStringLiteral("spotlight"));
  Click(grace);
  Expect(!grace->Spotlight(), "a second click ends the spotlight");
  CheckTiles(4);
}

void Scenario::Move() {
  std::vector<QRect> before;
  for (const VideoTile* tile : window_.Area()->Tiles()) before.push_back(tile->PaintRect());
  const QPoint from = window_.pos();
  // On Wayland the compositor places the window and tells the client nothing of where:
  // mapToGlobal() stays relative to the window's own origin, so the tiles' rectangles, global
  // on X11, stay where they were. pos() still reports what the client asked for.
  const QPoint shift = wayland_ ? QPoint(0, 0) : QPoint(40, 30);
  window_.move(from + QPoint(40, 30));
  Expect(WaitUntil([&] { return window_.pos() == from + QPoint(40, 30); }),
         QStringLiteral("the window moved from (%1, %2) to (%3, %4)")
             .arg(from.x())
             .arg(from.y())
             .arg(window_.pos().x())
             .arg(window_.pos().y()));
  CheckTiles(4);
  bool moved = true;
  for (int i = 0; i < window_.Area()->Tiles().size(); ++i) {
    moved &= window_.Area()->Tiles().at(i)->PaintRect() ==
             before[static_cast<size_t>(i)].translated(shift);
  }
  Expect(moved, wayland_ ? QStringLiteral("every tile's reported rectangle stayed put: Wayland "
                                          "gives a client no window position")
                         : QStringLiteral("every tile's reported rectangle moved with the window"));
}

void Scenario::Minimise() {
  BeforeMinimise();
  window_.showMinimized();
  Expect(WaitUntil([this] { return window_.isMinimized(); }), "the window is minimised");
  CheckTiles(0);
  QPointer<QWidget> mini = window_.MiniWindow();
  Expect(mini && mini->isVisible() && mini->windowFlags().testFlag(Qt::WindowStaysOnTopHint),
         "the mini window is shown and pinned on top");
  if (!mini) return;
  // Kept inside the work area of the screen under the cursor, less the margins.
  QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
  if (!screen) screen = QGuiApplication::primaryScreen();
  const QRect allowed = screen->availableGeometry() - MeetingWindow::PopupMargins();
  Say(QStringLiteral("  mini window at %1, work area less margins %2")
          .arg(RectText(mini->geometry()), RectText(allowed)));
  Expect(allowed.contains(mini->geometry()), "the mini window lies inside the work area");
  CheckMiniWindow(mini);
  CheckTheme({mini});
  CheckKeys(mini);
  Shoot(mini, QStringLiteral("mini-window"));

  const size_t mark = log_.Mark();
  Click(mini->findChild<QPushButton*>(QStringLiteral("mini_back")));
  ExpectLogged(mark, QStringLiteral("button Back to meeting clicked"));
  if (wayland_) {
    // Restored as far as Qt knows, but xdg-shell has no request to leave the minimised state:
    // the compositor keeps the window minimised until the user picks it, and it took the focus
    // away when the window was minimised (with a seat, its word may come after the click).
    Expect(WaitUntil([this] { return !window_.isMinimized(); }), "restored in Qt's view");
    ExpectActive(&window_, false,
                 "yet inactive: the compositor keeps it minimised, and a client cannot restore it");
  } else {
    Expect(WaitUntil([this] { return !window_.isMinimized() && window_.isActiveWindow(); }),
           "restored and active again");
  }
  Expect(WaitUntil([&] { return mini.isNull(); }) &&
             window_.PanelDestructions().value(QStringLiteral("mini_window")) == 1,
         "the mini window was deleted once, from the event loop");
  CheckTiles(wayland_ ? 0 : 4);
}

void Scenario::Dialog() {
  const size_t mark = log_.Mark();
  Click(window_.Area()->Toolbar()->InfoButton());
  ExpectLogged(mark, QStringLiteral("button Info clicked"));
  QPointer<QDialog> dialog = window_.InfoDialog();
  if (Activates()) {
    Expect(dialog && WaitUntil([&] { return dialog && dialog->isActiveWindow(); }),
           "the information dialog is open and active");
  } else {
    Expect(dialog && dialog->isVisible(), "the information dialog is open");
    if (dialog) ExpectActive(dialog, false, "the dialog stays inactive: no seat");
  }
  if (!dialog) return;
  // Centred over the window (halves truncated), then kept on the cursor's screen.
  const QPoint origin = window_.mapToGlobal(QPoint(0, 0));
  const QPoint centred(origin.x() + (window_.width() - dialog->width()) / 2,
                       origin.y() + (window_.height() - dialog->height()) / 2);
  QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
  if (!screen) screen = QGuiApplication::primaryScreen();
  const QRect allowed = screen->availableGeometry() - MeetingWindow::PopupMargins();
  const QRect frame = dialog->frameGeometry();
  Say(QStringLiteral("  centred at (%1, %2), frame placed at %3, work area less margins %4")
          .arg(window_.InfoDialogCentredAt().x())
          .arg(window_.InfoDialogCentredAt().y())
          .arg(RectText(frame), RectText(allowed)));
  Expect(window_.InfoDialogCentredAt() == centred, "centred over the meeting window");
  const bool fits = frame.width() <= allowed.width() && frame.height() <= allowed.height();
  if (wayland_) {
    // The compositor places a Wayland client's windows: the place the window asked for is all
    // the client decides, and Qt reports the shown dialog at the origin, wherever it is.
    const QRect asked(window_.InfoDialogAskedAt(), frame.size());
    Say(QStringLiteral("  asked for %1").arg(RectText(asked)));
    Expect(!fits || allowed.contains(asked), "asked for a place inside the work area");
    Expect(asked.topLeft() == centred || !allowed.contains(QRect(centred, frame.size())),
           "asked to move only where the centred place left the work area");
    Expect(dialog->geometry().topLeft() == QPoint(0, 0),
           "the dialog is reported at the origin: the compositor placed it");
  } else {
    Expect(!fits || allowed.contains(frame), "kept inside the work area");
    Expect(frame.topLeft() == centred || !allowed.contains(QRect(centred, frame.size())),
           "moved only where the centred place left the work area");
  }
  CheckTheme({dialog});
  CheckKeys(dialog);
  // The window lost the focus to the dialog: its tiles may not paint meanwhile.
  CheckTiles(0);
  Shoot(dialog, QStringLiteral("info-dialog"));

  const size_t close_mark = log_.Mark();
  Click(dialog->findChild<QPushButton*>(QStringLiteral("info_close")));
  ExpectLogged(close_mark, QStringLiteral("button Close clicked"));
  Expect(WaitUntil([&] { return dialog.isNull(); }) &&
             window_.PanelDestructions().value(QStringLiteral("info_dialog")) == 1,
         "the dialog was deleted once, from the event loop");
  // The window asks to be activated again. A Wayland compositor decides: weston 10 offers no
  // activation protocol, so the request is dropped, and the meeting window is still minimised
  // in the compositor's eyes (see the minimise step), so the focus does not come back to it
  // when the dialog goes.
  ExpectActive(&window_, !wayland_,
               wayland_ ? QStringLiteral("the meeting window stays inactive: the compositor "
                                         "did not activate it again")
                        : QStringLiteral("the meeting window was activated again"));
  CheckTiles(wayland_ ? 0 : 4);
}

void Scenario::Screens() {
  // What a client sees without plugging anything in: the screens Qt knows and the header that
  // follows the screen observer. Plugging a screen in and out takes a virtual screen, which
  // the test tree's run of this scenario adds.
  QStringList names;
  for (const QScreen* screen : QGuiApplication::screens()) {
    names << QStringLiteral("%1 at %2").arg(screen->name(), RectText(screen->geometry()));
  }
  Say(QStringLiteral("  screens: %1").arg(names.join(QStringLiteral(", "))));
  Expect(window_.ScreensLabel()->text() ==
             MeetingWindow::tr("%n screen(s)", nullptr, QGuiApplication::screens().size()),
         QStringLiteral("the header says \"%1\"").arg(window_.ScreensLabel()->text()));
}

void Scenario::Leave() {
  bool asked = false;
  QObject context;
  QObject::connect(&window_, &MeetingWindow::LeaveRequested, &context, [&asked] { asked = true; });
  const size_t mark = log_.Mark();
  Click(window_.Area()->Toolbar()->LeaveButton());
  ExpectLogged(mark, QStringLiteral("button Leave clicked"));
  Expect(asked, "the window was asked to leave the meeting");
}

}  // namespace meeting
