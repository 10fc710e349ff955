// The script control with JScript: modules, objects, Run, Procedures, Error.
#include <gtest/gtest.h>

#include "platform/script/binding.h"
#include "platform/script/objects/dictionary.h"
#include "platform/script/script_control.h"

namespace ketrova::script {
namespace {

// A host object with a property, a method and a default member, standing in
// for a record set added with its members.
class Counter : public BoundObject<Counter> {
 public:
  std::string TypeName() const override { return "Counter"; }
  static const MemberTable<Counter>& Members() {
    static const auto table =
        MemberTable<Counter>()
            .Property(
                "Value", [](Counter& c, Args) { return Variant::Long(c.value); },
                [](Counter& c, Args, const Variant& v) { c.value = v.ToLong(); })
            .Method("Add", 1, 1,
                    [](Counter& c, Args a) {
                      c.value += a[0].ToLong();
                      return Variant::Long(c.value);
                    })
            .Method("Fail", 0, 0, [](Counter&, Args) -> Variant { throw VbError(13); })
            .Default("Value");
    return table;
  }
  std::int32_t value = 0;
};

class JScriptControl : public ::testing::Test {
 protected:
  void SetUp() override { control.SetLanguage("jscript"); }

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

TEST_F(JScriptControl, RunPassesArgumentsAndAnswersResults) {
  EXPECT_EQ(control.Language(), "JScript");
  control.AddCode(
      "function add(a, b) { return a + b; }\nfunction hello(n) { return 'Hallo ' + n; }");
  Variant args[2] = {Variant(2), Variant(3.5)};
  EXPECT_DOUBLE_EQ(control.Run("add", args).ToDouble(), 5.5);
  Variant name[1] = {Variant("Welt")};
  EXPECT_EQ(control.Run("hello", name).ToString(), "Hallo Welt");
  // Whole numbers come back as Long, as JScript hands them to COM.
  Variant ints[2] = {Variant(2), Variant(3)};
  EXPECT_EQ(control.Run("add", ints).Type(), vbLong);
}

TEST_F(JScriptControl, ProceduresListTheGlobalFunctionsInOrder) {
  control.AddCode("var x = 1;\nfunction first(a, b, c) {}\nfunction second() { return 1; }");
  control.AddCode("function third(a) {}");
  ScriptProcedures procedures = control.Procedures();
  ASSERT_EQ(procedures.Count(), 3);
  EXPECT_EQ(procedures.Item(1).Name, "first");
  EXPECT_EQ(procedures.Item(1).NumArgs, 3);
  EXPECT_EQ(procedures.Item(2).Name, "second");
  EXPECT_EQ(procedures.Item(3).NumArgs, 1);
}

TEST_F(JScriptControl, NamedModuleSeesTheGlobalModuleButNotTheOtherWay) {
  control.AddCode("var base = 10;\nfunction twice(n) { return 2 * n; }");
  ScriptModule& module = control.Modules().Add("zsModuleConvertMain");
  EXPECT_EQ(control.Modules().Count(), 2);
  EXPECT_EQ(control.Modules().Item(1).Name(), "Global");
  module.AddCode("var own = 1;\nfunction txConvertMain() { return twice(base) + own; }");
  EXPECT_EQ(module.Run("txConvertMain").ToLong(), 21);
  EXPECT_EQ(module.Procedures().Count(), 1);
  EXPECT_EQ(control.Eval("typeof own").ToString(), "undefined");
  EXPECT_EQ(&control.Modules().Item("ZSMODULECONVERTMAIN"), &module);
}

TEST_F(JScriptControl, ObjectsByNameAndWithTheirMembers) {
  auto counter = std::make_shared<Counter>();
  auto named = std::make_shared<Counter>();
  control.AddObject("Source", counter, true);
  control.AddObject("Job", named, false);
  control.AddCode(
      "function run() {\n"
      "  Source.Value = 5;\n"
      "  Add(2);\n"  // a member without the object's name
      "  Value = Value + 1;\n"
      "  Job.Add(Source.Value);\n"
      "  return Source + 0;\n"  // the default member as the value
      "}");
  EXPECT_EQ(control.Run("run").ToLong(), 8);
  EXPECT_EQ(counter->value, 8);
  EXPECT_EQ(named->value, 8);
  EXPECT_EQ(control.Eval("typeof Fail").ToString(), "function");
  EXPECT_EQ(control.Eval("typeof Add").ToString(), "function");
}

TEST_F(JScriptControl, CompileErrorFillsEveryField) {
  auto error = ErrorOf([&] { control.AddCode("var a = 1;\nvar b = ;\n"); });
  EXPECT_EQ(error.Number, 1002);
  EXPECT_EQ(error.Description, "Syntaxfehler");
  EXPECT_EQ(error.Source, "Kompilierungsfehler in JScript");
  EXPECT_EQ(error.Line, 2);
  EXPECT_EQ(error.Column, 1);
  EXPECT_EQ(error.Text, "var b = ;");
  // A text that does not compile adds nothing.
  EXPECT_EQ(control.Eval("typeof a").ToString(), "undefined");
}

TEST_F(JScriptControl, VBScriptTextFailsToCompile) {
  // What a project in JScript meets when the engine adds its fixed code.
  auto error = ErrorOf([&] {
    control.AddCode(
        "Dim IdentKey\r\nSub SetIdentKey(szGUID)\r\n     IdentKey = szGUID \r\nend Sub\r\n\r\n");
  });
  EXPECT_EQ(error.Number, 1004);
  EXPECT_EQ(error.Description, "';' erwartet");
  EXPECT_EQ(error.Line, 1);
  EXPECT_EQ(error.Text, "Dim IdentKey");
}

TEST_F(JScriptControl, RunTimeErrorsCarryJScriptNumbersAndPlace) {
  control.AddCode(
      "function f() {\n"
      "  var x = 1;\n"
      "    return x + missingName;\n"
      "}\n"
      "function g() { var o; return o.p; }\n"
      "function h() { throw 'raus'; }");
  auto error = ErrorOf([&] { control.Run("f"); });
  EXPECT_EQ(error.Number, 5009);
  EXPECT_EQ(error.Description, "'missingName' ist nicht definiert");
  EXPECT_EQ(error.Source, "Laufzeitfehler in JScript");
  EXPECT_EQ(error.Line, 3);
  EXPECT_EQ(error.Column, 16);
  EXPECT_EQ(ErrorOf([&] { control.Run("g"); }).Number, 5007);
  EXPECT_EQ(ErrorOf([&] { control.Run("h"); }).Number, 5022);
  // An unknown procedure.
  EXPECT_EQ(ErrorOf([&] { control.Run("nope"); }).Number, 35);
  control.Error().Clear();
  EXPECT_EQ(control.Error().Number, 0);
  EXPECT_EQ(control.Error().Line, 0);
}

TEST_F(JScriptControl, HostErrorsReachTheScriptAndTheControl) {
  control.AddObject("Counter", std::make_shared<Counter>(), false);
  control.AddCode(
      "function caught() {\n"
      "  try { Counter.Fail(); } catch (e) { return e.number + ' ' + e.description; }\n"
      "}\n"
      "function uncaught() {\n"
      "  Counter.Fail();\n"
      "}\n"
      "function unknownMember() { return Counter.Nope; }");
  EXPECT_EQ(control.Run("caught").ToString(), "-2146828275 Typen unverträglich");
  auto error = ErrorOf([&] { control.Run("uncaught"); });
  EXPECT_EQ(error.Number, 13);
  EXPECT_EQ(error.Description, "Typen unverträglich");
  EXPECT_EQ(error.Line, 5);
  EXPECT_EQ(ErrorOf([&] { control.Run("unknownMember"); }).Number, 438);
}

TEST_F(JScriptControl, ResetDropsCodeObjectsAndModules) {
  control.AddObject("Counter", std::make_shared<Counter>(), true);
  control.AddCode("function f() { return 1; }");
  control.Modules().Add("M").AddCode("function g() {}");
  control.Reset();
  EXPECT_EQ(control.Procedures().Count(), 0);
  EXPECT_EQ(control.Modules().Count(), 1);
  EXPECT_EQ(control.Eval("typeof Counter + typeof Value + typeof f").ToString(),
            "undefinedundefinedundefined");
  EXPECT_EQ(ErrorOf([&] { control.Run("f"); }).Number, 35);
}

TEST_F(JScriptControl, ValuesCrossBothWays) {
  control.AddCode(
      "function kind(v) { return v === null ? 'null' : typeof v; }\n"
      "function year(d) { return d.getFullYear() * 100 + d.getMonth() + 1; }\n"
      "function makeDate() { return new Date(2024, 1, 29, 13, 45, 30); }\n"
      "function list() { return [1, 'b', true]; }\n"
      "function ubound(a) { return new VBArray(a).ubound(1) + ':' + new "
      "VBArray(a).toArray().join('|'); }");
  Variant null[1] = {Variant::Null()};
  EXPECT_EQ(control.Run("kind", null).ToString(), "null");
  Variant empty[1] = {Variant()};
  EXPECT_EQ(control.Run("kind", empty).ToString(), "undefined");
  Variant date[1] = {Variant::FromDate(45351.5)};  // 2024-02-29 12:00
  EXPECT_EQ(control.Run("year", date).ToLong(), 202402);
  Variant made = control.Run("makeDate");
  ASSERT_EQ(made.Type(), vbDate);
  EXPECT_NEAR(made.AsDate().value, 45351 + (13 * 3600 + 45 * 60 + 30) / 86400.0, 1e-9);
  Variant list = control.Run("list");
  ASSERT_TRUE(list.IsArray());
  ASSERT_EQ(list.AsArray()->data.size(), 3u);
  EXPECT_EQ(list.AsArray()->data[1].ToString(), "b");
  Variant array[1] = {list};
  EXPECT_EQ(control.Run("ubound", array).ToString(), "2:1|b|true");
}

TEST_F(JScriptControl, CreatesObjectsByProgIdAndWalksCollections) {
  control.AddCode(
      "function keys() {\n"
      "  var d = new ActiveXObject('Scripting.Dictionary');\n"
      "  d.Add('a', 1); d.Add('b', 2); d.Add('c', 3); d.Remove('b');\n"
      "  var out = [];\n"
      "  for (var e = new Enumerator(d); !e.atEnd(); e.moveNext())\n"
      "    out.push(e.item() + '=' + d.Item(e.item()));\n"
      "  return out.join(',') + ' ' + d.Count + ' ' + d.Exists('b');\n"
      "}\n"
      "function bad() {\n"
      "  return new ActiveXObject('No.Such');\n"
      "}");
  EXPECT_EQ(control.Run("keys").ToString(), "a=1,c=3 2 false");
  auto error = ErrorOf([&] { control.Run("bad"); });
  EXPECT_EQ(error.Number, 429);
  EXPECT_EQ(error.Description, "ActiveX-Komponente kann kein Objekt erstellen");
  EXPECT_EQ(error.Line, 10);
}

}  // namespace
}  // namespace ketrova::script
