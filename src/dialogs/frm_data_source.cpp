#include "dialogs/frm_data_source.h"

namespace ketrova::dialogs {

bool RunDataSourceDialog(CConverter& /*project*/, int /*direction*/, CDatabase& /*database*/) {
  return false;
}

}  // namespace ketrova::dialogs
