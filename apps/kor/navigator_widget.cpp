#include "navigator_widget.h"

#include <QLinearGradient>
#include <QListWidget>
#include <QPainter>
#include <QToolButton>
#include <QVBoxLayout>

#include "host_variables.h"
#include "image_list.h"
#include "support/text.h"
#include "support/vb_error.h"

namespace kor {
namespace {

QColor Colour(std::int32_t number) {
  Rgb rgb = RgbFromColourNumber(number);
  return QColor(rgb.red, rgb.green, rgb.blue);
}

}  // namespace

NavigatorEntry::NavigatorEntry(NavigatorBarWidget& bar, QListWidgetItem* item, std::string key)
    : bar_(bar), item_(item), key_(std::move(key)) {}

void NavigatorEntry::SetIconIndex(std::int32_t index) {
  iconIndex_ = index;
  item_->setIcon(bar_.Images().Icon(index));
}

void NavigatorEntry::SetToolTipText(const std::string& text) {
  item_->setToolTip(QString::fromStdString(text));
}

NavigatorBarWidget::NavigatorBarWidget(const std::string& key, const QString& text,
                                       const ImageList& images, QWidget* parent)
    : QWidget(parent), key_(key), images_(images) {
  setObjectName(QString::fromStdString(key));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4, 4, 4, 6);
  layout->setSpacing(2);
  header_ = new QToolButton(this);
  header_->setObjectName("BarHeader");
  header_->setText(text);
  header_->setCheckable(true);
  header_->setChecked(true);
  header_->setArrowType(Qt::DownArrow);
  header_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  header_->setAutoRaise(true);
  header_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  QFont bold = header_->font();
  bold.setBold(true);
  header_->setFont(bold);
  list_ = new QListWidget(this);
  list_->setObjectName("BarItems");
  list_->setFrameShape(QFrame::NoFrame);
  list_->setIconSize(QSize(16, 16));
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  list_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  list_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  list_->setCursor(Qt::PointingHandCursor);
  layout->addWidget(header_);
  layout->addWidget(list_);
  connect(header_, &QToolButton::toggled, this, [this](bool on) { SetExpanded(on); });
  connect(list_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
    if (activated) activated(item->data(Qt::UserRole).toString().toStdString());
  });
  UpdateLook();
  FitList();
}

NavigatorBarWidget::~NavigatorBarWidget() = default;

NavigatorEntry& NavigatorBarWidget::AddItem(const std::string& key, const std::string& text) {
  for (const auto& entry : entries_)
    if (ketrova::IsEqual(entry->Key(), key))
      throw ketrova::VbError(ketrova::host::kErrKeyNotUnique,
                             "Schlüssel ist in dieser Auflistung nicht eindeutig");
  auto* item = new QListWidgetItem(QString::fromStdString(text), list_);
  item->setData(Qt::UserRole, QString::fromStdString(key));
  item->setForeground(Colour(fontColour_));
  entries_.push_back(std::make_unique<NavigatorEntry>(*this, item, key));
  FitList();
  return *entries_.back();
}

void NavigatorBarWidget::SetBackColorStart(std::int32_t colour) {
  colourStart_ = colour;
  UpdateLook();
}

void NavigatorBarWidget::SetBackColorEnd(std::int32_t colour) {
  colourEnd_ = colour;
  UpdateLook();
}

void NavigatorBarWidget::SetFontColor(std::int32_t colour) {
  fontColour_ = colour;
  for (const auto& entry : entries_) entry->Item()->setForeground(Colour(colour));
  UpdateLook();
}

void NavigatorBarWidget::SetBackgroundPicture(const std::string& path) {
  backgroundPicture_ = QString::fromStdString(path);
  UpdateLook();
}

bool NavigatorBarWidget::Expanded() const {
  return list_->isVisible() || header_->isChecked();
}

void NavigatorBarWidget::SetExpanded(bool expanded) {
  header_->setChecked(expanded);
  header_->setArrowType(expanded ? Qt::DownArrow : Qt::RightArrow);
  list_->setVisible(expanded);
}

void NavigatorBarWidget::UpdateLook() {
  QString font = Colour(fontColour_).name();
  QString header =
      QStringLiteral("QToolButton#BarHeader { color: %1; padding: 3px; text-align: left; }")
          .arg(font);
  if (!backgroundPicture_.isEmpty())
    header = QStringLiteral(
                 "QToolButton#BarHeader { color: %1; padding: 3px; border-image: url(\"%2\") 0 0 0 "
                 "0 stretch stretch; }")
                 .arg(font, backgroundPicture_);
  header_->setStyleSheet(header);
  list_->setStyleSheet(
      QStringLiteral("QListWidget { background: transparent; color: %1; }"
                     "QListWidget::item { padding: 2px; }"
                     "QListWidget::item:hover { background: rgba(255,255,255,120); }")
          .arg(font));
  update();
}

void NavigatorBarWidget::FitList() {
  int height = 4;
  for (int i = 0; i < list_->count(); ++i) height += list_->sizeHintForRow(i);
  list_->setFixedHeight(height);
}

void NavigatorBarWidget::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  QLinearGradient gradient(rect().topLeft(), rect().bottomLeft());
  gradient.setColorAt(0, Colour(colourStart_));
  gradient.setColorAt(1, Colour(colourEnd_));
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Colour(colourEnd_).darker(115));
  painter.setBrush(gradient);
  painter.drawRoundedRect(rect().adjusted(0, 0, -1, -1), 5, 5);
}

NavigatorWidget::NavigatorWidget(const ImageList& images, QWidget* parent)
    : QScrollArea(parent), images_(images) {
  setObjectName("Navigator");
  setWidgetResizable(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  content_ = new QWidget(this);
  content_->setObjectName("NavigatorContent");
  layout_ = new QVBoxLayout(content_);
  layout_->setContentsMargins(6, 6, 6, 6);
  layout_->setSpacing(8);
  layout_->addStretch(1);
  setWidget(content_);
  setMinimumWidth(220);
}

void NavigatorWidget::SetRedraw(bool on) {
  content_->setUpdatesEnabled(on);
}

void NavigatorWidget::ClearBars() {
  for (NavigatorBarWidget* bar : bars_) {
    layout_->removeWidget(bar);
    bar->deleteLater();
    bar->hide();
  }
  bars_.clear();
}

NavigatorBarWidget& NavigatorWidget::AddBar(const std::string& key, const std::string& text) {
  for (NavigatorBarWidget* bar : bars_)
    if (ketrova::IsEqual(bar->Key(), key))
      throw ketrova::VbError(ketrova::host::kErrKeyNotUnique,
                             "Schlüssel ist in dieser Auflistung nicht eindeutig");
  auto* bar = new NavigatorBarWidget(key, QString::fromStdString(text), images_, content_);
  bar->activated = [this](const std::string& document) {
    if (activated) activated(document);
  };
  layout_->insertWidget(layout_->count() - 1, bar);
  bars_.push_back(bar);
  return *bar;
}

void NavigatorWidget::SetBackColorStart(std::int32_t colour) {
  colourStart_ = colour;
  QColor c = Colour(colour);
  content_->setStyleSheet(
      QStringLiteral("QWidget#NavigatorContent { background: %1; }").arg(c.lighter(104).name()));
}

void NavigatorWidget::SetBackColorEnd(std::int32_t colour) {
  colourEnd_ = colour;
}

NavigatorEntry* NavigatorWidget::FindEntry(const std::string& key) const {
  for (NavigatorBarWidget* bar : bars_)
    for (int i = 0; i < bar->ItemCount(); ++i)
      if (ketrova::IsEqual(bar->Entry(i).Key(), key)) return &bar->Entry(i);
  return nullptr;
}

}  // namespace kor
