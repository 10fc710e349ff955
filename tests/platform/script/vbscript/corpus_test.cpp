// Runs every script of the corpus folder and compares what it prints with the
// .out file beside it. A script that fails ends its output with a line
// "Fehler <number> in <line>,<column>: <description> (<source>)". The helper
// procedures of helpers.inc are added before each script, as a text of their
// own, so that the script's lines keep their numbers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/script/engine.h"
#include "platform/script/vbscript/print_object.h"

namespace ketrova::script::vbscript::testing {
namespace {

namespace fs = std::filesystem;

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

std::vector<std::string> CorpusScripts() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(VBSCRIPT_CORPUS))
    if (entry.path().extension() == ".vbs") names.push_back(entry.path().stem().string());
  std::sort(names.begin(), names.end());
  return names;
}

std::string RunScript(const std::string& code) {
  auto engine = CreateVBScriptEngine();
  auto out = std::make_shared<PrintObject>();
  engine->AddObject("Test", out, true);
  try {
    engine->AddCode(kGlobalModule, ReadFile(fs::path(VBSCRIPT_CORPUS) / "helpers.inc"));
    engine->AddCode(kGlobalModule, code);
  } catch (const ScriptError& e) {
    out->output += "Fehler " + std::to_string(e.Number) + " in " + std::to_string(e.Line) + "," +
                   std::to_string(e.Column) + ": " + e.Description + " (" + e.Source + ")\n";
  }
  engine.reset();  // instances still alive end here, and may print
  return out->output;
}

class Corpus : public ::testing::TestWithParam<std::string> {};

// With KETROVA_CORPUS_WRITE set, a script's output is written as its new
// expected output (for a new case, to be read line by line before it is
// committed).
TEST_P(Corpus, PrintsWhatItMust) {
  fs::path base = fs::path(VBSCRIPT_CORPUS) / GetParam();
  std::string actual = RunScript(ReadFile(base.string() + ".vbs"));
  if (std::getenv("KETROVA_CORPUS_WRITE")) {
    std::ofstream(base.string() + ".out", std::ios::binary) << actual;
    return;
  }
  std::string expected = ReadFile(base.string() + ".out");
  EXPECT_EQ(actual, expected);
}

INSTANTIATE_TEST_SUITE_P(Scripts, Corpus, ::testing::ValuesIn(CorpusScripts()),
                         [](const auto& info) { return info.param; });

}  // namespace
}  // namespace ketrova::script::vbscript::testing
