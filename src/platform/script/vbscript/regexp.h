// VBScript's RegExp object and its results, as script objects: RegExp
// (Pattern, IgnoreCase, Global, Multiline, Test, Execute, Replace), the Matches
// collection (Count, Item, For Each), Match (Value, FirstIndex, Length,
// SubMatches) and SubMatches (Count, Item, For Each).
//
// Patterns use the ECMAScript grammar of std::regex, which is the grammar of
// VBScript's RegExp. Text is matched as code points, so FirstIndex and Length
// count characters of the UTF-8 text, not bytes. Case folding without regard
// to case covers Unicode's simple case mappings. Not supported: a function
// object as the replacement of Replace.
//
// A bad pattern raises 5017 (syntax), 5018 (quantifier), 5019 (']' expected),
// 5020 (')' expected) or 5021 (range) when it is first used, as VBScript does.
#pragma once

#include <memory>
#include <regex>
#include <string>

#include "platform/script/binding.h"

namespace ketrova::script::vbscript {

class RegExp : public BoundObject<RegExp> {
 public:
  std::string TypeName() const override { return "IRegExp2"; }
  static const MemberTable<RegExp>& Members();

  // The C++ face of the members.
  std::string Pattern;
  bool IgnoreCase = false;
  bool Global = false;
  bool Multiline = false;

  bool Test(const std::string& text);
  // The Matches collection: every match when Global, else at most the first.
  ObjectPtr Execute(const std::string& text);
  // The text with the first match (every match when Global) replaced;
  // `replacement` may use $1..$99, $&, $`, $' and $$.
  std::string Replace(const std::string& text, const std::string& replacement);

 private:
  const std::wregex& Compiled();

  std::wregex regex_;
  std::string compiledPattern_;
  int compiledFlags_ = -1;
};

}  // namespace ketrova::script::vbscript
