#include "jobs_document.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "core/converter.h"
#include "core/error_text.h"
#include "job_list_model.h"
#include "jobs/jobs.h"
#include "platform/ui/user_interface.h"
#include "support/vb_error.h"

namespace kor {

JobsDocument::JobsDocument(DocumentContext context, QWidget* parent)
    : Document(std::move(context), parent) {
  model_ = new JobListModel([this] { return Project(); }, this);
  list_ = new QTableView(this);
  list_->setObjectName("lstJobs");
  list_->setModel(model_);
  list_->setSelectionBehavior(QAbstractItemView::SelectRows);
  list_->setSelectionMode(QAbstractItemView::SingleSelection);
  list_->setAlternatingRowColors(true);
  list_->verticalHeader()->hide();
  list_->horizontalHeader()->setStretchLastSection(true);
  list_->setWordWrap(false);

  auto* buttons = new QHBoxLayout;
  auto button = [&](const char* name, const char* text) {
    auto* b = new QPushButton(QString::fromUtf8(text), this);
    b->setObjectName(name);
    buttons->addWidget(b);
    return b;
  };
  QPushButton* all = button("cmdSelectAll", "Alle auswählen");
  QPushButton* none = button("cmdDeSelectAll", "Keine auswählen");
  buttons->addStretch(1);
  QPushButton* add = button("zsButtonNew", "Neu");
  QPushButton* edit = button("zsButtonEdit", "Bearbeiten");
  QPushButton* remove = button("zsButtonDelete", "Löschen");

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(list_);
  layout->addLayout(buttons);

  connect(all, &QPushButton::clicked, this, [this] { SelectAll(true); });
  connect(none, &QPushButton::clicked, this, [this] { SelectAll(false); });
  connect(edit, &QPushButton::clicked, this, [this] {
    Edit(SelectedPlace(), -1);
    Finish("ZSBUTTONEDIT");
  });
  connect(list_, &QTableView::doubleClicked, this, [this](const QModelIndex& index) {
    if (index.column() == JobListModel::kEnabled) return;
    Edit(index.row() + 1, -1);
    Finish("ZSBUTTONEDIT");
  });
  connect(add, &QPushButton::clicked, this, [this] {
    Edit(SelectedPlace(), SelectedPlace());
    Finish("ZSBUTTONNEW");
  });
  connect(remove, &QPushButton::clicked, this, [this] {
    Delete();
    Finish("ZSBUTTONDELETE");
  });
  Refresh();
}

void JobsDocument::Refresh() {
  int place = SelectedPlace();
  model_->Reset();
  list_->resizeColumnsToContents();
  if (place > 0 && place <= model_->rowCount()) list_->selectRow(place - 1);
}

int JobsDocument::SelectedPlace() const {
  QModelIndexList rows = list_->selectionModel()->selectedRows();
  return rows.isEmpty() ? 0 : rows.first().row() + 1;
}

void JobsDocument::SelectAll(bool enabled) {
  if (auto project = Project()) {
    if (enabled)
      project->Jobs().SelectAll();
    else
      project->Jobs().DeSelectAll();
  }
  Finish(enabled ? "CMDSELECTALL" : "CMDDESELECTALL");
}

void JobsDocument::Edit(int place, int indexAfter) {
  auto project = Project();
  if (!project) return;
  std::string result;
  try {
    result = project->JobEdit(place, indexAfter);
  } catch (const ketrova::VbError& e) {
    // The list refused the new job: after a deletion the next number can be
    // a key it still holds (CJobs renumbers its jobs, not its keys). JobEdit
    // had the job alone, so the job and what was entered for it are gone;
    // nothing of the list is lost. The user is told so, and how to go on:
    // a project loaded anew holds fresh keys.
    ketrova::Err().Set(e);
    result = ketrova::BuildErrorText(1, "", "Aufgabe einfügen");
    ketrova::Err().Clear();
    if (indexAfter > -1)
      result =
          "Die neue Aufgabe konnte nicht in die Liste aufgenommen werden und ist verworfen "
          "worden. Speichern Sie das Projekt und öffnen Sie es erneut, bevor Sie eine neue "
          "Aufgabe anlegen.\r\n" +
          result;
  }
  if (result != "OK" && result != "CANCEL")
    ketrova::ui::Current().MsgBox(result, ketrova::ui::vbExclamation, project->ProductName());
}

void JobsDocument::Delete() {
  auto project = Project();
  int place = SelectedPlace();
  if (!project || place == 0 || place > project->Jobs().Count()) return;
  const std::string caption = project->Jobs().Item(place).Caption;
  int answer = ketrova::ui::Current().MsgBox(
      "Möchten Sie die Aufgabe \"" + caption + "\" wirklich löschen ?",
      ketrova::ui::vbYesNo | ketrova::ui::vbQuestion | ketrova::ui::vbDefaultButton2,
      project->ProductName());
  if (answer == ketrova::ui::vbYes) project->Jobs().Remove(place);
}

void JobsDocument::Finish(const char* key) {
  Refresh();
  if (context_.raiseClick) context_.raiseClick(key);
}

}  // namespace kor
