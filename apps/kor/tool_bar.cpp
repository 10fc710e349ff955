#include "tool_bar.h"

#include "support/text.h"
#include "support/vb_error.h"

namespace kor {

ToolBar::ToolBar(const QString& objectName, const QString& title, QWidget* parent)
    : QToolBar(title, parent) {
  setObjectName(objectName);
  setMovable(false);
  setIconSize(QSize(24, 24));
  setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
}

std::int32_t ToolBar::AddButton(const std::string& plugInName, const std::string& key,
                                const std::string& caption, const std::string& toolTip,
                                const QIcon& icon) {
  if (FindButton(key, plugInName) != 0)
    throw ketrova::VbError(ketrova::host::kErrKeyNotUnique,
                           "Schlüssel ist in dieser Auflistung nicht eindeutig");
  QAction* action = addAction(icon, QString::fromStdString(caption));
  action->setObjectName(QString::fromStdString(key));
  action->setToolTip(QString::fromStdString(toolTip));
  buttons_.push_back({plugInName, key, action});
  connect(action, &QAction::triggered, this, [this, plugInName, key] {
    if (pressed) pressed(plugInName, key);
  });
  return ButtonCount();
}

std::int32_t ToolBar::FindButton(const std::string& key, const std::string& plugInName) const {
  for (std::size_t i = 0; i < buttons_.size(); ++i)
    if (ketrova::IsEqual(buttons_[i].key, key) &&
        ketrova::IsEqual(buttons_[i].plugInName, plugInName))
      return static_cast<std::int32_t>(i + 1);
  return 0;
}

QAction* ToolBar::Button(std::int32_t index) const {
  if (index < 1 || index > ButtonCount()) throw ketrova::VbError(9);
  return buttons_[index - 1].action;
}

void ToolBar::SetButtonEnabled(std::int32_t index, bool enabled) {
  Button(index)->setEnabled(enabled);
}

bool ToolBar::ButtonEnabled(std::int32_t index) const {
  return Button(index)->isEnabled();
}

void ToolBar::SetButtonVisible(std::int32_t index, bool visible) {
  Button(index)->setVisible(visible);
}

void ToolBar::SetBackgroundPicture(const QString& path) {
  if (path.isEmpty()) {
    setStyleSheet({});
    return;
  }
  setStyleSheet(QStringLiteral("QToolBar#%1 { border-image: url(\"%2\") 0 0 0 0 stretch stretch; }")
                    .arg(objectName(), path));
}

}  // namespace kor
