// The plug-in's navigator bars and toolbar buttons, built on request of the
// host's events (connector.cpp). Both use only the host's objects of the
// started plug-in (plugin_module.h): call them after ApplicationStart.
//
// Failures (a refused key, a host object that fails) are raised as VbError to
// the event that asked; whatever was built until then stays.
#pragma once

#include "support/variant.h"

namespace ketrova::host {

// Clears the navigator's bars and fills it with the two bars "Projekt" and
// "Scripting" and their eight entries, and adds one record per entry to the
// host's navigator list (which is not cleared: a second call adds eight more).
// `vUserData` is not used.
void LoadNavigator(const Variant& vUserData);

// Adds the hidden "Property" button to the system toolbar and the five project
// buttons to the main toolbar; only "Neu" and "Öffnen" start enabled.
void LoadToolbars();

}  // namespace ketrova::host
