#include "dialogs/message_box.h"

#include <QMessageBox>
#include <QPushButton>
#include <vector>

#include "platform/ui/user_interface.h"

namespace ketrova::dialogs {
namespace {

struct ButtonKind {
  ui::MsgBoxResult answer;
  const char* name;
  const char* caption;
};

const ButtonKind kOK{ui::vbOK, "vbOK", "OK"};
const ButtonKind kCancel{ui::vbCancel, "vbCancel", "Abbrechen"};
const ButtonKind kAbort{ui::vbAbort, "vbAbort", "&Abbrechen"};
const ButtonKind kRetry{ui::vbRetry, "vbRetry", "&Wiederholen"};
const ButtonKind kIgnore{ui::vbIgnore, "vbIgnore", "&Ignorieren"};
const ButtonKind kYes{ui::vbYes, "vbYes", "&Ja"};
const ButtonKind kNo{ui::vbNo, "vbNo", "&Nein"};

// The buttons of a set in VB's order; unknown sets show OK alone, as
// ui::DefaultButton treats them.
std::vector<ButtonKind> ButtonSet(int flags) {
  switch (flags & 0xF) {
    case ui::vbOKCancel:
      return {kOK, kCancel};
    case ui::vbAbortRetryIgnore:
      return {kAbort, kRetry, kIgnore};
    case ui::vbYesNoCancel:
      return {kYes, kNo, kCancel};
    case ui::vbYesNo:
      return {kYes, kNo};
    case ui::vbRetryCancel:
      return {kRetry, kCancel};
    default:
      return {kOK};
  }
}

QMessageBox::Icon IconOf(int flags) {
  switch (flags & 0x70) {
    case ui::vbCritical:
      return QMessageBox::Critical;
    case ui::vbQuestion:
      return QMessageBox::Question;
    case ui::vbExclamation:
      return QMessageBox::Warning;
    case ui::vbInformation:
      return QMessageBox::Information;
    default:
      return QMessageBox::NoIcon;
  }
}

}  // namespace

int ShowMessageBox(QWidget* parent, const std::string& text, int flags, const std::string& title) {
  QMessageBox box(parent);
  box.setObjectName(QStringLiteral("MsgBox"));
  box.setWindowTitle(title.empty() ? QStringLiteral("Ketrova") : QString::fromStdString(title));
  // Plain text: messages carry SQL and file names, which may look like markup.
  // Qt breaks plain text at CR LF as at LF, so the text stays as given.
  box.setTextFormat(Qt::PlainText);
  box.setText(QString::fromStdString(text));
  box.setIcon(IconOf(flags));

  // All buttons share one role, so that every platform's button layout keeps
  // the order they are added in (VB's), and Qt detects no escape button of
  // its own: only the one set below answers Escape.
  const int defaultAnswer = ui::DefaultButton(flags);
  std::vector<std::pair<QPushButton*, int>> answers;
  QPushButton* escape = nullptr;
  QPushButton* byDefault = nullptr;
  for (const ButtonKind& kind : ButtonSet(flags)) {
    QPushButton* button = box.addButton(QString::fromUtf8(kind.caption), QMessageBox::ActionRole);
    button->setObjectName(QString::fromLatin1(kind.name));
    answers.emplace_back(button, kind.answer);
    if (kind.answer == ui::vbCancel) escape = button;
    if (kind.answer == defaultAnswer) byDefault = button;
  }
  if (answers.size() == 1) escape = answers.front().first;
  if (escape) box.setEscapeButton(escape);
  box.setDefaultButton(byDefault ? byDefault : answers.front().first);

  box.exec();

  QAbstractButton* clicked = box.clickedButton();
  if (!clicked) clicked = escape;
  for (const auto& [button, answer] : answers)
    if (button == clicked) return answer;
  return defaultAnswer;
}

}  // namespace ketrova::dialogs
