// The work form: the small modeless window that shows a long operation with a
// caption, two lines of text and a progress bar.
#pragma once

#include <QWidget>

class QLabel;
class QProgressBar;

namespace ketrova::dialogs {

// A progress bar's integer range and value for VB's double ones. Whole
// numbers that fit an int, with a distance that does too, are kept as they
// are (a count of records); fractions and wider ranges are scaled onto
// 0..kBarSteps. The value is held within the range; a range without width
// (max <= min) or with a bound that is not finite gives 0..1, full once the
// value reaches max.
struct BarPosition {
  int min = 0;
  int max = 0;
  int value = 0;
};
inline constexpr int kBarSteps = 10000;
BarPosition MapBar(double min, double max, double value);

// The window (object name "frmWork") with the labels "lblText1", "lblText2"
// and the QProgressBar "ProgressBar". Its width is fixed; long texts are cut
// rather than widening it. It has no close button: the caller shows and hides
// it.
//
// The setters update the window at once, without an event loop running: the
// caller may be deep in a long operation that yields only now and then.
// Showing processes pending events once, except user input, so that the
// window is mapped and painted; the setters only repaint and never process
// events.
class WorkFormWindow : public QWidget {
 public:
  explicit WorkFormWindow(QWidget* parent = nullptr);

  void ShowNow();
  void SetCaption(const QString& caption);
  void SetTexts(const QString& text1, const QString& text2);
  // Shows the bar with its range and value (see MapBar), or hides it.
  void SetBar(bool visible, double min, double max, double value);

 private:
  void Refresh();

  QLabel* text1_;
  QLabel* text2_;
  QProgressBar* bar_;
};

}  // namespace ketrova::dialogs
