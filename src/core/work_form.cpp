#include "core/work_form.h"

#include "platform/ui/user_interface.h"

namespace ketrova {

namespace {

// The module-wide work form: whether it is open and what its labels show.
struct WorkFormState {
  bool open = false;
  std::string text1;
  std::string text2;
};

WorkFormState& State() {
  static WorkFormState state;
  return state;
}

void EnsureOpen() {
  WorkFormState& state = State();
  if (state.open) return;
  state = WorkFormState{true, {}, {}};
  ui::Current().WorkFormShow("", "", "");
}

}  // namespace

void WorkFormOpen(const std::string& szCaption, const std::string& szText1,
                  const std::string& szText2, double fMin, double inMax, double fValue) {
  WorkFormClose();
  ui::UserInterface& ui = ui::Current();
  State() = WorkFormState{true, szText1, szText2};
  ui.WorkFormShow(szCaption, szText1, szText2);
  if (inMax != fMin) {
    if (inMax < 0) inMax = fMin + 1;
    ui.WorkFormSetBar(true, fMin, inMax, fValue);
  } else {
    inMax = fMin + 1;
    ui.WorkFormSetBar(false, fMin, inMax, fMin);
  }
}

void WorkFormClose() {
  WorkFormState& state = State();
  if (!state.open) return;
  state = WorkFormState{};
  ui::Current().WorkFormHide();
}

void WorkFormProgress(double fMin, double inMax, double fValue) {
  try {
    EnsureOpen();
    ui::UserInterface& ui = ui::Current();
    if (fMin == 0 && inMax == 1 && fValue == 0)
      ui.WorkFormSetBar(false, 0, 1, 0);
    else
      ui.WorkFormSetBar(true, fMin, inMax, fValue);
  } catch (...) {
    // The progress display never stops the work it shows.
  }
}

void WorkFormCaption(const std::string& szCaption, const std::string& szText1,
                     const std::string& szText2) {
  EnsureOpen();
  ui::UserInterface& ui = ui::Current();
  if (!szCaption.empty()) ui.WorkFormSetCaption(szCaption);
  State().text1 = szText1;
  State().text2 = szText2;
  ui.WorkFormSetTexts(szText1, szText2);
}

void WorkFormText(const std::string& szText1, const std::string& szText2) {
  WorkFormState& state = State();
  if (!state.open) return;
  if (!szText1.empty()) state.text1 = szText1;
  if (!szText2.empty()) state.text2 = szText2;
  ui::Current().WorkFormSetTexts(state.text1, state.text2);
}

bool WorkFormIsOpen() {
  return State().open;
}

}  // namespace ketrova
