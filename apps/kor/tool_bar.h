// A toolbar of the host with the buttons that plug-ins add. A button is
// addressed by the 1-based index its adding answered, or by plug-in and key.
// Pressing one calls the `pressed` handler with its plug-in and key.
#pragma once

#include <QToolBar>
#include <functional>
#include <string>
#include <vector>

#include "host/host_application.h"

namespace kor {

class ToolBar : public QToolBar, public ketrova::host::Toolbar {
  Q_OBJECT
 public:
  ToolBar(const QString& objectName, const QString& title, QWidget* parent);

  // Adds a button; answers its index. Raises 35602 when the plug-in has a
  // button with that key already.
  std::int32_t AddButton(const std::string& plugInName, const std::string& key,
                         const std::string& caption, const std::string& toolTip, const QIcon& icon);
  // The index of a button, 0 when there is none.
  std::int32_t FindButton(const std::string& key, const std::string& plugInName) const;
  // The button's action; raises 9 for an index out of range.
  QAction* Button(std::int32_t index) const;
  std::int32_t ButtonCount() const { return static_cast<std::int32_t>(buttons_.size()); }

  void SetButtonEnabled(std::int32_t index, bool enabled) override;
  bool ButtonEnabled(std::int32_t index) const override;
  void SetButtonVisible(std::int32_t index, bool visible) override;
  void SetVisible(bool visible) override { setVisible(visible); }
  // A picture stretched behind the buttons; "" for none.
  void SetBackgroundPicture(const QString& path);

  std::function<void(const std::string& plugInName, const std::string& key)> pressed;

 private:
  struct Entry {
    std::string plugInName, key;
    QAction* action;
  };
  std::vector<Entry> buttons_;
};

}  // namespace kor
