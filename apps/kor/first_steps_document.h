// "KetrovatorCTL.frmFirstSteps": the page index.HTM of the published HTMRoot
// folder.
#pragma once

#include "document.h"

class QTextBrowser;

namespace kor {

class FirstStepsDocument : public Document {
  Q_OBJECT
 public:
  explicit FirstStepsDocument(DocumentContext context, QWidget* parent = nullptr);
  void Refresh() override {}
  QTextBrowser& Browser() const { return *browser_; }

 private:
  QTextBrowser* browser_;
};

}  // namespace kor
