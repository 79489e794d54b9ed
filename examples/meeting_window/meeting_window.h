#pragma once

// The meeting window: participants on the left, the meeting area in the middle, chat and a
// notice on the right, a header with the meeting's title and the screens it knows of.

#include <QHash>
#include <QPointer>
#include <QRect>
#include <QStringList>
#include <QWidget>

class QLabel;
class QtScreenObserver;
class QScreen;

namespace meeting {

class ChatPanel;
class MeetingArea;
class NoticeBanner;
class ParticipantList;

/// What the screen observer reported, in order.
struct ScreenReport {
  enum Kind { kListChanged, kPrimaryChanged, kWorkAreaChanged } kind;
  QString screen;
  QRect work_area;
};

class MeetingWindow : public QWidget {
  Q_OBJECT

 public:
  explicit MeetingWindow(QWidget* parent = nullptr);
  ~MeetingWindow() override;

  /// Fills the meeting: the local user ("me") and the others.
  void Join(const QString& title, const QString& my_name,
            const QList<QPair<QString, QString>>& others);
  void AddParticipant(const QString& id, const QString& name);
  void SetMuted(const QString& id, bool muted);
  bool Muted(const QString& id) const;
  void StartShare();
  /// Asks for the sharing banner to close; the deletion is deferred to the event loop, so
  /// asking again before it ran is harmless.
  void StopShare();
  bool Sharing() const { return sharing_; }
  void ReceiveChat(const QString& sender, const QString& html);
  void ShowNotice(const QString& text);

  ParticipantList* Participants() const { return participants_; }
  MeetingArea* Area() const { return area_; }
  ChatPanel* Chat() const { return chat_; }
  NoticeBanner* Notice() const { return notice_; }
  QLabel* ScreensLabel() const { return screens_label_; }

  const QList<ScreenReport>& ScreenReports() const { return screen_reports_; }
  /// How often each panel (by object name) emitted `destroyed`: more than once is a bug.
  const QHash<QString, int>& PanelDestructions() const { return panel_destructions_; }

 signals:
  void LeaveRequested();

 private:
  void TrackPanel(QObject* panel);
  void UpdateScreensLabel();

  QLabel* title_;
  QLabel* screens_label_;
  ParticipantList* participants_;
  MeetingArea* area_;
  ChatPanel* chat_;
  NoticeBanner* notice_;
  QtScreenObserver* screen_observer_;
  QList<ScreenReport> screen_reports_;
  QHash<QString, int> panel_destructions_;
  bool sharing_ = false;
};

}  // namespace meeting
