#include "platform/script/vbscript/regexp.h"

#include <algorithm>
#include <locale>

#include "platform/script/vbscript/builtins.h"
#include "platform/script/vbscript/builtins_common.h"

namespace ketrova::script::vbscript {

namespace {

struct Member {
  std::string_view name;
  int id;
};

bool EqualNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return LowerChar(static_cast<unsigned char>(x)) ==
                  LowerChar(static_cast<unsigned char>(y));
         });
}

template <std::size_t N>
int FindMember(const Member (&members)[N], std::string_view name) {
  for (const Member& m : members)
    if (EqualNoCase(m.name, name)) return m.id;
  return kDispIdUnknown;
}

template <std::size_t N>
std::vector<std::string> Names(const Member (&members)[N]) {
  std::vector<std::string> names;
  for (const Member& m : members) names.emplace_back(m.name);
  return names;
}

bool IsPut(InvokeKind kind) {
  return kind == InvokeKind::kPropertyPut || kind == InvokeKind::kPropertyPutRef;
}

void ExpectArgs(std::span<Variant> args, std::size_t count) {
  if (args.size() != count) throw VbError(450);
}

std::wstring Wide(std::string_view utf8) {
  std::u32string text = ToU32(utf8);
  return std::wstring(text.begin(), text.end());
}

std::string Narrow(std::wstring_view text) {
  std::string out;
  for (wchar_t c : text) AppendUtf8(out, static_cast<char32_t>(c));
  return out;
}

// Walks a list of values for For Each.
class ListEnumerator : public Enumerator {
 public:
  explicit ListEnumerator(std::vector<Variant> items) : items_(std::move(items)) {}
  bool Next(Variant& item) override {
    if (next_ >= items_.size()) return false;
    item = items_[next_++];
    return true;
  }

 private:
  std::vector<Variant> items_;
  std::size_t next_ = 0;
};

// The 0-based item of a list, 5 when out of range.
const Variant& ItemAt(const std::vector<Variant>& items, std::span<Variant> args) {
  ExpectArgs(args, 1);
  std::int32_t i = args[0].ToLong();
  if (i < 0 || static_cast<std::size_t>(i) >= items.size()) RaiseInvalidArgument();
  return items[static_cast<std::size_t>(i)];
}

// A list-like result object: Count, Item (the default member), For Each.
class ListObject : public Object {
 public:
  ListObject(std::string typeName, std::vector<Variant> items)
      : typeName_(std::move(typeName)), items_(std::move(items)) {}
  std::string TypeName() const override { return typeName_; }
  int GetIDOfName(std::string_view name) override { return FindMember(kMembers, name); }
  std::vector<std::string> MemberNames() const override { return Names(kMembers); }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    if (IsPut(kind)) throw VbError(438);
    switch (dispId) {
      case kDispIdValue:
        return ItemAt(items_, args);
      case 1:
        ExpectArgs(args, 0);
        return Variant::Long(static_cast<std::int32_t>(items_.size()));
      default:
        throw VbError(438);
    }
  }
  std::unique_ptr<Enumerator> NewEnum() override {
    return std::make_unique<ListEnumerator>(items_);
  }

 private:
  static constexpr Member kMembers[] = {{"Item", kDispIdValue}, {"Count", 1}};
  std::string typeName_;
  std::vector<Variant> items_;
};

class MatchObject : public Object {
 public:
  MatchObject(std::string value, std::int32_t firstIndex, std::int32_t length,
              std::vector<Variant> subMatches)
      : value_(std::move(value)),
        firstIndex_(firstIndex),
        length_(length),
        subMatches_(std::move(subMatches)) {}
  std::string TypeName() const override { return "IMatch2"; }
  int GetIDOfName(std::string_view name) override { return FindMember(kMembers, name); }
  std::vector<std::string> MemberNames() const override { return Names(kMembers); }
  Variant Invoke(int dispId, InvokeKind kind, std::span<Variant> args) override {
    if (IsPut(kind)) throw VbError(438);
    // m.SubMatches(0) indexes the collection in one step.
    if (dispId == 3 && !args.empty()) return ItemAt(subMatches_, args);
    ExpectArgs(args, 0);
    switch (dispId) {
      case kDispIdValue:
        return Variant(value_);
      case 1:
        return Variant::Long(firstIndex_);
      case 2:
        return Variant::Long(length_);
      case 3:
        return Variant(ObjectPtr(std::make_shared<ListObject>("ISubMatches", subMatches_)));
      default:
        throw VbError(438);
    }
  }

 private:
  static constexpr Member kMembers[] = {
      {"Value", kDispIdValue}, {"FirstIndex", 1}, {"Length", 2}, {"SubMatches", 3}};
  std::string value_;
  std::int32_t firstIndex_;
  std::int32_t length_;
  std::vector<Variant> subMatches_;
};

ObjectPtr MakeMatch(const std::wsmatch& m) {
  std::vector<Variant> groups;
  for (std::size_t i = 1; i < m.size(); ++i)
    groups.push_back(m[i].matched ? Variant(Narrow(m[i].str())) : Variant());
  return std::make_shared<MatchObject>(Narrow(m[0].str()), static_cast<std::int32_t>(m.position(0)),
                                       static_cast<std::int32_t>(m.length(0)), std::move(groups));
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

enum RegExpMember { kPattern = 1, kIgnoreCase, kGlobal, kMultiline, kTest, kExecute, kReplace };

constexpr Member kRegExpMembers[] = {{"Pattern", kPattern}, {"IgnoreCase", kIgnoreCase},
                                     {"Global", kGlobal},   {"Multiline", kMultiline},
                                     {"Test", kTest},       {"Execute", kExecute},
                                     {"Replace", kReplace}};

}  // namespace

int RegExp::GetIDOfName(std::string_view name) {
  return FindMember(kRegExpMembers, name);
}

std::vector<std::string> RegExp::MemberNames() const {
  return Names(kRegExpMembers);
}

Variant RegExp::Invoke(int dispId, InvokeKind kind, std::span<Variant> args) {
  auto flag = [&](bool& value) -> Variant {
    if (IsPut(kind)) {
      ExpectArgs(args, 1);
      value = args[0].ToBool();
      return Variant();
    }
    ExpectArgs(args, 0);
    return Variant(value);
  };
  switch (dispId) {
    case kPattern:
      if (IsPut(kind)) {
        ExpectArgs(args, 1);
        Pattern = args[0].ToString();
        return Variant();
      }
      ExpectArgs(args, 0);
      return Variant(Pattern);
    case kIgnoreCase:
      return flag(IgnoreCase);
    case kGlobal:
      return flag(Global);
    case kMultiline:
      return flag(Multiline);
    case kTest:
      ExpectArgs(args, 1);
      return Variant(Test(args[0].ToString()));
    case kExecute:
      ExpectArgs(args, 1);
      return Variant(Execute(args[0].ToString()));
    case kReplace:
      ExpectArgs(args, 2);
      return Variant(Replace(args[0].ToString(), args[1].ToString()));
    default:
      throw VbError(438);
  }
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
  return std::regex_search(wide, re);
}

ObjectPtr RegExp::Execute(const std::string& text) {
  const std::wregex& re = Compiled();
  std::wstring wide = Wide(text);
  std::vector<Variant> matches;
  for (std::wsregex_iterator it(wide.begin(), wide.end(), re), end; it != end; ++it) {
    matches.emplace_back(MakeMatch(*it));
    if (!Global) break;
  }
  return std::make_shared<ListObject>("IMatchCollection2", std::move(matches));
}

std::string RegExp::Replace(const std::string& text, const std::string& replacement) {
  const std::wregex& re = Compiled();
  auto flags = std::regex_constants::format_default;
  if (!Global) flags |= std::regex_constants::format_first_only;
  return Narrow(std::regex_replace(Wide(text), re, Wide(replacement), flags));
}

ObjectPtr CreateRegExp() {
  return std::make_shared<RegExp>();
}

}  // namespace ketrova::script::vbscript
