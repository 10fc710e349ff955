#include "platform/ado/ado_errors.h"

#include <array>
#include <cassert>

#include "platform/ado/enums.h"
#include "support/vb_error.h"

namespace ketrova::ado {

namespace {

// In the order of AdoError.
constexpr std::array<AdoErrorEntry, 13> kTable = {{
    {kErrArguments,
     "Die Argumente sind vom falschen Typ, liegen außerhalb des gültigen Bereichs oder sind "
     "miteinander unvereinbar."},
    {kErrBofEof,
     "BOF oder EOF hat den Wert True, oder der aktuelle Datensatz wurde gelöscht. Für den "
     "angeforderten Vorgang ist ein aktueller Datensatz erforderlich."},
    {3219, "Der Vorgang ist in diesem Kontext nicht zulässig."},
    {kErrNotSupported, "Der Vorgang wird von diesem Provider nicht unterstützt."},
    {kErrNotSupported,
     "Das aktuelle Recordset unterstützt keine Aktualisierungen. Dies ist möglicherweise eine "
     "Einschränkung des Providers oder des gewählten Sperrtyps."},
    {kErrItemNotFound,
     "Das Objekt ist in der Auflistung, die dem angeforderten Namen oder der angeforderten "
     "Ordinalzahl entspricht, nicht vorhanden."},
    {3367, "Das Objekt ist bereits in der Auflistung vorhanden. Anhängen nicht möglich."},
    {kErrObjectClosed, "Der Vorgang ist für ein geschlossenes Objekt nicht zulässig."},
    {kErrObjectOpen, "Der Vorgang ist für ein geöffnetes Objekt nicht zulässig."},
    {-2147217858, "Das Objekt ist bereits in der Auflistung vorhanden."},
    {-2147217856, "Das Objekt ist bereits in der Auflistung vorhanden."},
    {kErrMultipleStep,
     "Der aus mehreren Schritten bestehende Vorgang hat Fehler verursacht. Überprüfen Sie die "
     "einzelnen Statuswerte."},
    {-2147217864,  // DB_E_CONCURRENCYVIOLATION
     "Die Zeile für die Aktualisierung konnte nicht gefunden werden. Einige Werte wurden seit dem "
     "letzten Lesen möglicherweise geändert."},
}};

}  // namespace

const AdoErrorEntry& AdoErrorOf(AdoError error) {
  auto index = static_cast<std::size_t>(error);
  assert(index < kTable.size());
  return kTable[index];
}

void ThrowAdoError(AdoError error, const char* source) {
  const AdoErrorEntry& entry = AdoErrorOf(error);
  throw VbError(entry.number, std::string(entry.text), source);
}

}  // namespace ketrova::ado
