#include <gtest/gtest.h>

#include <sstream>

#include "platform/ui/console_ui.h"
#include "platform/ui/scripted_ui.h"
#include "platform/ui/ui_helpers.h"

namespace ketrova::ui {
namespace {

TEST(ScriptedUiTest, AnswersFromQueuesThenDefaults) {
  ScriptedUserInterface ui;
  ui.QueueMsgBox(vbNo);
  ui.QueueInputBox(std::nullopt);
  ui.QueueChooseFile("/data/p.cpf");
  EXPECT_EQ(ui.MsgBox("Wirklich ?", vbYesNo + vbQuestion, "Ketrova"), vbNo);
  EXPECT_EQ(ui.MsgBox("Wirklich ?", vbYesNo + vbDefaultButton2, "Ketrova"), vbNo);
  EXPECT_EQ(ui.MsgBox("Fertig", vbOKOnly, "Ketrova"), vbOK);
  EXPECT_EQ(ui.InputBox("Name", "T", "x"), std::nullopt);
  EXPECT_EQ(ui.InputBox("Name", "T", "x"), "x");
  EXPECT_EQ(ui.ChooseFile("Öffnen", "Projekt|*.cpf", ""), "/data/p.cpf");
  EXPECT_EQ(ui.ChooseFolder("Ordner", "/tmp"), std::nullopt);
  ui.WorkFormShow("Lauf", "Zeile 1\r\nZeile 2", "");
  ui.WorkFormSetBar(true, 0, 10, 2.5);
  ui.WorkFormHide();
  EXPECT_EQ(ui.Transcript(),
            "MsgBox \"Ketrova\" \"Wirklich ?\" 36 -> 7\n"
            "MsgBox \"Ketrova\" \"Wirklich ?\" 260 -> 7\n"
            "MsgBox \"Ketrova\" \"Fertig\" 0 -> 1\n"
            "InputBox \"T\" \"Name\" \"x\" -> cancel\n"
            "InputBox \"T\" \"Name\" \"x\" -> \"x\"\n"
            "ChooseFile \"Öffnen\" \"Projekt|*.cpf\" \"\" -> \"/data/p.cpf\"\n"
            "ChooseFolder \"Ordner\" \"/tmp\" -> cancel\n"
            "WorkFormShow \"Lauf\" \"Zeile 1\\r\\nZeile 2\" \"\"\n"
            "WorkFormSetBar 1 0 10 2.5\n"
            "WorkFormHide");
  EXPECT_EQ(ui.CallsOf("MsgBox").size(), 3u);
  EXPECT_FALSE(ui.WorkFormVisible());
}

TEST(ScriptedUiTest, DoEventsHookAndHelpers) {
  auto ui = std::make_shared<ScriptedUserInterface>();
  int cancelledAt = 0;
  ui->onDoEvents = [&](int n) {
    if (n == 3) cancelledAt = n;
  };
  for (int i = 0; i < 5; ++i) ui->DoEvents();
  EXPECT_EQ(cancelledAt, 3);
  EXPECT_EQ(ui->DoEventsCount(), 5);
  EXPECT_TRUE(ui->Calls().empty());  // DoEvents is counted, not recorded

  SetCurrent(ui);
  ShowHourglass(true);
  EXPECT_EQ(ui->MousePointer(), vbHourglass);
  ui->QueueChooseFolder("/neu");
  EXPECT_EQ(BrowseForFolder("Ordner", "/alt"), "/neu");
  EXPECT_EQ(BrowseForFolder("Ordner", "/alt"), "/alt");  // cancelled
  int key = ',';
  EXPECT_FALSE(CheckKeyForType(key, 3));
  EXPECT_EQ(ui->CallsOf("Beep").size(), 1u);
  SetCurrent(nullptr);
}

class ConsoleUiTest : public ::testing::Test {
 protected:
  ConsoleUserInterface Make(ConsoleUserInterface::Options options, bool terminal) {
    return ConsoleUserInterface(options, in_, err_, terminal, terminal);
  }
  std::istringstream in_;
  std::ostringstream err_;
};

TEST_F(ConsoleUiTest, QuestionsFromTheTerminal) {
  in_.str("vielleicht\nn\n\nj\n");
  auto ui = Make({.interactive = true}, true);
  EXPECT_EQ(ui.MsgBox("Abbrechen ?", vbYesNo, "Ketrova"), vbNo);  // asks again after "vielleicht"
  EXPECT_EQ(ui.MsgBox("Abbrechen ?", vbYesNo + vbDefaultButton2, "Ketrova"), vbNo);  // empty line
  EXPECT_EQ(ui.MsgBox("Abbrechen ?", vbYesNoCancel, "Ketrova"), vbYes);
  EXPECT_EQ(ui.MsgBox("Abbrechen ?", vbYesNo, "Ketrova"), vbYes);  // end of input: default
  EXPECT_NE(err_.str().find("Ketrova: Abbrechen ?\n[J]a / [N]ein ? "), std::string::npos);
}

TEST_F(ConsoleUiTest, InputAndChoicesFromTheTerminal) {
  in_.str("Meier\n\n/data/p.cpf\n\n");
  auto ui = Make({.interactive = true}, true);
  EXPECT_EQ(ui.InputBox("Name ?", "Ketrova", "Schulz"), "Meier");
  EXPECT_EQ(ui.InputBox("Name ?", "Ketrova", "Schulz"), "Schulz");  // empty line: the default
  EXPECT_EQ(ui.ChooseFile("Projekt", "*.cpf", ""), "/data/p.cpf");
  EXPECT_EQ(ui.ChooseFolder("Ordner", "/alt"), "/alt");
  EXPECT_EQ(ui.InputBox("Name ?", "", "x"), std::nullopt);  // end of input: cancelled
  EXPECT_EQ(ui.ChooseFolder("Ordner", "/alt"), std::nullopt);
}

TEST_F(ConsoleUiTest, WithoutTerminalOrWithYes) {
  in_.str("n\n");
  auto plain = Make({.interactive = true}, false);
  EXPECT_EQ(plain.MsgBox("?", vbYesNo + vbDefaultButton2, ""), vbNo);
  EXPECT_EQ(plain.InputBox("Wert", "", "vorgabe"), "vorgabe");
  EXPECT_EQ(plain.ChooseFolder("Ordner", "/x"), std::nullopt);
  auto yes = Make({.interactive = true, .assumeYes = true}, true);
  EXPECT_EQ(yes.MsgBox("?", vbYesNo + vbDefaultButton2, ""), vbYes);
  EXPECT_EQ(yes.MsgBox("?", vbRetryCancel, ""), vbRetry);
  EXPECT_EQ(in_.tellg(), 0);  // nothing was read
}

TEST_F(ConsoleUiTest, ProgressLineOnlyOnATerminal) {
  auto ui = Make({}, true);
  ui.WorkFormShow("Konvertierung", "Kunden", "");
  ui.WorkFormSetBar(true, 0, 200, 50);
  ui.WorkFormSetBar(true, 0, 200, 50.5);  // same percentage: not drawn again
  ui.WorkFormHide();
  EXPECT_EQ(err_.str(),
            "\r\x1b[KKonvertierung - Kunden\r\x1b[KKonvertierung - Kunden [25%]\r\x1b[K");
  std::ostringstream quietErr;
  ConsoleUserInterface quiet({.quiet = true}, in_, quietErr, true, true);
  quiet.WorkFormShow("Konvertierung", "Kunden", "");
  quiet.WorkFormHide();
  auto piped = Make({}, false);
  err_.str("");
  piped.WorkFormShow("Konvertierung", "Kunden", "");
  EXPECT_EQ(quietErr.str() + err_.str(), "");
}

}  // namespace
}  // namespace ketrova::ui
