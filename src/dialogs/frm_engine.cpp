#include "dialogs/frm_engine.h"

#include <QCloseEvent>
#include <QEvent>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <memory>

#include "core/converter.h"
#include "dialogs/engine_display_controls.h"
#include "dialogs/support_mail.h"
#include "engine/engine.h"
#include "engine/run_notes.h"
#include "platform/ui/user_interface.h"
#include "support/files.h"
#include "support/system.h"

namespace ketrova::dialogs {
namespace {

QString Q(const std::string& text) {
  return QString::fromStdString(text);
}

// Makes a label act as a link: underlined in the link colour, a pointing
// hand, and a click (or Space and Return once it has the focus) calls `act`.
class LinkFilter : public QObject {
 public:
  LinkFilter(QLabel* label, std::function<void()> act) : QObject(label), act_(std::move(act)) {
    QFont font = label->font();
    font.setUnderline(true);
    label->setFont(font);
    label->setForegroundRole(QPalette::Link);
    label->setCursor(Qt::PointingHandCursor);
    label->setFocusPolicy(Qt::StrongFocus);
    label->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
      act_();
      return true;
    }
    if (event->type() == QEvent::KeyPress) {
      int key = static_cast<QKeyEvent*>(event)->key();
      if (key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter) {
        act_();
        return true;
      }
    }
    return false;
  }

 private:
  std::function<void()> act_;
};

QPushButton* Button(const QString& name, const QString& caption, QWidget* parent) {
  auto* button = new QPushButton(caption, parent);
  button->setObjectName(name);
  button->setAutoDefault(false);
  return button;
}

QLabel* Label(const QString& name, const QString& caption, QWidget* parent) {
  auto* label = new QLabel(caption, parent);
  label->setObjectName(name);
  return label;
}

}  // namespace

FrmEngine::FrmEngine(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("frmEngine"));
  setWindowTitle(QStringLiteral("Datenkonvertierung"));

  auto* header = new QFrame(this);
  header->setObjectName(QStringLiteral("picHeader"));
  header->setAutoFillBackground(true);
  header->setBackgroundRole(QPalette::Base);
  header->setFrameShape(QFrame::StyledPanel);
  labelHeaderBig_ = Label(QStringLiteral("LabelHeaderBig"),
                          QStringLiteral("Wählen Sie hier die Projektdatei aus und klicken Sie "
                                         "auf die Schaltfläche \"Start\"."),
                          header);
  labelHeaderBig_->setWordWrap(true);
  labelHeaderSmall_ =
      Label(QStringLiteral("LabelHeaderSmall"), QStringLiteral("Projekt auswählen"), header);
  QFont bold = labelHeaderSmall_->font();
  bold.setBold(true);
  labelHeaderSmall_->setFont(bold);
  auto* headerLayout = new QVBoxLayout(header);
  headerLayout->addWidget(labelHeaderSmall_);
  headerLayout->addWidget(labelHeaderBig_);

  auto* labelProjektdatei =
      Label(QStringLiteral("LabelProjektdatei"), QStringLiteral("Projektdatei:"), this);
  editFileName_ = new QLineEdit(this);
  editFileName_->setObjectName(QStringLiteral("EditFileName"));
  labelProjektdatei->setBuddy(editFileName_);
  cmdImportFile_ = Button(QStringLiteral("cmdImportFile"), QStringLiteral("..."), this);
  cmdImportFile_->setToolTip(QStringLiteral("Projektdatei auswählen"));
  cmdImportFile_->setFixedWidth(fontMetrics().horizontalAdvance(QStringLiteral("......")) +
                                2 * fontMetrics().averageCharWidth());

  auto* labelResult =
      Label(QStringLiteral("LabelResult"), QStringLiteral("Statusmeldungen:"), this);
  editInfo_ = new QPlainTextEdit(this);
  editInfo_->setObjectName(QStringLiteral("EditInfo"));
  editInfo_->setReadOnly(true);
  labelResult->setBuddy(editInfo_);

  progressBar_ = new QProgressBar(this);
  progressBar_->setObjectName(QStringLiteral("ProgressBar"));
  progressBarTotal_ = new QProgressBar(this);
  progressBarTotal_->setObjectName(QStringLiteral("ProgressBarTotal"));
  for (QProgressBar* bar : {progressBar_, progressBarTotal_}) {
    bar->setValue(0);
    bar->setTextVisible(false);
  }

  labelSendLogFile_ =
      Label(QStringLiteral("LabelSendLogFile"), QStringLiteral("Fehlerbericht senden"), this);
  new LinkFilter(labelSendLogFile_, [this] { SendLogFile(); });
  labelSendLogFile_->hide();

  cmdStart_ = Button(QStringLiteral("cmdStart"), QStringLiteral("&Start"), this);
  cmdCancelConvert_ =
      Button(QStringLiteral("cmdCancelConvert"), QStringLiteral("&Abbrechen"), this);
  cmdCancelConvert_->hide();
  cmdCancel_ = Button(QStringLiteral("cmdCancel"), QStringLiteral("&Abbrechen"), this);

  auto* fileRow = new QHBoxLayout;
  fileRow->addWidget(labelProjektdatei);
  fileRow->addWidget(editFileName_, 1);
  fileRow->addWidget(cmdImportFile_);

  // cmdCancelConvert sits where cmdStart is: a hidden button takes no room.
  auto* buttonRow = new QHBoxLayout;
  buttonRow->addWidget(labelSendLogFile_);
  buttonRow->addStretch(1);
  buttonRow->addWidget(cmdStart_);
  buttonRow->addWidget(cmdCancelConvert_);
  buttonRow->addWidget(cmdCancel_);

  auto* body = new QVBoxLayout;
  body->addLayout(fileRow);
  body->addWidget(labelResult);
  body->addWidget(editInfo_, 1);
  body->addWidget(progressBar_);
  body->addWidget(progressBarTotal_);
  body->addLayout(buttonRow);

  auto* main = new QVBoxLayout(this);
  main->setContentsMargins(0, 0, 0, 0);
  main->addWidget(header);
  auto* margins = new QVBoxLayout;
  int m = fontMetrics().height() / 2 + 2;
  margins->setContentsMargins(m, m, m, m);
  margins->addLayout(body);
  main->addLayout(margins, 1);

  const QFontMetrics metrics = fontMetrics();
  resize(metrics.averageCharWidth() * 80, metrics.height() * 26);

  connect(cmdStart_, &QPushButton::clicked, this, &FrmEngine::Start);
  connect(cmdCancelConvert_, &QPushButton::clicked, this, &FrmEngine::CancelConvert);
  connect(cmdCancel_, &QPushButton::clicked, this, [this] { QDialog::reject(); });
  connect(cmdImportFile_, &QPushButton::clicked, this, &FrmEngine::ImportFile);

  m_bLoaded = true;
}

FrmEngine::~FrmEngine() = default;

void FrmEngine::Prepare(const std::string& szFileName) {
  if (szFileName.empty()) return;
  editFileName_->setText(Q(szFileName));
  cmdImportFile_->hide();
}

bool FrmEngine::Execute(const std::string& szFileName) {
  Prepare(szFileName);
  exec();
  const bool result = !m_bLoaded;
  ui::Current().DoEvents();
  return result;
}

void FrmEngine::Start() {
  if (engine_ || !converter_) return;
  ui::UserInterface& ui = ui::Current();
  auto engine = std::make_unique<CEngine>();
  engine->Converter = converter_;
  engine->ProgressBar = MakeProgressBarControl(progressBar_);
  engine->ProgressBarTotal = MakeProgressBarControl(progressBarTotal_);
  engine->EditInfo = MakeStatusTextControl(editInfo_);

  cmdStart_->hide();
  cmdCancel_->hide();
  cmdCancelConvert_->show();
  engine_ = engine.get();
  ui.SetMousePointer(ui::vbHourglass);

  // The project the window holds is run; EditFileName is not passed on.
  std::string none;
  const std::string szResult = engine->Execute(none);
  const std::int32_t errorCount = engine->ErrorCount();
  logfileName_ = engine->LogfileName();
  if (errorCount < 1 && szResult.empty()) {
    editInfo_->setPlainText(QStringLiteral("Konvertierung beendet !"));
    editInfo_->repaint();
  } else {
    QString log = Q(ReadTextFile(logfileName_));
    // A log that could not be written leaves nothing to read: the run's own
    // text says why, so that the window never ends a failed run empty.
    if (log.isEmpty()) log = Q(szResult);
    log.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    editInfo_->setPlainText(log);
  }
  labelSendLogFile_->setVisible(errorCount >= 1);
  // What the log does not keep (refused records, where a job stopped and how
  // to go on, a script error's place) follows its text, as the command line
  // prints it.
  for (const std::string& note : RunNotes(*engine, converter_->FileName))
    editInfo_->appendPlainText(QStringLiteral("\n") + Q(note));

  engine_ = nullptr;
  engine.reset();

  // A window runs its project once.
  cmdStart_->hide();
  cmdCancel_->setText(QStringLiteral("&Schliessen"));
  cmdCancel_->show();
  cmdCancelConvert_->hide();
  ui.SetMousePointer(ui::vbDefault);
}

void FrmEngine::CancelConvert() {
  if (engine_) engine_->Cancel = -1;
}

void FrmEngine::ImportFile() {
  const std::string folder = converter_ ? converter_->ProjectDirectory() : std::string();
  std::optional<std::string> file =
      ui::Current().ChooseFile("", "Projektdateien (*.CPF)|*.CPF", folder);
  if (file) editFileName_->setText(Q(*file));
}

void FrmEngine::SendLogFile() {
  const std::string title = converter_ ? converter_->ProductName() : std::string("Ketrova");
  const std::string log = ReadTextFile(logfileName_);
  const std::string error = SendMail(SupportMailAddress(), "Logfileanalyse", log);
  ui::UserInterface& ui = ui::Current();
  if (!error.empty()) {
    ui.MsgBox(error, ui::vbOKOnly, title);
    return;
  }
  ui.MsgBox(
      "Die E-Mail mit der Protokolldatei wurde in Ihren Postausgang gelegt.\r\nAktivieren Sie "
      "bitte das Senden.",
      ui::vbOKOnly, title);
}

void FrmEngine::reject() {
  if (engine_) return;  // Escape during a run
  QDialog::reject();
}

void FrmEngine::closeEvent(QCloseEvent* event) {
  if (engine_) {
    event->ignore();
    return;
  }
  QDialog::closeEvent(event);
}

}  // namespace ketrova::dialogs
