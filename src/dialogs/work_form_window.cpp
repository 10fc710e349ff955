#include "dialogs/work_form_window.h"

#include <QCoreApplication>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>
#include <climits>
#include <cmath>

namespace ketrova::dialogs {

BarPosition MapBar(double min, double max, double value) {
  if (!std::isfinite(min) || !std::isfinite(max) || max <= min)
    return {0, 1, std::isfinite(max) && value >= max ? 1 : 0};
  // NaN fails both comparisons and lands at min.
  if (!(value > min)) value = min;
  if (value > max) value = max;
  const auto whole = [](double x) { return std::trunc(x) == x; };
  if (whole(min) && whole(max) && whole(value) && min >= INT_MIN && max <= INT_MAX &&
      max - min <= INT_MAX)
    return {static_cast<int>(min), static_cast<int>(max), static_cast<int>(value)};
  return {0, kBarSteps, static_cast<int>(std::floor((value - min) / (max - min) * kBarSteps))};
}

namespace {

QLabel* MakeLabel(const char* name, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setObjectName(QString::fromLatin1(name));
  label->setTextFormat(Qt::PlainText);
  // Ignored: a long path is cut at the window's edge instead of widening it.
  label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  return label;
}

}  // namespace

WorkFormWindow::WorkFormWindow(QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      text1_(MakeLabel("lblText1", this)),
      text2_(MakeLabel("lblText2", this)),
      bar_(new QProgressBar(this)) {
  setObjectName(QStringLiteral("frmWork"));
  bar_->setObjectName(QStringLiteral("ProgressBar"));
  // The hidden bar keeps its place, so the window's size stays put.
  QSizePolicy policy = bar_->sizePolicy();
  policy.setRetainSizeWhenHidden(true);
  bar_->setSizePolicy(policy);
  bar_->setVisible(false);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(text1_);
  layout->addWidget(text2_);
  layout->addWidget(bar_);
  layout->addStretch();
  setFixedWidth(420);
}

void WorkFormWindow::ShowNow() {
  show();
  raise();
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  Refresh();
}

void WorkFormWindow::SetCaption(const QString& caption) {
  setWindowTitle(caption);
}

void WorkFormWindow::SetTexts(const QString& text1, const QString& text2) {
  text1_->setText(text1);
  text2_->setText(text2);
  Refresh();
}

void WorkFormWindow::SetBar(bool visible, double min, double max, double value) {
  if (visible) {
    const BarPosition position = MapBar(min, max, value);
    bar_->setRange(position.min, position.max);
    bar_->setValue(position.value);
  }
  bar_->setVisible(visible);
  Refresh();
}

void WorkFormWindow::Refresh() {
  if (!isVisible()) return;
  layout()->activate();
  repaint();
}

}  // namespace ketrova::dialogs
