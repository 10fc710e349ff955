// ScriptEditor: the editor of one script text (a project's start or end
// script, a script module, a job's script), in VBScript or JScript.
//
// The text is kept byte for byte: Text() after SetText(t) is t, whatever its
// line ends (CR LF, LF, CR, mixed), and a new line the user types uses the
// line end of the text's first line (CR LF for a text without one). Above the
// text a tool row finds text (without regard to case, wrapping at the end) and
// checks the script ("Prüfen"); below it a status line tells the outcome.
//
// Object names, for tests and screenshots: the widget "ScriptEditor", the text
// "txtScript" (a QsciScintilla), the find field "txtFind", the buttons
// "cmdFindNext" and "cmdCheck", the status line "lblScriptStatus".
#pragma once

#include <QWidget>
#include <string>

#include "dialogs/script_check.h"

class QLabel;
class QLineEdit;
class QsciLexer;
class QsciScintilla;

namespace ketrova::dialogs {

class ScriptEditor : public QWidget {
  Q_OBJECT

 public:
  // The margin marker on the line of the last check's error, and the
  // indicator under the spot in that line.
  static constexpr int kErrorMarker = 1;
  static constexpr int kErrorIndicator = 8;

  explicit ScriptEditor(QWidget* parent = nullptr);

  // sclVBScript (1) colours and checks VBScript; any other value JScript.
  // Setting the language the editor has already changes nothing.
  void SetLanguage(int scriptLanguage);
  // sclVBScript or sclJavaScript.
  int Language() const;

  // Replaces the text (also when read-only), sets the line end that typing
  // uses from it, drops the undo history and the marks of the last check, and
  // emits textChanged once.
  void SetText(const std::string& text);
  std::string Text() const;
  void SetReadOnly(bool readOnly);

  // "Prüfen": compiles the text as CheckScript (script_check.h) does, without
  // running its statements. On an error it marks the line (kErrorMarker) and
  // the spot (kErrorIndicator), puts the caret there and shows
  // "Zeile N, Spalte M: <Beschreibung>"; else "Keine Fehler gefunden.". The
  // marks stay until the next check or SetText. True when the text compiled.
  bool Check();
  using CheckResult = ScriptCheckResult;
  // The outcome of the last Check; `ok` is false before the first.
  const CheckResult& LastCheck() const { return lastCheck_; }

  // "Weitersuchen": selects the next occurrence of the find field's text after
  // the selection, without regard to case, going on from the start at the end.
  // False (and a note in the status line) when the text holds none.
  bool FindNext();

 signals:
  // Any change of the text, by the user or by SetText.
  void textChanged();

 private:
  void ApplyLexer();
  void ClearCheckMarks();
  // The document position of a 1-based line and character column, kept
  // within the line.
  long PositionOf(int line, int column) const;
  void UpdateLineNumberWidth();

  QsciScintilla* text_;
  QLineEdit* find_;
  QLabel* status_;
  QsciLexer* lexer_ = nullptr;
  int language_ = 0;
  bool settingText_ = false;
  bool findNoteShown_ = false;  // the status line tells that a search failed
  CheckResult lastCheck_;
};

}  // namespace ketrova::dialogs
