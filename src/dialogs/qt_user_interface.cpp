#include "dialogs/qt_user_interface.h"

#include <QApplication>
#include <QCursor>

#include "dialogs/file_dialogs.h"
#include "dialogs/input_box.h"
#include "dialogs/message_box.h"
#include "dialogs/work_form_window.h"

namespace ketrova::dialogs {
namespace {

QString FromUtf8(const std::string& text) {
  return QString::fromStdString(text);
}

// The window a modal dialog opens over; never the work form, which the caller
// hides and which must not take the dialog with it.
QWidget* DialogParent() {
  QWidget* active = QApplication::activeWindow();
  if (active && active->objectName() == QStringLiteral("frmWork")) return active->parentWidget();
  return active;
}

// The arrow over a modal dialog while the wait cursor is set; the wait cursor
// comes back when the dialog closes.
class ArrowWhileModal {
 public:
  ArrowWhileModal() : active_(QGuiApplication::overrideCursor() != nullptr) {
    if (active_) QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
  }
  ~ArrowWhileModal() {
    if (active_ && QGuiApplication::overrideCursor()) QGuiApplication::restoreOverrideCursor();
  }
  ArrowWhileModal(const ArrowWhileModal&) = delete;
  ArrowWhileModal& operator=(const ArrowWhileModal&) = delete;

 private:
  bool active_;
};

}  // namespace

QtUserInterface::QtUserInterface() = default;

QtUserInterface::~QtUserInterface() {
  if (QCoreApplication::instance()) delete form_.data();
}

int QtUserInterface::MsgBox(const std::string& text, int flags, const std::string& title) {
  ArrowWhileModal arrow;
  return ShowMessageBox(DialogParent(), text, flags, title);
}

std::optional<std::string> QtUserInterface::InputBox(const std::string& prompt,
                                                     const std::string& title,
                                                     const std::string& defaultText) {
  ArrowWhileModal arrow;
  return ShowInputBox(DialogParent(), prompt, title, defaultText);
}

WorkFormWindow& QtUserInterface::Form() {
  if (!form_) form_ = new WorkFormWindow(QApplication::activeWindow());
  return *form_;
}

void QtUserInterface::WorkFormShow(const std::string& caption, const std::string& text1,
                                   const std::string& text2) {
  WorkFormWindow& form = Form();
  form.SetCaption(FromUtf8(caption));
  form.SetTexts(FromUtf8(text1), FromUtf8(text2));
  form.ShowNow();
}

void QtUserInterface::WorkFormHide() {
  if (form_) form_->hide();
}

bool QtUserInterface::WorkFormVisible() const {
  return form_ && form_->isVisible();
}

void QtUserInterface::WorkFormSetCaption(const std::string& caption) {
  Form().SetCaption(FromUtf8(caption));
}

void QtUserInterface::WorkFormSetTexts(const std::string& text1, const std::string& text2) {
  Form().SetTexts(FromUtf8(text1), FromUtf8(text2));
}

void QtUserInterface::WorkFormSetBar(bool visible, double min, double max, double value) {
  Form().SetBar(visible, min, max, value);
}

void QtUserInterface::SetMousePointer(int pointer) {
  if (pointer == ui::vbHourglass) {
    const QCursor* current = QGuiApplication::overrideCursor();
    if (!current)
      QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    else if (current->shape() != Qt::WaitCursor)
      QGuiApplication::changeOverrideCursor(Qt::WaitCursor);
    return;
  }
  while (QGuiApplication::overrideCursor()) QGuiApplication::restoreOverrideCursor();
}

void QtUserInterface::DoEvents() {
  QCoreApplication::processEvents();
}

void QtUserInterface::Beep() {
  QApplication::beep();
}

std::optional<std::string> QtUserInterface::ChooseFile(const std::string& title,
                                                       const std::string& filter,
                                                       const std::string& startPath) {
  ArrowWhileModal arrow;
  return ShowFileOpen(DialogParent(), title, filter, startPath);
}

std::optional<std::string> QtUserInterface::ChooseFolder(const std::string& title,
                                                         const std::string& startPath) {
  ArrowWhileModal arrow;
  return ShowBrowseForFolder(DialogParent(), title, startPath);
}

}  // namespace ketrova::dialogs
