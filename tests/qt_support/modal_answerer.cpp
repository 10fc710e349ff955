#include "modal_answerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QFileDialog>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <algorithm>

namespace ketrova::testing {
namespace {

constexpr int kTurnMs = 20;
// Turns to wait for a file dialog's listing when it stays empty.
constexpr int kListingTurns = 30;

int VbIcon(QMessageBox::Icon icon) {
  switch (icon) {
    case QMessageBox::Critical:
      return 16;
    case QMessageBox::Question:
      return 32;
    case QMessageBox::Warning:
      return 48;
    case QMessageBox::Information:
      return 64;
    default:
      return 0;
  }
}

void Reject(QWidget& window) {
  if (auto* dialog = qobject_cast<QDialog*>(&window))
    dialog->reject();
  else
    window.close();
}

bool StillOpen(const QPointer<QWidget>& window) {
  return window && window->isVisible();
}

// Presses and releases `key` where the user's keyboard would send it: the
// window's focus widget, from where an ignored key travels up to the window.
void PressKey(QWidget& window, int key) {
  QWidget* target = window.focusWidget() ? window.focusWidget() : &window;
  QPointer<QWidget> guard = target;
  QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
  QCoreApplication::sendEvent(target, &press);
  if (!guard) return;
  QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
  QCoreApplication::sendEvent(target, &release);
}

// The entries a file dialog lists in its folder, as its view shows them:
// enabled rows only (a dialog may show filtered names greyed out).
QStringList Listed(QFileDialog& dialog) {
  QStringList names;
  auto* view = dialog.findChild<QListView*>(QStringLiteral("listView"));
  if (!view || !view->model()) return names;
  const QAbstractItemModel& model = *view->model();
  for (int row = 0; row < model.rowCount(view->rootIndex()); ++row) {
    QModelIndex index = model.index(row, 0, view->rootIndex());
    if (model.flags(index) & Qt::ItemIsEnabled) names << index.data().toString();
  }
  return names;
}

QLineEdit* FileNameEdit(QFileDialog& dialog) {
  if (auto* edit = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) return edit;
  return dialog.findChild<QLineEdit*>();
}

// Types `path` into the file dialog's name field and accepts, as a user
// pasting a full path does.
std::string AcceptPath(QWidget& window, const std::string& path) {
  auto* dialog = qobject_cast<QFileDialog*>(&window);
  if (!dialog) return "not a file dialog";
  QLineEdit* edit = FileNameEdit(*dialog);
  if (!edit) return "file dialog without a name field";
  edit->setText(QString::fromStdString(path));
  QPointer<QWidget> guard = &window;
  static_cast<QDialog*>(dialog)->accept();  // public there, protected in QFileDialog
  if (StillOpen(guard)) return "file dialog refused " + path;
  return {};
}

}  // namespace

ModalAnswerer::ModalAnswerer() {
  QObject::connect(&timer_, &QTimer::timeout, [this] { Turn(); });
  timer_.start(kTurnMs);
}

ModalAnswerer::~ModalAnswerer() = default;

void ModalAnswerer::PressButton(std::string objectName) {
  answers_.push_back([objectName](QWidget& window) -> std::string {
    const QString name = QString::fromStdString(objectName);
    for (QAbstractButton* button : window.findChildren<QAbstractButton*>(name)) {
      if (button->isVisibleTo(&window) && button->isEnabled()) {
        button->click();
        return {};
      }
    }
    return "no button " + objectName;
  });
}

void ModalAnswerer::PressEnter() {
  answers_.push_back([](QWidget& window) -> std::string {
    QPointer<QWidget> guard = &window;
    PressKey(window, Qt::Key_Return);
    return StillOpen(guard) ? "Return left it open" : "";
  });
}

void ModalAnswerer::Cancel() {
  answers_.push_back([](QWidget& window) -> std::string {
    QPointer<QWidget> guard = &window;
    PressKey(window, Qt::Key_Escape);
    return StillOpen(guard) ? "Escape left it open" : "";
  });
}

void ModalAnswerer::EnterText(std::string text) {
  answers_.push_back([text](QWidget& window) -> std::string {
    auto* edit = window.findChild<QLineEdit*>(QStringLiteral("txtInput"));
    if (!edit) {
      const auto edits = window.findChildren<QLineEdit*>();
      if (edits.size() != 1) return "no line edit txtInput";
      edit = edits.front();
    }
    edit->setText(QString::fromStdString(text));
    QPointer<QWidget> guard = &window;
    if (auto* ok = window.findChild<QAbstractButton*>(QStringLiteral("vbOK")))
      ok->click();
    else
      PressKey(window, Qt::Key_Return);
    return StillOpen(guard) ? "OK left it open" : "";
  });
}

void ModalAnswerer::ChooseFile(std::string path) {
  answers_.push_back([path](QWidget& window) { return AcceptPath(window, path); });
}

void ModalAnswerer::ChooseFolder(std::string path) {
  answers_.push_back([path](QWidget& window) { return AcceptPath(window, path); });
}

void ModalAnswerer::Act(std::function<void(QWidget&)> act) {
  answers_.push_back([act = std::move(act)](QWidget& window) -> std::string {
    act(window);
    return {};
  });
}

void ModalAnswerer::Turn() {
  if (answering_) return;
  QWidget* window = QApplication::activeModalWidget();
  if (!window || !window->isVisible()) return;
  // A window whose answer is still at work (an Act that clicked a button whose
  // box has just been answered) is not met anew until that answer returns.
  for (const QPointer<QWidget>& busy : busy_)
    if (busy == window) return;
  if (window != current_) {
    Record(*window);
    current_ = window;
    listingTurns_ = 0;
    listedBefore_ = -1;
  }
  if (!ListingReady(*window)) return;

  Answer answer;
  if (!answers_.empty()) {
    answer = std::move(answers_.front());
    answers_.pop_front();
  }
  // Given from an event of its own: a window that the answer opens runs its
  // own loop, in which this timer must be free to answer it.
  answering_ = true;
  const std::size_t index = seen_.size() - 1;
  QPointer<QWidget> target = window;
  QTimer::singleShot(0, &timer_, [this, answer = std::move(answer), index, target] {
    answering_ = false;
    current_ = nullptr;  // a window still open after its answer is met anew
    if (!target) return;
    busy_.push_back(target);
    std::string problem = answer ? answer(*target) : "nothing queued";
    busy_.pop_back();
    if (problem.empty()) return;
    seen_[index].problem = problem;
    if (StillOpen(target)) Reject(*target);
  });
}

void ModalAnswerer::Record(QWidget& window) {
  SeenModal seen;
  seen.name = window.objectName().toStdString();
  seen.title = window.windowTitle().toStdString();
  if (auto* box = qobject_cast<QMessageBox*>(&window)) {
    seen.text = box->text().toStdString();
    seen.icon = VbIcon(box->icon());
  } else {
    auto* label = window.findChild<QLabel*>(QStringLiteral("lblPrompt"));
    if (!label) label = window.findChild<QLabel*>();
    if (label) seen.text = label->text().toStdString();
  }

  std::vector<std::pair<QPoint, QPushButton*>> buttons;
  for (QPushButton* button : window.findChildren<QPushButton*>())
    if (button->isVisibleTo(&window))
      buttons.emplace_back(button->mapTo(&window, QPoint()), button);
  std::sort(buttons.begin(), buttons.end(), [](const auto& a, const auto& b) {
    return a.first.y() != b.first.y() ? a.first.y() < b.first.y() : a.first.x() < b.first.x();
  });
  for (const auto& [position, button] : buttons) {
    seen.buttons.push_back(button->objectName().toStdString());
    if (button->isDefault()) seen.defaultButton = seen.buttons.back();
  }

  if (auto* dialog = qobject_cast<QFileDialog*>(&window)) {
    seen.nameFilters = dialog->nameFilters();
    seen.directory = dialog->directory().absolutePath();
  }
  seen_.push_back(std::move(seen));
}

bool ModalAnswerer::ListingReady(QWidget& window) {
  auto* dialog = qobject_cast<QFileDialog*>(&window);
  if (!dialog) return true;
  // The listing arrives from a thread of the dialog's model: ready once it
  // holds entries that stayed the same for a turn, or after a while empty.
  const QStringList listed = Listed(*dialog);
  QStringList& files = seen_.back().files;
  files.clear();
  for (const QString& name : listed)
    if (!QFileInfo(dialog->directory().filePath(name)).isDir()) files << name;
  const bool ready =
      (!listed.isEmpty() && listed.size() == listedBefore_) || ++listingTurns_ >= kListingTurns;
  listedBefore_ = static_cast<int>(listed.size());
  return ready;
}

}  // namespace ketrova::testing
