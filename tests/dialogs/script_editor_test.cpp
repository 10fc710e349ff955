// The script editor as the documents use it: the text kept byte for byte and
// the line end that typing uses, the colours of VBScript, the check with its
// marks, and the find that wraps.
#include "dialogs/script_editor.h"

#include <Qsci/qscilexerjavascript.h>
#include <Qsci/qsciscintilla.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <string>
#include <vector>

#include "core/enums.h"
#include "dialogs/script_check.h"
#include "dialogs/vbscript_lexer.h"
#include "platform/script/script_control.h"
#include "qt_printers.h"

namespace ketrova::dialogs {
namespace {

using Sci = QsciScintillaBase;

class ScriptEditorTest : public ::testing::Test {
 protected:
  QsciScintilla* Text() { return editor_.findChild<QsciScintilla*>("txtScript"); }
  QString Status() { return editor_.findChild<QLabel*>("lblScriptStatus")->text(); }
  void Click(const char* button) { editor_.findChild<QPushButton*>(button)->click(); }

  void PressKey(QWidget* widget, int key) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier);
    QApplication::sendEvent(widget, &press);
    QApplication::sendEvent(widget, &release);
  }

  long Send(unsigned int message, unsigned long w = 0, long l = 0) {
    return Text()->SendScintilla(message, w, l);
  }

  // The styles of a line, one digit per byte.
  std::string StylesOfLine(int line) {
    Send(Sci::SCI_COLOURISE, 0, -1);
    std::string styles;
    const long end = Send(Sci::SCI_GETLINEENDPOSITION, line);
    for (long pos = Send(Sci::SCI_POSITIONFROMLINE, line); pos < end; ++pos)
      styles += static_cast<char>('0' + Send(Sci::SCI_GETSTYLEAT, pos));
    return styles;
  }

  // The 0-based line and index of the selection's start, and its text.
  struct Selection {
    int line, index;
    QString text;
  };
  Selection SelectionNow() {
    int line = 0, index = 0, lineTo = 0, indexTo = 0;
    Text()->getSelection(&line, &index, &lineTo, &indexTo);
    return {line, index, Text()->selectedText()};
  }

  ScriptEditor editor_;
};

// ---- The text ----

TEST_F(ScriptEditorTest, KeepsTheTextByteForByteAndTakesTheLineEndOfItsFirstLine) {
  struct Case {
    const char* name;
    std::string text;
    int eolMode;
  };
  const std::vector<Case> cases = {
      {"no line end", "x = 1", QsciScintilla::EolWindows},
      {"CR LF", "Sub A\r\nEnd Sub\r\n", QsciScintilla::EolWindows},
      {"LF", "Sub A\nEnd Sub\n", QsciScintilla::EolUnix},
      {"CR", "Sub A\rEnd Sub", QsciScintilla::EolMac},
      {"empty after CR", "", QsciScintilla::EolWindows},
      {"mixed, LF first", "a\nb\r\nc\rd\r\n", QsciScintilla::EolUnix},
      {"mixed, CR LF first", "a\r\nb\nc\r\r\n", QsciScintilla::EolWindows},
      {"umlauts", "s = \"Größe €\"\r\n", QsciScintilla::EolWindows},
      {"NUL", std::string("a\0b\r\n", 5), QsciScintilla::EolWindows},
      {"no UTF-8", "x = \"\xFF\xFE\"\r\n", QsciScintilla::EolWindows},
  };
  for (bool readOnly : {false, true}) {
    editor_.SetReadOnly(readOnly);
    for (const Case& c : cases) {
      SCOPED_TRACE(std::string(c.name) + (readOnly ? ", read-only" : ""));
      editor_.SetText(c.text);
      EXPECT_EQ(editor_.Text(), c.text);
      EXPECT_EQ(Text()->eolMode(), c.eolMode);
    }
  }
}

TEST_F(ScriptEditorTest, ATypedNewLineUsesTheTextsLineEnd) {
  struct Case {
    std::string text, typed;  // Return pressed at the end of the first line
  };
  const std::vector<Case> cases = {
      {"Sub A\r\nEnd Sub", "Sub A\r\n\r\nEnd Sub"},
      {"Sub A\nEnd Sub", "Sub A\n\nEnd Sub"},
      {"Sub A\rEnd Sub", "Sub A\r\rEnd Sub"},
      {"a\r\nb\nc", "a\r\n\r\nb\nc"},
      {"", "\r\n"},
  };
  int changes = 0;
  QObject::connect(&editor_, &ScriptEditor::textChanged, [&] { ++changes; });
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    changes = 0;
    editor_.SetText(c.text);
    EXPECT_EQ(changes, 1);
    Send(Sci::SCI_GOTOPOS, Send(Sci::SCI_GETLINEENDPOSITION, 0));
    PressKey(Text(), Qt::Key_Return);
    EXPECT_EQ(editor_.Text(), c.typed);
    EXPECT_EQ(changes, 2);
  }
}

TEST_F(ScriptEditorTest, ReadOnlyRefusesTyping) {
  editor_.SetText("x = 1");
  editor_.SetReadOnly(true);
  PressKey(Text(), Qt::Key_Return);
  EXPECT_EQ(editor_.Text(), "x = 1");
  editor_.SetReadOnly(false);
  PressKey(Text(), Qt::Key_Return);
  EXPECT_EQ(editor_.Text(), "\r\nx = 1");
}

// ---- Colours ----

TEST_F(ScriptEditorTest, ColoursVBScriptAsTheScannerReadsIt) {
  // 0 plain, 1 comment, 2 number, 3 string, 4 keyword, 5 date; one digit a byte.
  struct Case {
    std::string line, styles;
  };
  const std::vector<Case> cases = {
      {"Function F(a) ' Kommentar",  //
       "4444444400000011111111111"},
      {"  Rem Notiz", "00111111111"},
      {"  F = \"Text \"\"x\"\"\" & 12 + &HFF&",  //
       "0000003333333333330002200022222"},
      {"  d = #1/2/2020# : e = 1.5E3",  //
       "0000005555555555000000022222"},
      {"End Function", "444044444444"},
      {"Remark = Nothing", "0000000004444444"},
      {"s = [alter Name] & Empty", "000000000000000000044444"},
      // What the scanner refuses stays plain, and the scan goes on behind it.
      {"x = \"offen", "0000333333"},
      {"a ? b ' c", "000000111"},
      {"y = #99/99/2020# + 1", "00000000000000000002"},
      {"\xC3\xBC = 1 ' c", "0000020111"},
      {"x = 1 + _", "000020000"},
  };
  std::string text;
  for (const Case& c : cases) text += c.line + "\r\n";
  editor_.SetLanguage(sclVBScript);
  editor_.SetText(text);
  ASSERT_NE(dynamic_cast<VbScriptLexer*>(Text()->lexer()), nullptr);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(cases[i].line);
    EXPECT_EQ(StylesOfLine(static_cast<int>(i)), cases[i].styles);
  }
}

TEST_F(ScriptEditorTest, AnEditColoursItsLineAnew) {
  editor_.SetText("x = 1\r\ny = \"a\"\r\nz = 2");
  EXPECT_EQ(StylesOfLine(1), "0000333");
  Send(Sci::SCI_INSERTTEXT, Send(Sci::SCI_POSITIONFROMLINE, 1), reinterpret_cast<long>("' "));
  EXPECT_EQ(StylesOfLine(0), "00002");
  EXPECT_EQ(StylesOfLine(1), "111111111");
  EXPECT_EQ(StylesOfLine(2), "00002");
}

TEST_F(ScriptEditorTest, EveryOtherLanguageIsJScript) {
  struct Case {
    int language, answered;
    bool vbscript;
  };
  for (const Case& c : std::vector<Case>{{sclVBScript, sclVBScript, true},
                                         {sclJavaScript, sclJavaScript, false},
                                         {0, sclJavaScript, false},
                                         {7, sclJavaScript, false},
                                         {sclVBScript, sclVBScript, true}}) {
    SCOPED_TRACE(c.language);
    editor_.SetLanguage(c.language);
    EXPECT_EQ(editor_.Language(), c.answered);
    EXPECT_EQ(dynamic_cast<VbScriptLexer*>(Text()->lexer()) != nullptr, c.vbscript);
    EXPECT_EQ(dynamic_cast<QsciLexerJavaScript*>(Text()->lexer()) != nullptr, !c.vbscript);
  }
  editor_.SetLanguage(sclJavaScript);
  editor_.SetText("var x = 1; // Notiz");
  const std::string styles = StylesOfLine(0);
  EXPECT_EQ(styles[0], '0' + QsciLexerJavaScript::Keyword);
  EXPECT_EQ(styles[11], '0' + QsciLexerJavaScript::CommentLine);
}

// ---- Check ----

TEST_F(ScriptEditorTest, CheckMarksTheFirstVBScriptError) {
  editor_.SetLanguage(sclVBScript);
  editor_.SetText("Function Summe(a, b)\r\n  Summe = a + * b\r\nEnd Function\r\n");
  Click("cmdCheck");
  const auto& result = editor_.LastCheck();
  EXPECT_FALSE(result.ok);
  EXPECT_EQ(result.line, 2);
  EXPECT_EQ(result.column, 15);
  EXPECT_EQ(result.description, "Ausdruck erwartet");
  EXPECT_EQ(Status(), "Zeile 2, Spalte 15: Ausdruck erwartet");
  EXPECT_EQ(Text()->markerFindNext(0, 1u << ScriptEditor::kErrorMarker), 1);
  EXPECT_EQ(Text()->markerFindNext(2, 1u << ScriptEditor::kErrorMarker), -1);
  int line = 0, index = 0;
  Text()->getCursorPosition(&line, &index);
  EXPECT_EQ(line, 1);
  EXPECT_EQ(index, 14);
  const long pos = Send(Sci::SCI_GETCURRENTPOS);
  EXPECT_EQ(Send(Sci::SCI_INDICATORVALUEAT, ScriptEditor::kErrorIndicator, pos), 1);
  EXPECT_EQ(Send(Sci::SCI_INDICATORVALUEAT, ScriptEditor::kErrorIndicator, pos - 1), 0);
}

TEST_F(ScriptEditorTest, CheckOfAGoodTextClearsTheMarks) {
  editor_.SetText("y = 0\r\nx = (1 * y\r\nz = 2\r\n");
  ASSERT_FALSE(editor_.Check());
  ASSERT_EQ(Text()->markerFindNext(0, 1u << ScriptEditor::kErrorMarker), 1);
  // The user closes the bracket.
  Send(Sci::SCI_INSERTTEXT, Send(Sci::SCI_GETLINEENDPOSITION, 1), reinterpret_cast<long>(")"));
  EXPECT_TRUE(editor_.Check());
  EXPECT_TRUE(editor_.LastCheck().ok);
  EXPECT_EQ(Status(), "Keine Fehler gefunden.");
  EXPECT_EQ(Text()->markerFindNext(0, 1u << ScriptEditor::kErrorMarker), -1);
  for (long pos = 0; pos < Send(Sci::SCI_GETLENGTH); ++pos)
    EXPECT_EQ(Send(Sci::SCI_INDICATORVALUEAT, ScriptEditor::kErrorIndicator, pos), 0) << pos;

  editor_.SetText("x = (1");
  ASSERT_FALSE(editor_.Check());
  editor_.SetText("x = (1");
  EXPECT_EQ(Text()->markerFindNext(0, 1u << ScriptEditor::kErrorMarker), -1);
}

TEST_F(ScriptEditorTest, CheckGivesTheLineAndColumnOfAJScriptError) {
  editor_.SetLanguage(sclJavaScript);
  editor_.SetText("function f() {\n  var x = ;\n}\n");
  EXPECT_FALSE(editor_.Check());
  EXPECT_EQ(editor_.LastCheck().line, 2);
  EXPECT_EQ(editor_.LastCheck().column, 3);
  EXPECT_EQ(editor_.LastCheck().description, "Syntaxfehler");
  EXPECT_EQ(Status(), "Zeile 2, Spalte 3: Syntaxfehler");
  EXPECT_EQ(Text()->markerFindNext(0, 1u << ScriptEditor::kErrorMarker), 1);
}

TEST(ScriptEditorCheckTest, RunsNoStatementOfTheText) {
  // Each would fail if it ran: an endless loop meets the Timeout, the others
  // raise run-time errors.
  struct Case {
    int language;
    std::string text;
  };
  const std::vector<Case> cases = {
      {sclVBScript, "Do\r\nLoop\r\n"},
      {sclVBScript, "Sub S()\r\nEnd Sub\r\nx = 1 / 0\r\n"},
      {sclVBScript, "' Kopf\r\nOption Explicit\r\n\r\ny = 1\r\n"},
      {sclVBScript, "Option Explicit : Err.Raise 5\r\n"},
      {sclJavaScript, "while (true) {}\n"},
      {sclJavaScript, "function f() {}\nnotDefined();\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    ScriptCheckResult result = CheckScript(c.language, c.text);
    EXPECT_TRUE(result.ok) << result.number << " " << result.description;
  }
}

TEST(ScriptEditorCheckTest, ReportsTheErrorAsTheScriptControlDoes) {
  // Texts that do not compile run nothing, so the control's own AddCode shows
  // what the check must answer despite what it puts around the text.
  struct Case {
    int language;
    std::string text;
  };
  const std::vector<Case> cases = {
      {sclVBScript, "x = = 1"},
      {sclVBScript, "  y = 1 : x = = 1\r\n"},
      {sclVBScript, "Option Explicit : x = = 2\r\n"},
      {sclVBScript, "Option Explicit\r\nDim a : a = (1 +\r\n"},
      {sclVBScript, "' Kopf\r\nSub S()\r\n  s = \"äöü\" + * 1\r\nEnd Sub\r\n"},
      {sclVBScript, "If a Then\r\n  b = 1\r\n"},
      {sclVBScript, "Sub S()\r\n  x = \"offen\r\nEnd Sub\r\n"},
      {sclVBScript, "Function F()\rEnd Sub\r"},
      {sclJavaScript, "var = 1;"},
      {sclJavaScript, "x = 1 +;\r\ny = 2;\r\n"},
      {sclJavaScript, "function f() {\n  return 1;\n"},
      {sclJavaScript, "function f() {\n  return 1;"},
      {sclJavaScript, "var s = 'offen;\nvar t = 1;\n"},
      {sclJavaScript, "var t = 1;\n/* offen"},
      {sclJavaScript, "}\nfunction g() {"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    script::ScriptControl control;
    control.SetLanguage(c.language == sclVBScript ? "VBScript" : "JScript");
    EXPECT_THROW(control.AddCode(c.text), VbError);
    const script::ScriptControlError& expected = control.Error();
    ScriptCheckResult result = CheckScript(c.language, c.text);
    EXPECT_FALSE(result.ok);
    EXPECT_EQ(result.number, expected.Number);
    EXPECT_EQ(result.description, expected.Description);
    EXPECT_EQ(result.line, expected.Line);
    EXPECT_EQ(result.column, expected.Column);
  }
}

// ---- Find ----

TEST_F(ScriptEditorTest, FindGoesOnWithoutRegardToCaseAndWraps) {
  editor_.SetText("Alpha beta\r\nALPHA gamma\r\n  alpha\r\n");
  auto* find = editor_.findChild<QLineEdit*>("txtFind");
  find->setText("alpha");
  struct Step {
    bool byEnter;
    int line, index;
    QString text;
  };
  for (const Step& step : std::vector<Step>{{false, 0, 0, "Alpha"},
                                            {true, 1, 0, "ALPHA"},
                                            {false, 2, 2, "alpha"},
                                            {true, 0, 0, "Alpha"}}) {
    if (step.byEnter)
      PressKey(find, Qt::Key_Return);
    else
      Click("cmdFindNext");
    Selection selection = SelectionNow();
    EXPECT_EQ(selection.line, step.line);
    EXPECT_EQ(selection.index, step.index);
    EXPECT_EQ(selection.text, step.text);
  }

  find->setText("Delta");
  EXPECT_FALSE(editor_.FindNext());
  EXPECT_EQ(Status(), "„Delta“ wurde nicht gefunden.");
  EXPECT_EQ(SelectionNow().text, "Alpha");
  find->setText("GAMMA");
  EXPECT_TRUE(editor_.FindNext());
  EXPECT_EQ(SelectionNow().line, 1);
  EXPECT_EQ(Status(), "");
}

}  // namespace
}  // namespace ketrova::dialogs
