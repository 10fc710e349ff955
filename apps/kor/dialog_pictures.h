// Pictures of the plug-in's dialogs for review: each dialog filled from a
// project and rendered without being shown modally.
#pragma once

#include <QDir>

namespace ketrova {
class CConverter;
}

namespace kor {

// Writes frmEngine.png, frmProjekt.png and frmDataSource-<type>.png (one per
// page of the data-store dialog, on the project's destination) into `folder`.
void GrabDialogs(ketrova::CConverter& project, const QDir& folder);

}  // namespace kor
