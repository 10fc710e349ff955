// The display controls of ketrova run, driven through their members by name
// as the engine drives them, on a console whose stderr is a string.
#include "run_display.h"

#include <gtest/gtest.h>

#include <sstream>

#include "platform/ui/console_ui.h"

namespace ketrova::cli {
namespace {

class RunDisplayTest : public ::testing::Test {
 protected:
  std::string Drive(bool terminal, bool quiet) {
    ui::ConsoleUserInterface console({}, in, err, false, terminal);
    RunDisplay display(console, err, terminal, quiet);
    ObjectPtr records = display.RecordsBar();
    ObjectPtr jobs = display.JobsBar();
    ObjectPtr text = display.StatusText();
    text->Put("Text", Variant("Öffne Quelldatenbank ->                           "));
    records->Put("Visible", Variant(true));
    jobs->Put("Visible", Variant(true));
    jobs->Put("Max", Variant(2));
    jobs->Put("Value", Variant(1));
    text->Put("Text", Variant("Kunden ... "));
    records->Put("Min", Variant(1));
    records->Put("Max", Variant(5));
    records->Put("Value", Variant(3));
    text->Put("Text", Variant("Kunden\r\nDatensatz 3 / 4 wird bearbeitet ..."));
    text->Call("Refresh");
    records->Put("Visible", Variant(false));
    jobs->Put("Visible", Variant(false));
    text->Put("Text", Variant(""));
    return err.str();
  }

  std::istringstream in;
  std::ostringstream err;
};

TEST_F(RunDisplayTest, WithoutTerminalOnlyTheStatusLinesAppear) {
  EXPECT_EQ(Drive(false, false), "Öffne Quelldatenbank ->\nKunden ...\n");
}

TEST_F(RunDisplayTest, OnATerminalAProgressLineFollowsTheStatusLines) {
  std::string shown = Drive(true, false);
  EXPECT_TRUE(shown.starts_with("Öffne Quelldatenbank ->\n")) << shown;
  EXPECT_NE(shown.find("\r\x1b[KKunden ...\n"), std::string::npos) << shown;
  EXPECT_NE(
      shown.find("\r\x1b[KAufgabe 1 / 2 - Kunden - Datensatz 3 / 4 wird bearbeitet ... [50%]"),
      std::string::npos)
      << shown;
  // Hiding both bars clears the line.
  EXPECT_TRUE(shown.ends_with("\r\x1b[K")) << shown;
}

TEST_F(RunDisplayTest, TheProgressLineCountsTheRecordsUpToTheLast) {
  ui::ConsoleUserInterface console({}, in, err, false, true);
  RunDisplay display(console, err, true, false);
  ObjectPtr records = display.RecordsBar();
  ObjectPtr text = display.StatusText();
  records->Put("Visible", Variant(true));
  records->Put("Min", Variant(1));
  records->Put("Max", Variant(38));
  // The engine names the first record and every 20th; the bar moves at each.
  text->Put("Text", Variant("Orte\r\nDatensatz 1 / 37 wird bearbeitet ..."));
  for (int record = 2; record <= 37; ++record) records->Put("Value", Variant(record));
  EXPECT_NE(err.str().find("Orte - Datensatz 37 / 37 wird bearbeitet ..."), std::string::npos)
      << err.str();
}

TEST_F(RunDisplayTest, QuietShowsNothing) {
  EXPECT_EQ(Drive(true, true), "");
}

}  // namespace
}  // namespace ketrova::cli
