#include "dialogs/engine_display_controls.h"

#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <algorithm>
#include <climits>
#include <cmath>

#include "platform/script/binding.h"

namespace ketrova::dialogs {
namespace {

using script::Args;

int ToInt(const Variant& value) {
  double d = std::round(value.ToDouble());
  return static_cast<int>(
      std::clamp(d, static_cast<double>(INT_MIN), static_cast<double>(INT_MAX)));
}

class ProgressBarControl : public script::BoundObject<ProgressBarControl> {
 public:
  explicit ProgressBarControl(QProgressBar* bar) : bar_(bar) {}
  std::string TypeName() const override { return "ProgressBar"; }

  static const script::MemberTable<ProgressBarControl>& Members() {
    using P = ProgressBarControl;
    static const auto table =
        script::MemberTable<P>()
            .Property(
                "Min", [](P& p, Args) { return p.bar_ ? Variant(p.bar_->minimum()) : Variant(); },
                [](P& p, Args, const Variant& v) {
                  if (p.bar_) p.bar_->setMinimum(ToInt(v));
                })
            .Property(
                "Max", [](P& p, Args) { return p.bar_ ? Variant(p.bar_->maximum()) : Variant(); },
                [](P& p, Args, const Variant& v) {
                  if (p.bar_) p.bar_->setMaximum(ToInt(v));
                })
            .Property(
                "Value", [](P& p, Args) { return p.bar_ ? Variant(p.bar_->value()) : Variant(); },
                [](P& p, Args, const Variant& v) {
                  if (p.bar_) p.bar_->setValue(ToInt(v));
                })
            .Property(
                "Visible",
                [](P& p, Args) { return p.bar_ ? Variant(!p.bar_->isHidden()) : Variant(); },
                [](P& p, Args, const Variant& v) {
                  if (p.bar_) p.bar_->setVisible(v.ToBool());
                })
            .Method("Refresh", 0, 0,
                    [](P& p, Args) {
                      if (p.bar_) p.bar_->repaint();
                      return Variant();
                    })
            .Default("Value");
    return table;
  }

 private:
  QPointer<QProgressBar> bar_;
};

class StatusTextControl : public script::BoundObject<StatusTextControl> {
 public:
  explicit StatusTextControl(QPlainTextEdit* text) : text_(text) {}
  std::string TypeName() const override { return "TextBox"; }

  static const script::MemberTable<StatusTextControl>& Members() {
    using T = StatusTextControl;
    static const auto table =
        script::MemberTable<T>()
            .Property(
                "Text",
                [](T& t, Args) {
                  if (!t.text_) return Variant();
                  QString text = t.text_->toPlainText();
                  text.replace(u'\n', QStringLiteral("\r\n"));
                  return Variant(text.toStdString());
                },
                [](T& t, Args, const Variant& v) {
                  if (!t.text_) return;
                  QString text = QString::fromStdString(v.ToText());
                  text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
                  t.text_->setPlainText(text);
                })
            .Property(
                "Visible",
                [](T& t, Args) { return t.text_ ? Variant(!t.text_->isHidden()) : Variant(); },
                [](T& t, Args, const Variant& v) {
                  if (t.text_) t.text_->setVisible(v.ToBool());
                })
            .Method("Refresh", 0, 0,
                    [](T& t, Args) {
                      if (t.text_) t.text_->repaint();
                      return Variant();
                    })
            .Default("Text");
    return table;
  }

 private:
  QPointer<QPlainTextEdit> text_;
};

}  // namespace

ObjectPtr MakeProgressBarControl(QProgressBar* bar) {
  return std::make_shared<ProgressBarControl>(bar);
}

ObjectPtr MakeStatusTextControl(QPlainTextEdit* text) {
  return std::make_shared<StatusTextControl>(text);
}

}  // namespace ketrova::dialogs
