// The per-record call of a conversion: the generated txConvertMain with ten
// field assignments (text columns cut with Left) on in-memory record sets
// bound as Source and Destination, called N times through the script control's
// engine by handle, as a job's record loop calls it. Prints the wall and the
// processor seconds; per_call_us comes from the latter, which a busy machine
// disturbs less.
//
//   convert_bench VBScript|JScript <calls>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>

#include "platform/ado/recordset.h"
#include "platform/script/engine.h"

using namespace ketrova;

namespace {

struct Column {
  const char* name;
  ado::DataTypeEnum type;
  int size;  // 0: not cut
};

constexpr Column kColumns[] = {
    {"Nr", ado::adInteger, 0},        {"Name", ado::adVarWChar, 50},
    {"Vorname", ado::adVarWChar, 30}, {"Strasse", ado::adVarWChar, 60},
    {"PLZ", ado::adVarWChar, 5},      {"Ort", ado::adVarWChar, 40},
    {"Betrag", ado::adDouble, 0},     {"Menge", ado::adInteger, 0},
    {"Notiz", ado::adVarWChar, 20},   {"Kennzeichen", ado::adVarWChar, 3},
};

std::shared_ptr<ado::Recordset> MakeRecordset() {
  auto rs = std::make_shared<ado::Recordset>();
  for (const Column& c : kColumns) rs->GetFields().Append(c.name, c.type, c.size ? c.size : 0);
  rs->Open();
  rs->AddNew();
  return rs;
}

std::string Script(bool vb) {
  const std::string crlf = "\r\n";
  std::string s =
      vb ? "Function txConvertMain()" + crlf : "function txConvertMain()" + crlf + "{" + crlf;
  for (const Column& c : kColumns) {
    std::string n = c.name;
    if (vb && c.size)
      s += "\tDestination.Fields(\"" + n + "\") = Left(Source.Fields(\"" + n + "\")," +
           std::to_string(c.size) + ")" + crlf;
    else if (vb)
      s += "\tDestination.Fields(\"" + n + "\") = Source.Fields(\"" + n + "\")" + crlf;
    else
      s += "\tDestination.Fields(\"" + n + "\").Value = Source.Fields(\"" + n + "\").Value;" + crlf;
  }
  return s + (vb ? "End Function" : "}") + crlf;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: convert_bench VBScript|JScript <calls>\n");
    return 2;
  }
  bool vb = std::string(argv[1]) == "VBScript";
  long calls = std::atol(argv[2]);
  auto source = MakeRecordset();
  auto destination = MakeRecordset();
  const Variant values[] = {Variant::Long(4711),
                            Variant(std::string("Müller-Lüdenscheidt und Söhne")),
                            Variant(std::string("Jörg")),
                            Variant(std::string("Hauptstraße 1")),
                            Variant(std::string("50667")),
                            Variant(std::string("Köln")),
                            Variant(1234.5),
                            Variant::Long(17),
                            Variant(std::string("sagt \"Grüß Gott\"")),
                            Variant(std::string("K1"))};
  for (int i = 0; i < 10; ++i) source->GetFields().Item(i).SetValue(values[i]);

  auto engine = vb ? script::CreateVBScriptEngine() : script::CreateJScriptEngine();
  engine->AddObject("Source", source, true);
  engine->AddObject("Destination", destination, true);
  engine->AddModule("zsModuleConvertMain");
  engine->AddCode("zsModuleConvertMain", Script(vb));
  script::ProcedureHandle main = engine->FindProcedure("zsModuleConvertMain", "txConvertMain");

  auto start = std::chrono::steady_clock::now();
  std::clock_t cpuStart = std::clock();
  for (long i = 0; i < calls; ++i) engine->Call(main, {});
  double cpu = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("%s: calls=%ld seconds=%.3f cpu_seconds=%.3f per_call_us=%.3f Name=%s\n", argv[1],
              calls, seconds, cpu, cpu * 1e6 / calls,
              destination->GetFields().Item("Name").Value().ToText().c_str());
  return 0;
}
