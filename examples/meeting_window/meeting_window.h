#pragma once

// The meeting window: participants on the left, the meeting area in the middle, chat and a
// notice on the right, a header with the meeting's title and the screens it knows of.

#include <QDialog>
#include <QHash>
#include <QMargins>
#include <QPointer>
#include <QRect>
#include <QStringList>
#include <QWidget>

class QLabel;
class QPushButton;
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

  /// Opens the meeting-information dialog, centred over the window and kept on the screen
  /// under the cursor; closing it deletes it from the event loop and activates the window again.
  QDialog* OpenInfoDialog();
  QDialog* InfoDialog() const { return info_dialog_; }
  /// Where the dialog was centred before it was kept on screen (global coordinates).
  QPoint InfoDialogCentredAt() const { return info_dialog_centred_at_; }
  /// Where the window asked the dialog's frame to go once kept on screen (global coordinates).
  /// On Wayland the compositor places the dialog and Qt reports another place, so this is the
  /// only record of the request.
  QPoint InfoDialogAskedAt() const { return info_dialog_asked_at_; }
  /// Margins kept between pop-ups and the edges of the screen's work area.
  static QMargins PopupMargins() { return QMargins(16, 16, 16, 16); }

  /// The pinned mini window shown while the meeting window is minimised, or null.
  QWidget* MiniWindow() const { return mini_window_; }

  ParticipantList* Participants() const { return participants_; }
  MeetingArea* Area() const { return area_; }
  ChatPanel* Chat() const { return chat_; }
  NoticeBanner* Notice() const { return notice_; }
  QLabel* ScreensLabel() const { return screens_label_; }
  QPushButton* DarkButton() const { return dark_button_; }

  /// The window's style sheet; the theme helper picks its "_dark" twin in a dark theme.
  static QString StyleSheetPath() { return QStringLiteral(":/meeting/meeting.qss"); }
  /// The icon resources, named for the light theme (the theme engine maps them).
  static QString MuteIconName() { return QStringLiteral(":/light/icons/mic"); }
  static QString ShareIconName() { return QStringLiteral(":/light/icons/share"); }
  static QString BackIconName() { return QStringLiteral(":/light/icons/camera"); }
  /// The picture of the local user.
  static QString MyAvatarPath() { return QStringLiteral(":/example_theme/avatar.png"); }

  const QList<ScreenReport>& ScreenReports() const { return screen_reports_; }
  /// How often each panel (by object name) emitted `destroyed`: more than once is a bug.
  const QHash<QString, int>& PanelDestructions() const { return panel_destructions_; }

 signals:
  void LeaveRequested();
  /// The user asked for the dark (true) or the light theme. Whoever owns the theme engine
  /// switches it; the window restyles itself on the ThemeChange the engine sends.
  void ThemeSwitchRequested(bool dark);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  // Style sheet, colours and icons of the current theme, for the window and its panels.
  void ApplyTheme();
  static void ApplyStyleSheet(QWidget* widget);
  void ShowMiniWindow();
  void CloseMiniWindow();
  void TrackPanel(QObject* panel);
  void UpdateScreensLabel();

  QLabel* title_;
  QLabel* screens_label_;
  QPushButton* dark_button_;
  ParticipantList* participants_;
  MeetingArea* area_;
  ChatPanel* chat_;
  NoticeBanner* notice_;
  QtScreenObserver* screen_observer_;
  QList<ScreenReport> screen_reports_;
  QHash<QString, int> panel_destructions_;
  bool sharing_ = false;
  QPointer<QDialog> info_dialog_;
  QPoint info_dialog_centred_at_;
  QPoint info_dialog_asked_at_;
  QPointer<QWidget> mini_window_;
};

}  // namespace meeting
