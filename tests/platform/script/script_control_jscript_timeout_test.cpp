// The script control's Timeout with JScript: endless loops of every kind end
// with the time-out error, code around them is left as it was written, and
// the control is usable afterwards. Bounds on time are generous on purpose.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string_view>

#include "platform/script/engine.h"
#include "platform/script/script_control.h"

namespace ketrova::script {
namespace {

constexpr auto kGenerousBound = std::chrono::seconds(20);

class JScriptTimeout : public ::testing::Test {
 protected:
  void SetUp() override {
    control.SetLanguage("JScript");
    control.AddObject("Seen", CreateObjectByProgId("Scripting.Dictionary"), false);
  }

  // The number of the error `call` ends with; 0 for none.
  std::int32_t ErrorOf(const std::function<void()>& call) {
    try {
      call();
    } catch (const VbError&) {
      return control.Error().Number;
    }
    return 0;
  }

  // Runs `procedure` and answers the error it ended with.
  ScriptControlError Stopped(std::string_view procedure) {
    auto start = std::chrono::steady_clock::now();
    EXPECT_NE(ErrorOf([&] { control.Run(procedure); }), 0)
        << procedure << " ended without an error";
    EXPECT_LT(std::chrono::steady_clock::now() - start, kGenerousBound);
    return control.Error();
  }

  ScriptControl control;
};

struct Endless {
  const char* name;
  const char* code;  // defines run()
  int line;          // where the loop checks the time
  int column;
};

const Endless kEndless[] = {
    {"while", "function run() {\n  while (true) {}\n}", 2, 3},
    {"for", "function run() {\n    for (;;) {}\n}", 2, 5},
    {"do_while", "function run() {\n  var i = 0;\n  do { i++; } while (i > 0);\n}", 3, 3},
    {"for_with_condition", "function run() {\n  for (var i = 0; i >= 0; i = (i + 1) % 10) {}\n}", 2,
     3},
    {"host_calls_in_body", "function run() {\n  while (!Seen.Exists('x')) Seen.Exists('y');\n}", 2,
     3},
    {"caught_and_looping_again",
     "function run() {\n  for (;;) { try { while (true) {} } catch (e) { Seen.Exists(e); } }\n}", 2,
     3},
    {"caught_once_then_returning",
     "function run() {\n  try { while (true) {} } catch (e) { return 'entkommen'; }\n}", 2, 3},
    {"regular_expressions",
     "function run() {\n  var re = /while\\(x\\)[/]/g, n = 1; while (re.test('while(x)') || n / 2 "
     "> 0) { re.lastIndex = 0; }\n}",
     2, 3},
    {"strings_and_comments",
     "function run() {\n  var s = \"while(\"; /* for(;;) { */ while (s.length > 0 /* ) */) { s = "
     "'for(' + \"\"; } // do {\n}",
     2, 3},
};

class JScriptEndless : public JScriptTimeout, public ::testing::WithParamInterface<Endless> {};

TEST_P(JScriptEndless, StopsWithTheTimeoutErrorAndLeavesTheControlUsable) {
  const Endless& c = GetParam();
  control.SetTimeout(200);
  control.AddCode(c.code);
  control.AddCode("function finite() { for (var i = 0; i < 1000; i++) {} return i; }");
  ScriptControlError error = Stopped("run");
  EXPECT_EQ(error.Number, 18);
  EXPECT_EQ(error.Description,
            "Die Ausführung des Skripts wurde wegen Zeitüberschreitung abgebrochen");
  EXPECT_EQ(error.Source, "Laufzeitfehler in JScript");
  EXPECT_EQ(error.Line, c.line);
  EXPECT_EQ(error.Column, c.column);
  // The limit applies afresh to the next call.
  EXPECT_EQ(control.Run("finite").ToLong(), 1000);
  EXPECT_EQ(control.Error().Number, 0);
}

INSTANTIATE_TEST_SUITE_P(Loops, JScriptEndless, ::testing::ValuesIn(kEndless),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(JScriptTimeout, EveryWayIntoTheEngineIsLimited) {
  control.SetTimeout(200);
  EXPECT_EQ(ErrorOf([&] { control.AddCode("var n = 0;\nwhile (true) n++;"); }), 18);
  EXPECT_EQ(ErrorOf([&] { control.ExecuteStatement("for (;;) {}"); }), 18);
  EXPECT_EQ(ErrorOf([&] { control.Eval("(function () { do {} while (1); })()"); }), 18);
  // Endless recursion runs out of stack before it runs out of time.
  EXPECT_EQ(ErrorOf([&] { control.Eval("(function r() { return r() + 1; })()"); }), 28);
  ScriptModule& module = control.Modules().Add("zsModuleConvertMain");
  module.AddCode("function txConvertMain() { while (1) {} }");
  EXPECT_EQ(ErrorOf([&] { module.Run("txConvertMain"); }), 18);
  EXPECT_EQ(ErrorOf([&] { module.ExecuteStatement("var k = 0; while (k >= 0) k++;"); }), 18);
  EXPECT_EQ(control.Eval("1 + 1").ToLong(), 2);
}

TEST_F(JScriptTimeout, NoLimitLetsALongLoopFinish) {
  control.AddCode(
      "function long() {\n"
      "  var t = new Date().getTime(), n = 0;\n"
      "  while (new Date().getTime() - t < 400) n++;\n"
      "  return n > 0;\n"
      "}");
  for (int timeout : {-1, 0}) {
    control.SetTimeout(timeout);
    EXPECT_TRUE(control.Run("long").AsBool()) << timeout;
  }
}

TEST_F(JScriptTimeout, ErrorsKeepTheirPlaceInTheTextAsWritten) {
  control.AddCode(
      "function f() {\n"
      "  var x = 0;\n"
      "  for (var i = 0; i < 3; i++) { while (x < i) x++; } return x + missingName;\n"
      "}");
  EXPECT_EQ(ErrorOf([&] { control.Run("f"); }), 5009);
  EXPECT_EQ(control.Error().Line, 3);
  EXPECT_EQ(control.Error().Column, 65);
  EXPECT_EQ(control.Error().Text,
            "  for (var i = 0; i < 3; i++) { while (x < i) x++; } return x + missingName;");
  EXPECT_EQ(ErrorOf([&] { control.AddCode("var a = 1;\nfor (;;) { while (a) { var b = ; } }\n"); }),
            1002);
  EXPECT_EQ(control.Error().Line, 2);
  EXPECT_EQ(control.Error().Column, 1);
}

}  // namespace
}  // namespace ketrova::script
