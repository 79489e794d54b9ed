#include "meeting_window.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include "chat_panel.h"
#include "meeting_area.h"
#include "notice_banner.h"
#include "participant_list.h"
#include "qt_util/custom_event_util.h"
#include "qt_util/event_handler/screen_observer.h"

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
      participants_(new ParticipantList(this)),
      area_(new MeetingArea(this)),
      chat_(new ChatPanel(this)),
      notice_(new NoticeBanner(this)),
      screen_observer_(new QtScreenObserver(this)) {
  setObjectName(QStringLiteral("meeting_window"));
  setWindowTitle(tr("Meeting"));
  title_->setObjectName(QStringLiteral("meeting_title"));
  screens_label_->setObjectName(QStringLiteral("screens_label"));

  auto* header = new QHBoxLayout;
  header->addWidget(title_, 1);
  header->addWidget(screens_label_);

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
}

MeetingWindow::~MeetingWindow() = default;

void MeetingWindow::Join(const QString& title, const QString& my_name,
                         const QList<QPair<QString, QString>>& others) {
  title_->setText(title);
  setWindowTitle(title);
  AddParticipant(QStringLiteral("me"), my_name);
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

void MeetingWindow::TrackPanel(QObject* panel) {
  const QString name = panel->objectName();
  connect(panel, &QObject::destroyed, this, [this, name] { ++panel_destructions_[name]; });
}

void MeetingWindow::UpdateScreensLabel() {
  const QList<QScreen*> screens = QGuiApplication::screens();
  screens_label_->setText(tr("%n screen(s)", nullptr, static_cast<int>(screens.size())));
}

}  // namespace meeting
