#include "first_steps_document.h"

#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

namespace kor {

FirstStepsDocument::FirstStepsDocument(DocumentContext context, QWidget* parent)
    : Document(std::move(context), parent) {
  browser_ = new QTextBrowser(this);
  browser_->setObjectName("htmFirstSteps");
  browser_->setOpenExternalLinks(true);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(browser_);
  std::string folder = context_.variable ? context_.variable("gszDIR_HTMRoot") : std::string();
  browser_->setSource(QUrl::fromLocalFile(QString::fromStdString(folder + "index.HTM")));
}

}  // namespace kor
