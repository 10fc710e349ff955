// The one owner of an ODBC handle (environment, connection or statement): it
// frees the handle on every path, a connection after disconnecting it.
#pragma once

#include <sql.h>

#include <utility>

#include "platform/ado/providers/odbc/odbc_diagnostics.h"

namespace ketrova::ado::odbc {

class OdbcHandle {
 public:
  OdbcHandle() = default;
  OdbcHandle(const OdbcHandle&) = delete;
  OdbcHandle& operator=(const OdbcHandle&) = delete;
  OdbcHandle(OdbcHandle&& other) noexcept
      : type_(other.type_), handle_(std::exchange(other.handle_, nullptr)) {}
  OdbcHandle& operator=(OdbcHandle&& other) noexcept {
    if (this != &other) {
      Free();
      type_ = other.type_;
      handle_ = std::exchange(other.handle_, nullptr);
    }
    return *this;
  }
  ~OdbcHandle() { Free(); }

  // A new handle of `type` under `parent` (of `parentType`; SQL_NULL_HANDLE for
  // an environment). Raises the parent's diagnostics when the driver manager
  // refuses, or a general failure for an environment, which has no parent to
  // ask.
  static OdbcHandle Allocate(SQLSMALLINT type, SQLSMALLINT parentType, SQLHANDLE parent,
                             bool narrow = false);

  SQLSMALLINT Type() const { return type_; }
  SQLHANDLE Get() const { return handle_; }
  // The raw handle for the ODBC calls; null when empty. Not of a temporary,
  // which would free the handle at once.
  operator SQLHANDLE() const& { return handle_; }  // NOLINT(google-explicit-constructor)
  operator SQLHANDLE() const&& = delete;
  explicit operator bool() const { return handle_ != SQL_NULL_HANDLE; }
  // Frees the handle now (a connection is disconnected first).
  void Free() noexcept;

 private:
  SQLSMALLINT type_ = SQL_HANDLE_STMT;
  SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

}  // namespace ketrova::ado::odbc
