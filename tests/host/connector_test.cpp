#include "host/connector.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "component_version.h"
#include "host/plugin_module.h"

namespace ketrova::host {
namespace {

TEST(Connector, NameAndVersionBeforeAnyStart) {
  Connector connector;
  EXPECT_EQ(connector.PlugInName(), "Ketrovator");
  // The version of the build, major.minor.revision.
  EXPECT_EQ(connector.PlugInVersion(), ComponentVersion());
  const std::string version = ComponentVersion();
  EXPECT_EQ(std::count(version.begin(), version.end(), '.'), 2) << version;
  EXPECT_EQ(connector.Application(), nullptr);
  EXPECT_EQ(connector.Converter(), nullptr);
}

TEST(Connector, EventsBeforeTheStartAreIgnoredOrReportNothing) {
  // Without a host there is nowhere to report to; nothing may crash.
  Connector connector;
  std::string button = "Ketrovator.PROJECTOPEN", snapIn = "Ketrovator";
  Variant data;
  bool cancel = false;
  connector.ClickEvent(2, 1, button, snapIn, data, cancel);
  std::int32_t ret = 0;
  connector.WindowEvent(3, 2, nullptr, data, ret, snapIn, cancel);
  EXPECT_FALSE(cancel);
}

TEST(Connector, LoadEventFilter) {
  struct Case {
    const char* snapIn;
    bool mine;
  };
  const Case cases[] = {{"Ketrovator", true}, {" ketrovator ", true}, {"KETROVATOR", true},
                        {"OnLoad", true},     {"onload", true},       {"KetrovatorCTL", false},
                        {"", false},          {"Fremd", false}};
  for (const Case& c : cases)
    EXPECT_EQ(IsLoadEvent(c.snapIn, kPlugInName), c.mine) << "'" << c.snapIn << "'";
}

}  // namespace
}  // namespace ketrova::host
