function spin() {
  var n = 0;
  for (;;) { n++; }
}
