function greet(name, n) {
  return "Hallo " + name + " " + (n * 2);
}
function broken() {
  return missingName;
}
