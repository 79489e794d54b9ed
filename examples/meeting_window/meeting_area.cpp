#include "meeting_area.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>

#include "accessibility_keys.h"
#include "qt_util/custom_event_util.h"
#include "qt_util/paint_rect_helper.h"
#include "qt_util/qt_ui_monitor_helper.h"

namespace meeting {

namespace {

constexpr int kToolbarMargin = 12;

}  // namespace

VideoTile::VideoTile(const QString& id, const QString& name, QWidget* parent)
    : QWidget(parent),
      paint_rect_helper_(std::make_unique<QTPaintRectHelper>()),
      id_(id),
      name_(name) {
  setObjectName(QStringLiteral("tile_%1").arg(id));
  setAccessibleName(tr("Video of %1").arg(name));
  setMinimumSize(160, 100);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  // The default rules: hidden with any ancestor, with the window minimised or hidden, and
  // while the window is inactive (no native point is inside a window on Linux).
  paint_rect_helper_->BindWidget(this, [this](QWidget*, bool visible, QRect global_rect) {
    SetPaintState(visible, global_rect);
  });
}

VideoTile::~VideoTile() = default;

void VideoTile::SetMuted(bool muted) {
  muted_ = muted;
  update();
}

void VideoTile::SetSpotlight(bool on) {
  spotlight_ = on;
  update();
}

void VideoTile::SetFrameColors(const QColor& normal, const QColor& spotlight) {
  frame_color_ = normal;
  spotlight_color_ = spotlight;
  update();
}

void VideoTile::SetPaintState(bool visible, const QRect& global_rect) {
  paint_visible_ = visible;
  paint_rect_ = global_rect;
  ++paint_reports_;
  update();
}

void VideoTile::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QColor base = QColor::fromHsv(static_cast<int>(qHash(name_) % 360), 60, 90);
  QLinearGradient gradient(rect().topLeft(), rect().bottomRight());
  gradient.setColorAt(0, base.lighter(140));
  gradient.setColorAt(1, base.darker(140));
  painter.fillRect(rect(), gradient);
  painter.setPen(Qt::white);
  QFont font = painter.font();
  font.setPixelSize(qMax(12, height() / 5));
  painter.setFont(font);
  painter.drawText(rect(), Qt::AlignCenter, name_.left(1).toUpper());
  font.setPixelSize(12);
  painter.setFont(font);
  const QString caption = muted_ ? tr("%1 (muted)").arg(name_) : name_;
  painter.drawText(rect().adjusted(8, 0, -8, -6), Qt::AlignLeft | Qt::AlignBottom, caption);
  // The frame stands for the renderer's area: drawn only while the renderer may paint.
  if (paint_visible_) {
    painter.setPen(spotlight_ ? QPen(spotlight_color_, 5) : QPen(frame_color_, 3));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(rect().adjusted(2, 2, -2, -2));
  }
}

void VideoTile::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) {
    emit SurfaceClicked(this, mapTo(window(), event->pos()));
  }
  QWidget::mousePressEvent(event);
}

MeetingToolbar::MeetingToolbar(QWidget* parent)
    : QWidget(parent),
      mute_(new QPushButton(tr("Mute"), this)),
      share_(new QPushButton(tr("Share"), this)),
      info_(new QPushButton(tr("Info"), this)),
      leave_(new QPushButton(tr("Leave"), this)) {
  setObjectName(QStringLiteral("meeting_toolbar"));
  setAttribute(Qt::WA_StyledBackground);
  mute_->setObjectName(QStringLiteral("toolbar_mute"));
  share_->setObjectName(QStringLiteral("toolbar_share"));
  info_->setObjectName(QStringLiteral("toolbar_info"));
  leave_->setObjectName(QStringLiteral("toolbar_leave"));
  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(10, 6, 10, 6);
  setAutoFillBackground(true);
  // Every button is as wide as the widest label any of them can show, with room for an icon,
  // so that the toolbar keeps its size and place when a label changes.
  int width = 0;
  for (const QString& label : {tr("Unmute"), tr("Share"), tr("Stop"), tr("Info"), tr("Leave")}) {
    width = qMax(width, fontMetrics().horizontalAdvance(label));
  }
  for (QPushButton* button : {mute_, share_, info_, leave_}) {
    button->setMinimumWidth(width + 48);
    layout->addWidget(button);
  }
  SetButtonKeys(this);
  QTUIMonitorHelper::SharedInstance()->AddMonitorRectWidget(this);
}

void MeetingToolbar::SetMuted(bool muted) {
  mute_->setText(muted ? tr("Unmute") : tr("Mute"));
}

void MeetingToolbar::SetSharing(bool sharing) {
  share_->setText(sharing ? tr("Stop") : tr("Share"));
  share_->setToolTip(sharing ? tr("Stop sharing your screen") : tr("Share your screen"));
}

void MeetingToolbar::SetIcons(const QPixmap& mute, const QPixmap& share) {
  mute_icon_ = mute;
  mute_->setIcon(QIcon(mute));
  share_->setIcon(QIcon(share));
}

MeetingArea::MeetingArea(QWidget* parent)
    : QWidget(parent), grid_(new QGridLayout(this)), toolbar_(new MeetingToolbar(this)) {
  setObjectName(QStringLiteral("meeting_area"));
  grid_->setContentsMargins(8, 8, 8, 8);
  grid_->setSpacing(8);
}

VideoTile* MeetingArea::AddTile(const QString& id, const QString& name) {
  auto* tile = new VideoTile(id, name, this);
  tile->SetFrameColors(frame_color_, spotlight_color_);
  const int index = static_cast<int>(tiles_.size());
  grid_->addWidget(tile, index / 2, index % 2);
  tiles_.append(tile);
  connect(tile, &VideoTile::SurfaceClicked, this, &MeetingArea::HandleSurfaceClick);
  toolbar_->raise();
  if (share_banner_) share_banner_->raise();
  return tile;
}

void MeetingArea::SetFrameColors(const QColor& normal, const QColor& spotlight) {
  frame_color_ = normal;
  spotlight_color_ = spotlight;
  for (VideoTile* tile : tiles_) tile->SetFrameColors(normal, spotlight);
}

VideoTile* MeetingArea::Tile(const QString& id) const {
  for (VideoTile* tile : tiles_) {
    if (tile->Id() == id) return tile;
  }
  return nullptr;
}

QWidget* MeetingArea::ShowShareBanner() {
  // A banner whose deletion is on its way is not shown again: a new one takes its place.
  if (share_banner_ && !CustomEventUtils::PendingDeleteListInstance()->count(share_banner_)) {
    return share_banner_;
  }
  auto* banner = new QWidget(this);
  banner->setObjectName(QStringLiteral("share_banner"));
  banner->setAttribute(Qt::WA_StyledBackground);
  banner->setAutoFillBackground(true);
  auto* layout = new QHBoxLayout(banner);
  layout->setContentsMargins(10, 4, 6, 4);
  layout->addWidget(new QLabel(tr("You are sharing your screen"), banner));
  auto* stop = new QPushButton(tr("Stop sharing"), banner);
  stop->setObjectName(QStringLiteral("share_stop"));
  layout->addWidget(stop);
  connect(stop, &QPushButton::clicked, this, &MeetingArea::StopShareRequested);
  SetButtonKeys(banner);
  QTUIMonitorHelper::SharedInstance()->AddMonitorRectWidget(banner);
  share_banner_ = banner;
  PlaceOverlays();
  banner->show();
  banner->raise();
  return banner;
}

bool MeetingArea::HandleSurfaceClick(VideoTile* tile, const QPoint& window_point) {
  if (QTUIMonitorHelper::SharedInstance()->IsInUIRectInMeeting(window_point)) {
    ++clicks_left_to_panels_;
    return false;
  }
  const bool spotlight = !tile->Spotlight();
  for (VideoTile* other : tiles_) {
    other->SetSpotlight(spotlight && other == tile);
    other->setVisible(!spotlight || other == tile);
  }
  // Lay the grid out now: the spotlight tile takes the room of the hidden ones at once.
  grid_->activate();
  ++clicks_acted_on_;
  return true;
}

void MeetingArea::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  PlaceOverlays();
}

void MeetingArea::PlaceOverlays() {
  // Never wider than the area, less a margin on each side.
  const QSize toolbar_size(qMin(toolbar_->sizeHint().width(), width() - 2 * kToolbarMargin),
                           toolbar_->sizeHint().height());
  toolbar_->setGeometry((width() - toolbar_size.width()) / 2,
                        height() - toolbar_size.height() - kToolbarMargin, toolbar_size.width(),
                        toolbar_size.height());
  toolbar_->raise();
  if (share_banner_) {
    const QSize banner_size = share_banner_->sizeHint();
    share_banner_->setGeometry((width() - banner_size.width()) / 2, kToolbarMargin,
                               banner_size.width(), banner_size.height());
    share_banner_->raise();
  }
}

}  // namespace meeting
