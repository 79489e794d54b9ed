#include "participant_list.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

#include "accessibility_keys.h"
#include "qt_util/image_utils.h"
#include "qt_util/label_string_util.h"
#include "qt_util/ui_util.h"

namespace meeting {

namespace {

constexpr int kAvatarSize = 32;
constexpr int kRowHeight = 44;

}  // namespace

ElidedNameLabel::ElidedNameLabel(const QString& name, QWidget* parent)
    : QLabel(name, parent), full_text_(name) {
  // The layout must not size the label after its text, or eliding would change the width it
  // elides to.
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  setMinimumWidth(0);
  setToolTip(name);
}

void ElidedNameLabel::Elide() {
  setText(full_text_);
  VxLabelStringUtil::UpdateElidedText(this, Qt::ElideRight);
}

void ElidedNameLabel::resizeEvent(QResizeEvent* event) {
  QLabel::resizeEvent(event);
  Elide();
}

void ElidedNameLabel::showEvent(QShowEvent* event) {
  QLabel::showEvent(event);
  Elide();
}

ParticipantRow::ParticipantRow(const QString& id, const QString& name, QWidget* parent)
    : QWidget(parent),
      id_(id),
      avatar_(new QLabel(this)),
      name_(new ElidedNameLabel(name, this)),
      mic_(new QLabel(this)),
      mute_(new QPushButton(tr("Mute"), this)) {
  setObjectName(QStringLiteral("participant_%1").arg(id));
  setAccessibleName(name);
  avatar_->setObjectName(QStringLiteral("participant_%1_avatar").arg(id));
  avatar_->setFixedSize(kAvatarSize, kAvatarSize);
  name_->setObjectName(QStringLiteral("participant_%1_name").arg(id));
  mic_->setObjectName(QStringLiteral("participant_%1_mic").arg(id));
  mute_->setObjectName(QStringLiteral("participant_%1_mute").arg(id));
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(6, 4, 6, 4);
  layout->setSpacing(6);
  layout->addWidget(avatar_);
  layout->addWidget(name_, 1);
  layout->addWidget(mic_);
  layout->addWidget(mute_);
  SetAvatar(ParticipantList::InitialsPixmap(name, kAvatarSize));
  SetMuted(false);
  VxQtUiUtil::SetAccessibleKey(this, QString());
  SetButtonKeys(this);
  connect(mute_, &QPushButton::clicked, this, [this] { emit MuteRequested(id_, !muted_); });
}

void ParticipantRow::SetMuted(bool muted) {
  muted_ = muted;
  mic_->setText(muted ? QStringLiteral("\u25CB") : QStringLiteral("\u25CF"));
  mic_->setToolTip(muted ? tr("Microphone off") : tr("Microphone on"));
  mute_->setText(muted ? tr("Unmute") : tr("Mute"));
}

void ParticipantRow::SetAvatar(const QPixmap& pixmap) {
  const QPixmap square = pixmap.scaled(kAvatarSize, kAvatarSize, Qt::KeepAspectRatioByExpanding,
                                       Qt::SmoothTransformation);
  avatar_->setPixmap(QTImageUtils::MakeRoundImage(square));
}

ParticipantList::ParticipantList(QWidget* parent) : QListWidget(parent) {
  setObjectName(QStringLiteral("participants"));
  setAccessibleName(tr("Participants"));
  setSelectionMode(QAbstractItemView::NoSelection);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

ParticipantRow* ParticipantList::AddParticipant(const QString& id, const QString& name) {
  auto* item = new QListWidgetItem(this);
  item->setSizeHint(QSize(0, kRowHeight));
  auto* row = new ParticipantRow(id, name);
  VxQtUiUtil::SetAccessibleKey(item, row->objectName());
  setItemWidget(item, row);
  connect(row, &ParticipantRow::MuteRequested, this, &ParticipantList::MuteRequested);
  return row;
}

ParticipantRow* ParticipantList::Row(const QString& id) const {
  for (ParticipantRow* row : Rows()) {
    if (row->Id() == id) return row;
  }
  return nullptr;
}

QList<ParticipantRow*> ParticipantList::Rows() const {
  QList<ParticipantRow*> rows;
  for (int i = 0; i < count(); ++i) {
    if (auto* row = qobject_cast<ParticipantRow*>(itemWidget(item(i)))) rows.append(row);
  }
  return rows;
}

QPixmap ParticipantList::InitialsPixmap(const QString& name, int size) {
  QString initials;
  for (const QString& part : name.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
    if (initials.size() < 2) initials += part.at(0).toUpper();
  }
  QPixmap pixmap(size, size);
  pixmap.fill(QColor::fromHsv(static_cast<int>(qHash(name) % 360), 120, 200));
  QPainter painter(&pixmap);
  QFont font = painter.font();
  font.setPixelSize(size * 2 / 5);
  font.setBold(true);
  painter.setFont(font);
  painter.setPen(Qt::white);
  painter.drawText(pixmap.rect(), Qt::AlignCenter, initials);
  return pixmap;
}

}  // namespace meeting
