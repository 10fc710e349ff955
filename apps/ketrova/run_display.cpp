#include "run_display.h"

#include <chrono>
#include <cmath>
#include <ostream>

#include "platform/script/binding.h"
#include "support/utf8.h"

namespace ketrova::cli {

namespace {

using script::Args;

class BarControl : public script::BoundObject<BarControl> {
 public:
  BarControl(RunDisplay& display, RunDisplay::Bar& bar) : display_(display), bar_(bar) {}
  std::string TypeName() const override { return "ProgressBar"; }
  static const script::MemberTable<BarControl>& Members() {
    using B = BarControl;
    auto number = [](double RunDisplay::Bar::*member) {
      return std::pair([member](B& b, Args) { return Variant(b.bar_.*member); },
                       [member](B& b, Args, const Variant& v) {
                         b.bar_.*member = v.ToDouble();
                         b.display_.Changed();
                       });
    };
    static const auto table = [&] {
      script::MemberTable<B> t;
      for (auto [name, member] :
           {std::pair("Min", &RunDisplay::Bar::min), std::pair("Max", &RunDisplay::Bar::max),
            std::pair("Value", &RunDisplay::Bar::value)}) {
        auto [get, put] = number(member);
        t.Property(name, get, put);
      }
      t.Property(
          "Visible", [](B& b, Args) { return Variant(b.bar_.visible); },
          [](B& b, Args, const Variant& v) {
            b.bar_.visible = v.ToBool();
            b.display_.Changed();
          });
      t.Method("Refresh", 0, 0, [](B&, Args) { return Variant(); });
      return t;
    }();
    return table;
  }

 private:
  RunDisplay& display_;
  RunDisplay::Bar& bar_;
};

class TextControl : public script::BoundObject<TextControl> {
 public:
  explicit TextControl(RunDisplay& display) : display_(display) {}
  std::string TypeName() const override { return "TextBox"; }
  static const script::MemberTable<TextControl>& Members() {
    using T = TextControl;
    static const auto table =
        script::MemberTable<T>()
            .Property(
                "Text", [](T& t, Args) { return Variant(t.display_.Status()); },
                [](T& t, Args, const Variant& v) { t.display_.SetStatus(v.ToText()); })
            .Property(
                "Visible", [](T& t, Args) { return Variant(t.visible_); },
                [](T& t, Args, const Variant& v) { t.visible_ = v.ToBool(); })
            .Method("Refresh", 0, 0, [](T&, Args) { return Variant(); })
            .Default("Text");
    return table;
  }

 private:
  RunDisplay& display_;
  bool visible_ = false;
};

// The lines of a status text, which the engine breaks with CR LF.
std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::string rest = ReplaceAll(ReplaceAll(text, "\r\n", "\n"), "\r", "\n");
  std::size_t start = 0;
  while (start <= rest.size()) {
    std::size_t end = rest.find('\n', start);
    if (end == std::string::npos) end = rest.size();
    lines.push_back(RTrim(rest.substr(start, end - start)));
    start = end + 1;
  }
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

bool IsRecordProgress(const std::vector<std::string>& lines) {
  return !lines.empty() && lines.back().starts_with("Datensatz ") &&
         lines.back().ends_with(" wird bearbeitet ...");
}

std::string Join(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines)
    if (!line.empty()) text += (text.empty() ? "" : " - ") + line;
  return text;
}

}  // namespace

RunDisplay::RunDisplay(ui::UserInterface& ui, std::ostream& err, bool terminal, bool quiet)
    : ui_(ui), err_(err), terminal_(terminal), quiet_(quiet) {}

RunDisplay::~RunDisplay() {
  Finish();
}

ObjectPtr RunDisplay::RecordsBar() {
  return std::make_shared<BarControl>(*this, records);
}
ObjectPtr RunDisplay::JobsBar() {
  return std::make_shared<BarControl>(*this, jobs);
}
ObjectPtr RunDisplay::StatusText() {
  return std::make_shared<TextControl>(*this);
}

void RunDisplay::Changed() {
  if (!records.visible && !jobs.visible) {
    Erase();
    progress_.clear();
    recordJob_.reset();
    return;
  }
  // The records bar moves at every record; the line follows it a few times a
  // second, which is all a reader sees, and always shows the last record.
  const bool last = records.value >= records.max - 1;
  const auto now = std::chrono::steady_clock::now();
  if (drawn_ && !last && now - lastDraw_ < std::chrono::milliseconds(100)) return;
  Draw();
}

void RunDisplay::SetStatus(const std::string& text) {
  status_ = text;
  if (quiet_) return;
  std::vector<std::string> lines = LinesOf(text);
  if (lines.empty()) return;
  if (IsRecordProgress(lines)) {
    // The engine names a record only now and then; the line counts from the
    // records bar, so that it shows the record at hand.
    recordJob_ = Join(std::vector<std::string>(lines.begin(), lines.end() - 1));
    progress_ = Join(lines);
    Draw();
    return;
  }
  recordJob_.reset();
  progress_ = lines.front();
  Erase();
  for (const auto& line : lines) err_ << line << "\n";
  err_.flush();
  Draw();
}

void RunDisplay::Finish() {
  Erase();
  progress_.clear();
  recordJob_.reset();
}

std::string RunDisplay::RecordLine() const {
  if (!recordJob_ || records.value < 1 || records.max <= records.min) return progress_;
  auto whole = [](double v) { return std::to_string(std::lround(v)); };
  std::string line =
      "Datensatz " + whole(records.value) + " / " + whole(records.max - 1) + " wird bearbeitet ...";
  return recordJob_->empty() ? line : *recordJob_ + " - " + line;
}

void RunDisplay::Draw() {
  if (quiet_ || !terminal_ || (!records.visible && !jobs.visible)) return;
  std::string caption;
  if (jobs.max > 0 && jobs.value > 0)
    caption = "Aufgabe " + std::to_string(static_cast<long>(jobs.value)) + " / " +
              std::to_string(static_cast<long>(jobs.max));
  const std::string line = RecordLine();
  if (!drawn_ || !ui_.WorkFormVisible()) {
    ui_.WorkFormShow(caption, line, "");
  } else {
    ui_.WorkFormSetCaption(caption);
    ui_.WorkFormSetTexts(line, "");
  }
  drawn_ = true;
  lastDraw_ = std::chrono::steady_clock::now();
  ui_.WorkFormSetBar(records.visible && records.max > records.min, records.min, records.max,
                     records.value);
}

void RunDisplay::Erase() {
  if (!drawn_) return;
  ui_.WorkFormHide();
  drawn_ = false;
}

}  // namespace ketrova::cli
