#include "core/error_text.h"

#include <gtest/gtest.h>

#include "support/vb_error.h"

namespace ketrova {
namespace {

class ErrorTextTest : public ::testing::Test {
 protected:
  void SetUp() override { Err().Clear(); }
  void TearDown() override { Err().Clear(); }
};

TEST_F(ErrorTextTest, WithoutAPendingErrorTheMessageAppearsTwice) {
  std::string message = "Tab's\nText";
  EXPECT_EQ(BuildErrorText(1, message, ""), "Tab´s \r\n TextTab´s \r\n Text");
  EXPECT_EQ(message, "Tab´s \r\n TextTab´s \r\n Text");
  EXPECT_EQ(BuildErrorMessage("", "Lesen"), "Ausgeführte Aktion: Lesen\\n");
  EXPECT_EQ(BuildErrorMessage("a\r\nb\rc", ""), "a \\n b \\n ca \\n b \\n c");
}

TEST_F(ErrorTextTest, APendingErrorWinsOverTheMessage) {
  Err().Set(VbError(13, "Typen unverträglich", "C:\\Pfad"));
  std::string message = "Text";
  EXPECT_EQ(BuildErrorText(1, message, "Öffne 'x'"),
            "\r\nEin Fehler ist aufgetreten!\r\n\r\nFehler Nr.: 13\r\nBeschreibung: Typen "
            "unverträglich\r\n\r\nQuelle: C:\\\\Pfad\r\n\r\nAusgeführte Aktion: Öffne ´x´\r\n");
  EXPECT_EQ(BuildErrorMessage("Text", ""),
            "\\nEin Fehler ist aufgetreten!\\n\\nFehler Nr.: 13\\nBeschreibung: Typen "
            "unverträglich\\n\\nQuelle: C:\\\\Pfad\\n\\n");
}

TEST_F(ErrorTextTest, OtherModesFormatOnlyAnEmptyMessage) {
  std::string message = "bleibt\\n";
  EXPECT_EQ(BuildErrorText(0, message, "x"), "bleibt\\n");
  std::string empty;
  EXPECT_EQ(BuildErrorText(0, empty, "x"), "Ausgeführte Aktion: x\\n");
}

}  // namespace
}  // namespace ketrova
