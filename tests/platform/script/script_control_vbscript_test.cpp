// The script control with VBScript, the language of every generated script.
#include <gtest/gtest.h>

#include "platform/script/binding.h"
#include "platform/script/script_control.h"

namespace ketrova::script {
namespace {

// A record set stand-in: Fields("x") gives a field whose default member is
// its value, so that Destination.Fields("a") = Source.Fields("b") works.
class Field : public BoundObject<Field> {
 public:
  std::string TypeName() const override { return "Field"; }
  static const MemberTable<Field>& Members() {
    static const auto table = MemberTable<Field>()
                                  .Property(
                                      "Value", [](Field& f, Args) { return f.value; },
                                      [](Field& f, Args, const Variant& v) { f.value = v; })
                                  .Default("Value");
    return table;
  }
  Variant value;
};

class Record : public BoundObject<Record> {
 public:
  std::string TypeName() const override { return "Record"; }
  static const MemberTable<Record>& Members() {
    static const auto table = MemberTable<Record>()
                                  .Property("Fields", 1, 1,
                                            [](Record& r, Args a) -> Variant {
                                              auto& field = r.fields[a[0].ToString()];
                                              if (!field) field = std::make_shared<Field>();
                                              return ObjectPtr(field);
                                            })
                                  .Property("EOF", [](Record& r, Args) { return Variant(r.eof); })
                                  .Default("Fields");
    return table;
  }
  std::map<std::string, std::shared_ptr<Field>> fields;
  bool eof = false;
};

class VBScriptControl : public ::testing::Test {
 protected:
  ScriptControlError ErrorOf(const std::function<void()>& call) {
    try {
      call();
    } catch (const VbError&) {
      return control.Error();
    }
    ADD_FAILURE() << "no error raised";
    return {};
  }
  ScriptControl control;
};

TEST_F(VBScriptControl, TheDefaultLanguageRunsWithArgumentsAndResults) {
  EXPECT_EQ(control.Language(), "VBScript");
  control.AddCode(
      "Function Add(a, b)\r\n  Add = a + b\r\nEnd Function\r\nSub Nothing1()\r\nEnd Sub\r\n");
  Variant args[2] = {Variant(2), Variant(40)};
  EXPECT_EQ(control.Run("add", args).ToLong(), 42);
  EXPECT_TRUE(control.Run("Nothing1").IsEmpty());
  ScriptProcedures procedures = control.Procedures();
  ASSERT_EQ(procedures.Count(), 2);
  EXPECT_EQ(procedures.Item("ADD").Name, "Add");
  EXPECT_EQ(procedures.Item("Add").NumArgs, 2);
  EXPECT_TRUE(procedures.Item("Add").HasReturnValue);
  EXPECT_FALSE(procedures.Item("Nothing1").HasReturnValue);
}

TEST_F(VBScriptControl, TheEnginesFixedCodeAndAJobModule) {
  // The global code the engine adds before each job, and a generated-style
  // main script in its own module using objects added with their members.
  control.AddCode(
      "Dim IdentKey\r\nSub SetIdentKey(szGUID)\r\n     IdentKey = szGUID \r\nend Sub\r\n\r\n");
  control.AddCode(
      "Dim RecordCount\r\nSub SetRecordCount(inValue)\r\n     RecordCount = inValue \r\nend "
      "Sub\r\n\r\n");
  auto source = std::make_shared<Record>();
  auto destination = std::make_shared<Record>();
  source->fields["Name"] = std::make_shared<Field>();
  source->fields["Name"]->value = "Meier";
  control.AddObject("Source", source, true);
  control.AddObject("Destination", destination, true);
  ScriptModule& main = control.Modules().Add("zsModuleConvertMain");
  main.AddCode(
      "Function txConvertMain()\r\n"
      "  Destination.Fields(\"Nachname\") = Source.Fields(\"Name\")\r\n"
      "  Destination.Fields(\"Nr\").Value = RecordCount\r\n"
      "  Destination.Fields(\"Key\") = IdentKey\r\n"
      "  txConvertMain = \"\"\r\n"
      "End Function\r\n");
  Variant key[1] = {Variant("ABC")};
  control.Run("SetIdentKey", key);
  Variant count[1] = {Variant(7)};
  control.Run("SetRecordCount", count);
  ProcedureHandle convert = control.FindProcedure("zsModuleConvertMain", "txConvertMain");
  ASSERT_NE(convert, nullptr);
  EXPECT_EQ(control.Call(convert, {}).ToString(), "");
  EXPECT_EQ(destination->fields["Nachname"]->value.ToString(), "Meier");
  EXPECT_EQ(destination->fields["Nr"]->value.ToLong(), 7);
  EXPECT_EQ(destination->fields["Key"]->value.ToString(), "ABC");
}

TEST_F(VBScriptControl, CompileAndRunTimeErrorsFillEveryField) {
  auto compile = ErrorOf([&] { control.AddCode("Dim a\r\nIf a Then\r\n  a = (1\r\nEnd If\r\n"); });
  EXPECT_GT(compile.Number, 1000);
  EXPECT_EQ(compile.Source, "Kompilierungsfehler in VBScript");
  EXPECT_EQ(compile.Line, 3);
  EXPECT_GT(compile.Column, 0);

  control.AddCode("Function F(x)\r\n  Dim y\r\n  y = 1\r\n  F = y / x\r\nEnd Function\r\n");
  Variant zero[1] = {Variant(0)};
  auto runtime = ErrorOf([&] { control.Run("F", zero); });
  EXPECT_EQ(runtime.Number, 11);
  EXPECT_EQ(runtime.Description, "Division durch Null");
  EXPECT_EQ(runtime.Source, "Laufzeitfehler in VBScript");
  EXPECT_EQ(runtime.Line, 4);
  EXPECT_GT(runtime.Column, 0);
}

TEST_F(VBScriptControl, ScriptsUseTheObjectsTheyCreate) {
  std::string path = ::testing::TempDir() + "ketrova_vbs_fso.txt";
  control.AddCode(
      "Function Roundtrip(path)\r\n"
      "  Dim d, k, fso, f, text\r\n"
      "  Set d = CreateObject(\"Scripting.Dictionary\")\r\n"
      "  d.Add \"a\", 1\r\n"
      "  d(\"b\") = 2\r\n"
      "  d.Item(\"a\") = d(\"a\") + 10\r\n"
      "  Set fso = CreateObject(\"Scripting.FileSystemObject\")\r\n"
      "  Set f = fso.CreateTextFile(path, True)\r\n"
      "  For Each k In d\r\n"
      "    f.WriteLine k & \"=\" & d(k)\r\n"
      "  Next\r\n"
      "  f.Close\r\n"
      "  Set f = fso.OpenTextFile(path)\r\n"
      "  Do While Not f.AtEndOfStream\r\n"
      "    text = text & f.ReadLine & \";\"\r\n"
      "  Loop\r\n"
      "  f.Close\r\n"
      "  fso.DeleteFile path\r\n"
      "  Roundtrip = text & d.Count & fso.FileExists(path)\r\n"
      "End Function\r\n");
  Variant args[1] = {Variant(path)};
  EXPECT_EQ(control.Run("Roundtrip", args).ToString(), "a=11;b=2;2Falsch");
}

TEST_F(VBScriptControl, ResetAndLanguageChangeDropEverything) {
  control.AddObject("Source", std::make_shared<Record>(), true);
  control.AddCode("Function F()\r\n  F = 1\r\nEnd Function\r\n");
  control.Reset();
  EXPECT_EQ(control.Procedures().Count(), 0);
  EXPECT_EQ(ErrorOf([&] { control.Run("F"); }).Number, 35);
  control.AddCode("Function G()\r\n  G = 2\r\nEnd Function\r\n");
  control.SetLanguage("JScript");
  EXPECT_EQ(control.Procedures().Count(), 0);
  try {
    control.SetLanguage("Perl");
    ADD_FAILURE();
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, 380);
  }
  EXPECT_EQ(control.Language(), "JScript");
}

}  // namespace
}  // namespace ketrova::script
