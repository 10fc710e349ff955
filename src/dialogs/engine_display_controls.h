// The run dialog's widgets as the late-bound display controls that CEngine
// writes to: a progress bar with Min, Max, Value, Visible and Refresh, and a
// status text with Text (the default member), Visible and Refresh.
//
// The controls hold the widgets by QPointer: once a widget is gone, writes do
// nothing and reads answer Empty, so an engine that outlives its window does
// no harm. Values beyond a QProgressBar's int range are clipped. The status
// text shows CR LF as line breaks. GUI thread only.
#pragma once

#include "support/object.h"

class QPlainTextEdit;
class QProgressBar;

namespace ketrova::dialogs {

ObjectPtr MakeProgressBarControl(QProgressBar* bar);
ObjectPtr MakeStatusTextControl(QPlainTextEdit* text);

}  // namespace ketrova::dialogs
