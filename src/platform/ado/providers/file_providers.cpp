#include "platform/ado/providers/file_providers.h"

#include <mutex>

#include "platform/ado/providers/access/access_provider.h"
#include "platform/ado/providers/excel/excel_provider.h"
#include "platform/ado/providers/text/text_provider.h"
#include "platform/ado/providers/xbase/xbase_provider.h"

namespace ketrova::ado {

void RegisterFileProviders() {
  static std::once_flag once;
  std::call_once(once, [] {
    text_provider::RegisterTextProvider();
    excel::RegisterExcelProvider();
    access_provider::RegisterAccessProvider();
    xbase_provider::RegisterXbaseProvider();
  });
}

}  // namespace ketrova::ado
