# Writes a CSV file of people for the conversion benchmark: a header and
# `rows` records of ten columns, ";"-separated, UTF-8, with umlauts, German
# dates and amounts with a decimal comma. The key Nr runs from `first` in
# steps of `step`; `status` is the text of the last column, so that an update
# file differs from the rows it updates.
#   awk -v rows=1000000 -v first=1 -v step=1 -v status=neu -f make_csv.awk
BEGIN {
  split("Müller Schäfer Größer Weiß Öztürk Krämer Jäger Köhler Bäcker Schröder", names, " ")
  split("Jürgen Änne Björn Dörte Ümit Sören Lüder Käthe Jörg Gülsüm", firsts, " ")
  split("München Köln Düsseldorf Nürnberg Lübeck Görlitz Tübingen Würzburg Fürth Zürich", towns, " ")
  if (rows == "") rows = 1000
  if (first == "") first = 1
  if (step == "") step = 1
  if (status == "") status = "neu"
  print "Nr;Name;Vorname;Strasse;PLZ;Ort;Geburtstag;Umsatz;Menge;Status"
  for (i = 0; i < rows; i++) {
    nr = first + i * step
    printf "%d;%s;%s;Hauptstraße %d;%05d;%s;%02d.%02d.%04d;%d,%02d;%d;%s\n", \
      nr, names[nr % 10 + 1], firsts[int(nr / 10) % 10 + 1], nr % 200 + 1, (nr * 37) % 99999 + 1, \
      towns[int(nr / 100) % 10 + 1], nr % 28 + 1, nr % 12 + 1, 1940 + nr % 60, \
      nr % 100000, nr % 100, nr % 50 + 1, status
  }
}
