// Where the JScript loop checks go, and that nothing else of a text changes:
// strings, comments and regular expressions that look like loops, property
// names that are keywords, and for-in, which needs no check.
#include <gtest/gtest.h>

#include "platform/script/jscript/js_loop_checks.h"

namespace ketrova::script::jscript {
namespace {

struct Rewrite {
  const char* code;
  const char* checked;
};

const Rewrite kRewrites[] = {
    {"while (a) b();", "while (K()&&(a)) b();"},
    {"do { x++ } while (x < 3)", "do { x++ } while (K()&&(x < 3))"},
    {"for (;;) {}", "for (;K();) {}"},
    {"for (var i = 0; i < n; i++) {}", "for (var i = 0; K()&&(i < n); i++) {}"},
    {"for (var k in o) {}", "for (var k in o) {}"},
    {"for (\n  i = 0;\n  i < n;\n  i++) {}", "for (\n  i = 0;\n  K()&&(i < n);\n  i++) {}"},
    // Semicolons of a function inside the head are not the head's.
    {"for (f = function () { a; b; }; c; d) {}", "for (f = function () { a; b; }; K()&&(c); d) {}"},
    {"for (;; g(function () { for (;;) {} })) {}",
     "for (;K(); g(function () { for (;K();) {} })) {}"},
    {"s = 'while (a)' + \"for (;;)\\\"\"; // while (b)\n/* for (;;) */",
     "s = 'while (a)' + \"for (;;)\\\"\"; // while (b)\n/* for (;;) */"},
    {"r = /while (a)[/]for(;;)/g; q = a / b / c; if (x) /for(;;)/.test(y);",
     "r = /while (a)[/]for(;;)/g; q = a / b / c; if (x) /for(;;)/.test(y);"},
    {"x = y++ / 2; while (z) {}", "x = y++ / 2; while (K()&&(z)) {}"},
    {"o.while(1); o.for(2); p = { while: 1, for: 2 };",
     "o.while(1); o.for(2); p = { while: 1, for: 2 };"},
};

TEST(JScriptLoopChecks, GoIntoLoopConditionsOnly) {
  for (const Rewrite& r : kRewrites) EXPECT_EQ(InsertLoopChecks(r.code, "K"), r.checked) << r.code;
}

}  // namespace
}  // namespace ketrova::script::jscript
