// "KetrovatorCTL.frmOnStartProjekt" and "KetrovatorCTL.frmOnEndProjekt": the
// project's start script (txOnStart) or end script (txOnEnd) in the project's
// script language. What is typed goes into the project at once.
#pragma once

#include "document.h"

namespace ketrova::dialogs {
class ScriptEditor;
}

namespace kor {

class ScriptDocument : public Document {
  Q_OBJECT
 public:
  enum class Which { kOnStart, kOnEnd };
  ScriptDocument(Which which, DocumentContext context, QWidget* parent = nullptr);
  void Refresh() override;
  ketrova::dialogs::ScriptEditor& Editor() const { return *editor_; }

 private:
  std::string* Script() const;

  Which which_;
  ketrova::dialogs::ScriptEditor* editor_;
  bool refreshing_ = false;
};

}  // namespace kor
