#include "dialogs/script_editor.h"

#include <Qsci/qscilexerjavascript.h>
#include <Qsci/qsciscintilla.h>

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>

#include "core/enums.h"
#include "dialogs/vbscript_lexer.h"

namespace ketrova::dialogs {
namespace {

using Sci = QsciScintillaBase;

constexpr int kLineNumberMargin = 0;
constexpr int kMarkerMargin = 1;

// The line end of the text's first line; CR LF for a text without one.
QsciScintilla::EolMode EolModeOf(const std::string& text) {
  std::size_t end = text.find_first_of("\r\n");
  if (end == std::string::npos) return QsciScintilla::EolWindows;
  if (text[end] == '\n') return QsciScintilla::EolUnix;
  return end + 1 < text.size() && text[end + 1] == '\n' ? QsciScintilla::EolWindows
                                                        : QsciScintilla::EolMac;
}

QFont EditorFont() {
  return QFontDatabase::systemFont(QFontDatabase::FixedFont);
}

}  // namespace

ScriptEditor::ScriptEditor(QWidget* parent) : QWidget(parent) {
  setObjectName("ScriptEditor");

  auto* findLabel = new QLabel("Suchen:", this);
  find_ = new QLineEdit(this);
  find_->setObjectName("txtFind");
  find_->setClearButtonEnabled(true);
  findLabel->setBuddy(find_);
  auto* findNext = new QPushButton("Weitersuchen", this);
  findNext->setObjectName("cmdFindNext");
  findNext->setAutoDefault(false);
  auto* check = new QPushButton("Prüfen", this);
  check->setObjectName("cmdCheck");
  check->setAutoDefault(false);
  check->setToolTip("Übersetzt das Skript, ohne es auszuführen, und zeigt den ersten Fehler.");

  text_ = new QsciScintilla(this);
  text_->setObjectName("txtScript");
  text_->setUtf8(true);
  text_->setTabWidth(4);
  text_->setAutoIndent(true);
  text_->setBraceMatching(QsciScintilla::SloppyBraceMatch);
  text_->setCaretLineVisible(true);
  text_->setCaretLineBackgroundColor(QColor(0xFF, 0xF8, 0xDC));
  text_->setEolMode(QsciScintilla::EolWindows);
  // The horizontal scroll bar follows the longest line shown.
  text_->SendScintilla(Sci::SCI_SETSCROLLWIDTH, 1);
  text_->SendScintilla(Sci::SCI_SETSCROLLWIDTHTRACKING, 1);
  text_->setMarginType(kLineNumberMargin, QsciScintilla::NumberMargin);
  text_->setMarginMarkerMask(kLineNumberMargin, 0);
  text_->setMarginType(kMarkerMargin, QsciScintilla::SymbolMargin);
  text_->setMarginWidth(kMarkerMargin, 14);
  text_->setMarginMarkerMask(kMarkerMargin, 1 << kErrorMarker);
  text_->markerDefine(QsciScintilla::Circle, kErrorMarker);
  text_->setMarkerBackgroundColor(QColor(0xD0, 0x20, 0x20), kErrorMarker);
  text_->setMarkerForegroundColor(QColor(0x80, 0x00, 0x00), kErrorMarker);
  text_->indicatorDefine(QsciScintilla::SquiggleIndicator, kErrorIndicator);
  text_->setIndicatorForegroundColor(QColor(0xE0, 0x00, 0x00), kErrorIndicator);

  status_ = new QLabel(this);
  status_->setObjectName("lblScriptStatus");
  status_->setTextInteractionFlags(Qt::TextSelectableByMouse);

  auto* tools = new QHBoxLayout;
  tools->addWidget(findLabel);
  tools->addWidget(find_, 1);
  tools->addWidget(findNext);
  tools->addStretch(1);
  tools->addWidget(check);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addLayout(tools);
  layout->addWidget(text_, 1);
  layout->addWidget(status_);

  connect(find_, &QLineEdit::returnPressed, this, [this] { FindNext(); });
  connect(findNext, &QPushButton::clicked, this, [this] { FindNext(); });
  connect(check, &QPushButton::clicked, this, [this] { Check(); });
  auto* toFind = new QShortcut(QKeySequence::Find, this);
  toFind->setContext(Qt::WidgetWithChildrenShortcut);
  connect(toFind, &QShortcut::activated, this, [this] {
    find_->setFocus();
    find_->selectAll();
  });
  auto* again = new QShortcut(QKeySequence::FindNext, this);
  again->setContext(Qt::WidgetWithChildrenShortcut);
  connect(again, &QShortcut::activated, this, [this] { FindNext(); });
  connect(text_, &QsciScintilla::textChanged, this, [this] {
    if (!settingText_) emit textChanged();
  });
  connect(text_, &QsciScintilla::linesChanged, this, [this] { UpdateLineNumberWidth(); });

  SetLanguage(sclVBScript);
}

void ScriptEditor::SetLanguage(int scriptLanguage) {
  const int language = scriptLanguage == sclVBScript ? sclVBScript : sclJavaScript;
  if (language == language_ && lexer_) return;
  language_ = language;
  ApplyLexer();
}

int ScriptEditor::Language() const {
  return language_;
}

void ScriptEditor::ApplyLexer() {
  QsciLexer* old = lexer_;
  if (language_ == sclVBScript)
    lexer_ = new VbScriptLexer(text_);
  else
    lexer_ = new QsciLexerJavaScript(text_);
  const QFont font = EditorFont();
  lexer_->setDefaultFont(font);
  lexer_->setFont(font, -1);
  text_->setLexer(lexer_);
  delete old;
  text_->setMarginsFont(font);
  UpdateLineNumberWidth();
}

void ScriptEditor::UpdateLineNumberWidth() {
  // Room for one digit more than the last line number needs.
  text_->setMarginWidth(kLineNumberMargin, QString::number(text_->lines() * 10));
}

void ScriptEditor::SetText(const std::string& text) {
  settingText_ = true;
  const bool readOnly = text_->isReadOnly();
  if (readOnly) text_->setReadOnly(false);
  ClearCheckMarks();
  // Through Scintilla's bytes rather than QString, so that nothing of the
  // text (a NUL, a byte that is no UTF-8) is lost on the way.
  text_->SendScintilla(Sci::SCI_CLEARALL);
  text_->SendScintilla(Sci::SCI_APPENDTEXT, static_cast<uintptr_t>(text.size()), text.data());
  text_->setEolMode(EolModeOf(text));
  text_->SendScintilla(Sci::SCI_EMPTYUNDOBUFFER);
  text_->SendScintilla(Sci::SCI_SETSAVEPOINT);
  text_->SendScintilla(Sci::SCI_GOTOPOS, 0L);
  if (readOnly) text_->setReadOnly(true);
  settingText_ = false;
  emit textChanged();
}

std::string ScriptEditor::Text() const {
  const long length = text_->SendScintilla(Sci::SCI_GETLENGTH);
  std::string text(static_cast<std::size_t>(length) + 1, '\0');
  text_->SendScintilla(Sci::SCI_GETTEXTRANGE, 0L, length, text.data());
  text.resize(static_cast<std::size_t>(length));
  return text;
}

void ScriptEditor::SetReadOnly(bool readOnly) {
  text_->setReadOnly(readOnly);
}

void ScriptEditor::ClearCheckMarks() {
  text_->markerDeleteAll(kErrorMarker);
  text_->SendScintilla(Sci::SCI_SETINDICATORCURRENT, kErrorIndicator);
  text_->SendScintilla(Sci::SCI_INDICATORCLEARRANGE, 0UL, text_->SendScintilla(Sci::SCI_GETLENGTH));
}

long ScriptEditor::PositionOf(int line, int column) const {
  const long lines = text_->SendScintilla(Sci::SCI_GETLINECOUNT);
  const long index = std::clamp<long>(line - 1, 0, lines - 1);
  const long end = text_->SendScintilla(Sci::SCI_GETLINEENDPOSITION, index);
  long pos = text_->SendScintilla(Sci::SCI_POSITIONFROMLINE, index);
  for (int c = 1; c < column && pos < end; ++c)
    pos = text_->SendScintilla(Sci::SCI_POSITIONAFTER, pos);
  return std::min(pos, end);
}

bool ScriptEditor::Check() {
  ClearCheckMarks();
  findNoteShown_ = false;
  lastCheck_ = CheckScript(language_, Text());
  if (lastCheck_.ok) {
    status_->setText("Keine Fehler gefunden.");
    return true;
  }
  QString message = QString::fromStdString(lastCheck_.description);
  if (lastCheck_.line > 0) {
    const long pos = PositionOf(lastCheck_.line, lastCheck_.column);
    const long line = text_->SendScintilla(Sci::SCI_LINEFROMPOSITION, pos);
    text_->markerAdd(static_cast<int>(line), kErrorMarker);
    // The indicator covers the word at the spot, or its one character.
    const long lineEnd = text_->SendScintilla(Sci::SCI_GETLINEENDPOSITION, line);
    long end = text_->SendScintilla(Sci::SCI_WORDENDPOSITION, static_cast<unsigned long>(pos), 1L);
    if (end <= pos) end = text_->SendScintilla(Sci::SCI_POSITIONAFTER, pos);
    end = std::min(end, lineEnd);
    text_->SendScintilla(Sci::SCI_SETINDICATORCURRENT, kErrorIndicator);
    if (end > pos)
      text_->SendScintilla(Sci::SCI_INDICATORFILLRANGE, static_cast<unsigned long>(pos), end - pos);
    text_->SendScintilla(Sci::SCI_GOTOPOS, pos);
    text_->setFocus();
    message =
        QString("Zeile %1, Spalte %2: %3").arg(lastCheck_.line).arg(lastCheck_.column).arg(message);
  }
  status_->setText(message);
  return false;
}

bool ScriptEditor::FindNext() {
  const QString what = find_->text();
  if (what.isEmpty()) return false;
  const bool found = text_->findFirst(what, /*re=*/false, /*cs=*/false, /*wo=*/false,
                                      /*wrap=*/true, /*forward=*/true);
  if (found && findNoteShown_) {
    status_->clear();
    findNoteShown_ = false;
  } else if (!found) {
    status_->setText(QString("„%1“ wurde nicht gefunden.").arg(what));
    findNoteShown_ = true;
  }
  return found;
}

}  // namespace ketrova::dialogs
