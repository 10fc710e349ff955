// The host's main window: menu, the main and the system toolbar, the
// navigator on the left, the tabbed document area with the message pane
// below it, and the information line. It shows; KorApplication decides.
#pragma once

#include <QMainWindow>
#include <functional>
#include <string>

#include "host/host_application.h"

class QLabel;
class QMenu;
class QTabWidget;

namespace kor {

class ImageList;
class MessagePane;
class NavigatorWidget;
class ToolBar;

class MainWindow : public QMainWindow, public ketrova::host::MainForm {
  Q_OBJECT
 public:
  MainWindow(const ImageList& navigatorImages);

  // Opens a document as a click on its navigator entry does: through
  // `itemClicked`, which the application sets.
  void ItemClick(const std::string& documentName) override;
  void SetExtendedInfo(const std::string& text) override;

  // Shows the document `name` (a tab titled `title`), or brings it to the
  // front when it is open already (`page`, which may be null then, is not
  // used).
  void ShowDocument(const std::string& name, const QString& title, QWidget* page);
  // The open document named `name`, or null.
  QWidget* Document(const std::string& name) const;
  // The names of the open documents, in tab order.
  std::vector<std::string> DocumentNames() const;

  ToolBar& MainToolbar() const { return *toolbar_; }
  ToolBar& SystemToolbar() const { return *systemToolbar_; }
  NavigatorWidget& Navigator() const { return *navigator_; }
  MessagePane& Messages() const { return *messages_; }
  QString ExtendedInfo() const;
  QMenu& HelpMenu() const { return *helpMenu_; }
  QTabWidget& Documents() const { return *documents_; }

  std::function<void(const std::string& documentName)> itemClicked;

 private:
  ToolBar* toolbar_;
  ToolBar* systemToolbar_;
  NavigatorWidget* navigator_;
  QTabWidget* documents_;
  MessagePane* messages_;
  QLabel* info_;
  QMenu* helpMenu_;
};

}  // namespace kor
