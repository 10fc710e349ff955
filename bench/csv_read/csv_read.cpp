// Reads a text table through the text provider, as record access does: the
// select of a text side, fetched in blocks. Prints the rows, the seconds and
// the peak memory, so that run.sh can set them beside sqlite3's .import.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "platform/ado/provider.h"
#include "platform/ado/providers/text/text_provider.h"
#include "support/vb_error.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: csv_read <folder> <file>\n");
    return 2;
  }
  using namespace ketrova;
  text_provider::RegisterTextProvider();
  const std::string folder = argv[1];
  const std::string file = argv[2];
  try {
    auto start = std::chrono::steady_clock::now();
    auto provider = ado::OpenProvider(
        "Driver={Microsoft Text Driver (*.txt; *.csv)};DBQ=" + folder +
        ";Extensions=asc,csv,tab,txt;Persist Security Info=False;FIL=TEXT;MaxBufferSize=2048;"
        "TT=CHARACTER;DC=\";\";FLN=1");
    auto result =
        provider->Execute(" SELECT * \r\n FROM     `" + folder + "`\\" + file + ".TXT    bench");
    std::vector<ado::Row> rows;
    std::size_t count = 0, cells = 0;
    for (;;) {
      rows.clear();
      std::size_t n = result.cursor->Fetch(rows, 1000);
      if (n == 0) break;
      count += n;
      for (const auto& row : rows) {
        for (const auto& v : row) cells += v.IsNull() ? 0 : 1;
      }
    }
    double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("rows=%zu cells=%zu seconds=%.3f max_rss_kb=%ld\n", count, cells, seconds,
                usage.ru_maxrss);
  } catch (const VbError& e) {
    std::fprintf(stderr, "%d %s\n", e.Number, e.Description.c_str());
    return 1;
  }
  return 0;
}
