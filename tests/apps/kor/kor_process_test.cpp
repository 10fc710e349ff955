// kor as a user starts it: in a copy of the demo with the project on the
// command line; --grab renders the window and prints the information line.
#include <QFileInfo>
#include <QImage>
#include <QProcess>

#include "kor_fixture.h"

namespace kor::testing {
namespace {

TEST_F(KorTest, KorOpensTheDemoFromTheCommandLine) {
  QProcess kor;
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert("QT_QPA_PLATFORM", "offscreen");
  kor.setProcessEnvironment(env);
  kor.setWorkingDirectory(Demo());
  QString picture = temp_.path() + "/kor.png";
  kor.start(KOR_BINARY, {"--grab", picture, "demo.cpf"});
  ASSERT_TRUE(kor.waitForFinished(60000));
  EXPECT_EQ(kor.exitCode(), 0) << kor.readAllStandardError().toStdString();
  EXPECT_EQ(QString::fromUtf8(kor.readAllStandardOutput()).trimmed().toStdString(),
            "Projekt : Demo: Kunden und Aufträge (2 / 2 Aufgaben )");
  QImage image(picture);
  EXPECT_FALSE(image.isNull());
  EXPECT_GT(image.width(), 600);
  EXPECT_TRUE(QFileInfo::exists(AppFolder() + "Projects"));
}

}  // namespace
}  // namespace kor::testing
