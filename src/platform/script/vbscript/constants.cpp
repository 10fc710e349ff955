#include "platform/script/vbscript/constants.h"

#include <cstdint>
#include <string>
#include <unordered_map>

#include "platform/script/vbscript/program.h"

namespace ketrova::script::vbscript {

bool FindConstant(std::string_view name, Variant& value) {
  static const std::unordered_map<std::string, Variant> constants = [] {
    std::unordered_map<std::string, Variant> c;
    // VBScript's numeric constants are typed like literals: Integer when the
    // value fits in 16 bits (VarType(vbOKOnly) = 2), else Long.
    auto lng = [&](const char* n, std::int32_t v) {
      c[n] = v >= INT16_MIN && v <= INT16_MAX ? Variant::Integer(static_cast<std::int16_t>(v))
                                              : Variant::Long(v);
    };
    c["vbcrlf"] = "\r\n";
    c["vbnewline"] = "\r\n";
    c["vbcr"] = "\r";
    c["vblf"] = "\n";
    c["vbtab"] = "\t";
    c["vbnullstring"] = "";
    c["vbnullchar"] = std::string(1, '\0');
    c["vbformfeed"] = "\f";
    c["vbverticaltab"] = "\v";
    lng("vbobjecterror", static_cast<std::int32_t>(0x80040000u));
    lng("vbtrue", -1);
    lng("vbfalse", 0);
    lng("vbusedefault", -2);
    lng("vbbinarycompare", 0);
    lng("vbtextcompare", 1);
    lng("vbdatabasecompare", 2);
    const char* days[] = {"vbsunday",   "vbmonday", "vbtuesday", "vbwednesday",
                          "vbthursday", "vbfriday", "vbsaturday"};
    for (int i = 0; i < 7; ++i) lng(days[i], i + 1);
    lng("vbusesystemdayofweek", 0);
    lng("vbusesystem", 0);
    lng("vbfirstjan1", 1);
    lng("vbfirstfourdays", 2);
    lng("vbfirstfullweek", 3);
    lng("vbgeneraldate", 0);
    lng("vblongdate", 1);
    lng("vbshortdate", 2);
    lng("vblongtime", 3);
    lng("vbshorttime", 4);
    lng("vbempty", 0);
    lng("vbnull", 1);
    lng("vbinteger", 2);
    lng("vblong", 3);
    lng("vbsingle", 4);
    lng("vbdouble", 5);
    lng("vbcurrency", 6);
    lng("vbdate", 7);
    lng("vbstring", 8);
    lng("vbobject", 9);
    lng("vberror", 10);
    lng("vbboolean", 11);
    lng("vbvariant", 12);
    lng("vbdataobject", 13);
    lng("vbdecimal", 14);
    lng("vbbyte", 17);
    lng("vbarray", 8192);
    lng("vbokonly", 0);
    lng("vbokcancel", 1);
    lng("vbabortretryignore", 2);
    lng("vbyesnocancel", 3);
    lng("vbyesno", 4);
    lng("vbretrycancel", 5);
    lng("vbcritical", 16);
    lng("vbquestion", 32);
    lng("vbexclamation", 48);
    lng("vbinformation", 64);
    lng("vbdefaultbutton1", 0);
    lng("vbdefaultbutton2", 256);
    lng("vbdefaultbutton3", 512);
    lng("vbdefaultbutton4", 768);
    lng("vbapplicationmodal", 0);
    lng("vbsystemmodal", 4096);
    lng("vbmsgboxhelpbutton", 16384);
    lng("vbmsgboxsetforeground", 65536);
    lng("vbmsgboxright", 524288);
    lng("vbmsgboxrtlreading", 1048576);
    lng("vbok", 1);
    lng("vbcancel", 2);
    lng("vbabort", 3);
    lng("vbretry", 4);
    lng("vbignore", 5);
    lng("vbyes", 6);
    lng("vbno", 7);
    lng("vbblack", 0);
    lng("vbred", 0xFF);
    lng("vbgreen", 0xFF00);
    lng("vbyellow", 0xFFFF);
    lng("vbblue", 0xFF0000);
    lng("vbmagenta", 0xFF00FF);
    lng("vbcyan", 0xFFFF00);
    lng("vbwhite", 0xFFFFFF);
    return c;
  }();
  auto it = constants.find(ToLower(name));
  if (it == constants.end()) return false;
  value = it->second;
  return true;
}

}  // namespace ketrova::script::vbscript
