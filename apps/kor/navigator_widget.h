// The navigator on the left of the main window: bars that collapse, each with
// entries (picture, text, tool tip) that name a document. Plug-ins fill it
// through the host interface; a click on an entry calls `activated` with the
// entry's key, the name of its document.
#pragma once

#include <QScrollArea>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/host_application.h"

class QListWidget;
class QListWidgetItem;
class QToolButton;
class QVBoxLayout;

namespace kor {

class ImageList;
class NavigatorBarWidget;

class NavigatorEntry : public ketrova::host::NavigatorBarItem {
 public:
  NavigatorEntry(NavigatorBarWidget& bar, QListWidgetItem* item, std::string key);
  void SetIconIndex(std::int32_t index) override;
  void SetToolTipText(const std::string& text) override;
  void SetGroupName(const std::string& name) override { groupName_ = name; }

  const std::string& Key() const { return key_; }
  std::int32_t IconIndex() const { return iconIndex_; }
  const std::string& GroupName() const { return groupName_; }
  QListWidgetItem* Item() const { return item_; }

 private:
  NavigatorBarWidget& bar_;
  QListWidgetItem* item_;
  std::string key_;
  std::string groupName_;
  std::int32_t iconIndex_ = -1;
};

class NavigatorBarWidget : public QWidget, public ketrova::host::NavigatorBar {
  Q_OBJECT
 public:
  NavigatorBarWidget(const std::string& key, const QString& text, const ImageList& images,
                     QWidget* parent);
  ~NavigatorBarWidget() override;

  NavigatorEntry& AddItem(const std::string& key, const std::string& text) override;
  std::int32_t ItemCount() const override { return static_cast<std::int32_t>(entries_.size()); }
  void SetBackColorStart(std::int32_t colour) override;
  void SetBackColorEnd(std::int32_t colour) override;
  void SetFontColor(std::int32_t colour) override;
  void SetBackgroundPicture(const std::string& path) override;

  const std::string& Key() const { return key_; }
  NavigatorEntry& Entry(int index) const { return *entries_.at(index); }
  const ImageList& Images() const { return images_; }
  bool Expanded() const;
  void SetExpanded(bool expanded);

  std::function<void(const std::string& key)> activated;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void UpdateLook();
  void FitList();

  std::string key_;
  const ImageList& images_;
  QToolButton* header_;
  QListWidget* list_;
  std::vector<std::unique_ptr<NavigatorEntry>> entries_;
  std::int32_t colourStart_ = 0xFFFFFF, colourEnd_ = 0xFFFFFF, fontColour_ = 0;
  QString backgroundPicture_;
};

class NavigatorWidget : public QScrollArea, public ketrova::host::Navigator {
  Q_OBJECT
 public:
  NavigatorWidget(const ImageList& images, QWidget* parent);

  void SetRedraw(bool on) override;
  void ClearBars() override;
  NavigatorBarWidget& AddBar(const std::string& key, const std::string& text) override;
  std::int32_t BarCount() const override { return static_cast<std::int32_t>(bars_.size()); }
  void SetBackColorStart(std::int32_t colour) override;
  std::int32_t BackColorStart() const override { return colourStart_; }
  void SetBackColorEnd(std::int32_t colour) override;
  std::int32_t BackColorEnd() const override { return colourEnd_; }

  NavigatorBarWidget& Bar(int index) const { return *bars_.at(index); }
  // The entry with the document `key` in any bar; null when there is none.
  NavigatorEntry* FindEntry(const std::string& key) const;

  std::function<void(const std::string& key)> activated;

 private:
  const ImageList& images_;
  QWidget* content_;
  QVBoxLayout* layout_;
  std::vector<NavigatorBarWidget*> bars_;  // owned by content_
  std::int32_t colourStart_ = 0xFFFFFF, colourEnd_ = 0xFFFFFF;
};

}  // namespace kor
