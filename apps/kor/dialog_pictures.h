// Pictures of the plug-in's dialogs for review: each dialog filled from a
// project and rendered without being shown modally.
#pragma once

#include <QDir>

namespace ketrova {
class CConverter;
}

namespace kor {

// Writes frmEngine.png, frmProjekt.png, frmDataSource-<type>.png (one per
// page of the data-store dialog, on the project's destination) and
// frmJob-<page>.png (the five pages of the job editor on the first job) into
// `folder`.
void GrabDialogs(ketrova::CConverter& project, const QDir& folder);

}  // namespace kor
