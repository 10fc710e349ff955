// The window that shows what the host does while it starts. It closes when
// the main window shows.
#pragma once

#include <QSplashScreen>
#include <string>
#include <vector>

#include "host/host_application.h"

namespace kor {

class Splash : public QSplashScreen, public ketrova::host::Splash {
  Q_OBJECT
 public:
  Splash();
  void SetInfo(const std::string& text) override;
  // Every line shown, in order.
  const std::vector<std::string>& Lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
};

}  // namespace kor
