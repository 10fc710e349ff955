// Arrays: Array, UBound, LBound, and the functions between texts and arrays
// (Split, Join, Filter). Split and Filter answer String() arrays, Array a
// Variant() array, all with lower bound 0.
#include <memory>

#include "platform/script/vbscript/builtins_common.h"

namespace ketrova::script::vbscript {

namespace {

Variant MakeArray(std::vector<Variant> items, VarType elementType) {
  auto array = std::make_shared<SafeArray>();
  array->elementType = elementType;
  array->bounds.push_back({0, static_cast<std::int32_t>(items.size())});
  array->data = std::move(items);
  return Variant(std::move(array));
}

const SafeArray& ArrayArg(const Variant& v) {
  if (!v.IsArray() || !v.AsArray()) throw VbError(13);
  return *v.AsArray();
}

// The bound record of the given 1-based dimension; 9 when there is none.
const SafeArray::Bound& Dimension(Args args) {
  const SafeArray& array = ArrayArg(args[0]);
  std::int32_t dim = LongArg(args, 1, 1);
  if (dim < 1 || static_cast<std::size_t>(dim) > array.bounds.size()) throw VbError(9);
  return array.bounds[static_cast<std::size_t>(dim - 1)];
}

std::u32string Fold(std::u32string text, bool textCompare) {
  return textCompare ? Lower(std::move(text)) : text;
}

}  // namespace

Variant BiArray(Args args) {
  return MakeArray({args.begin(), args.end()}, vbVariant);
}

Variant BiLBound(Args args) {
  return Variant::Long(Dimension(args).lower);
}

Variant BiUBound(Args args) {
  const SafeArray::Bound& bound = Dimension(args);
  return Variant::Long(bound.lower + bound.count - 1);
}

// Split(expression[, delimiter[, count[, compare]]]): at most `count` parts, the
// last one holding the rest.
Variant BiSplit(Args args) {
  std::u32string text = ToCodePoints(args[0].ToString());
  std::u32string delimiter = Missing(args, 1) ? U" " : ToCodePoints(args[1].ToString());
  std::int32_t count = LongArg(args, 2, -1);
  if (count < -1) RaiseInvalidArgument();
  bool textCompare = TextCompareArg(args, 3);
  std::vector<Variant> parts;
  if (text.empty() || count == 0) return MakeArray({}, vbString);
  if (delimiter.empty()) return MakeArray({Variant(FromCodePoints(text))}, vbString);
  std::u32string hay = Fold(text, textCompare);
  std::u32string needle = Fold(delimiter, textCompare);
  std::size_t pos = 0;
  while (count == -1 || static_cast<std::int32_t>(parts.size()) < count - 1) {
    std::size_t hit = hay.find(needle, pos);
    if (hit == std::u32string::npos) break;
    parts.emplace_back(FromCodePoints(std::u32string_view(text).substr(pos, hit - pos)));
    pos = hit + needle.size();
  }
  parts.emplace_back(FromCodePoints(std::u32string_view(text).substr(pos)));
  return MakeArray(std::move(parts), vbString);
}

// Join(list[, delimiter]): Empty elements join as ""; a Null element, like a
// list of more than one dimension, raises 13.
Variant BiJoin(Args args) {
  if (args[0].IsNull()) throw VbError(94);
  const SafeArray& array = ArrayArg(args[0]);
  if (array.bounds.size() != 1) throw VbError(13);
  std::string delimiter = Missing(args, 1) ? std::string(" ") : args[1].ToString();
  std::string out;
  for (std::size_t i = 0; i < array.data.size(); ++i) {
    if (i > 0) out += delimiter;
    if (array.data[i].IsNull()) throw VbError(13);
    out += array.data[i].ToText();
  }
  return Variant(out);
}

// Filter(strings, value[, include[, compare]]): the elements that hold the
// value as a part (or, with include False, those that do not).
Variant BiFilter(Args args) {
  const SafeArray& array = ArrayArg(args[0]);
  if (array.bounds.size() != 1) RaiseInvalidArgument();
  std::u32string value = ToCodePoints(args[1].ToString());
  bool include = Missing(args, 2) ? true : args[2].ToBool();
  bool textCompare = TextCompareArg(args, 3);
  std::u32string needle = Fold(value, textCompare);
  std::vector<Variant> kept;
  for (const Variant& item : array.data) {
    std::string text = item.ToString();
    bool found = Fold(ToCodePoints(text), textCompare).find(needle) != std::u32string::npos;
    if (found == include) kept.emplace_back(std::move(text));
  }
  return MakeArray(std::move(kept), vbString);
}

}  // namespace ketrova::script::vbscript
