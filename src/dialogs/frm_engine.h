// frmEngine, the run dialog ("Datenkonvertierung"): the project file, a status
// text and two progress bars. Its start button runs the project it holds once
// through a fresh CEngine; afterwards the window shows "Konvertierung beendet !"
// or the whole log, offers the log to support by mail when records failed, and
// can only be closed.
//
// Controls carry their names as object names: picHeader, LabelHeaderBig,
// LabelHeaderSmall, LabelProjektdatei, EditFileName, cmdImportFile,
// LabelResult, EditInfo, ProgressBar, ProgressBarTotal, LabelSendLogFile,
// cmdStart, cmdCancelConvert, cmdCancel.
//
// During a run the window stays responsive through the engine's yields
// (ui::UserInterface::DoEvents); then only cmdCancelConvert is shown, which
// sets the engine's Cancel, and neither Escape nor the window's close button
// closes the window. Boxes and the file chooser go through ui::Current().
//
// The caller sets Converter before the start button can be pressed and keeps
// the project alive as long as the window. A QApplication must exist; GUI
// thread only.
#pragma once

#include <QDialog>
#include <string>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace ketrova {
class CConverter;
class CEngine;
}  // namespace ketrova

namespace ketrova::dialogs {

class FrmEngine : public QDialog {
  Q_OBJECT

 public:
  explicit FrmEngine(QWidget* parent = nullptr);
  ~FrmEngine() override;

  CConverter* Converter() const { return converter_; }
  void SetConverter(CConverter* converter) { converter_ = converter; }

  // Puts a non-empty `szFileName` into EditFileName and hides cmdImportFile;
  // the window is not shown. For a caller that shows it itself (screenshots).
  void Prepare(const std::string& szFileName);
  // Prepare, then the window modally. Answers true only for a window that
  // was never loaded, so false once it has shown; no caller reads it.
  bool Execute(const std::string& szFileName);

  // Whether a run is under way.
  bool Running() const { return engine_ != nullptr; }
  // The log file of the last run; "" before one.
  const std::string& LogfileName() const { return logfileName_; }

 public slots:
  // cmdStart: runs the project.
  void Start();
  // cmdCancelConvert: asks the running engine to stop.
  void CancelConvert();
  // cmdImportFile: a project file into EditFileName; the project is not
  // changed.
  void ImportFile();
  // LabelSendLogFile: the log into the outbox, addressed to support.
  void SendLogFile();

 public:
  void reject() override;

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  CConverter* converter_ = nullptr;
  CEngine* engine_ = nullptr;  // the running engine, null outside a run
  bool m_bLoaded = false;
  std::string logfileName_;

  QLabel* labelHeaderBig_;
  QLabel* labelHeaderSmall_;
  QLineEdit* editFileName_;
  QPushButton* cmdImportFile_;
  QPlainTextEdit* editInfo_;
  QProgressBar* progressBar_;
  QProgressBar* progressBarTotal_;
  QLabel* labelSendLogFile_;
  QPushButton* cmdStart_;
  QPushButton* cmdCancelConvert_;
  QPushButton* cmdCancel_;
};

}  // namespace ketrova::dialogs
