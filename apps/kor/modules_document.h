// "KetrovatorCTL.frmModules": the project's script modules, shared code for
// every script of a run. A list of names (add, rename, delete) and an editor
// for the chosen module's code, written into the module as it is typed.
#pragma once

#include <QAbstractListModel>

#include "document.h"
#include "project_model.h"

class QListView;

namespace ketrova::dialogs {
class ScriptEditor;
}

namespace kor {

class ModuleListModel : public ProjectModel<QAbstractListModel> {
 public:
  explicit ModuleListModel(ProjectSource project, QObject* parent = nullptr)
      : ProjectModel(std::move(project), parent) {}
  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
};

class ModulesDocument : public Document {
  Q_OBJECT
 public:
  explicit ModulesDocument(DocumentContext context, QWidget* parent = nullptr);
  void Refresh() override;
  QListView& List() const { return *list_; }
  ketrova::dialogs::ScriptEditor& Editor() const { return *editor_; }

 private:
  // The chosen module's place, 1-based; 0 for none.
  int SelectedPlace() const;
  void Select(int place);
  void ShowModule();
  // Asks for a name; "" when cancelled or refused (the user was told why).
  std::string AskName(const std::string& title, const std::string& current, int ownPlace);
  void AddModule();
  void RenameModule();
  void DeleteModule();

  ModuleListModel* model_;
  QListView* list_;
  ketrova::dialogs::ScriptEditor* editor_;
  bool showing_ = false;
};

}  // namespace kor
