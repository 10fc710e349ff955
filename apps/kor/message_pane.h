// The host's message pane: what plug-ins report through DebugMessage and
// ErrorMessage, one row each with the time, the plug-in's name and the text;
// errors are marked.
#pragma once

#include <QDateTime>
#include <QTreeWidget>
#include <string>
#include <vector>

namespace kor {

struct Message {
  QDateTime time;
  std::string plugInName;
  std::string text;
  bool error = false;
};

class MessagePane : public QTreeWidget {
  Q_OBJECT
 public:
  explicit MessagePane(QWidget* parent);
  void Add(const std::string& text, const std::string& plugInName, bool error);
  const std::vector<Message>& Messages() const { return messages_; }

 private:
  std::vector<Message> messages_;
};

}  // namespace kor
