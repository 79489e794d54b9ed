#include "meeting_window.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "accessibility_keys.h"
#include "chat_panel.h"
#include "meeting_area.h"
#include "notice_banner.h"
#include "participant_list.h"
#include "qt_util/custom_event_util.h"
#include "qt_util/event_handler/screen_observer.h"
#include "qt_util/qt_ui_custom_theme_helper.h"
#include "qt_util/ui_util.h"

namespace meeting {

namespace {

constexpr int kSideWidth = 290;

QString ScreenName(const QScreen* screen) {
  return screen && !screen->name().isEmpty() ? screen->name() : QStringLiteral("(unnamed)");
}

}  // namespace

MeetingWindow::MeetingWindow(QWidget* parent)
    : QWidget(parent),
      title_(new QLabel(this)),
      screens_label_(new QLabel(this)),
      dark_button_(new QPushButton(tr("Dark"), this)),
      participants_(new ParticipantList(this)),
      area_(new MeetingArea(this)),
      chat_(new ChatPanel(this)),
      notice_(new NoticeBanner(this)),
      screen_observer_(new QtScreenObserver(this)) {
  setObjectName(QStringLiteral("meeting_window"));
  setWindowTitle(tr("Meeting"));
  title_->setObjectName(QStringLiteral("meeting_title"));
  screens_label_->setObjectName(QStringLiteral("screens_label"));

  dark_button_->setObjectName(QStringLiteral("theme_dark"));
  dark_button_->setCheckable(true);
  auto* header = new QHBoxLayout;
  header->addWidget(title_, 1);
  header->addWidget(screens_label_);
  header->addWidget(dark_button_);

  participants_->setFixedWidth(kSideWidth);
  auto* side = new QVBoxLayout;
  side->addWidget(notice_);
  side->addWidget(chat_, 1);
  auto* side_widget = new QWidget(this);
  side_widget->setObjectName(QStringLiteral("side_panel"));
  side_widget->setLayout(side);
  side->setContentsMargins(0, 0, 0, 0);
  side_widget->setFixedWidth(kSideWidth);

  auto* body = new QHBoxLayout;
  body->addWidget(participants_);
  body->addWidget(area_, 1);
  body->addWidget(side_widget);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(8, 8, 8, 8);
  layout->addLayout(header);
  layout->addLayout(body, 1);
  resize(1180, 660);

  connect(participants_, &ParticipantList::MuteRequested, this, &MeetingWindow::SetMuted);
  connect(area_->Toolbar()->MuteButton(), &QPushButton::clicked, this,
          [this] { SetMuted(QStringLiteral("me"), !Muted(QStringLiteral("me"))); });
  connect(area_->Toolbar()->ShareButton(), &QPushButton::clicked, this,
          [this] { sharing_ ? StopShare() : StartShare(); });
  connect(area_, &MeetingArea::StopShareRequested, this, &MeetingWindow::StopShare);
  connect(area_->Toolbar()->LeaveButton(), &QPushButton::clicked, this,
          &MeetingWindow::LeaveRequested);
  connect(area_->Toolbar()->InfoButton(), &QPushButton::clicked, this,
          &MeetingWindow::OpenInfoDialog);
  connect(dark_button_, &QPushButton::clicked, this, &MeetingWindow::ThemeSwitchRequested);

  connect(screen_observer_, &QtScreenObserver::OnScreenListChanged, this, [this] {
    screen_reports_.append({ScreenReport::kListChanged, QString(), QRect()});
    UpdateScreensLabel();
  });
  connect(screen_observer_, &QtScreenObserver::OnPrimaryScreenChanged, this,
          [this](QScreen* screen) {
            screen_reports_.append({ScreenReport::kPrimaryChanged, ScreenName(screen), QRect()});
            UpdateScreensLabel();
          });
  connect(screen_observer_, &QtScreenObserver::OnScreenGeometryChanged, this,
          [this](QScreen* screen, const QRect& work_area) {
            screen_reports_.append({ScreenReport::kWorkAreaChanged, ScreenName(screen), work_area});
            UpdateScreensLabel();
          });
  UpdateScreensLabel();

  SetButtonKeys(this);
  // The engine sends QEvent::ThemeChange to the objects it was given here.
  QTUICustomThemeHelper::SharedInstance()->InstallAppThemeEventFilter(this);
  ApplyTheme();
}

MeetingWindow::~MeetingWindow() {
  // Top-level panels have no parent to take them along.
  delete info_dialog_;
  delete mini_window_;
}

void MeetingWindow::Join(const QString& title, const QString& my_name,
                         const QList<QPair<QString, QString>>& others) {
  title_->setText(title);
  setWindowTitle(title);
  AddParticipant(QStringLiteral("me"), my_name);
  participants_->Row(QStringLiteral("me"))->SetAvatar(QPixmap(MyAvatarPath()));
  for (const auto& [id, name] : others) AddParticipant(id, name);
  ShowNotice(tr("You joined \"%1\" with %2 others. The meeting is recorded; everyone in it can "
                "see the recording notice and may leave at any time.")
                 .arg(title)
                 .arg(others.size()));
}

void MeetingWindow::AddParticipant(const QString& id, const QString& name) {
  participants_->AddParticipant(id, name);
  area_->AddTile(id, name);
}

void MeetingWindow::SetMuted(const QString& id, bool muted) {
  if (ParticipantRow* row = participants_->Row(id)) row->SetMuted(muted);
  if (VideoTile* tile = area_->Tile(id)) tile->SetMuted(muted);
  if (id == QLatin1String("me")) area_->Toolbar()->SetMuted(muted);
}

bool MeetingWindow::Muted(const QString& id) const {
  const ParticipantRow* row = participants_->Row(id);
  return row && row->Muted();
}

void MeetingWindow::StartShare() {
  if (sharing_) return;
  sharing_ = true;
  QWidget* previous = area_->ShareBanner();
  QWidget* banner = area_->ShowShareBanner();
  if (banner != previous) TrackPanel(banner);
  area_->Toolbar()->SetSharing(true);
}

void MeetingWindow::StopShare() {
  sharing_ = false;
  area_->Toolbar()->SetSharing(false);
  if (QWidget* banner = area_->ShareBanner()) {
    banner->hide();
    CustomEventUtils::DeleteObjectLater(banner);
  }
}

void MeetingWindow::ReceiveChat(const QString& sender, const QString& html) {
  chat_->ReceiveMessage(sender, html);
}

void MeetingWindow::ShowNotice(const QString& text) {
  notice_->SetText(text);
}

QDialog* MeetingWindow::OpenInfoDialog() {
  if (info_dialog_ && info_dialog_->isVisible()) return info_dialog_;
  // No parent widget: CenterToWidget maps its result into the coordinates of the widget's
  // parent, which for a top-level dialog would be the wrong ones.
  auto* dialog = new QDialog;
  dialog->setObjectName(QStringLiteral("info_dialog"));
  dialog->setWindowTitle(tr("Meeting information"));
  dialog->setWindowModality(Qt::ApplicationModal);
  auto* layout = new QVBoxLayout(dialog);
  auto* text = new QLabel(tr("<b>%1</b><br>%n participant(s)<br>Meeting ID 884 2210 731", nullptr,
                             static_cast<int>(participants_->Rows().size()))
                              .arg(title_->text().toHtmlEscaped()),
                          dialog);
  layout->addWidget(text);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, dialog);
  buttons->button(QDialogButtonBox::Close)->setObjectName(QStringLiteral("info_close"));
  layout->addWidget(buttons);
  connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
  SetButtonKeys(dialog);
  ApplyStyleSheet(dialog);
  connect(dialog, &QDialog::finished, this, [this, dialog] {
    CustomEventUtils::DeleteObjectLater(dialog);
    CustomEventUtils::ActivateWidgetLater(this);
  });
  dialog->adjustSize();
  VxQtUiUtil::CenterToWidget(dialog, this);
  info_dialog_centred_at_ = dialog->pos();
  // move() places the frame, so the frame is what must stay on screen.
  info_dialog_asked_at_ =
      VxQtUiUtil::CorrectRect(dialog->frameGeometry(), PopupMargins()).topLeft();
  dialog->move(info_dialog_asked_at_);
  TrackPanel(dialog);
  info_dialog_ = dialog;
  dialog->open();
  return dialog;
}

void MeetingWindow::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::ThemeChange) {
    ApplyTheme();
  } else if (event->type() == QEvent::WindowStateChange) {
    if (isMinimized()) {
      ShowMiniWindow();
    } else {
      CloseMiniWindow();
    }
  }
}

void MeetingWindow::ApplyStyleSheet(QWidget* widget) {
  VxQtUiUtil::SetupQss(
      widget, QTUICustomThemeHelper::SharedInstance()->GenCurrentThemeQssPath(StyleSheetPath()),
      true);
}

void MeetingWindow::ApplyTheme() {
  QTUICustomThemeHelper* theme = QTUICustomThemeHelper::SharedInstance();
  ApplyStyleSheet(this);
  if (mini_window_) ApplyStyleSheet(mini_window_);
  if (info_dialog_) ApplyStyleSheet(info_dialog_);
  const QColor text = theme->GetThemeQColor("color.text");
  chat_->SetTextColor(text);
  notice_->SetColors(QColor::fromRgba(theme->GetThemeColorWithReplaceAlpha("color.accent", "56")),
                     text);
  area_->SetFrameColors(theme->GetThemeQColor("color.success"),
                        theme->GetThemeQColor("color.accent"));
  area_->Toolbar()->SetIcons(VxQtUiUtil::GetHdpiImage(this, MuteIconName()),
                             VxQtUiUtil::GetHdpiImage(this, ShareIconName()));
  const QSignalBlocker blocker(dark_button_);
  dark_button_->setChecked(theme->IsCurrentDarkType());
}

void MeetingWindow::ShowMiniWindow() {
  if (mini_window_ || participants_->Rows().isEmpty()) return;
  auto* mini = new QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint);
  mini->setObjectName(QStringLiteral("mini_window"));
  mini->setAttribute(Qt::WA_StyledBackground);
  mini->setAutoFillBackground(true);
  auto* layout = new QHBoxLayout(mini);
  layout->addWidget(new QLabel(title_->text(), mini), 1);
  auto* back = new QPushButton(tr("Back to meeting"), mini);
  back->setObjectName(QStringLiteral("mini_back"));
  layout->addWidget(back);
  back->setIcon(QIcon(VxQtUiUtil::GetHdpiImage(this, BackIconName())));
  connect(back, &QPushButton::clicked, this, [this] {
    showNormal();
    activateWindow();
  });
  SetButtonKeys(mini);
  ApplyStyleSheet(mini);
  mini->adjustSize();
  // The bottom-right corner of this window's work area, kept on the screen under the cursor.
  const QRect area = VxQtUiUtil::GetScreenAvailableRect(this);
  QRect place(QPoint(0, 0), mini->size());
  place.moveBottomRight(area.bottomRight());
  mini->move(VxQtUiUtil::CorrectRect(place, PopupMargins()).topLeft());
  TrackPanel(mini);
  mini_window_ = mini;
  VxQtUiUtil::SetupTopMost(mini, true, true);
}

void MeetingWindow::CloseMiniWindow() {
  if (!mini_window_) return;
  mini_window_->hide();
  CustomEventUtils::DeleteObjectLater(mini_window_);
  mini_window_ = nullptr;
}

void MeetingWindow::TrackPanel(QObject* panel) {
  const QString name = panel->objectName();
  connect(panel, &QObject::destroyed, this, [this, name] { ++panel_destructions_[name]; });
}

void MeetingWindow::UpdateScreensLabel() {
  const QList<QScreen*> screens = QGuiApplication::screens();
  screens_label_->setText(tr("%n screen(s)", nullptr, static_cast<int>(screens.size())));
}

}  // namespace meeting
