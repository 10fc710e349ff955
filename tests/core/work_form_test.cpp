#include "core/work_form.h"

#include <gtest/gtest.h>

#include "platform/ui/scripted_ui.h"

namespace ketrova {
namespace {

class WorkFormTest : public ::testing::Test {
 protected:
  void SetUp() override { ui::SetCurrent(ui_); }
  void TearDown() override {
    WorkFormClose();
    ui::SetCurrent(nullptr);
  }
  std::shared_ptr<ui::ScriptedUserInterface> ui_ = std::make_shared<ui::ScriptedUserInterface>();
};

TEST_F(WorkFormTest, OpenShowsTheBarOnlyForARange) {
  WorkFormOpen("Titel", "Eins", "Zwei", 0, 0, 0);
  WorkFormOpen("Titel", "Eins", "", 1, -5, 1);
  WorkFormOpen("Titel", "Eins", "", 1, 10, 3);
  EXPECT_EQ(ui_->Transcript(),
            "WorkFormShow \"Titel\" \"Eins\" \"Zwei\"\n"
            "WorkFormSetBar 0 0 1 0\n"
            "WorkFormHide\n"
            "WorkFormShow \"Titel\" \"Eins\" \"\"\n"
            "WorkFormSetBar 1 1 2 1\n"
            "WorkFormHide\n"
            "WorkFormShow \"Titel\" \"Eins\" \"\"\n"
            "WorkFormSetBar 1 1 10 3");
}

TEST_F(WorkFormTest, ProgressOpensTheFormAndHidesTheBarForZeroOneZero) {
  WorkFormProgress(0, 1, 0);
  WorkFormProgress(0, 5, 2);
  EXPECT_EQ(ui_->Transcript(),
            "WorkFormShow \"\" \"\" \"\"\n"
            "WorkFormSetBar 0 0 1 0\n"
            "WorkFormSetBar 1 0 5 2");
}

TEST_F(WorkFormTest, TextsChangeOnlyOnAnOpenForm) {
  WorkFormText("verloren", "");
  EXPECT_TRUE(ui_->Calls().empty());
  WorkFormCaption("", "A", "B");
  WorkFormText("", "C");
  WorkFormCaption("Neu", "", "");
  WorkFormClose();
  WorkFormClose();
  EXPECT_EQ(ui_->Transcript(),
            "WorkFormShow \"\" \"\" \"\"\n"
            "WorkFormSetTexts \"A\" \"B\"\n"
            "WorkFormSetTexts \"A\" \"C\"\n"
            "WorkFormSetCaption \"Neu\"\n"
            "WorkFormSetTexts \"\" \"\"\n"
            "WorkFormHide");
}

}  // namespace
}  // namespace ketrova
