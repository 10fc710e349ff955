#include <memory>

#include "builtin_call.h"
#include "platform/ui/scripted_ui.h"

namespace ketrova::script::vbscript::testing {
namespace {

class HostFunctions : public GermanSettings {
 protected:
  void SetUp() override {
    GermanSettings::SetUp();
    ui::SetCurrent(screen);
  }
  void TearDown() override {
    ui::SetCurrent(nullptr);
    Call("SetLocale", 0);
    GermanSettings::TearDown();
  }
  std::shared_ptr<ui::ScriptedUserInterface> screen = std::make_shared<ui::ScriptedUserInterface>();
};

TEST_F(HostFunctions, MsgBoxGoesToTheScreenWithVbScriptAsDefaultTitle) {
  screen->QueueMsgBox(ui::vbNo);
  EXPECT_EQ(Text("MsgBox", "Weiter?", ui::vbYesNo + ui::vbQuestion), "7");
  EXPECT_EQ(Text("MsgBox", "Fertig", Missing(), "Ketrova"), "1");
  EXPECT_EQ(Call("MsgBox", "x").Type(), vbInteger);
  EXPECT_EQ(screen->Transcript(),
            "MsgBox \"VBScript\" \"Weiter?\" 36 -> 7\n"
            "MsgBox \"Ketrova\" \"Fertig\" 0 -> 1\n"
            "MsgBox \"VBScript\" \"x\" 0 -> 1");
}

TEST_F(HostFunctions, InputBoxAnswersEmptyWhenCancelled) {
  screen->QueueInputBox("Meier");
  screen->QueueInputBox(std::nullopt);
  EXPECT_EQ(Text("InputBox", "Name?", "Eingabe", "Schulze"), "Meier");
  EXPECT_EQ(Text("InputBox", "Name?"), "");
  EXPECT_EQ(Text("InputBox", "Ort?", Missing(), "Bonn"), "Bonn");
  EXPECT_EQ(screen->CallsOf("InputBox").at(1), "InputBox \"VBScript\" \"Name?\" \"\" -> cancel");
}

TEST_F(HostFunctions, EngineNameAndVersion) {
  EXPECT_EQ(Text("ScriptEngine"), "VBScript");
  EXPECT_EQ(Text("ScriptEngineMajorVersion"), "5");
  EXPECT_EQ(Text("ScriptEngineMinorVersion"), "8");
  EXPECT_GT(Call("ScriptEngineBuildVersion").ToLong(), 0);
}

TEST_F(HostFunctions, SetLocaleSwitchesTheRegionalSettings) {
  EXPECT_EQ(Text("GetLocale"), "1031");
  EXPECT_EQ(Text("SetLocale", 1033), "1031");
  EXPECT_EQ(Text("GetLocale"), "1033");
  EXPECT_EQ(Text("FormatNumber", 1234.5), "1,234.50");
  EXPECT_EQ(Text("SetLocale", "de-de"), "1033");
  EXPECT_EQ(Text("CStr", 1.5), "1,5");
  EXPECT_EQ(ErrorOf("SetLocale", 9999), 5);
}

TEST_F(HostFunctions, LoadPictureIsNotAvailable) {
  EXPECT_NE(ErrorOf("LoadPicture", "bild.bmp"), 0);
}

TEST(BuiltinTable, NamesAreFoundWithoutRegardToCase) {
  ASSERT_NE(FindBuiltin("left"), nullptr);
  EXPECT_EQ(FindBuiltin("LEFT"), FindBuiltin("Left"));
  EXPECT_EQ(FindBuiltin("Left")->Name, "Left");
  EXPECT_EQ(FindBuiltin("Left")->MinArgs, 2);
  EXPECT_EQ(FindBuiltin("Array")->MaxArgs, -1);
  EXPECT_EQ(FindBuiltin("Eval"), nullptr);  // the runtime's, not a built-in
  EXPECT_EQ(FindBuiltin("Lef"), nullptr);
  EXPECT_EQ(FindBuiltin(""), nullptr);
  for (const char* name : {"Abs", "Year", "InStrB", "ScriptEngineBuildVersion", "Rnd", "Randomize"})
    EXPECT_NE(FindBuiltin(name), nullptr) << name;
}

}  // namespace
}  // namespace ketrova::script::vbscript::testing
