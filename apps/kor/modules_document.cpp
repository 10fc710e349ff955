#include "modules_document.h"

#include <QHBoxLayout>
#include <QListView>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

#include "core/converter.h"
#include "core/error_text.h"
#include "dialogs/script_editor.h"
#include "engine/script_modules.h"
#include "platform/ui/user_interface.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace kor {

using ketrova::ui::Current;

int ModuleListModel::rowCount(const QModelIndex& parent) const {
  auto project = Project();
  return parent.isValid() || !project ? 0 : project->ScriptModules().Count();
}

QVariant ModuleListModel::data(const QModelIndex& index, int role) const {
  auto project = Project();
  if (!project || !index.isValid() || index.row() >= project->ScriptModules().Count()) return {};
  if (role == Qt::DisplayRole)
    return QString::fromStdString(project->ScriptModules().Item(index.row() + 1).Name);
  return {};
}

ModulesDocument::ModulesDocument(DocumentContext context, QWidget* parent)
    : Document(std::move(context), parent) {
  model_ = new ModuleListModel([this] { return Project(); }, this);
  list_ = new QListView(this);
  list_->setObjectName("lstModules");
  list_->setModel(model_);
  list_->setSelectionMode(QAbstractItemView::SingleSelection);
  editor_ = new ketrova::dialogs::ScriptEditor(this);

  auto* add = new QPushButton("Hinzufügen ...", this);
  add->setObjectName("cmdAddModule");
  auto* rename = new QPushButton("Umbenennen ...", this);
  rename->setObjectName("cmdRenameModule");
  auto* remove = new QPushButton("Löschen", this);
  remove->setObjectName("cmdDeleteModule");
  auto* left = new QWidget(this);
  auto* leftLayout = new QVBoxLayout(left);
  leftLayout->setContentsMargins(0, 0, 0, 0);
  leftLayout->addWidget(list_, 1);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(add);
  buttons->addWidget(rename);
  buttons->addWidget(remove);
  leftLayout->addLayout(buttons);
  auto* split = new QSplitter(this);
  split->addWidget(left);
  split->addWidget(editor_);
  split->setStretchFactor(1, 1);
  split->setSizes({240, 600});
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(split);

  connect(list_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this] { ShowModule(); });
  connect(editor_, &ketrova::dialogs::ScriptEditor::textChanged, this, [this] {
    auto project = Project();
    int place = SelectedPlace();
    if (showing_ || !project || place == 0) return;
    project->ScriptModules().Item(place).ScriptText = editor_->Text();
  });
  connect(add, &QPushButton::clicked, this, [this] { AddModule(); });
  connect(rename, &QPushButton::clicked, this, [this] { RenameModule(); });
  connect(remove, &QPushButton::clicked, this, [this] { DeleteModule(); });
  Refresh();
}

int ModulesDocument::SelectedPlace() const {
  QModelIndex current = list_->selectionModel()->currentIndex();
  return current.isValid() ? current.row() + 1 : 0;
}

void ModulesDocument::Select(int place) {
  if (place < 1 || place > model_->rowCount()) {
    list_->selectionModel()->clearCurrentIndex();
    ShowModule();
    return;
  }
  list_->selectionModel()->setCurrentIndex(model_->index(place - 1),
                                           QItemSelectionModel::ClearAndSelect);
  ShowModule();
}

void ModulesDocument::Refresh() {
  int place = SelectedPlace();
  model_->Reset();
  Select(place > 0 ? place : 1);
}

void ModulesDocument::ShowModule() {
  auto project = Project();
  int place = SelectedPlace();
  showing_ = true;
  if (project) editor_->SetLanguage(project->ScriptLanguage);
  if (!project || place == 0 || place > project->ScriptModules().Count()) {
    editor_->SetText("");
    editor_->setEnabled(false);
  } else {
    editor_->setEnabled(true);
    const std::string& text = project->ScriptModules().Item(place).ScriptText;
    if (editor_->Text() != text) editor_->SetText(text);
  }
  showing_ = false;
}

std::string ModulesDocument::AskName(const std::string& title, const std::string& current,
                                     int ownPlace) {
  auto project = Project();
  std::optional<std::string> answer = Current().InputBox("Name des Moduls:", title, current);
  if (!answer) return {};
  std::string name = ketrova::Nvl(ketrova::Variant(*answer));
  if (name.empty()) {
    Current().MsgBox("Bitte geben Sie einen Namen für das Modul ein.", ketrova::ui::vbExclamation,
                     project->ProductName());
    return {};
  }
  int place = 0;
  for (const ketrova::CScriptModule& module : project->ScriptModules()) {
    ++place;
    if (place != ownPlace && ketrova::IsEqual(module.Name, name)) {
      Current().MsgBox("Ein Modul mit dem Namen \"" + name + "\" ist bereits vorhanden.",
                       ketrova::ui::vbExclamation, project->ProductName());
      return {};
    }
  }
  return name;
}

void ModulesDocument::AddModule() {
  auto project = Project();
  if (!project) return;
  std::string name = AskName("Neues Modul", "", 0);
  if (name.empty()) return;
  try {
    ketrova::CScriptModule& module = project->ScriptModules().Add();
    module.Name = name;
  } catch (const ketrova::VbError& e) {
    // After deletions the list may refuse the next number as a key.
    ketrova::Err().Set(e);
    std::string text = ketrova::BuildErrorText(1, "", "Modul hinzufügen");
    ketrova::Err().Clear();
    Current().MsgBox(text, ketrova::ui::vbCritical, project->ProductName());
    return;
  }
  model_->Reset();
  Select(model_->rowCount());
}

void ModulesDocument::RenameModule() {
  auto project = Project();
  int place = SelectedPlace();
  if (!project || place == 0) return;
  ketrova::CScriptModule& module = project->ScriptModules().Item(place);
  std::string name = AskName("Modul umbenennen", module.Name, place);
  if (name.empty()) return;
  module.Name = name;
  model_->Reset();
  Select(place);
}

void ModulesDocument::DeleteModule() {
  auto project = Project();
  int place = SelectedPlace();
  if (!project || place == 0) return;
  if (project->ScriptModules().Count() == 1) {
    Current().MsgBox("Das letzte Modul eines Projekts kann nicht gelöscht werden.",
                     ketrova::ui::vbExclamation, project->ProductName());
    return;
  }
  const std::string name = project->ScriptModules().Item(place).Name;
  if (Current().MsgBox(
          "Möchten Sie das Modul \"" + name + "\" wirklich löschen ?",
          ketrova::ui::vbYesNo | ketrova::ui::vbQuestion | ketrova::ui::vbDefaultButton2,
          project->ProductName()) != ketrova::ui::vbYes)
    return;
  project->ScriptModules().Remove(place);
  model_->Reset();
  Select(std::min(place, model_->rowCount()));
}

}  // namespace kor
