#include "core/xml_node.h"

#include <gtest/gtest.h>

#include "core/xml_document.h"
#include "support/vb_error.h"

namespace ketrova {
namespace {

class XmlNodeTest : public ::testing::Test {
 protected:
  XmlNodeTest() : doc_(CreateProjectDocument()) {
    xml_.XMLDoc = doc_.get();
    root_ = xml_.AppendChild(*doc_, xml_.CreateElement("Project"));
  }
  std::unique_ptr<pugi::xml_document> doc_;
  CXMLADO xml_;
  pugi::xml_node root_;
};

TEST_F(XmlNodeTest, NamesAreUpperCasedAndSpelledOut) {
  EXPECT_STREQ(root_.name(), "PROJECT");
  pugi::xml_node field = xml_.CreateElement("Straße Nr", "Größe", "");
  EXPECT_STREQ(field.name(), "STRASSE_NR");
  EXPECT_STREQ(field.attribute("NAME").value(), "GROESSE");
  // An empty text makes no text child; a created element hangs nowhere.
  EXPECT_FALSE(field.first_child());
  EXPECT_FALSE(xml_.FindNode("STRASSE_NR"));
}

TEST_F(XmlNodeTest, TextsKeepTheirUmlautsSpelledOutInTheFile) {
  xml_.AppendChild(root_, xml_.CreateElement("Name", "", "Müller @ae@ ß"));
  EXPECT_EQ(NodeXml(root_), "<PROJECT><NAME>M@ue@ller @ae@ ß</NAME></PROJECT>");
  // The spelling is not escaped against itself: a user's "@ae@" comes back as ä.
  EXPECT_EQ(xml_.ReadNode("/Project/name"), "Müller ä ß");
  EXPECT_EQ(xml_.ReadNode("Name"), "Müller ä ß");
  EXPECT_EQ(xml_.ReadNode("/Project/missing", {}, "20"), "20");
  EXPECT_EQ(xml_.ReadNode("/Project/[broken", {}, "x"), "x");
}

TEST_F(XmlNodeTest, AttributesFallBackOnlyWhenMissing) {
  pugi::xml_node job = xml_.AppendChild(root_, xml_.CreateElement("Job"));
  xml_.WriteNodeAttribute(job, "Caption", "Größe");
  xml_.WriteNodeAttribute(job, "Empty", "");
  EXPECT_STREQ(job.attribute("CAPTION").value(), "Gr@oe@ße");
  EXPECT_EQ(xml_.ReadAttribute(job, "caption", "x"), "Größe");
  EXPECT_EQ(xml_.ReadAttribute(job, "EMPTY", "x"), "");
  EXPECT_EQ(xml_.ReadAttribute(job, "MISSING", "x"), "x");
  EXPECT_EQ(xml_.ReadAttribute(pugi::xml_node(), "CAPTION", "y"), "y");
}

TEST_F(XmlNodeTest, WritesAndDeletesByPath) {
  xml_.AppendChild(root_, xml_.CreateElement("A", "", "alt"));
  xml_.WriteNode("/PROJECT/A", "neu");
  std::string value = "wär";
  xml_.WriteAttribute("A", "key", value);
  EXPECT_EQ(value, "w@ae@r");
  EXPECT_EQ(xml_.ReadNodeXML("A"), "<A KEY=\"w@ae@r\">neu</A>");
  EXPECT_EQ(xml_.ChildNodeValue("a ", root_), "wär");  // first attribute, by IsEqual
  xml_.DeleteAttribute("A", "Key");
  EXPECT_EQ(xml_.ChildNodeValue("A"), "neu");
  EXPECT_EQ(xml_.ChildNodeValue("B", root_, "d"), "d");
  xml_.DeleteNode("a");
  EXPECT_FALSE(xml_.FindNode("A"));
  EXPECT_THROW(xml_.ReadNodeXML("A"), VbError);
  EXPECT_THROW(xml_.DeleteAttribute("A", "KEY"), VbError);
  xml_.DeleteNode("A");  // swallowed
  xml_.WriteNode("A", "x");
}

TEST_F(XmlNodeTest, DocumentIsWrittenInTheOriginalLayout) {
  pugi::xml_node job = xml_.AppendChild(root_, xml_.CreateElement("JOB"));
  xml_.WriteNodeAttribute(job, "V", "a\"b<c>&\r\n\td");
  std::string script = "x ]]> y";
  xml_.AppendChild(job, xml_.CreateCData("Script", script));
  xml_.AppendChild(root_, xml_.CreateElement("T", "", "1 < 2 & \"3\""));
  EXPECT_EQ(xml_.zsNiceXML(""),
            "<?xml version=\"1.0\"?>\r\n<?encoding iso-8859-1?>\r\n<PROJECT><JOB "
            "V=\"a&quot;b&lt;c&gt;&amp;&#13;&#10;&#9;d\"><SCRIPT><![CDATA[x ]]]]><![CDATA[> "
            "y]]></SCRIPT></JOB><T>1 &lt; 2 &amp; \"3\"</T></PROJECT>\r\n");
  EXPECT_EQ(xml_.zsNiceXML("as it stands"), "as it stands");
  EXPECT_EQ(xml_.ReadNode("JOB/SCRIPT"), "x ]]> y");
}

}  // namespace
}  // namespace ketrova
