// The VBScript Engine as the script control uses it: modules, procedures
// called by handle, host objects, errors with number, text, source, line and
// column, Reset; and the scripts the converter itself writes.
#include "platform/script/engine.h"

#include <gtest/gtest.h>

#include <random>

#include "platform/ado/recordset.h"
#include "platform/script/vbscript/print_object.h"

namespace ketrova::script::vbscript::testing {
namespace {

constexpr std::string_view kConvert = "zsModuleConvertMain";

ScriptError ErrorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const ScriptError& e) {
    return e;
  }
  ADD_FAILURE() << "no error";
  return ScriptError(0, "", "", 0, 0);
}

TEST(VBScriptEngine, ModulesProceduresAndByRefArguments) {
  auto engine = CreateVBScriptEngine();
  EXPECT_EQ(engine->Language(), "VBScript");
  engine->AddCode(
      kGlobalModule,
      "Dim IdentKey\r\nSub SetIdentKey(szGUID)\r\n     IdentKey = szGUID \r\nend Sub\r\n\r\n");
  engine->AddCode(kGlobalModule,
                  "Dim RecordCount\r\nSub SetRecordCount(inValue)\r\n     RecordCount = inValue "
                  "\r\nend Sub\r\n\r\n");
  engine->AddCode(kGlobalModule,
                  "Function Swap(a, ByVal b)\n a = a & b : b = 0 : Swap = a\nEnd Function");
  auto procs = engine->Procedures(kGlobalModule);
  ASSERT_EQ(procs.size(), 3u);
  EXPECT_EQ(procs[0].Name, "SetIdentKey");
  EXPECT_EQ(procs[0].NumArgs, 1);
  EXPECT_FALSE(procs[0].HasReturnValue);
  EXPECT_EQ(procs[2].Name, "Swap");
  EXPECT_TRUE(procs[2].HasReturnValue);

  Variant args[1] = {Variant("1234-abcd")};
  engine->Run(kGlobalModule, "SetIdentKey", args);
  EXPECT_EQ(engine->Eval(kGlobalModule, "IdentKey").ToString(), "1234-abcd");

  Variant swapArgs[2] = {Variant("a"), Variant("b")};
  ProcedureHandle swap = engine->FindProcedure(kGlobalModule, "SWAP");
  ASSERT_NE(swap, nullptr);
  EXPECT_EQ(engine->Call(swap, swapArgs).ToString(), "ab");
  EXPECT_EQ(swapArgs[0].ToString(), "ab");  // ByRef written back
  EXPECT_EQ(swapArgs[1].ToString(), "b");   // ByVal not

  // A named module sees the global module, not the other way round.
  engine->AddModule(kConvert);
  engine->AddCode(
      kConvert, "Function txConvertMain()\n txConvertMain = IdentKey & RecordCount\nEnd Function");
  Variant count[1] = {Variant(7)};
  engine->Run(kGlobalModule, "SetRecordCount", count);
  EXPECT_EQ(engine->Run(kConvert, "txConvertMain", {}).ToString(), "1234-abcd7");
  EXPECT_NE(engine->FindProcedure(kConvert, "SetIdentKey"), nullptr);
  EXPECT_EQ(engine->FindProcedure(kGlobalModule, "txConvertMain"), nullptr);
  try {
    engine->Run(kGlobalModule, "txConvertMain", {});
    ADD_FAILURE() << "no error";
  } catch (const VbError& e) {
    EXPECT_EQ(e.Number, 35);
  }
  EXPECT_EQ(ErrorOf([&] {
              Variant none[1];
              engine->Run(kGlobalModule, "Swap", none);
            }).Number,
            450);

  engine->Reset();
  EXPECT_EQ(engine->FindProcedure(kGlobalModule, "SetIdentKey"), nullptr);
  EXPECT_TRUE(engine->Procedures(kConvert).empty());
  EXPECT_TRUE(engine->Eval(kGlobalModule, "IdentKey").IsEmpty());
}

TEST(VBScriptEngine, CompileErrorsRefuseTheWholeText) {
  auto engine = CreateVBScriptEngine();
  struct Case {
    const char* code;
    int number;
    const char* description;
    int line, column;
  } cases[] = {
      {"Sub Ok\nEnd Sub\nx = (1 + \n", 1023, "Ausdruck erwartet", 3, 10},
      {"Sub Ok\nEnd Sub\nIf x Then\n  y = 1\n", 1014, "'End' erwartet", 5, 1},
      {"Sub Ok\n  x = 1 2\nEnd Sub", 1025, "Ende der Anweisung erwartet", 2, 9},
      {"Sub Ok\nEnd Sub\nDim 5", 1010, "Bezeichner erwartet", 3, 5},
      {"Sub Ok\nEnd Sub\nFor i 1 To 2\nNext", 1011, "'=' erwartet", 3, 7},
      {"Sub Ok\nEnd Sub\nx = \"offen", 1033, "Nicht abgeschlossene Zeichenfolgenkonstante", 3, 5},
      {"Sub Ok\nEnd Sub\nx = 1 § 2", 1032, "Ungültiges Zeichen", 3, 7},
      {"Sub Ok\nEnd Sub\nLoop", 1038, "'loop' ohne 'do'", 3, 1},
      {"Sub Ok\nEnd Sub\nExit Sub", 1039, "Ungültige 'exit'-Anweisung", 3, 6},
      {"Sub Ok\nEnd Sub\nDim a, a", 1041, "Name neu definiert", 3, 8},
      {"Sub Ok\nEnd Sub\nOk 1, 2)", 1025, "Ende der Anweisung erwartet", 3, 8},
      {"Sub Ok\nEnd Sub\nMsgBox(\"a\", 1)", 1044,
       "Beim Aufrufen einer Sub können keine Klammern verwendet werden", 3, 1},
      {"Sub Ok\nEnd Sub\n=", 1024, "Anweisung erwartet", 3, 1},
  };
  for (const Case& c : cases) {
    ScriptError e = ErrorOf([&] { engine->AddCode(kGlobalModule, c.code); });
    EXPECT_EQ(e.Number, c.number) << c.code;
    EXPECT_EQ(e.Description, c.description) << c.code;
    EXPECT_EQ(e.Source, "Kompilierungsfehler in VBScript") << c.code;
    EXPECT_EQ(e.Line, c.line) << c.code;
    EXPECT_EQ(e.Column, c.column) << c.code;
    EXPECT_EQ(engine->FindProcedure(kGlobalModule, "Ok"), nullptr) << c.code;
  }
}

TEST(VBScriptEngine, RunTimeErrorsCarryTheirPosition) {
  auto engine = CreateVBScriptEngine();
  engine->AddCode(
      kGlobalModule,
      "Option Explicit\nFunction F(x)\n  Dim y\n  y = x * 2\n  F = y / 0\nEnd Function\n"
      "Function G()\n  G = undefinedName\nEnd Function\n"
      "Function Deep(n)\n  Deep = Deep(n + 1)\nEnd Function\n");
  ScriptError e = ErrorOf([&] {
    Variant args[1] = {Variant(3)};
    engine->Run(kGlobalModule, "F", args);
  });
  EXPECT_EQ(e.Number, 11);
  EXPECT_EQ(e.Description, "Division durch Null");
  EXPECT_EQ(e.Source, "Laufzeitfehler in VBScript");
  EXPECT_EQ(e.Line, 5);
  EXPECT_EQ(e.Column, 3);

  e = ErrorOf([&] { engine->Run(kGlobalModule, "G", {}); });
  EXPECT_EQ(e.Number, 500);
  EXPECT_EQ(e.Description, "Variable ist nicht definiert: 'undefinedName'");
  EXPECT_EQ(e.Line, 8);

  e = ErrorOf([&] {
    Variant args[1] = {Variant(0)};
    engine->Run(kGlobalModule, "Deep", args);
  });
  EXPECT_EQ(e.Number, 28);
  EXPECT_EQ(e.Description, "Nicht genügend Stapelspeicher");
  EXPECT_EQ(e.Line, 11);
  // The engine is whole afterwards.
  EXPECT_EQ(engine->Eval(kGlobalModule, "1 + 1").ToLong(), 2);
}

// An in-memory record set on a new record, as the engine hands the scripts
// their Source and Destination.
std::shared_ptr<ado::Recordset> Record() {
  auto rs = std::make_shared<ado::Recordset>();
  rs->GetFields().Append("Name", ado::adVarWChar, 50);
  rs->GetFields().Append("Id", ado::adInteger);
  rs->GetFields().Append("Kdnr", ado::adVarWChar, 10);
  rs->Open();
  rs->AddNew();
  return rs;
}

TEST(VBScriptEngine, GeneratedConversionScriptCopiesTheRecord) {
  auto engine = CreateVBScriptEngine();
  auto source = Record();
  auto destination = Record();
  engine->AddObject("Source", source, true);
  engine->AddObject("Destination", destination, true);
  engine->AddModule(kConvert);
  engine->AddCode(kConvert,
                  "' **********************************************************\r\n"
                  "'Visual Basic Konvertierungsscript\r\n"
                  "' **********************************************************\r\n"
                  "Function txConvertMain()\r\n"
                  "\tDestination.Fields(\"Name\") = Left(Source.Fields(\"Name\"),5)\r\n"
                  "\tDestination.Fields(\"Id\") = Source.Fields(\"Id\")\r\n"
                  "End Function\r\n");
  ProcedureHandle main = engine->FindProcedure(kConvert, "txConvertMain");
  ASSERT_NE(main, nullptr);
  for (int id = 1; id <= 3; ++id) {
    source->GetFields().Item("Name").SetValue("Datensatz " + std::to_string(id));
    source->GetFields().Item("Id").SetValue(id);
    EXPECT_TRUE(engine->Call(main, {}).IsEmpty());
    EXPECT_EQ(destination->GetFields().Item("Name").Value().ToString(), "Daten");
    EXPECT_EQ(destination->GetFields().Item("Id").Value().ToLong(), id);
  }
  source->GetFields().Item("Name").SetValue(Variant::Null());
  engine->Call(main, {});
  EXPECT_TRUE(destination->GetFields().Item("Name").Value().IsNull());
}

TEST(VBScriptEngine, SkeletonsAndTemplatesCompile) {
  auto engine = CreateVBScriptEngine();
  std::string stars = "'" + std::string(67, '*') + "\r\n";
  std::string onStart = stars + "'\r\n'\r\n'\r\n'\r\n" + stars +
                        "\r\nFunction txOnStart()\r\n\ttxOnStart = True\r\nEnd Function\r\n\r\n";
  engine->AddCode(kGlobalModule, onStart);
  EXPECT_TRUE(engine->Run(kGlobalModule, "txOnStart", {}).ToBool());
  engine->AddCode(kGlobalModule,
                  "Function txSQLSearchResult\r\n   Dim szSQL \r\n   szSQL = \"\"\r\n\r\n\r\n"
                  "   txSQLSearchResult = szSQL\r\nEnd Function\r\n");
  EXPECT_EQ(engine->Run(kGlobalModule, "txSQLSearchResult", {}).ToString(), "");
  auto destination = Record();
  auto source = Record();
  engine->AddObject("Destination", destination, true);
  engine->AddObject("Source", source, true);
  source->GetFields().Item("Kdnr").SetValue("K1");
  engine->AddCode(kGlobalModule,
                  "Function txSQLDestinationUpdate\r\n   Dim szSQL \r\n"
                  " szSQL = \"Nr\" = Source.Fields(\"Kdnr\")\r\n\r\n\r\n"
                  "   txSQLDestinationUpdate = szSQL\r\nEnd Function\r\n");
  EXPECT_FALSE(engine->Run(kGlobalModule, "txSQLDestinationUpdate", {}).ToBool());
}

TEST(VBScriptEngine, EvalExecuteAndMembersMadeGlobal) {
  auto engine = CreateVBScriptEngine();
  auto out = std::make_shared<PrintObject>();
  engine->AddObject("Test", out, true);
  engine->ExecuteStatement(kGlobalModule, "Dim total : total = 40");
  EXPECT_EQ(engine->Eval(kGlobalModule, "total + 2").ToLong(), 42);
  engine->AddCode(kGlobalModule,
                  "Function Local(x)\n  Dim y : y = 5\n  Execute \"y = y + x\"\n"
                  "  Local = Eval(\"y * 2\")\nEnd Function\n"
                  "ExecuteGlobal \"Function Made() : Made = 7 : End Function\"\n"
                  "Print Made(), Test.Print(\"direkt\")");
  Variant args[1] = {Variant(1)};
  EXPECT_EQ(engine->Run(kGlobalModule, "Local", args).ToLong(), 12);
  EXPECT_EQ(out->output, "direkt\n7 \n");
  ScriptError e = ErrorOf([&] { engine->Eval(kGlobalModule, "1 +"); });
  EXPECT_EQ(e.Number, 1023);
}

TEST(VBScriptEngine, AnyTextCompilesOrFailsCleanly) {
  static const char* kPieces[] = {
      "If",         "Then",
      "Else",       "End",
      "Sub",        "Function",
      "x",          "y(",
      ")",          "(",
      "=",          "\n",
      ":",          "1",
      "\"s\"",      "&H",
      "#1/2/2000#", "For",
      "Next",       "To",
      "Do",         "Loop",
      "While",      "Wend",
      "Class",      "Property",
      "Get",        ".",
      ",",          "_",
      "With",       "Select",
      "Case",       "Dim",
      "ReDim",      "Set",
      "New",        "Call",
      "'c",         "-",
      "Not",        "And",
      "[a b]",      "Me",
      "Exit",       "On Error Resume Next",
      "Const",      "#",
      "\"",
  };
  std::mt19937 random(4711);
  std::uniform_int_distribution<size_t> piece(0, std::size(kPieces) - 1);
  std::uniform_int_distribution<int> length(1, 40);
  auto engine = CreateVBScriptEngine();
  int compiled = 0;
  for (int round = 0; round < 3000; ++round) {
    std::string body;
    for (int n = length(random); n > 0; --n) body += std::string(kPieces[piece(random)]) + " ";
    // Inside a Sub that is never called, so that nothing runs.
    std::string code = "Sub Fuzz" + std::to_string(round) + "\n" + body + "\nEnd Sub\n";
    try {
      engine->AddCode(kGlobalModule, code);
      ++compiled;
    } catch (const ScriptError& e) {
      EXPECT_EQ(e.Source, "Kompilierungsfehler in VBScript") << code;
      EXPECT_GE(e.Line, 1) << code;
      EXPECT_GE(e.Column, 1) << code;
    }
  }
  std::string deep = "x = " + std::string(100000, '(') + "1";
  EXPECT_EQ(ErrorOf([&] { engine->AddCode(kGlobalModule, deep); }).Source,
            "Kompilierungsfehler in VBScript");
  EXPECT_GT(compiled, 0);
}

}  // namespace
}  // namespace ketrova::script::vbscript::testing
