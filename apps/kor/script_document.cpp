#include "script_document.h"

#include <QLabel>
#include <QVBoxLayout>

#include "core/converter.h"
#include "dialogs/script_editor.h"

namespace kor {

ScriptDocument::ScriptDocument(Which which, DocumentContext context, QWidget* parent)
    : Document(std::move(context), parent), which_(which) {
  auto* header = new QLabel(which == Which::kOnStart
                                ? "Wird vor der ersten Aufgabe ausgeführt (txOnStart). "
                                  "Liefert die Funktion Falsch, beginnt die Konvertierung nicht."
                                : "Wird nach der letzten Aufgabe ausgeführt (txOnEnd).",
                            this);
  header->setObjectName("lblScriptInfo");
  header->setWordWrap(true);
  editor_ = new ketrova::dialogs::ScriptEditor(this);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(header);
  layout->addWidget(editor_, 1);
  connect(editor_, &ketrova::dialogs::ScriptEditor::textChanged, this, [this] {
    if (refreshing_) return;
    if (std::string* script = Script()) *script = editor_->Text();
  });
  Refresh();
}

std::string* ScriptDocument::Script() const {
  auto project = Project();
  if (!project) return nullptr;
  return which_ == Which::kOnStart ? &project->ScriptOnStart : &project->ScriptOnEnd;
}

void ScriptDocument::Refresh() {
  auto project = Project();
  std::string* script = Script();
  refreshing_ = true;
  editor_->setEnabled(script != nullptr);
  if (project) editor_->SetLanguage(project->ScriptLanguage);
  // Only a text changed elsewhere (a project loaded) replaces what is shown,
  // so that the caret stays where the user types.
  if (script && editor_->Text() != *script) editor_->SetText(*script);
  refreshing_ = false;
}

}  // namespace kor
