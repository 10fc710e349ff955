// The script control's Timeout with VBScript: endless scripts end with the
// time-out error, a script cannot trap it, and the control stays usable.
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

#include "platform/script/binding.h"
#include "platform/script/script_control.h"

namespace ketrova::script {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int kTimeout = 200;

// A host object whose methods call back into the control, as a host that runs
// a script procedure of its own would, or set its Timeout.
class Host : public BoundObject<Host> {
 public:
  explicit Host(ScriptControl& control) : control(control) {}
  std::string TypeName() const override { return "Host"; }
  static const MemberTable<Host>& Members() {
    static const auto table =
        MemberTable<Host>()
            .Method("Ping", 0, 0, [](Host& h, Args) { return h.control.Run("Noop"); })
            .Method("Limit", 0, 0, [](Host& h, Args) {
              h.control.SetTimeout(kTimeout);
              return Variant();
            });
    return table;
  }
  ScriptControl& control;
};

// Main calls Endless with error trapping on; Finished stays Empty when the
// run really ended inside Endless. Endless's body starts on line 8.
std::string Script(const std::string& endlessBody) {
  return "Dim Finished\r\n"
         "Sub Main()\r\n"
         "  On Error Resume Next\r\n"
         "  Endless\r\n"
         "  Finished = True\r\n"
         "End Sub\r\n"
         "Sub Endless()\r\n" +
         endlessBody +
         "End Sub\r\n"
         "Sub Noop()\r\n"
         "End Sub\r\n"
         "Function Quick(n)\r\n"
         "  Dim i\r\n"
         "  For i = 1 To n\r\n"
         "    Quick = Quick + 1\r\n"
         "  Next\r\n"
         "End Function\r\n";
}

class VBScriptTimeout : public ::testing::Test {
 protected:
  void SetUp() override {
    control.SetTimeout(kTimeout);
    control.AddObject("Host", std::make_shared<Host>(control), false);
  }

  // Runs `call`, which must end with the time-out error, within a generous
  // bound; answers the control's Error.
  ScriptControlError TimedOut(const std::function<void()>& call, int timeout = kTimeout) {
    auto start = steady_clock::now();
    try {
      call();
      ADD_FAILURE() << "the run was not stopped";
    } catch (const ScriptError& e) {
      EXPECT_EQ(e.Number, 18);
    }
    auto spent = steady_clock::now() - start;
    EXPECT_GE(spent, milliseconds(timeout));
    EXPECT_LT(spent, milliseconds(30'000));
    const ScriptControlError& error = control.Error();
    EXPECT_EQ(error.Number, 18);
    EXPECT_EQ(error.Description,
              "Die Ausführung des Skripts wurde wegen Zeitüberschreitung abgebrochen");
    EXPECT_EQ(error.Source, "Laufzeitfehler in VBScript");
    return error;
  }

  ScriptControl control;
};

TEST_F(VBScriptTimeout, EndlessLoopsStopUntrappedAtTheirStatement) {
  struct Case {
    const char* name;
    const char* body;
    int line;
    int column;  // 0: the stop may come in either statement of the line
  };
  const Case cases[] = {
      {"Do Loop", "  Do\r\n  Loop\r\n", 8, 3},
      {"While Wend", "  While True\r\n  Wend\r\n", 8, 3},
      {"For to 1E9", "  Dim i\r\n  For i = 1 To 1E9\r\n  Next\r\n", 9, 3},
      {"For Each in a loop", "  Dim a(3), x\r\n  Do : For Each x In a : Next : Loop\r\n", 9, 0},
      {"built-ins in a loop",
       "  Dim s\r\n  Do\r\n    s = Left(UCase(\"abc\") & CStr(Now), 3)\r\n  Loop\r\n", 9, 3},
      {"errors trapped in the loop",
       "  On Error Resume Next\r\n  Do\r\n    Err.Raise 5\r\n  Loop\r\n", 9, 3},
      {"procedure calls in a loop", "  Do : Noop : Loop\r\n", 8, 0},
      {"a host calling back into the script", "  Do : Host.Ping : Loop\r\n", 8, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    control.Reset();
    control.SetTimeout(kTimeout);
    control.AddObject("Host", std::make_shared<Host>(control), false);
    control.AddCode(Script(c.body));
    ScriptControlError error = TimedOut([&] { control.Run("Main"); });
    EXPECT_EQ(error.Line, c.line);
    if (c.column) {
      EXPECT_EQ(error.Column, c.column);
    }
    EXPECT_TRUE(control.Eval("IsEmpty(Finished)").AsBool());
    // The next call runs on a clock of its own.
    Variant args[1] = {Variant(1000)};
    EXPECT_EQ(control.Run("Quick", args).ToLong(), 1000);
  }
}

TEST_F(VBScriptTimeout, EveryKindOfCallIsLimited) {
  control.AddCode(Script("  Do\r\n  Loop\r\n"));
  const std::pair<const char*, std::function<void()>> calls[] = {
      {"AddCode", [&] { control.AddCode("Do\r\nLoop\r\n"); }},
      {"Module AddCode", [&] { control.Modules().Add("Job").AddCode("While 1\r\nWend\r\n"); }},
      {"Eval", [&] { control.Eval("Quick(1E9)"); }},
      {"ExecuteStatement", [&] { control.ExecuteStatement("Endless"); }},
      {"Execute inside the script", [&] { control.ExecuteStatement("Execute \"Endless\""); }},
  };
  for (const auto& [name, call] : calls) {
    SCOPED_TRACE(name);
    TimedOut(call);
  }
}

TEST_F(VBScriptTimeout, NoLimitLetsALongLoopFinish) {
  control.AddCode(Script("  Do\r\n  Loop\r\n"));
  Variant args[1] = {Variant(2'000'000)};
  control.SetTimeout(1);
  TimedOut([&] { control.Run("Quick", args); }, 1);
  for (int timeout : {-1, 0}) {
    control.SetTimeout(timeout);
    EXPECT_EQ(control.Run("Quick", args).ToLong(), 2'000'000) << timeout;
  }
}

TEST_F(VBScriptTimeout, ALimitSetDuringARunCountsFromThen) {
  control.SetTimeout(-1);
  control.AddCode(Script("  Host.Limit\r\n  Do\r\n  Loop\r\n"));
  ScriptControlError error = TimedOut([&] { control.Run("Main"); });
  EXPECT_EQ(error.Line, 9);
}

TEST_F(VBScriptTimeout, EndlessRecursionStillRunsOutOfStack) {
  control.AddCode("Sub Deeper()\r\n  Deeper\r\nEnd Sub\r\n");
  try {
    control.Run("Deeper");
    ADD_FAILURE() << "no error raised";
  } catch (const ScriptError& e) {
    EXPECT_EQ(e.Number, 28);
  }
}

}  // namespace
}  // namespace ketrova::script
