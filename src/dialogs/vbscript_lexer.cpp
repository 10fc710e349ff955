#include "dialogs/vbscript_lexer.h"

#include <Qsci/qsciscintilla.h>

#include <QColor>
#include <string>

#include "dialogs/vbscript_line_styles.h"

namespace ketrova::dialogs {

VbScriptLexer::VbScriptLexer(QObject* parent) : QsciLexerCustom(parent) {}

const char* VbScriptLexer::language() const {
  return "VBScript";
}

QString VbScriptLexer::description(int style) const {
  switch (style) {
    case kVbDefault:
      return "Standard";
    case kVbComment:
      return "Kommentar";
    case kVbNumber:
      return "Zahl";
    case kVbString:
      return "Zeichenfolge";
    case kVbKeyword:
      return "Schlüsselwort";
    case kVbDate:
      return "Datum";
    default:
      return {};
  }
}

QColor VbScriptLexer::defaultColor(int style) const {
  switch (style) {
    case kVbComment:
      return QColor(0x00, 0x80, 0x00);
    case kVbNumber:
      return QColor(0x80, 0x40, 0x00);
    case kVbString:
      return QColor(0xA3, 0x15, 0x15);
    case kVbKeyword:
      return QColor(0x00, 0x00, 0xC0);
    case kVbDate:
      return QColor(0x80, 0x00, 0x80);
    default:
      return QColor(0x00, 0x00, 0x00);
  }
}

bool VbScriptLexer::caseSensitive() const {
  return false;
}

void VbScriptLexer::styleText(int start, int end) {
  QsciScintilla* editor = this->editor();
  if (!editor || end <= start) return;
  const long firstLine = editor->SendScintilla(QsciScintillaBase::SCI_LINEFROMPOSITION, start);
  const long lastLine = editor->SendScintilla(QsciScintillaBase::SCI_LINEFROMPOSITION, end);
  const long lineCount = editor->SendScintilla(QsciScintillaBase::SCI_GETLINECOUNT);
  const long from = editor->SendScintilla(QsciScintillaBase::SCI_POSITIONFROMLINE, firstLine);
  const long to = lastLine + 1 < lineCount
                      ? editor->SendScintilla(QsciScintillaBase::SCI_POSITIONFROMLINE, lastLine + 1)
                      : editor->SendScintilla(QsciScintillaBase::SCI_GETLENGTH);
  std::string text(static_cast<std::size_t>(to - from) + 1, '\0');
  editor->SendScintilla(QsciScintillaBase::SCI_GETTEXTRANGE, from, to, text.data());
  text.resize(static_cast<std::size_t>(to - from));

  startStyling(static_cast<int>(from));
  for (long line = firstLine; line <= lastLine; ++line) {
    const long lineStart = editor->SendScintilla(QsciScintillaBase::SCI_POSITIONFROMLINE, line);
    const long lineEnd = editor->SendScintilla(QsciScintillaBase::SCI_GETLINEENDPOSITION, line);
    const long next = line + 1 < lineCount
                          ? editor->SendScintilla(QsciScintillaBase::SCI_POSITIONFROMLINE, line + 1)
                          : lineEnd;
    std::vector<int> styles = VbScriptLineStyles(std::string_view(text).substr(
        static_cast<std::size_t>(lineStart - from), static_cast<std::size_t>(lineEnd - lineStart)));
    std::size_t run = 0;
    for (std::size_t i = 1; i <= styles.size(); ++i) {
      if (i == styles.size() || styles[i] != styles[run]) {
        setStyling(static_cast<int>(i - run), styles[run]);
        run = i;
      }
    }
    if (next > lineEnd) setStyling(static_cast<int>(next - lineEnd), kVbDefault);
  }
}

}  // namespace ketrova::dialogs
