// The script host as the engine sets it up: the two helper procedures and the
// text of a script error.
#include <gtest/gtest.h>

#include "core/error_text.h"
#include "engine/engine.h"
#include "platform/script/script_control.h"
#include "support/utf8.h"
#include "support/vb_error.h"

namespace ketrova {
namespace {

TEST(ScriptSetupTest, HelperProceduresSetTheGlobalsScriptsRead) {
  CEngine engine;
  engine.WriteScriptFunctions();
  script::ScriptControl& host = engine.ScriptHost();
  Variant key[1] = {Variant("0F8FAD5B-D9CB-469F-A165-70867728950E")};
  host.Run("SetIdentKey", key);
  Variant count[1] = {Variant::Long(3)};
  host.Run("SetRecordCount", count);
  EXPECT_EQ(host.Eval("IdentKey").ToString(), "0F8FAD5B-D9CB-469F-A165-70867728950E");
  EXPECT_EQ(host.Eval("RecordCount").ToLong(), 3);
}

TEST(ScriptSetupTest, HelperProceduresAreVBScriptAndFailInJScript) {
  CEngine engine;
  engine.ScriptHost().SetLanguage("JScript");
  EXPECT_THROW(engine.WriteScriptFunctions(), VbError);
}

TEST(ScriptSetupTest, ScriptErrorTextHoldsPositionOnlyWithoutAPendingError) {
  CEngine engine;
  script::ScriptControl& host = engine.ScriptHost();
  ResumeNext([&] { host.AddCode("x = 1\r\nIf x Then\r\n"); });
  ASSERT_NE(Err().Number, 0);

  // With the error pending, the formatter's block replaces the detail.
  Err().Set(VbError(1024, "Anweisung erwartet", "Kompilierungsfehler in VBScript"));
  std::string pending = engine.GetScriptError("Modul", "");
  EXPECT_EQ(
      pending,
      "\r\nEin Fehler ist aufgetreten!\r\n\r\nFehler Nr.: 1024\r\n"
      "Beschreibung: Anweisung erwartet\r\n\r\nQuelle: Kompilierungsfehler in VBScript\r\n\r\n");
  EXPECT_EQ(host.Error().Number, 0);

  Err().Clear();
  ResumeNext([&] { host.AddCode("x = 1\r\nIf x Then\r\n"); });
  Err().Clear();
  const script::ScriptControlError error = host.Error();
  std::string detail = engine.GetScriptError("Modul", "Text");
  std::string once =
      "Fehler in VBScript: \r\n\r\nObjekt.:Modul\r\nFehler Nr.:" + std::to_string(error.Number) +
      "\r\nBeschreibung: " + error.Description +
      "\r\nQuelle:Kompilierungsfehler in VBScript\r\nSpalte:1\r\nZeile:3" +
      "\r\n\r\nScript:\r\nText";
  // The formatter doubles a message when no error is pending, and makes its
  // line ends and quotes fit a single-line literal.
  once = ReplaceAll(ReplaceAll(once, "\r\n", " \r\n "), "'", "´");
  EXPECT_EQ(detail, once + once);
}

}  // namespace
}  // namespace ketrova
