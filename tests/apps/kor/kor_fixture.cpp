#include "kor_fixture.h"

#include <QProcess>
#include <cstdlib>

#include "main_window.h"
#include "message_pane.h"
#include "tool_bar.h"

namespace kor::testing {
namespace {

void CopyFolder(const QString& from, const QString& to) {
  QDir().mkpath(to);
  for (const QFileInfo& entry :
       QDir(from).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
    if (entry.isDir())
      CopyFolder(entry.filePath(), to + "/" + entry.fileName());
    else
      QFile::copy(entry.filePath(), to + "/" + entry.fileName());
  }
}

}  // namespace

void KorTest::SetUp() {
  ASSERT_TRUE(temp_.isValid());
  // The temporary folder itself must hold no "."; QTemporaryDir's names do not.
  ASSERT_FALSE(temp_.path().contains('.')) << temp_.path().toStdString();
  QDir().mkpath(Home());
  setenv("HOME", Home().toUtf8().constData(), 1);
  setenv("XDG_DATA_HOME", (temp_.path() + "/data").toUtf8().constData(), 1);
  setenv("XDG_CONFIG_HOME", (temp_.path() + "/config").toUtf8().constData(), 1);
  CopyFolder(QStringLiteral(KETROVA_SOURCE_DIR "/examples/demo"), Demo());
  previousDir_ = QDir::currentPath();
  QDir::setCurrent(Demo());
}

void KorTest::TearDown() {
  host_.reset();
  QDir::setCurrent(previousDir_);
  QApplication::restoreOverrideCursor();
  while (QApplication::overrideCursor()) QApplication::restoreOverrideCursor();
}

KorApplication& KorTest::MakeHost(const QString& projectFile) {
  KorOptions options;
  options.home = Home();
  options.dataFolder = QStringLiteral(KETROVA_SOURCE_DIR "/data");
  options.pluginFolder = QStringLiteral(KOR_PLUGIN_FOLDER);
  options.projectFile = projectFile;
  host_ = std::make_unique<KorApplication>(options);
  return *host_;
}

KorApplication& KorTest::StartHost(const QString& projectFile) {
  MakeHost(projectFile).Start();
  return *host_;
}

bool KorTest::Enabled(const std::string& key) const {
  ToolBar& toolbar = host_->Window().MainToolbar();
  return toolbar.ButtonEnabled(toolbar.FindButton(key, "Ketrovator"));
}

void KorTest::Press(const std::string& key) {
  ToolBar& toolbar = host_->Window().MainToolbar();
  toolbar.Button(toolbar.FindButton(key, "Ketrovator"))->trigger();
}

std::string KorTest::Info() const {
  return host_->Window().ExtendedInfo().toStdString();
}

std::string KorTest::MessageTexts() const {
  std::string out;
  for (const Message& m : host_->Window().Messages().Messages())
    out += (m.error ? "!" : "") + m.plugInName + ": " + m.text + "\n";
  return out;
}

}  // namespace kor::testing
