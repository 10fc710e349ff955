#include "dialogs/job_script_page.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

#include "dialogs/job_mapping_page.h"
#include "dialogs/script_editor.h"

namespace ketrova::dialogs {

JobScriptPage::JobScriptPage(QWidget* parent)
    : QWidget(parent),
      checkUserDefined_(new QCheckBox(this)),
      cmdCreateScript_(new QPushButton(this)),
      cmdShowEditorUserScript_(new QPushButton(this)),
      editScript_(new ScriptEditor(this)),
      panelEditorBig_(new QWidget(this)),
      labelEditorBig_(new QLabel(panelEditorBig_)),
      editorBig_(new ScriptEditor(panelEditorBig_)) {}

JobScriptPage::~JobScriptPage() = default;

void JobScriptPage::BindMapping(JobMappingPage* mapping) {
  mapping_ = mapping;
}
void JobScriptPage::SetEditorBigHost(QWidget* host) {
  host_ = host;
}
void JobScriptPage::Load() {}
std::string JobScriptPage::Save() {
  return {};
}
bool JobScriptPage::CheckTargetFields() const {
  return false;
}
std::string JobScriptPage::GenerateScript() {
  return {};
}
void JobScriptPage::ScriptLanguageChanged() {}
bool JobScriptPage::ScriptUserDefined() const {
  return false;
}
std::string JobScriptPage::ScriptText() const {
  return {};
}
void JobScriptPage::ShowEditorBig(const std::string&, std::function<void(const std::string&)>) {}
bool JobScriptPage::EditorBigOpen() const {
  return false;
}
void JobScriptPage::CreateScript() {}
void JobScriptPage::ShowEditorUserScript() {}
void JobScriptPage::CloseEditor() {}
void JobScriptPage::CancelEditor() {}
bool JobScriptPage::eventFilter(QObject* watched, QEvent* event) {
  return QWidget::eventFilter(watched, event);
}
void JobScriptPage::UserDefinedToggled() {}
void JobScriptPage::SetEnabling() {}
void JobScriptPage::OpenEditorBig(EditorBigFor, const std::string&) {}
void JobScriptPage::HideEditorBig() {}

}  // namespace ketrova::dialogs
