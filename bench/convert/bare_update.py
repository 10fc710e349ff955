# The least an update by key can cost in SQLite: for each row of the change
# file, the indexed SELECT of the row and an UPDATE of its nine other columns
# by rowid, committed every 10,000 rows, in WAL mode with synchronous NORMAL
# as ketrova opens a file. No conversion script, no types beyond what the
# CSV module reads: the peer that shows how much of ketrova's update is
# SQLite's own work.
#   python3 bare_update.py DATABASE CHANGES.csv
import csv
import sqlite3
import sys

database, changes = sys.argv[1], sys.argv[2]
db = sqlite3.connect(database, isolation_level=None)
db.execute("PRAGMA journal_mode=WAL")
db.execute("PRAGMA synchronous=NORMAL")
columns = ["Name", "Vorname", "Strasse", "PLZ", "Ort", "Geburtstag", "Umsatz", "Menge", "Status"]
update = "UPDATE Personen SET " + ", ".join(c + " = ?" for c in columns) + " WHERE rowid = ?"
updated = 0
with open(changes, newline="", encoding="utf-8") as f:
    rows = csv.reader(f, delimiter=";")
    next(rows)
    db.execute("BEGIN")
    for row in rows:
        found = db.execute("SELECT rowid FROM Personen WHERE Nr = ?", (int(row[0]),)).fetchone()
        if found is None:
            continue
        db.execute(update, row[1:] + [found[0]])
        updated += 1
        if updated % 10000 == 0:
            db.execute("COMMIT")
            db.execute("BEGIN")
    db.execute("COMMIT")
db.close()
print(updated)
