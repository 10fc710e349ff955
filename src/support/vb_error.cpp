#include "support/vb_error.h"

#include <map>

namespace ketrova {

VbError::VbError(std::int32_t number, std::string description, std::string source)
    : Number(number), Description(std::move(description)), Source(std::move(source)) {
  if (Description.empty()) Description = VbErrorText(number);
}

std::string VbErrorText(std::int32_t number) {
  // VBScript's run-time errors as a German system shows them.
  static const std::map<std::int32_t, const char*> texts = {
      {3, "Return ohne GoSub"},
      {5, "Unzulässiger Prozeduraufruf oder unzulässiges Argument"},
      {6, "Überlauf"},
      {7, "Nicht genügend Speicher"},
      {9, "Index außerhalb des gültigen Bereichs"},
      {10, "Datenfeld ist unveränderlich oder momentan gesperrt"},
      {11, "Division durch Null"},
      {13, "Typen unverträglich"},
      {14, "Nicht genügend Zeichenfolgenspeicher"},
      {17, "Angeforderte Operation kann nicht ausgeführt werden"},
      {28, "Nicht genügend Stapelspeicher"},
      {35, "Sub oder Function nicht definiert"},
      {48, "Fehler beim Laden der DLL"},
      {51, "Interner Fehler"},
      {52, "Dateiname oder -nummer falsch"},
      {53, "Datei nicht gefunden"},
      {54, "Dateimodus falsch"},
      {55, "Datei bereits geöffnet"},
      {57, "Geräte-E/A-Fehler"},
      {58, "Datei existiert bereits"},
      {61, "Datenträger voll"},
      {62, "Einlesen hinter Dateiende"},
      {67, "Zu viele Dateien"},
      {68, "Gerät nicht verfügbar"},
      {70, "Erlaubnis verweigert"},
      {71, "Datenträger nicht bereit"},
      {74, "Umbenennen bei Angabe unterschiedlicher Laufwerke nicht möglich"},
      {75, "Fehler beim Zugriff auf Pfad/Datei"},
      {76, "Pfad nicht gefunden"},
      {91, "Objektvariable nicht festgelegt"},
      {92, "For-Schleife nicht initialisiert"},
      {94, "Unzulässige Verwendung von Null"},
      {322, "Benötigte temporäre Datei kann nicht erstellt werden"},
      {424, "Objekt erforderlich"},
      {429, "ActiveX-Komponente kann kein Objekt erstellen"},
      {430, "Klasse unterstützt keine Automatisierung"},
      {432, "Datei- oder Klassenname während Automatisierungsoperation nicht gefunden"},
      {438, "Objekt unterstützt diese Eigenschaft oder Methode nicht"},
      {440, "Automatisierungsfehler"},
      {445, "Objekt unterstützt diese Aktion nicht"},
      {446, "Objekt unterstützt keine benannten Argumente"},
      {447, "Objekt unterstützt aktuelle Ländereinstellung nicht"},
      {448, "Benanntes Argument nicht gefunden"},
      {449, "Argument ist nicht optional"},
      {450, "Falsche Anzahl an Argumenten oder ungültige Eigenschaftszuweisung"},
      {451, "Objekt ist keine Auflistung"},
      {453, "Angegebene DLL-Funktion nicht gefunden"},
      {455, "Code-Ressourcensperrfehler"},
      {457, "Dieser Schlüssel ist bereits einem Element dieser Auflistung zugeordnet"},
      {458, "Variable verwendet einen in VBScript nicht unterstützten Automatisierungstyp"},
      {462, "Der Remote-Servercomputer existiert nicht oder ist nicht verfügbar"},
      {481, "Ungültiges Bild"},
      {500, "Variable ist nicht definiert"},
      {501, "Zuweisung ungültig"},
      {502, "Objekt nicht sicher für Skripterstellung"},
      {503, "Objekt nicht sicher für Initialisierung"},
      {504, "Objekt nicht sicher für Erstellung"},
      {505, "Ungültiger oder unqualifizierter Verweis"},
      {506, "Klasse nicht definiert"},
      {507, "Eine Ausnahme ist aufgetreten"},
      {5008, "Ungültige Zuweisung"},
      {5017, "Syntaxfehler in regulärem Ausdruck"},
      {5018, "Unerwarteter Quantifizierer"},
      {5019, "']' in regulärem Ausdruck erwartet"},
      {5020, "')' in regulärem Ausdruck erwartet"},
      {5021, "Ungültiger Bereich im Zeichensatz"},
  };
  auto it = texts.find(number);
  return it != texts.end() ? it->second : "Anwendungs- oder objektdefinierter Fehler";
}

void ErrObject::Raise(std::int32_t number, std::string source, std::string description) {
  throw VbError(number, std::move(description), std::move(source));
}

void ErrObject::Set(const VbError& error) {
  Number = error.Number;
  Description = error.Description;
  Source = error.Source;
}

void ErrObject::Clear() {
  Number = 0;
  Description.clear();
  Source.clear();
  HelpFile.clear();
  HelpContext = 0;
}

ErrObject& Err() {
  thread_local ErrObject err;
  return err;
}

void SetPendingError(std::exception_ptr error) {
  try {
    std::rethrow_exception(error);
  } catch (const VbError& e) {
    Err().Set(e);
  } catch (const std::exception& e) {
    Err().Set(VbError(440, e.what()));
  } catch (...) {
    // Not kept here: a failure no class describes is error 440, as VBScript
    // reports an object's failure.
    Err().Set(VbError(440));
  }
}

}  // namespace ketrova
