// A fixture that sets a project's stores up on one back-end of the record
// access tests: SQLite as an ODBC store on a file, PostgreSQL through its data
// source, MariaDB as a MySQL store with server, port and login.
#pragma once

#include <memory>
#include <string>

#include "core/converter.h"
#include "platform/ado/backend.h"
#include "platform/ui/scripted_ui.h"
#include "stores/database.h"

namespace ketrova::testing {

class StoreTest : public ado::testing::BackendTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Points `store` at the back-end's test database (for SQLite: the file
  // `file` in the test's folder).
  void Configure(CDatabase& store, const std::string& file = "lager.sqlite");
  // Runs a statement on the store, which must be open; fails the test on an error.
  void Exec(CDatabase& store, const std::string& sql);

  CConverter project;
  std::shared_ptr<ui::ScriptedUserInterface> ui;
};

}  // namespace ketrova::testing
