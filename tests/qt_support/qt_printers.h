// GoogleTest prints Qt's strings as text ("Projekte (*.CPF)"), not as bytes.
#pragma once

#include <QString>
#include <QStringList>
#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out) {
  *out << '"' << text.toStdString() << '"';
}
