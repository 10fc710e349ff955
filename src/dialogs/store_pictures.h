// The pictures of the store types in the data-store dialog's explorer bar.
// They are drawn here with QPainter rather than loaded from files, so that
// they need no installed data and stay sharp at any screen scaling.
#pragma once

#include <QIcon>

namespace ketrova::dialogs {

// The picture of a TDataBaseType; a plain cylinder for a type without a
// picture of its own. Requires a QGuiApplication.
QIcon StoreTypeIcon(int databaseType);

}  // namespace ketrova::dialogs
