#pragma once

// RAII capture of Qt's own messages (qDebug, qInfo, QMessageLogger...) for tests:
//
//   QtMessageCapture messages;
//   ... code under test ...
//   QCOMPARE(messages.WithText("VxFind Res Invalid~(x)").size(), 1);
//
// The previous handler comes back when the capture goes away; captures do not nest.

#include <QMessageLogContext>
#include <QString>
#include <QtGlobal>
#include <vector>

struct CapturedQtMessage {
  QtMsgType type;
  QString text;
  QString file;
  int line;
  QString function;
};

class QtMessageCapture {
 public:
  QtMessageCapture() {
    Messages().clear();
    previous_ = qInstallMessageHandler(&Collect);
  }
  ~QtMessageCapture() { qInstallMessageHandler(previous_); }
  QtMessageCapture(const QtMessageCapture&) = delete;
  QtMessageCapture& operator=(const QtMessageCapture&) = delete;

  const std::vector<CapturedQtMessage>& All() const { return Messages(); }
  std::vector<CapturedQtMessage> WithText(const QString& text) const {
    std::vector<CapturedQtMessage> found;
    for (const CapturedQtMessage& message : Messages()) {
      if (message.text == text) found.push_back(message);
    }
    return found;
  }

 private:
  static std::vector<CapturedQtMessage>& Messages() {
    static std::vector<CapturedQtMessage> messages;
    return messages;
  }
  static void Collect(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    Messages().push_back({type, text, QString::fromUtf8(context.file), context.line,
                          QString::fromUtf8(context.function)});
  }

  QtMessageHandler previous_ = nullptr;
};
