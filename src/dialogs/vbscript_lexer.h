// The colouring of VBScript in the script editor: a QScintilla lexer that
// styles each line as Ketrova's own VBScript scanner reads it, so that the
// editor shows keywords, strings, comments, numbers and dates exactly where
// the interpreter finds them. The style numbers are VbScriptStyle
// (vbscript_line_styles.h).
#pragma once

#include <Qsci/qscilexercustom.h>

namespace ketrova::dialogs {

class VbScriptLexer : public QsciLexerCustom {
  Q_OBJECT

 public:
  explicit VbScriptLexer(QObject* parent = nullptr);

  const char* language() const override;
  // The German name of a style; empty past the last style.
  QString description(int style) const override;
  QColor defaultColor(int style) const override;
  bool caseSensitive() const override;
  // Styles the whole lines from `start` (a line start) through `end`.
  void styleText(int start, int end) override;
};

}  // namespace ketrova::dialogs
