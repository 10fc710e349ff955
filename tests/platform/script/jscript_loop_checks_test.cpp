// Where the JScript loop checks go, and that nothing else of a text changes:
// strings, comments and regular expressions that look like loops, property
// names that are keywords, and for-in, which needs no check.
#include <gtest/gtest.h>

#include "platform/script/jscript/js_loop_checks.h"

namespace ketrova::script::jscript {
namespace {

struct Rewrite {
  const char* code;
  const char* checked;  // @ stands for what counts a turn
};

const Rewrite kRewrites[] = {
    {"while (a) b();", "while (@&&(a)) b();"},
    {"do { x++ } while (x < 3)", "do { x++ } while (@&&(x < 3))"},
    {"for (;;) {}", "for (;@;) {}"},
    {"for (var i = 0; i < n; i++) {}", "for (var i = 0; @&&(i < n); i++) {}"},
    {"for (var k in o) {}", "for (var k in o) {}"},
    {"for (\n  i = 0;\n  i < n;\n  i++) {}", "for (\n  i = 0;\n  @&&(i < n);\n  i++) {}"},
    // Semicolons of a function inside the head are not the head's.
    {"for (f = function () { a; b; }; c; d) {}", "for (f = function () { a; b; }; @&&(c); d) {}"},
    // A function with loops counts in a variable of its own, declared last.
    {"function f(a) {\n  'use strict';\n  while (a) a--;\n}\nfunction g() { return 1; }",
     "function f(a) {\n  'use strict';\n  while (@&&(a)) a--;\n;var n;}\nfunction g() { return 1; "
     "}"},
    {"x = function () { for (;; g(function () { do {} while (0) })) {} }",
     "x = function () { for (;@; g(function () { do {} while (@&&(0)) ;var n;})) {} ;var n;}"},
    {"s = 'while (a)' + \"for (;;)\\\"\"; // while (b)\n/* for (;;) */",
     "s = 'while (a)' + \"for (;;)\\\"\"; // while (b)\n/* for (;;) */"},
    {"r = /while (a)[/]for(;;)/g; q = a / b / c; if (x) /for(;;)/.test(y);",
     "r = /while (a)[/]for(;;)/g; q = a / b / c; if (x) /for(;;)/.test(y);"},
    {"x = y++ / 2; while (z) {}", "x = y++ / 2; while (@&&(z)) {}"},
    // A slash after an object literal divides; after a block it starts a
    // regular expression.
    {"for (;{}/i//;)\n;) n", "for (;@&&({}/i//;)\n);) n"},
    {"x = {a: {b: 1}} / 2; while (z) {}", "x = {a: {b: 1}} / 2; while (@&&(z)) {}"},
    {"if (a) {} /while (b)/.test(c)", "if (a) {} /while (b)/.test(c)"},
    {"x = function () {} / 2; while (z) {}", "x = function () {} / 2; while (@&&(z)) {}"},
    {"function f() {} /while (b)/.test(c)", "function f() {} /while (b)/.test(c)"},
    // After a line break -- is a prefix, so the brace after it is an object.
    {"function g() { for (;;) d\n--{} / -/ / / {\n} }",
     "function g() { for (;@;) d\n--{} / -/ / / {\n} ;var n;}"},
    {"o.while(1); o.for(2); o.function(3); p = { while: 1, for: 2 };",
     "o.while(1); o.for(2); o.function(3); p = { while: 1, for: 2 };"},
};

TEST(JScriptLoopChecks, GoIntoLoopConditionsOnly) {
  for (const Rewrite& r : kRewrites) {
    std::string checked = r.checked;
    for (std::size_t at; (at = checked.find('@')) != std::string::npos;)
      checked.replace(at, 1, "(--n>0||(n=K()))");
    EXPECT_EQ(InsertLoopChecks(r.code, "K", "n"), checked) << r.code;
  }
}

}  // namespace
}  // namespace ketrova::script::jscript
