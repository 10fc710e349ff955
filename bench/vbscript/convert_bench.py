# The same per-record conversion in Python 3: record sets as objects with a
# Fields(name) lookup answering field objects with a value, and the
# function with ten assignments, text columns cut as Left does.
import sys
import time


class Field:
    __slots__ = ("value",)

    def __init__(self, value=None):
        self.value = value


class Recordset:
    def __init__(self, names):
        self._fields = {n.lower(): Field() for n in names}

    def Fields(self, name):
        return self._fields[name.lower()]


NAMES = ["Nr", "Name", "Vorname", "Strasse", "PLZ", "Ort", "Betrag", "Menge", "Notiz", "Kennzeichen"]
Source = Recordset(NAMES)
Destination = Recordset(NAMES)
for n, v in zip(NAMES, [4711, "Müller-Lüdenscheidt und Söhne", "Jörg", "Hauptstraße 1", "50667",
                        "Köln", 1234.5, 17, 'sagt "Grüß Gott"', "K1"]):
    Source.Fields(n).value = v


def Left(value, length):
    return None if value is None else str(value)[:length]


def txConvertMain():
    Destination.Fields("Nr").value = Source.Fields("Nr").value
    Destination.Fields("Name").value = Left(Source.Fields("Name").value, 50)
    Destination.Fields("Vorname").value = Left(Source.Fields("Vorname").value, 30)
    Destination.Fields("Strasse").value = Left(Source.Fields("Strasse").value, 60)
    Destination.Fields("PLZ").value = Left(Source.Fields("PLZ").value, 5)
    Destination.Fields("Ort").value = Left(Source.Fields("Ort").value, 40)
    Destination.Fields("Betrag").value = Source.Fields("Betrag").value
    Destination.Fields("Menge").value = Source.Fields("Menge").value
    Destination.Fields("Notiz").value = Left(Source.Fields("Notiz").value, 20)
    Destination.Fields("Kennzeichen").value = Left(Source.Fields("Kennzeichen").value, 3)


calls = int(sys.argv[1])
start = time.perf_counter()
cpu_start = time.process_time()
for _ in range(calls):
    txConvertMain()
cpu = time.process_time() - cpu_start
seconds = time.perf_counter() - start
print(f"Python: calls={calls} seconds={seconds:.3f} cpu_seconds={cpu:.3f} "
      f"per_call_us={cpu * 1e6 / calls:.3f} "
      f"Name={Destination.Fields('Name').value}")
