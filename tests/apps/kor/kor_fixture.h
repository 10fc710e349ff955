// The real host shell with the real plug-in, started in this process on a
// fresh home folder: HOME, XDG_DATA_HOME and XDG_CONFIG_HOME point into a
// temporary folder, and the demo project is copied there as the demo script
// copies it, since it names its stores relative to its own folder.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <vector>

#include "kor_application.h"
#include "modal_answerer.h"
#include "sqlite_files.h"

namespace kor::testing {

using ketrova::testing::SqliteRows;

class KorTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Makes the host; Start() is the test's.
  KorApplication& MakeHost(const QString& projectFile = {});
  // Makes and starts the host.
  KorApplication& StartHost(const QString& projectFile = {});

  QString Home() const { return temp_.path() + "/home"; }
  QString Demo() const { return temp_.path() + "/demo"; }
  QString AppFolder() const { return Home() + "/Ketrova/"; }
  // The main toolbar button with the plug-in's `key` ("ProjectOpen" ...).
  bool Enabled(const std::string& key) const;
  // Presses a main toolbar button as the user does.
  void Press(const std::string& key);
  std::string Info() const;
  // The messages of the host's pane, one per line, errors marked "!".
  std::string MessageTexts() const;

  QTemporaryDir temp_;
  std::unique_ptr<KorApplication> host_;
  ketrova::testing::ModalAnswerer answerer_;
  QString previousDir_;
};

}  // namespace kor::testing
