#pragma once
// The form walk of the language files over a Qt window: every named widget and action of
// the window (a name "mnu_fileItem(1)" is the control array's element 1) takes its caption
// and tool tip from the section of the window's name, as sub_translateform rules.
#include <QWidget>

#include "frame/context.h"

namespace qumbrel {

void translate_widget(Program& ctx, QWidget* window);

}  // namespace qumbrel
