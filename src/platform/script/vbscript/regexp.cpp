#include "platform/script/vbscript/regexp.h"

#include <pthread.h>

#include <exception>
#include <locale>

#include "platform/script/vbscript/builtins.h"
#include "platform/script/vbscript/builtins_common.h"

namespace ketrova::script::vbscript {

// The arguments as the binding passes them (the built-ins' Args are const).
using BoundArgs = script::Args;

namespace {

std::wstring Wide(std::string_view utf8) {
  std::u32string text = ToCodePoints(utf8);
  return std::wstring(text.begin(), text.end());
}

std::string Narrow(std::wstring_view text) {
  return FromCodePoints(std::u32string(text.begin(), text.end()));
}

// The 0-based item of a result list, 5 when out of range.
Variant ItemAt(const std::vector<Variant>& items, const Variant& index) {
  std::int32_t i = index.ToLong();
  if (i < 0 || static_cast<std::size_t>(i) >= items.size()) RaiseInvalidArgument();
  return items[static_cast<std::size_t>(i)];
}

// Matches and SubMatches: Count, Item (the default member, 0-based), For Each.
template <typename Tag>
class ResultList : public BoundObject<ResultList<Tag>> {
 public:
  explicit ResultList(std::vector<Variant> items) : items(std::move(items)) {}
  std::string TypeName() const override { return Tag::kTypeName; }
  static const MemberTable<ResultList>& Members() {
    static const auto table =
        MemberTable<ResultList>()
            .Property("Item", 1, 1,
                      [](ResultList& l, BoundArgs a) { return ItemAt(l.items, a[0]); })
            .Property("Count",
                      [](ResultList& l, BoundArgs) {
                        return Variant::Long(static_cast<std::int32_t>(l.items.size()));
                      })
            .Default("Item")
            .Enumeration([](ResultList& l) -> std::unique_ptr<Enumerator> {
              return std::make_unique<VectorEnumerator>(l.items);
            });
    return table;
  }
  std::vector<Variant> items;
};

struct MatchesTag {
  static constexpr const char* kTypeName = "IMatchCollection2";
};
struct SubMatchesTag {
  static constexpr const char* kTypeName = "ISubMatches";
};
using Matches = ResultList<MatchesTag>;
using SubMatches = ResultList<SubMatchesTag>;

class Match : public BoundObject<Match> {
 public:
  std::string TypeName() const override { return "IMatch2"; }
  static const MemberTable<Match>& Members() {
    static const auto table =
        MemberTable<Match>()
            .Property("Value", [](Match& m, BoundArgs) { return Variant(m.value); })
            .Property("FirstIndex", [](Match& m, BoundArgs) { return Variant::Long(m.firstIndex); })
            .Property("Length", [](Match& m, BoundArgs) { return Variant::Long(m.length); })
            .Property("SubMatches",
                      [](Match& m, BoundArgs) {
                        return Variant(ObjectPtr(std::make_shared<SubMatches>(m.groups)));
                      })
            .Default("Value");
    return table;
  }
  std::string value;
  std::int32_t firstIndex = 0;
  std::int32_t length = 0;
  std::vector<Variant> groups;  // Empty for a group that took no part
};

ObjectPtr MakeMatch(const std::wsmatch& m) {
  auto match = std::make_shared<Match>();
  match->value = Narrow(m[0].str());
  match->firstIndex = static_cast<std::int32_t>(m.position(0));
  match->length = static_cast<std::int32_t>(m.length(0));
  for (std::size_t i = 1; i < m.size(); ++i)
    match->groups.push_back(m[i].matched ? Variant(Narrow(m[i].str())) : Variant());
  return match;
}

int ErrorNumber(std::regex_constants::error_type code) {
  switch (code) {
    case std::regex_constants::error_badrepeat:
    case std::regex_constants::error_brace:
    case std::regex_constants::error_badbrace:
      return 5018;
    case std::regex_constants::error_brack:
      return 5019;
    case std::regex_constants::error_paren:
      return 5020;
    case std::regex_constants::error_range:
      return 5021;
    default:
      return 5017;
  }
}

template <bool RegExp::*flag>
MemberTable<RegExp>& Flag(MemberTable<RegExp>& table, std::string name) {
  return table.Property(
      std::move(name), [](RegExp& r, BoundArgs) { return Variant(r.*flag); },
      [](RegExp& r, BoundArgs, const Variant& v) { r.*flag = v.ToBool(); });
}

// std::regex matches by recursion, some hundred bytes of stack for each
// character a repeated part runs over: a memo field of a few thousand
// characters would overflow the caller's stack. Longer texts are matched on a
// thread of their own with a large stack (only touched pages cost memory),
// and a text too long even for that raises 28.
constexpr std::size_t kMatchInPlace = 256;  // characters
constexpr std::size_t kLargeStack = std::size_t{1} << 30;
constexpr std::size_t kStackPerChar = 2048;

template <typename F>
void MatchWithStack(std::size_t length, F&& match) {
  if (length <= kMatchInPlace) {
    match();
    return;
  }
  if (length > kLargeStack / kStackPerChar) throw VbError(28);
  struct Job {
    std::remove_reference_t<F>* match;
    std::exception_ptr error;
  } job{&match, nullptr};
  auto run = [](void* p) -> void* {
    auto* j = static_cast<Job*>(p);
    try {
      (*j->match)();
    } catch (...) {
      // Not kept here: carried to the calling thread and raised there.
      j->error = std::current_exception();
    }
    return nullptr;
  };
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setstacksize(&attr, kLargeStack);
  pthread_t thread;
  int rc = pthread_create(&thread, &attr, run, &job);
  pthread_attr_destroy(&attr);
  if (rc != 0) throw VbError(7);
  pthread_join(thread, nullptr);
  if (job.error) std::rethrow_exception(job.error);
}

}  // namespace

const MemberTable<RegExp>& RegExp::Members() {
  static const auto table = [] {
    MemberTable<RegExp> t;
    t.Property(
        "Pattern", [](RegExp& r, BoundArgs) { return Variant(r.Pattern); },
        [](RegExp& r, BoundArgs, const Variant& v) { r.Pattern = v.ToString(); });
    Flag<&RegExp::IgnoreCase>(t, "IgnoreCase");
    Flag<&RegExp::Global>(t, "Global");
    Flag<&RegExp::Multiline>(t, "Multiline");
    t.Method("Test", 1, 1, [](RegExp& r, BoundArgs a) { return Variant(r.Test(a[0].ToString())); });
    t.Method("Execute", 1, 1,
             [](RegExp& r, BoundArgs a) { return Variant(r.Execute(a[0].ToString())); });
    t.Method("Replace", 2, 2, [](RegExp& r, BoundArgs a) {
      // The replacement is taken as a number's text: True is "-1".
      const Variant& with = a[1];
      std::string replacement =
          with.Type() == vbBoolean ? (with.AsBool() ? "-1" : "0") : with.ToString();
      return Variant(r.Replace(a[0].ToString(), replacement));
    });
    return t;
  }();
  return table;
}

const std::wregex& RegExp::Compiled() {
  int flags = (IgnoreCase ? 1 : 0) | (Multiline ? 2 : 0);
  if (flags == compiledFlags_ && Pattern == compiledPattern_) return regex_;
  auto syntax = std::regex_constants::ECMAScript;
  if (IgnoreCase) syntax |= std::regex_constants::icase;
  if (Multiline) syntax |= std::regex_constants::multiline;
  try {
    std::wregex compiled;
    // Unicode case folding for IgnoreCase, where the C.UTF-8 locale exists.
    try {
      compiled.imbue(std::locale("C.UTF-8"));
    } catch (const std::runtime_error&) {
    }
    compiled.assign(Wide(Pattern), syntax);
    regex_ = std::move(compiled);
  } catch (const std::regex_error& e) {
    throw VbError(ErrorNumber(e.code()));
  }
  compiledPattern_ = Pattern;
  compiledFlags_ = flags;
  return regex_;
}

bool RegExp::Test(const std::string& text) {
  const std::wregex& re = Compiled();
  std::wstring wide = Wide(text);
  bool found = false;
  MatchWithStack(wide.size(), [&] { found = std::regex_search(wide, re); });
  return found;
}

ObjectPtr RegExp::Execute(const std::string& text) {
  const std::wregex& re = Compiled();
  std::wstring wide = Wide(text);
  std::vector<Variant> matches;
  MatchWithStack(wide.size(), [&] {
    for (std::wsregex_iterator it(wide.begin(), wide.end(), re), end; it != end; ++it) {
      matches.emplace_back(MakeMatch(*it));
      if (!Global) break;
    }
  });
  return std::make_shared<Matches>(std::move(matches));
}

namespace {

// Appends the replacement for one match: $$, $& (the match), $` and $' (the
// text before and after it), $n and $nn (a group, two digits where that
// group exists); a $ followed by anything else, a group that does not exist
// included, stays as it is written.
void AppendReplacement(std::wstring& out, const std::wstring& replacement, const std::wsmatch& m,
                       size_t groups) {
  for (size_t i = 0; i < replacement.size(); ++i) {
    wchar_t c = replacement[i];
    wchar_t next = i + 1 < replacement.size() ? replacement[i + 1] : L'\0';
    if (c != L'$') {
      out += c;
      continue;
    }
    if (next == L'$') {
      out += L'$';
      ++i;
    } else if (next == L'&') {
      out += m.str(0);
      ++i;
    } else if (next == L'`') {
      out += m.prefix().str();
      ++i;
    } else if (next == L'\'') {
      out += m.suffix().str();
      ++i;
    } else if (next >= L'0' && next <= L'9') {
      size_t one = next - L'0';
      wchar_t after = i + 2 < replacement.size() ? replacement[i + 2] : L'\0';
      size_t two = after >= L'0' && after <= L'9' ? one * 10 + (after - L'0') : 0;
      if (two >= 1 && two <= groups) {
        out += m.str(two);
        i += 2;
      } else if (one >= 1 && one <= groups) {
        out += m.str(one);
        ++i;
      } else {
        out += c;
      }
    } else {
      out += c;
    }
  }
}

}  // namespace

std::string RegExp::Replace(const std::string& text, const std::string& replacement) {
  const std::wregex& re = Compiled();
  std::wstring wide = Wide(text);
  std::wstring wideReplacement = Wide(replacement);
  std::wstring result;
  MatchWithStack(wide.size(), [&] {
    result.clear();
    size_t last = 0;
    for (std::wsregex_iterator it(wide.begin(), wide.end(), re), end; it != end; ++it) {
      const std::wsmatch& m = *it;
      auto at = static_cast<size_t>(m.position(0));
      result.append(wide, last, at - last);
      AppendReplacement(result, wideReplacement, m, re.mark_count());
      last = at + static_cast<size_t>(m.length(0));
      if (!Global) break;
    }
    result.append(wide, last, std::wstring::npos);
  });
  return Narrow(result);
}

ObjectPtr CreateRegExp() {
  return std::make_shared<RegExp>();
}

}  // namespace ketrova::script::vbscript
