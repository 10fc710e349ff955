#include "support/xml_text.h"

namespace ketrova {

void AppendXmlEscaped(std::string& out, std::string_view text, bool attribute) {
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        if (attribute)
          out += "&quot;";
        else
          out += c;
        break;
      // Line ends and tabs in an attribute would be folded to blanks on reading.
      case '\r':
        if (attribute)
          out += "&#13;";
        else
          out += c;
        break;
      case '\n':
        if (attribute)
          out += "&#10;";
        else
          out += c;
        break;
      case '\t':
        if (attribute)
          out += "&#9;";
        else
          out += c;
        break;
      default:
        out += c;
    }
  }
}

}  // namespace ketrova
