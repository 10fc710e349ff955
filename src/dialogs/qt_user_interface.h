// QtUserInterface: ui::UserInterface on Qt Widgets, the screen of the desktop
// host and its plug-in.
//
// Boxes and file dialogs are modal and open over the active window, if any;
// their controls carry the object names their headers list (message_box.h,
// input_box.h, file_dialogs.h, work_form_window.h), by which tests answer
// them. While one is open, a wait cursor set through SetMousePointer gives
// way to the arrow, and comes back afterwards.
//
// A QApplication must exist before the first call and for the object's whole
// life, and every call must come from the GUI thread. Should the object
// outlive the QApplication (a static holder ending at exit), its work form
// is left to the process's end rather than deleted without one.
#pragma once

#include <QPointer>

#include "platform/ui/user_interface.h"

namespace ketrova::dialogs {

class WorkFormWindow;

class QtUserInterface : public ui::UserInterface {
 public:
  QtUserInterface();
  ~QtUserInterface() override;
  QtUserInterface(const QtUserInterface&) = delete;
  QtUserInterface& operator=(const QtUserInterface&) = delete;

  int MsgBox(const std::string& text, int flags, const std::string& title) override;
  std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                      const std::string& defaultText) override;

  // The work form (object name "frmWork") is made on first use, as a window
  // of its own over the active window of that moment.
  void WorkFormShow(const std::string& caption, const std::string& text1,
                    const std::string& text2) override;
  void WorkFormHide() override;
  bool WorkFormVisible() const override;
  void WorkFormSetCaption(const std::string& caption) override;
  void WorkFormSetTexts(const std::string& text1, const std::string& text2) override;
  void WorkFormSetBar(bool visible, double min, double max, double value) override;

  // 11 (vbHourglass) sets the wait cursor as the application's override
  // cursor, once: a second 11 adds none. Any other value, 0 (vbDefault)
  // among them, removes every override cursor, so the arrow shows.
  void SetMousePointer(int pointer) override;
  // QCoreApplication::processEvents(): input, timers and paint events run.
  void DoEvents() override;
  void Beep() override;

  std::optional<std::string> ChooseFile(const std::string& title, const std::string& filter,
                                        const std::string& startPath) override;
  std::optional<std::string> ChooseFolder(const std::string& title,
                                          const std::string& startPath) override;

 private:
  WorkFormWindow& Form();

  QPointer<WorkFormWindow> form_;
};

}  // namespace ketrova::dialogs
