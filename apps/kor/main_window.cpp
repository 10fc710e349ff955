#include "main_window.h"

#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>

#include "component_version.h"
#include "message_pane.h"
#include "navigator_widget.h"
#include "tool_bar.h"

namespace kor {

MainWindow::MainWindow(const ImageList& navigatorImages) {
  setObjectName("KOR");
  resize(1100, 720);

  QMenu* file = menuBar()->addMenu("&Datei");
  QAction* quit = file->addAction("&Beenden");
  quit->setObjectName("mnuQuit");
  connect(quit, &QAction::triggered, this, &QMainWindow::close);
  helpMenu_ = menuBar()->addMenu("&Hilfe");
  helpMenu_->setObjectName("mnuHelp");
  QAction* about = helpMenu_->addAction("Über Ketrova ...");
  about->setObjectName("mnuAbout");
  connect(about, &QAction::triggered, this, [this] {
    QMessageBox::about(this, "Über Ketrova",
                       QStringLiteral("<b>Ketrova %1</b><p>Datenkonvertierung zwischen "
                                      "Datenbanken, Textdateien und Tabellen.</p>")
                           .arg(QString::fromStdString(ketrova::ComponentVersion())));
  });

  systemToolbar_ = new ToolBar("SystemToolbar", "System", this);
  addToolBar(Qt::TopToolBarArea, systemToolbar_);
  toolbar_ = new ToolBar("Toolbar", "Projekt", this);
  addToolBar(Qt::TopToolBarArea, toolbar_);

  navigator_ = new NavigatorWidget(navigatorImages, this);
  navigator_->activated = [this](const std::string& name) { ItemClick(name); };

  documents_ = new QTabWidget(this);
  documents_->setObjectName("Documents");
  documents_->setTabsClosable(true);
  documents_->setDocumentMode(true);
  connect(documents_, &QTabWidget::tabCloseRequested, this, [this](int index) {
    QWidget* page = documents_->widget(index);
    documents_->removeTab(index);
    page->deleteLater();
  });
  messages_ = new MessagePane(this);

  auto* right = new QSplitter(Qt::Vertical, this);
  right->addWidget(documents_);
  right->addWidget(messages_);
  right->setStretchFactor(0, 4);
  right->setStretchFactor(1, 1);
  right->setSizes({500, 150});
  auto* split = new QSplitter(Qt::Horizontal, this);
  split->addWidget(navigator_);
  split->addWidget(right);
  split->setStretchFactor(1, 1);
  split->setSizes({240, 860});
  setCentralWidget(split);

  info_ = new QLabel(this);
  info_->setObjectName("ExtendedInfo");
  statusBar()->addWidget(info_, 1);
}

void MainWindow::ItemClick(const std::string& documentName) {
  if (itemClicked) itemClicked(documentName);
}

void MainWindow::SetExtendedInfo(const std::string& text) {
  info_->setText(QString::fromStdString(text));
}

QString MainWindow::ExtendedInfo() const {
  return info_->text();
}

void MainWindow::ShowDocument(const std::string& name, const QString& title, QWidget* page) {
  if (QWidget* open = Document(name)) {
    documents_->setCurrentWidget(open);
    delete page;
    return;
  }
  if (page == nullptr) return;
  page->setObjectName(QString::fromStdString(name));
  documents_->setCurrentIndex(documents_->addTab(page, title));
}

QWidget* MainWindow::Document(const std::string& name) const {
  for (int i = 0; i < documents_->count(); ++i)
    if (documents_->widget(i)->objectName().compare(QString::fromStdString(name),
                                                    Qt::CaseInsensitive) == 0)
      return documents_->widget(i);
  return nullptr;
}

std::vector<std::string> MainWindow::DocumentNames() const {
  std::vector<std::string> names;
  for (int i = 0; i < documents_->count(); ++i)
    names.push_back(documents_->widget(i)->objectName().toStdString());
  return names;
}

}  // namespace kor
