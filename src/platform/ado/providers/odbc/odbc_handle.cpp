#include "platform/ado/providers/odbc/odbc_handle.h"

#include "platform/ado/enums.h"
#include "support/vb_error.h"

namespace ketrova::ado::odbc {

OdbcHandle OdbcHandle::Allocate(SQLSMALLINT type, SQLSMALLINT parentType, SQLHANDLE parent,
                                bool narrow) {
  OdbcHandle owner;
  owner.type_ = type;
  SQLRETURN rc = SQLAllocHandle(type, parent, &owner.handle_);
  if (SQL_SUCCEEDED(rc)) return owner;
  owner.handle_ = SQL_NULL_HANDLE;
  if (parent == SQL_NULL_HANDLE)
    throw VbError(kErrGeneral, "ODBC-Umgebung nicht verfügbar", "Ketrova.ODBC");
  ThrowOdbcError(parentType, parent, OdbcPhase::kOther, narrow);
}

void OdbcHandle::Free() noexcept {
  if (handle_ == SQL_NULL_HANDLE) return;
  // Nothing can be reported from here: a connection that is not connected
  // refuses the disconnect, which is what it should.
  if (type_ == SQL_HANDLE_DBC) SQLDisconnect(handle_);
  SQLFreeHandle(type_, handle_);
  handle_ = SQL_NULL_HANDLE;
}

}  // namespace ketrova::ado::odbc
