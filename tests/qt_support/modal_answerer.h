// ModalAnswerer: answers the modal windows of a Qt test as a user would.
//
// The test queues answers before the code under test opens its windows; a
// timer (every 20 ms, running in whatever event loop a modal window runs)
// finds QApplication::activeModalWidget(), records it and gives it the next
// answer. A window that appears with nothing queued, or that an answer does
// not fit (no such button, not a file dialog), is recorded with a `problem`
// and rejected, so that a test never hangs. An answer is given from an event
// of its own, after the timer's turn, so that a window it opens in turn (a
// file dialog's complaint) is answered too.
//
//   ModalAnswerer answerer;                      // QApplication must exist
//   answerer.ChooseFile("/tmp/x/demo.cpf");
//   answerer.PressButton("vbYes");
//   RunCodeThatAsks();
//   EXPECT_EQ(answerer.Pending(), 0);
//   EXPECT_EQ(answerer.Seen()[1].text, "Weiter ?");
#pragma once

#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <deque>
#include <functional>
#include <string>
#include <vector>

class QWidget;

namespace ketrova::testing {

// One modal window as the answerer met it.
struct SeenModal {
  std::string name;   // object name: "MsgBox", "InputBox", "FileOpen" ...
  std::string title;  // window title
  // QMessageBox::text(), or the text of an InputBox's label "lblPrompt" (or
  // of the window's first label), as given: CR LF stays CR LF.
  std::string text;
  int icon = 0;  // a QMessageBox's icon as VB's flag: 16, 32, 48, 64; else 0
  // Object names of the visible push buttons, left to right, and of the
  // default one.
  std::vector<std::string> buttons;
  std::string defaultButton;
  // A QFileDialog's name filters, folder (absolute, no trailing "/") and
  // the names of the files it lists there (not folders), in its order. The
  // answerer waits for the listing to arrive (up to 0.6 s for an empty one).
  QStringList nameFilters;
  QString directory;
  QStringList files;
  // Empty when the queued answer was given; otherwise what went wrong
  // ("nothing queued", "no button vbYes", "Escape left it open" ...).
  std::string problem;
};

class ModalAnswerer {
 public:
  ModalAnswerer();
  ~ModalAnswerer();
  ModalAnswerer(const ModalAnswerer&) = delete;
  ModalAnswerer& operator=(const ModalAnswerer&) = delete;

  // Clicks the visible, enabled button with this object name ("vbYes").
  void PressButton(std::string objectName);
  // Presses Return in the window: its default button answers.
  void PressEnter();
  // Presses Escape: a dialog rejects, a message box clicks its escape button.
  // A window that stays open is rejected, with the problem "Escape left it
  // open".
  void Cancel();
  // Types the text into the InputBox's "txtInput" (or the window's only line
  // edit) and clicks "vbOK".
  void EnterText(std::string text);
  // Selects the file in a QFileDialog and accepts it.
  void ChooseFile(std::string path);
  // Goes to the folder in a QFileDialog and accepts it.
  void ChooseFolder(std::string path);
  // Anything else: runs `act` on the window after recording it. The window
  // stays open if `act` leaves it so; the next turn records it again.
  void Act(std::function<void(QWidget&)> act);

  const std::vector<SeenModal>& Seen() const { return seen_; }
  // Answers not yet given.
  int Pending() const { return static_cast<int>(answers_.size()); }

 private:
  using Answer = std::function<std::string(QWidget&)>;  // the problem, or ""
  void Turn();
  void Record(QWidget& window);
  bool ListingReady(QWidget& window);

  QTimer timer_;
  std::deque<Answer> answers_;
  std::vector<SeenModal> seen_;
  QPointer<QWidget> current_;            // the window of the last record
  std::vector<QPointer<QWidget>> busy_;  // windows whose answer is running
  bool answering_ = false;               // an answer is posted and not yet given
  int listingTurns_ = 0;
  int listedBefore_ = -1;
};

}  // namespace ketrova::testing
