#include "platform/contacts/vcard.h"

#include <gtest/gtest.h>

#include "platform/contacts/contact_folder.h"

namespace ketrova::contacts {
namespace {

using ketrova::testing::ContactFolderTest;

// Folded lines (a blank and a tab), escapes, a group, quoted and old-style
// parameters and a binary photo, as other programs write them.
constexpr const char* kHandWritten =
    "BEGIN:VCARD\r\n"
    "VERSION:3.0\r\n"
    "N:M\xC3\xBCller;Anna\\, Maria;;Dr.;\r\n"
    "FN:Dr. Anna\\, Maria M\xC3\xBC\r\n"
    " ller\r\n"
    "item1.TEL;TYPE=WORK;TYPE=voice:+49 30 1\r\n"
    "TEL;HOME:030 2\r\n"
    "NOTE:Zeile eins\\nZeile zwei\\; mit Semikolon und \\\\ Backslash\r\n"
    "\tund Fortsetzung\r\n"
    "PHOTO;ENCODING=b;TYPE=JPEG:/9j/4AAQSkZJRg==\r\n"
    "X-UNKNOWN;X-PARAM=\"a:b\":bleibt\r\n"
    "END:VCARD\r\n";

TEST(VCard, ReadsFoldedEscapedAndGroupedLines) {
  VCard card = ParseVCard(kHandWritten);
  EXPECT_EQ(card.version, "3.0");
  ASSERT_NE(card.Find("FN"), nullptr);
  EXPECT_EQ(UnescapeText(card.Find("FN")->value), "Dr. Anna, Maria M\xC3\xBCller");
  EXPECT_EQ(SplitStructured(card.Find("N")->value, 5),
            (std::vector<std::string>{"M\xC3\xBCller", "Anna, Maria", "", "Dr.", ""}));
  EXPECT_EQ(UnescapeText(card.Find("NOTE")->value),
            "Zeile eins\nZeile zwei; mit Semikolon und \\ Backslashund Fortsetzung");
  const VCardProperty* tel = card.Find("TEL");
  EXPECT_EQ(tel->group, "item1");
  EXPECT_EQ(tel->ParameterValues("TYPE"), (std::vector<std::string>{"work", "voice"}));
  EXPECT_TRUE(card.properties[3].HasType("home"));  // ";HOME" without a name is a type
  EXPECT_EQ(card.Find("X-UNKNOWN")->ParameterValue("X-PARAM"), "a:b");
}

TEST(VCard, WritesVersion30FoldedAtCharactersAndReadsItBack) {
  VCard card = ParseVCard(kHandWritten);
  // 4.0 cards carry quoted type lists; they are written as plain lists.
  card.properties.push_back(
      {{},
       "NOTE",
       {{"TYPE", {"work,voice"}}},
       EscapeText(std::string(60, 'x') + "\xC3\xA4\xC3\xB6\xC3\xBC\xE2\x82\xAC" +
                  std::string(80, 'y'))});
  const std::string text = WriteVCard30(card);
  EXPECT_TRUE(text.starts_with("BEGIN:VCARD\r\nVERSION:3.0\r\n"));
  EXPECT_TRUE(text.ends_with("END:VCARD\r\n"));
  EXPECT_NE(text.find("\r\nNOTE;TYPE=work,voice:xxx"), std::string::npos) << text;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find("\r\n", start);
    ASSERT_NE(end, std::string::npos);
    EXPECT_LE(end - start, 75u) << text.substr(start, end - start);
    // A fold never splits a character: no line starts with a continuation byte.
    const std::size_t first = text[start] == ' ' ? start + 1 : start;
    EXPECT_NE(static_cast<unsigned char>(text[first]) & 0xC0, 0x80);
    start = end + 2;
  }
  VCard again = ParseVCard(text);
  ASSERT_EQ(again.properties.size(), card.properties.size());
  for (std::size_t i = 0; i < card.properties.size(); ++i) {
    EXPECT_EQ(again.properties[i].value, card.properties[i].value);
    EXPECT_EQ(again.properties[i].group, card.properties[i].group);
  }
  EXPECT_EQ(again.Find("X-UNKNOWN")->ParameterValue("X-PARAM"), "a:b");
}

TEST(VCard, EscapesWhatTextValuesNeed) {
  EXPECT_EQ(EscapeText("a,b;c\\d\r\ne\nf"), "a\\,b\\;c\\\\d\\ne\\nf");
  EXPECT_EQ(UnescapeText(EscapeText("a,b;c\\d\ne")), "a,b;c\\d\ne");
  EXPECT_EQ(JoinStructured({"Haupt;stra\xC3\x9F"
                            "e",
                            "", "1,2"}),
            "Haupt\\;stra\xC3\x9F"
            "e;;1\\,2");
  EXPECT_EQ(SplitStructured("a\\;b;c", 4), (std::vector<std::string>{"a;b", "c", "", ""}));
}

TEST(VCard, RefusesMalformedCardsAndSaysWhy) {
  auto error = [](const std::string& text) {
    try {
      ParseVCard(text);
    } catch (const VCardError& e) {
      return std::string(e.what());
    }
    return std::string("gelesen");
  };
  EXPECT_EQ(error("BEGIN:VCARD\r\nVERSION:3.0\r\nFN Anna\r\nEND:VCARD\r\n"),
            "Zeile 3: kein Doppelpunkt: FN Anna");
  EXPECT_EQ(error(" BEGIN:VCARD\r\nEND:VCARD\r\n"),
            "Zeile 1: Fortsetzungszeile ohne vorangehende Zeile");
  EXPECT_EQ(error("BEGIN:VCARD\r\nFN;ENCODING=QUOTED-PRINTABLE:=C3=A4\r\nEND:VCARD\r\n"),
            "Zeile 2: unbekannte Kodierung QUOTED-PRINTABLE");
  EXPECT_EQ(error("BEGIN:VCARD\r\nFN:Anna\r\n"), "END:VCARD fehlt");
  EXPECT_EQ(error("FN:Anna\r\n"), "Zeile 1: BEGIN:VCARD fehlt");
  EXPECT_EQ(error("BEGIN:VCARD\r\nFN:\xE4\r\nEND:VCARD\r\n"), "Der Text ist kein UTF-8");
  EXPECT_EQ(error("BEGIN:VCARD\r\nEND:VCARD\r\nBEGIN:VCARD\r\nEND:VCARD\r\n"),
            "Zeile 3: Text hinter END:VCARD");
  EXPECT_EQ(error("BEGIN:VCARD\nVERSION:4.0\nFN:Anna\nEND:VCARD"), "gelesen");
}

class VCardTools : public ContactFolderTest {};

TEST_F(VCardTools, CardsWrittenHereAreReadByVobject) {
  VCard card;
  card.properties = {{{}, "FN", {}, EscapeText("Jörg, der Ältere")},
                     {{}, "N", {}, JoinStructured({"Ärger", "Jörg", "", "", ""})},
                     {{}, "NOTE", {}, EscapeText(std::string(100, 'n') + "\nzwei;drei")},
                     {{}, "UID", {}, "abc"}};
  Write("card.vcf", WriteVCard30(card));
  const std::string out = Python(
      "import vobject\n"
      "c = vobject.readOne(open('" +
      (root_ / "card.vcf").string() +
      "', encoding='utf-8').read())\n"
      "print(c.fn.value); print(c.n.value.family); print(repr(c.note.value))\n");
  EXPECT_EQ(out, "Jörg, der Ältere\nÄrger\n'" + std::string(100, 'n') + "\\nzwei;drei'\n");
}

TEST_F(VCardTools, CardsWrittenByVobjectAreRead) {
  Python(
      "import vobject\n"
      "c = vobject.vCard()\n"
      "c.add('fn').value = 'Zoë Ünal, Jr.'\n"
      "c.add('n').value = vobject.vcard.Name(family='Ünal', given='Zoë', suffix='Jr.')\n"
      "a = c.add('adr'); a.value = vobject.vcard.Address(street='Weg 1; Hof', city='Köln', "
      "code='50667', country='DE'); a.type_param = 'HOME'\n"
      "c.add('note').value = 'x' * 120 + '\\nEnde, fertig'\n"
      "open('" +
      (root_ / "v.vcf").string() + "', 'w', encoding='utf-8').write(c.serialize())\n");
  VCard card = ParseVCard(Read(root_ / "v.vcf"));
  EXPECT_EQ(UnescapeText(card.Find("FN")->value), "Zoë Ünal, Jr.");
  EXPECT_EQ(SplitStructured(card.Find("ADR")->value, 7)[2], "Weg 1; Hof");
  EXPECT_EQ(UnescapeText(card.Find("NOTE")->value), std::string(120, 'x') + "\nEnde, fertig");
}

}  // namespace
}  // namespace ketrova::contacts
