// Text written into XML by hand.
#pragma once

#include <string>
#include <string_view>

namespace ketrova {

// Appends `text` with "&", "<" and ">" as entities. In an attribute (quoted
// with double quotes) the quote too, and line ends and tabs, which a reader
// would otherwise fold to blanks, as character references.
void AppendXmlEscaped(std::string& out, std::string_view text, bool attribute);

}  // namespace ketrova
